// The stand-alone simulator: started as a separate program, it names its
// pseudo-terminal on its first line, serves the program connecting through
// its own serial link, survives the client closing and reopening the
// terminal, and stops cleanly on SIGTERM and SIGINT.

#include "app_context.h"
#include "fake_user_interface.h"
#include "link/device_connection.h"
#include "link/serial_link.h"
#include "protocol/poll_cycle.h"
#include "protocol_harness.h"
#include "sim_server_process.h"

#include <QProcess>

#include <csignal>

using namespace veltrako;
using namespace veltrako::testing;

class TestSimServer : public QObject {
    Q_OBJECT
private slots:
    // Connecting as the program does: the requests of the initial sequence
    // go out one per tick of Timer1, and the answers fill the device record.
    void serves_the_program_and_stops_cleanly_data() {
        const Table<int, QString, QString, QString> row; // signal, scenario, SW, BSTD
        row("SIGTERM", SIGTERM, "default", "5121", "001234:50");
        row("SIGINT", SIGINT, "family7x", "7E5", "000412:10");
    }
    void serves_the_program_and_stops_cleanly() {
        const auto [signal, scenario, sw, bstd] = Table<int, QString, QString, QString>::fetch();
        SimServerProcess server;
        QVERIFY2(
            server.start(QStringLiteral(VELTRAKO2_SIM_PATH),
                         {QStringLiteral("--verbose"), QStringLiteral("--scenario"), scenario}),
            server.path.constData());
        for (int client = 0; client < 2; ++client) { // the second after the first closed
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
            QCOMPARE(ctx.device.SW, sw);
            QCOMPARE(ctx.device.BSTD, bstd);
            QVERIFY(ctx.device.O2 >= 90 && ctx.device.O2 <= 95);
            QVERIFY(ui.messages.isEmpty());
            QCOMPARE(link::close_device(ctx), link::FT_OK);
        }
        QCOMPARE(::kill(static_cast<pid_t>(server.process.processId()), signal), 0);
        QVERIFY(server.process.waitForFinished(5000));
        QCOMPARE(server.process.exitStatus(), QProcess::NormalExit);
        QCOMPARE(server.process.exitCode(), 0);
        // One line per request answered, on stderr.
        QVERIFY(server.process.readAllStandardError().contains("3F -> 3F"));
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
