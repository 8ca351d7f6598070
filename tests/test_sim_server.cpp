// The stand-alone simulator: started as a separate program, it names its
// pseudo-terminal on its first line, answers frames sent there by plain POSIX
// calls, survives the client closing and reopening the terminal, and stops
// cleanly on SIGTERM and SIGINT.

#include "app_context.h"
#include "fake_user_interface.h"
#include "link/device_connection.h"
#include "link/serial_link.h"
#include "protocol/frames.h"
#include "protocol/poll_cycle.h"
#include "sim_helpers.h"
#include "sim_server_process.h"

#include <QElapsedTimer>
#include <QProcess>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

// A client of the terminal, as a terminal program would be.
class Terminal {
public:
    explicit Terminal(const QByteArray& path) {
        fd_ = ::open(path.constData(), O_RDWR | O_NOCTTY | O_NONBLOCK);
        if (fd_ < 0)
            return;
        termios tio{};
        ::tcgetattr(fd_, &tio);
        ::cfmakeraw(&tio);
        ::cfsetispeed(&tio, B115200);
        ::cfsetospeed(&tio, B115200);
        tio.c_cflag |= CSTOPB;
        ::tcsetattr(fd_, TCSANOW, &tio);
    }
    ~Terminal() {
        if (fd_ >= 0)
            ::close(fd_);
    }
    bool is_open() const { return fd_ >= 0; }

    bool send(const QByteArray& bytes) {
        return ::write(fd_, bytes.constData(), static_cast<size_t>(bytes.size())) == bytes.size();
    }
    // The payloads of the frames that arrive until `count` were read or
    // `timeout_ms` passed.
    QList<QByteArray> frames(int count, int timeout_ms = 3000) {
        QByteArray received;
        QElapsedTimer t;
        t.start();
        while (t.elapsed() < timeout_ms && frame_payloads(received).size() < count) {
            pollfd p{fd_, POLLIN, 0};
            if (::poll(&p, 1, 50) <= 0)
                continue;
            char buffer[256];
            const ssize_t n = ::read(fd_, buffer, sizeof buffer);
            if (n > 0)
                received.append(buffer, n);
        }
        return frame_payloads(received);
    }

private:
    int fd_ = -1;
};

} // namespace

class TestSimServer : public QObject {
    Q_OBJECT
private slots:
    void answers_on_its_terminal() {
        SimServerProcess server;
        QVERIFY2(server.start(QStringLiteral(VELTRAKO2_SIM_PATH), {QStringLiteral("--verbose")}),
                 server.path.constData());
        {
            Terminal terminal(server.path);
            QVERIFY(terminal.is_open());
            QVERIFY(terminal.send(protocol::build_frame("?")));
            QCOMPARE(terminal.frames(1), (QList<QByteArray>{"?5121"}));
            QVERIFY(terminal.send(protocol::build_frame("I") + protocol::build_frame("K")));
            const QList<QByteArray> two = terminal.frames(2);
            QCOMPARE(two.size(), 2);
            QCOMPARE(two.at(0).size(), 47);
            QCOMPARE(two.at(1).left(1), QByteArray("K"));
        }
        // Closed and opened again, by a new client.
        for (int round = 0; round < 2; ++round) {
            Terminal again(server.path);
            QVERIFY(again.is_open());
            QVERIFY(again.send(protocol::build_frame("X")));
            QCOMPARE(again.frames(1), (QList<QByteArray>{bytes_of({'X', 1})}));
        }
        server.process.terminate();
        QVERIFY(server.process.waitForFinished(5000));
        QCOMPARE(server.process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(server.process.exitCode(), 0);
        // One line per request answered, on stderr.
        const QByteArray log = server.process.readAllStandardError();
        QCOMPARE(log.count('\n'), 5);
        QVERIFY(log.contains("3F -> 3F 35 31 32 31"));
    }

    void stops_cleanly_data() {
        QTest::addColumn<int>("signal");
        QTest::newRow("SIGTERM") << SIGTERM;
        QTest::newRow("SIGINT") << SIGINT;
    }
    void stops_cleanly() {
        QFETCH(int, signal);
        SimServerProcess server;
        QVERIFY(server.start(QStringLiteral(VELTRAKO2_SIM_PATH),
                             {QStringLiteral("--scenario"), QStringLiteral("family7x")}));
        Terminal terminal(server.path);
        QVERIFY(terminal.send(protocol::build_frame("?")));
        QCOMPARE(terminal.frames(1), (QList<QByteArray>{"?7E5"}));
        QCOMPARE(::kill(static_cast<pid_t>(server.process.processId()), signal), 0);
        QVERIFY(server.process.waitForFinished(5000));
        QCOMPARE(server.process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(server.process.exitCode(), 0);
    }

    // The program's serial link, opened with the program's own sequence of
    // steps, talks to the server like to a concentrator on a USB adapter.
    void round_trip_through_the_serial_link() {
        SimServerProcess server;
        QVERIFY(server.start(QStringLiteral(VELTRAKO2_SIM_PATH)));
        SystemClock clock;
        FakeUserInterface ui;
        AppContext ctx(clock, ui,
                       std::make_unique<link::SerialLink>(QString::fromLocal8Bit(server.path)));
        QList<QByteArray> payloads;
        ctx.payload_handler = [&](const QByteArray& p) { payloads << p; };
        QVERIFY2(link::open_device(ctx, false), qPrintable(ui.messages.join('|')));
        QCOMPARE(protocol::send_frame(ctx, "?"), link::FT_OK);
        QCOMPARE(protocol::send_frame(ctx, bytes_of({'e', 0x00, 0x80, 7})), link::FT_OK);
        QElapsedTimer t;
        t.start();
        while (payloads.size() < 2 && t.elapsed() < 3000) {
            clock.wait_ms(10);
            std::uint32_t waiting = 0;
            QCOMPARE(ctx.link.backend->get_queue_status(ctx.link.device_handle, waiting),
                     link::FT_OK);
            if (waiting == 0)
                continue;
            QByteArray buffer;
            std::uint32_t got = 0;
            QCOMPARE(ctx.link.backend->read(ctx.link.device_handle, buffer, waiting, got),
                     link::FT_OK);
            protocol::parse_frames(ctx, buffer.left(got));
        }
        QCOMPARE(payloads,
                 (QList<QByteArray>{"?5121", bytes_of({'e', 0, 0x80, 7, 4, 3, 2, 1, 0, 0, 5})}));
        QCOMPARE(link::close_device(ctx), link::FT_OK);
    }

    // Connecting as the program does: the 29 requests of the initial
    // sequence go out one per tick of Timer1, and the answers fill the
    // device record.
    void the_program_connects_through_the_serial_link() {
        SimServerProcess server;
        QVERIFY(server.start(QStringLiteral(VELTRAKO2_SIM_PATH)));
        SystemClock clock;
        FakeUserInterface ui;
        AppContext ctx(clock, ui,
                       std::make_unique<link::SerialLink>(QString::fromLocal8Bit(server.path)));
        ctx.timer1.on_tick = [&] { protocol::timer1_tick(ctx); };
        protocol::connect_routine(ctx);
        QTRY_VERIFY_WITH_TIMEOUT(ctx.protocol.queue_count == 0 && ctx.device.live_valid &&
                                     !ctx.device.text_58.isEmpty(),
                                 10000);
        ctx.timer1.set_enabled(false);
        QCOMPARE(ctx.device.SW, QStringLiteral("5121"));
        QCOMPARE(ctx.device.SN, QStringLiteral("VO2-0012345 "));
        QCOMPARE(ctx.device.BSTD, QStringLiteral("001234:50"));
        QCOMPARE(ctx.device.text_d0, QStringLiteral("AE61"));
        QCOMPARE(ctx.device.zeiten[1], 144);
        QVERIFY(ctx.device.O2 >= 90 && ctx.device.O2 <= 95);
        QVERIFY(ui.messages.isEmpty());
    }

    void refuses_a_bad_scenario() {
        QProcess process;
        process.start(QStringLiteral(VELTRAKO2_SIM_PATH),
                      {QStringLiteral("--scenario"), QStringLiteral("nonsense")});
        QVERIFY(process.waitForFinished(5000));
        QCOMPARE(process.exitCode(), 2);
        QVERIFY(process.readAllStandardOutput().isEmpty());
        QVERIFY(process.readAllStandardError().contains("no sample scenario \"nonsense\""));
    }
};

QTEST_GUILESS_MAIN(TestSimServer)
#include "test_sim_server.moc"
