// The program and the simulated concentrator together over the in-process
// link: connecting as the program does fills the device record with what the
// scenario says, so the byte layouts on both sides agree.

#include "app_context.h"
#include "fake_user_interface.h"
#include "link/link_factory.h"
#include "link/sim_link.h"
#include "manual_clock.h"
#include "protocol/poll_cycle.h"
#include "sim/concentrator.h"

#include <QTest>

using namespace veltrako;
using namespace veltrako::testing;

class TestSimProgram : public QObject {
    Q_OBJECT
private slots:
    void connecting_fills_the_device_record_data() {
        QTest::addColumn<QString>("scenario");
        QTest::addColumn<bool>("realistic");
        QTest::addColumn<QString>("sw");
        QTest::addColumn<QString>("bstd");
        QTest::addColumn<int>("alarme");
        QTest::addColumn<int>("alarme2");
        QTest::addColumn<bool>("family_flags"); // alarm at 47, second valve layout, O22 source
        QTest::addColumn<int>("zeiten9");
        for (bool realistic : {false, true}) {
            const char* timing = realistic ? "realistic" : "instant";
            QTest::addRow("default %s", timing) << "default" << realistic << "5121"
                                                << "001234:50" << 0 << 0 << false << 0;
            QTest::addRow("family7x %s", timing) << "family7x" << realistic << "7E5"
                                                 << "000412:10" << 0x81 << 0x04 << true << 0;
            // Family "214" sorts before "30": all 14 timings are taken.
            QTest::addRow("old_timings %s", timing) << "old_timings" << realistic << "2141"
                                                    << "023817:20" << 0 << 0 << false << 60;
        }
    }
    void connecting_fills_the_device_record() {
        QFETCH(QString, scenario);
        QFETCH(bool, realistic);
        QFETCH(QString, sw);
        QFETCH(QString, bstd);
        QFETCH(int, alarme);
        QFETCH(int, alarme2);
        QFETCH(bool, family_flags);
        QFETCH(int, zeiten9);

        ManualClock clock;
        FakeUserInterface ui;
        QString error;
        auto device = sim::make_concentrator(scenario, &error);
        QVERIFY2(device, qPrintable(error));
        AppContext ctx(clock, ui,
                       std::make_unique<link::SimLink>(clock, device,
                                                       realistic
                                                           ? link::SimLink::WireTiming::realistic
                                                           : link::SimLink::WireTiming::instant));
        protocol::connect_routine(ctx);
        for (int tick = 0; tick < 200 && (ctx.protocol.queue_count > 0 || !ctx.device.live_valid);
             ++tick) {
            clock.advance_ms(50);
            protocol::timer1_tick(ctx);
        }
        QCOMPARE(ctx.protocol.queue_count, 0);
        QVERIFY(ctx.device.live_valid);
        QCOMPARE(ctx.device.SW, sw);
        QCOMPARE(ctx.device.BSTD, bstd);
        QCOMPARE(ctx.device.alarme, alarme);
        QCOMPARE(ctx.device.alarme2, alarme2);
        QCOMPARE(ctx.device.alarm_at_47, family_flags);
        QCOMPARE(ctx.device.valve_layout, family_flags);
        QCOMPARE(ctx.device.o22_source, family_flags);
        QCOMPARE(ctx.device.zeiten[9], zeiten9);
        QVERIFY(qAbs(ctx.device.spannung - 24.0) < 0.05);
        QVERIFY(ctx.device.SOLL_VOLUMENSTROM >= 2.0 && ctx.device.SOLL_VOLUMENSTROM <= 3.0);
        QVERIFY(qAbs(ctx.device.schall - 343.2) < 1.0);
        QVERIFY(ui.messages.isEmpty());
    }

    void the_link_factory_builds_the_simulator() {
        ManualClock clock;
        QString error;
        const auto made =
            link::make_link({link::LinkOption::Kind::sim, {}, QStringLiteral("status_full")}, clock,
                            sim::make_concentrator, &error);
        QVERIFY2(made, qPrintable(error));
        QVERIFY(!link::make_link({link::LinkOption::Kind::sim, {}, QStringLiteral("nonsense")},
                                 clock, sim::make_concentrator, &error));
        QVERIFY(error.contains(QStringLiteral("nonsense")));
    }
};

QTEST_GUILESS_MAIN(TestSimProgram)
#include "test_sim_program.moc"
