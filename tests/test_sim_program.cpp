// The program and the simulated concentrator together over the in-process
// link: connecting as the program does fills the device record with what the
// scenario says, so the byte layouts on both sides agree.

#include "protocol_harness.h"
#include "sim_helpers.h"

using namespace veltrako;
using namespace veltrako::testing;

class TestSimProgram : public QObject {
    Q_OBJECT
private slots:
    void connecting_fills_the_device_record_data() {
        // scenario; the record: SW, operating hours, the two alarm words, the
        // flags alarm at 47, second valve layout and O22 source, and timing 9.
        // (Realistic wire timing connects in the firmware and sim link tests.)
        const Table<QString, QString> row;
        row("default", "default", "5121 001234:50 0 0 0 0 0 0");
        row("family7x", "family7x", "7E5 000412:10 129 4 1 1 1 0");
        // Family "214" sorts before "30": all 14 timings are taken.
        row("old_timings", "old_timings", "2141 023817:20 0 0 0 0 0 60");
    }
    void connecting_fills_the_device_record() {
        const auto [scenario, record] = Table<QString, QString>::fetch();
        QString error;
        const auto s = sim::load_scenario(scenario, &error);
        QVERIFY2(s, qPrintable(error));
        LinkedDevice l(*s);
        AppContext& ctx = l.ctx;
        protocol::connect_routine(ctx);
        QVERIFY(tick_until(
            l.clock, ctx, [&] { return ctx.protocol.queue_count == 0 && ctx.device.live_valid; },
            200));
        const auto& d = ctx.device;
        QStringList got{d.SW, d.BSTD};
        for (int n : {int(d.alarme), int(d.alarme2), int(d.alarm_at_47), int(d.valve_layout),
                      int(d.o22_source), int(d.zeiten[9])})
            got << QString::number(n);
        QCOMPARE(got.join(' '), record);
        QVERIFY(qAbs(d.spannung - 24.0) < 0.05);
        QVERIFY(d.SOLL_VOLUMENSTROM >= 2.0 && d.SOLL_VOLUMENSTROM <= 3.0);
        QVERIFY(qAbs(d.schall - 343.2) < 1.0);
        QVERIFY(l.ui.messages.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestSimProgram)
#include "test_sim_program.moc"
