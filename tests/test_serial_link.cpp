// The serial link against a pseudo-terminal whose master side the test holds:
// the far end of the cable. Line settings reach the terminal, every byte
// value crosses unchanged in both directions, and pulling the cable gives a
// status instead of a hang.

#include "app_context.h"
#include "fake_user_interface.h"
#include "link/device_connection.h"
#include "link/serial_link.h"
#include "manual_clock.h"
#include "protocol/frame_codec.h"
#include "protocol/frames.h"
#include "table.h"

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>

#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

// The master side of a fresh pseudo-terminal, raw and non-blocking, so the
// test sees bytes exactly as the program side sent them.
struct PtyPeer {
    PtyPeer() {
        char name[128] = {};
        int slave = -1;
        if (::openpty(&fd, &slave, name, nullptr, nullptr) != 0)
            return;
        ::close(slave); // the program opens it by its path
        termios t = settings();
        ::cfmakeraw(&t);
        ::tcsetattr(fd, TCSANOW, &t);
        ::fcntl(fd, F_SETFL, O_NONBLOCK);
        path = QString::fromLocal8Bit(name);
    }
    ~PtyPeer() { unplug(); }

    bool send(const QByteArray& bytes) const {
        return ::write(fd, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
    }
    // Whatever has arrived so far.
    QByteArray take() const {
        char chunk[512];
        const ssize_t n = ::read(fd, chunk, sizeof chunk);
        return n > 0 ? QByteArray(chunk, n) : QByteArray();
    }
    // The slave's settings: terminal ioctls on the master act on the slave.
    termios settings() const {
        termios t{};
        ::tcgetattr(fd, &t);
        return t;
    }
    void unplug() {
        if (fd >= 0)
            ::close(fd);
        fd = -1;
    }

    int fd = -1;
    QString path; // empty when no pseudo-terminal could be had
};

struct Harness {
    ManualClock clock;
    FakeUserInterface ui;
    link::SerialLink* link;
    AppContext ctx;
    QList<QByteArray> payloads;

    explicit Harness(const QString& path)
        : link(new link::SerialLink(path)),
          ctx(clock, ui, std::unique_ptr<link::DeviceLink>(link)) {
        ctx.payload_handler = [this](const QByteArray& p) { payloads << p; };
    }
};

} // namespace

class TestSerialLink : public QObject {
    Q_OBJECT
private slots:
    // Opening also sets DTR, which a pseudo-terminal cannot do; that one
    // failure must not keep the simulator out of reach, under its own name
    // or under a fixed link to it.
    void opens_and_bytes_cross_unchanged_data() {
        Table<bool>()("pseudo-terminal path", false)("symbolic link to it", true);
    }
    void opens_and_bytes_cross_unchanged() {
        const auto [through_symlink] = Table<bool>::fetch();
        PtyPeer peer;
        QVERIFY(!peer.path.isEmpty());
        QTemporaryDir dir;
        const QString path = through_symlink ? dir.filePath(QStringLiteral("port")) : peer.path;
        QVERIFY(!through_symlink || QFile::link(peer.path, path));
        Harness h(path);
        QVERIFY(link::open_device(h.ctx, false));

        const termios t = peer.settings();
        QCOMPARE(cfgetospeed(&t), speed_t(B115200));
        QCOMPARE(t.c_cflag & (CSIZE | CSTOPB | PARENB), tcflag_t(CS8 | CSTOPB));
        // No translation of CR, LF or XON/XOFF, and no echo, in either direction.
        QCOMPARE(t.c_iflag & (IXON | IXOFF | ICRNL | INLCR | IGNCR | ISTRIP), tcflag_t(0));
        QCOMPARE(t.c_oflag & OPOST, tcflag_t(0));
        QCOMPARE(t.c_lflag & (ICANON | ECHO | ISIG | IEXTEN), tcflag_t(0));

        // Every byte value crosses unchanged both ways. QTRY_COMPARE
        // re-evaluates `got += ...`, so `got` gathers what arrives in pieces.
        QByteArray every_byte_value;
        for (int i = 0; i < 256; ++i)
            every_byte_value += static_cast<char>(i);
        QByteArray got;
        link::write_raw(h.ctx, every_byte_value);
        QTRY_COMPARE(got += peer.take(), every_byte_value);
        QVERIFY(peer.send(every_byte_value));
        got.clear();
        QTRY_COMPARE(got += link::read_raw(h.ctx), every_byte_value);

        // A frame split across two deliveries, carrying the bytes a terminal
        // likes to swallow or translate, comes out as one payload.
        const QByteArray payload("S\x00\x0D\x0A\x11\x13\xFF\x0D", 8);
        const QByteArray frame = protocol::build_frame(payload);
        for (const QByteArray& part : {frame.left(4), frame.mid(4)}) {
            QVERIFY(h.payloads.isEmpty());
            QVERIFY(peer.send(part));
            got.clear();
            QTRY_COMPARE(got += link::read_raw(h.ctx), part);
            protocol::parse_frames(h.ctx, got);
        }
        QCOMPARE(h.payloads, QList<QByteArray>{payload});
    }

    // A path with nothing behind it counts no device.
    void pulling_the_cable_gives_a_status_not_a_hang() {
        QTemporaryDir dir;
        link::SerialLink serial(dir.filePath(QStringLiteral("ttyUSB9")));
        std::uint32_t count = 7;
        link::FtHandle handle = 0;
        QCOMPARE(serial.list_device_count(count), link::FT_OK);
        QCOMPARE(count, 0u);
        QCOMPARE(serial.open(0, handle), link::FT_DEVICE_NOT_FOUND);

        auto peer = std::make_unique<PtyPeer>();
        QVERIFY(!peer->path.isEmpty());
        Harness h(peer->path);
        QVERIFY(link::open_device(h.ctx, true));
        handle = h.ctx.link.device_handle;
        peer.reset();

        QElapsedTimer timer;
        timer.start();
        std::uint32_t rx = 0;
        QTRY_COMPARE(h.link->get_queue_status(handle, rx), link::FT_IO_ERROR);
        std::uint32_t written = 0;
        QCOMPARE(h.link->write(handle, "#1I", written), link::FT_IO_ERROR);
        QVERIFY2(timer.elapsed() < 3000, qPrintable(QString::number(timer.elapsed())));
    }
};

QTEST_GUILESS_MAIN(TestSerialLink)
#include "test_serial_link.moc"
