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

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

constexpr int deadline_ms = 3000;

// The master side of a fresh pseudo-terminal, raw, so the test sees bytes
// exactly as the program side sent them.
class PtyPeer {
public:
    PtyPeer() {
        fd_ = ::posix_openpt(O_RDWR | O_NOCTTY);
        char name[128] = {};
        if (fd_ < 0 || ::grantpt(fd_) != 0 || ::unlockpt(fd_) != 0 ||
            ::ptsname_r(fd_, name, sizeof name) != 0) {
            unplug();
            return;
        }
        termios t{};
        ::tcgetattr(fd_, &t);
        ::cfmakeraw(&t);
        ::tcsetattr(fd_, TCSANOW, &t);
        path_ = QString::fromLocal8Bit(name);
    }
    ~PtyPeer() { unplug(); }
    PtyPeer(const PtyPeer&) = delete;
    PtyPeer& operator=(const PtyPeer&) = delete;

    bool ok() const { return fd_ >= 0; }
    QString path() const { return path_; }

    bool send(const QByteArray& bytes) const {
        return ::write(fd_, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
    }
    // Whatever arrives until `count` bytes are in or the deadline passes.
    QByteArray receive(qsizetype count) const {
        QByteArray got;
        const QDeadlineTimer deadline(deadline_ms);
        while (got.size() < count && !deadline.hasExpired()) {
            pollfd p{fd_, POLLIN, 0};
            if (::poll(&p, 1, static_cast<int>(deadline.remainingTime())) <= 0)
                break;
            char chunk[512];
            const ssize_t n = ::read(fd_, chunk, sizeof chunk);
            if (n <= 0)
                break;
            got.append(chunk, n);
        }
        return got;
    }
    // The slave's settings: terminal ioctls on the master act on the slave.
    termios settings() const {
        termios t{};
        ::tcgetattr(fd_, &t);
        return t;
    }
    void unplug() {
        if (fd_ >= 0)
            ::close(fd_);
        fd_ = -1;
    }

private:
    int fd_ = -1;
    QString path_;
};

QByteArray every_byte_value() {
    QByteArray all(256, '\0');
    for (int i = 0; i < 256; ++i)
        all[i] = static_cast<char>(i);
    return all;
}

struct Harness {
    ManualClock clock;
    FakeUserInterface ui;
    link::SerialLink* link;
    AppContext ctx;
    QList<QByteArray> payloads;

    explicit Harness(const QString& path)
        : link(new link::SerialLink(path)),
          ctx(clock, ui, std::unique_ptr<link::DeviceLink>(link)) {
        for (int n : {2000, 2100, 2200, 2300, 2400, 2500, 2600, 2700, 2800})
            ctx.language.language_text[n] = QStringLiteral("T%1").arg(n);
        ctx.payload_handler = [this](const QByteArray& p) { payloads << p; };
    }
    // Everything read_raw delivers until `count` bytes are in or the deadline passes.
    QByteArray read_until(qsizetype count) {
        QByteArray got;
        const QDeadlineTimer deadline(deadline_ms);
        while (got.size() < count && !deadline.hasExpired()) {
            const QByteArray more = link::read_raw(ctx);
            if (more.isEmpty())
                QTest::qWait(1); // let the pseudo-terminal hand the bytes over
            got += more;
        }
        return got;
    }
};

} // namespace

class TestSerialLink : public QObject {
    Q_OBJECT
private slots:
    void opens_with_the_device_line_settings_data() {
        QTest::addColumn<bool>("through_symlink");
        QTest::newRow("pseudo-terminal path") << false;
        // The stand-alone simulator may offer its terminal under a fixed name.
        QTest::newRow("symbolic link to it") << true;
    }
    void opens_with_the_device_line_settings() {
        QFETCH(bool, through_symlink);
        PtyPeer peer;
        QVERIFY(peer.ok());
        QTemporaryDir dir;
        QString path = peer.path();
        if (through_symlink) {
            path = dir.filePath(QStringLiteral("port"));
            QVERIFY(QFile::link(peer.path(), path));
        }
        Harness h(path);
        QVERIFY(link::open_device(h.ctx, false));
        QCOMPARE(h.ui.messages, QStringList());
        QVERIFY2(h.ui.out.startsWith(QStringLiteral("Handle:")), qPrintable(h.ui.out));

        const termios t = peer.settings();
        QCOMPARE(cfgetospeed(&t), speed_t(B115200));
        QCOMPARE(cfgetispeed(&t), speed_t(B115200));
        QCOMPARE(t.c_cflag & CSIZE, tcflag_t(CS8));
        QVERIFY(t.c_cflag & CSTOPB);
        QVERIFY(!(t.c_cflag & PARENB));
        // No translation of CR, LF or XON/XOFF, and no echo, in either direction.
        QCOMPARE(t.c_iflag & (IXON | IXOFF | ICRNL | INLCR | IGNCR | ISTRIP), tcflag_t(0));
        QCOMPARE(t.c_oflag & OPOST, tcflag_t(0));
        QCOMPARE(t.c_lflag & (ICANON | ECHO | ISIG | IEXTEN), tcflag_t(0));
    }

    void frames_and_raw_bytes_reach_the_device_unchanged() {
        PtyPeer peer;
        QVERIFY(peer.ok());
        Harness h(peer.path());
        QVERIFY(link::open_device(h.ctx, true));

        const QByteArray payload("I\x00\x0D\x0A\x11\x13\xFF", 7);
        QCOMPARE(protocol::send_frame(h.ctx, payload), link::FT_OK);
        const QByteArray frame = protocol::build_frame(payload);
        QCOMPARE(peer.receive(frame.size()), frame);

        link::write_raw(h.ctx, every_byte_value());
        QCOMPARE(peer.receive(256), every_byte_value());
    }

    void bytes_from_the_device_arrive_unchanged() {
        PtyPeer peer;
        QVERIFY(peer.ok());
        Harness h(peer.path());
        QVERIFY(link::open_device(h.ctx, true));

        QVERIFY(peer.send(every_byte_value()));
        QCOMPARE(h.read_until(256), every_byte_value());

        // A frame split across two deliveries, carrying the bytes a terminal
        // likes to swallow or translate, comes out as one payload.
        const QByteArray payload("S\x00\x0D\x0A\x11\x13\xFF\x0D", 8);
        const QByteArray frame = protocol::build_frame(payload);
        QVERIFY(peer.send(frame.left(4)));
        protocol::parse_frames(h.ctx, h.read_until(4));
        QVERIFY(h.payloads.isEmpty());
        QVERIFY(peer.send(frame.mid(4)));
        protocol::parse_frames(h.ctx, h.read_until(frame.size() - 4));
        QCOMPARE(h.payloads, QList<QByteArray>{payload});
    }

    void a_missing_path_counts_no_device() {
        QTemporaryDir dir;
        Harness h(dir.filePath(QStringLiteral("ttyUSB9")));
        std::uint32_t count = 7;
        QCOMPARE(h.link->list_device_count(count), link::FT_OK);
        QCOMPARE(count, 0u);
        QVERIFY(!link::open_device(h.ctx, false));
        QCOMPARE(h.ui.messages, QStringList{QStringLiteral("T2100\r\nT2200")});
        QCOMPARE(h.ctx.link.device_handle, 0u);
    }

    void a_file_that_is_no_port_fails_to_open() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("plain"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        Harness h(path);
        QVERIFY(!link::open_device(h.ctx, false));
        QCOMPARE(h.ui.messages, QStringList{QStringLiteral("T2300 DLL-Error:3")});
        QVERIFY2(h.ui.out.contains(path),
                 qPrintable(h.ui.out)); // the system's reason, on the developer page
        QCOMPARE(h.ctx.link.device_handle, 0u);
    }

    // A pseudo-terminal keeps 8 data bits and no parity whatever it is asked,
    // so the stop bits and the refusals are what can be seen here.
    void line_settings_data() {
        QTest::addColumn<int>("word");
        QTest::addColumn<int>("stop");
        QTest::addColumn<int>("parity");
        QTest::addColumn<uint>("status");
        QTest::newRow("one stop bit is value 0") << 8 << 0 << 0 << uint(link::FT_OK);
        QTest::newRow("stop bits value 1") << 8 << 1 << 0 << uint(link::FT_INVALID_PARAMETER);
        QTest::newRow("9 data bits") << 9 << 0 << 0 << uint(link::FT_INVALID_PARAMETER);
        QTest::newRow("parity value 5") << 8 << 0 << 5 << uint(link::FT_INVALID_PARAMETER);
    }
    void line_settings() {
        QFETCH(int, word);
        QFETCH(int, stop);
        QFETCH(int, parity);
        QFETCH(uint, status);
        PtyPeer peer;
        QVERIFY(peer.ok());
        link::SerialLink serial(peer.path());
        link::FtHandle handle = 0;
        QCOMPARE(serial.open(0, handle), link::FT_OK);
        QCOMPARE(serial.set_data_characteristics(handle, link::FT_BITS_8, link::FT_STOP_BITS_2,
                                                 link::FT_PARITY_NONE),
                 link::FT_OK);
        QCOMPARE(serial.set_data_characteristics(handle, static_cast<std::uint8_t>(word),
                                                 static_cast<std::uint8_t>(stop),
                                                 static_cast<std::uint8_t>(parity)),
                 link::FtStatus(status));
        // A refused setting leaves the line as it was: two stop bits.
        const bool two_stop_bits = status != link::FT_OK;
        QCOMPARE(bool(peer.settings().c_cflag & CSTOPB), two_stop_bits);
    }

    void pulling_the_cable_gives_a_status_not_a_hang() {
        auto peer = std::make_unique<PtyPeer>();
        QVERIFY(peer->ok());
        Harness h(peer->path());
        QVERIFY(link::open_device(h.ctx, true));
        const link::FtHandle handle = h.ctx.link.device_handle;
        peer.reset();

        QElapsedTimer timer;
        timer.start();
        std::uint32_t rx = 0;
        link::FtStatus status = link::FT_OK;
        const QDeadlineTimer deadline(deadline_ms);
        while (status == link::FT_OK && !deadline.hasExpired()) {
            status = h.link->get_queue_status(handle, rx);
            if (status == link::FT_OK)
                QTest::qWait(1);
        }
        QCOMPARE(status, link::FT_IO_ERROR);
        QVERIFY(!h.link->last_error_text().isEmpty());
        QByteArray buffer;
        std::uint32_t returned = 0;
        QCOMPARE(h.link->read(handle, buffer, 4, returned), link::FT_IO_ERROR);
        QCOMPARE(returned, 0u);
        std::uint32_t written = 0;
        QCOMPARE(h.link->write(handle, "#1I", written), link::FT_IO_ERROR);
        QVERIFY2(timer.elapsed() < deadline_ms, qPrintable(QString::number(timer.elapsed())));

        // The terminal is gone with its master, as a pulled adapter's port is:
        // after closing, reconnection finds no device.
        link::close_device(h.ctx);
        QCOMPARE(h.ctx.link.device_handle, 0u);
        std::uint32_t count = 7;
        QCOMPARE(h.link->list_device_count(count), link::FT_OK);
        QCOMPARE(count, 0u);
    }
};

QTEST_GUILESS_MAIN(TestSerialLink)
#include "test_serial_link.moc"
