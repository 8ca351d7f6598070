// The live status answer ("I"): every position the program reads, the float
// encoding, the tick counter's wrap, the alarm byte's place by device family,
// and the valve cycle the timings drive.

#include "sim_helpers.h"

#include <QTest>

#include <cmath>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

// -1 for a position the answer does not have.
int byte_at(const QByteArray& p, int position) {
    return position <= p.size() ? static_cast<unsigned char>(p.at(position - 1)) : -1;
}
int be16(const QByteArray& p, int position) {
    return byte_at(p, position) * 256 + byte_at(p, position + 1);
}

// IEEE-754 single, least significant byte first, taken apart by hand.
double single_at(const QByteArray& p, int position) {
    const int b1 = byte_at(p, position), b2 = byte_at(p, position + 1);
    const int b3 = byte_at(p, position + 2), b4 = byte_at(p, position + 3);
    const double sign = (b4 & 0x80) ? -1.0 : 1.0;
    const int exponent = ((b4 & 0x7F) << 1) | (b3 >> 7);
    const double mantissa = ((b3 & 0x7F) << 16) | (b2 << 8) | b1;
    return sign * (1.0 + mantissa / 8388608.0) * std::pow(2.0, exponent - 127);
}

QByteArray live_at(const QByteArray& scenario_text, qint64 ms) {
    sim::Concentrator device(scenario_from(scenario_text));
    device.receive(protocol::build_frame("I"), ms);
    const QList<QByteArray> p = frame_payloads(device.transmit(ms + 20));
    return p.value(0);
}

const QByteArray quiet = "NOISE=off\nTIMINGS=100 144 144 27 134 27 134 0 10 30 12 40 0 0\n";

} // namespace

class TestSimLiveStatus : public QObject {
    Q_OBJECT
private slots:
    void fields_at_their_positions() {
        const QByteArray p = live_at(quiet + "O2=91\nFLOW_SETPOINT=2.5\nCOMPRESSOR_TEMP=47\n"
                                             "SUPPLY_VOLTAGE=24\nALARMS=0x81\nALARMS2=0x04\n"
                                             "ALARM_LEVEL=2\nGAS_TEMP=30.25\n",
                                     1000);
        QCOMPARE(p.size(), 47);
        QCOMPARE(p.at(0), 'I');
        QCOMPARE(be16(p, 2), 25); // one second after power-on
        QCOMPARE(byte_at(p, 8), 91);
        QCOMPARE(be16(p, 10) * 0.0125, 2.5);
        QCOMPARE(single_at(p, 14), 30.25);
        QCOMPARE(be16(p, 18), 47);
        QCOMPARE(be16(p, 20), 820); // 24 V = 820 * 24 / 820
        QCOMPARE(byte_at(p, 23), 2);
        QCOMPARE(byte_at(p, 24), 0x81);
        QCOMPARE(byte_at(p, 35), 0x04);
        QCOMPARE(be16(p, 36) * 0.0125, 2.5);
        QCOMPARE(byte_at(p, 47), 0); // this family keeps its alarms at 24
    }

    void speed_of_sound_as_a_single_data() {
        QTest::addColumn<double>("value");
        QTest::newRow("343.2") << 343.2;
        QTest::newRow("negative") << -12.5;
        QTest::newRow("small") << 0.15625;
        QTest::newRow("large") << 1.5e5;
    }
    void speed_of_sound_as_a_single() {
        QFETCH(double, value);
        const QByteArray p =
            live_at(quiet + "SPEED_OF_SOUND=" + QByteArray::number(value, 'g', 10) + "\n", 500);
        QVERIFY2(std::abs(single_at(p, 4) - value) <= std::abs(value) * 1e-7,
                 qPrintable(QString::number(single_at(p, 4), 'g', 10)));
    }

    void tick_counter_data() {
        QTest::addColumn<int>("at_power_on");
        QTest::addColumn<qint64>("ms");
        QTest::addColumn<int>("ticks");
        QTest::newRow("start") << 0 << qint64(0) << 0;
        QTest::newRow("25 a second") << 0 << qint64(4000) << 100;
        QTest::newRow("just before the wrap") << 65530 << qint64(200) << 65535;
        QTest::newRow("wrapped") << 65530 << qint64(400) << 4;
        QTest::newRow("long after") << 0 << qint64(2700000) << (67500 % 65536);
    }
    void tick_counter() {
        QFETCH(int, at_power_on);
        QFETCH(qint64, ms);
        QFETCH(int, ticks);
        const QByteArray p =
            live_at(quiet + "TICKS_AT_POWER_ON=" + QByteArray::number(at_power_on) + "\n", ms);
        QCOMPARE(be16(p, 2), ticks);
    }

    // Families from "7C" to "7F", "8C" to "8F", "A8", "A9" and "AA" carry their
    // alarm bits at 47 and nothing at 24, so a reader of the wrong place sees 0.
    void alarm_byte_by_family_data() {
        QTest::addColumn<QByteArray>("sw");
        QTest::addColumn<int>("position");
        QTest::newRow("5121") << QByteArray("5121") << 24;
        QTest::newRow("7012 (70 maps to 50)") << QByteArray("7012") << 24;
        QTest::newRow("7B12") << QByteArray("7B12") << 24;
        QTest::newRow("7C12") << QByteArray("7C12") << 47;
        QTest::newRow("7E12") << QByteArray("7E12") << 47;
        QTest::newRow("7E5") << QByteArray("7E5") << 47;
        QTest::newRow("8D12") << QByteArray("8D12") << 47;
        QTest::newRow("A81") << QByteArray("A81") << 47;
        QTest::newRow("AA1") << QByteArray("AA1") << 47;
        QTest::newRow("AB1") << QByteArray("AB1") << 24;
    }
    void alarm_byte_by_family() {
        QFETCH(QByteArray, sw);
        QFETCH(int, position);
        const QByteArray p = live_at(quiet + "SW=" + sw + "\nALARMS=0x22\n", 500);
        QCOMPARE(byte_at(p, position), 0x22);
        QCOMPARE(byte_at(p, position == 24 ? 47 : 24), 0);
    }

    // Lead-in 100 ticks, then phase 1 (144 ticks) and phase 2 (144 ticks).
    void valves_follow_the_timings_data() {
        QTest::addColumn<QByteArray>("sw");
        QTest::addColumn<int>("tick");
        QTest::addColumn<int>("phase");
        QTest::addColumn<int>("valves");
        // first layout: 1 = inlet 2 instead of inlet 1, 2 = outlet 1, 4 = outlet 2
        QTest::newRow("lead-in") << QByteArray("5121") << 50 << 0 << 0;
        QTest::newRow("phase 1, outlet closed") << QByteArray("5121") << 110 << 1 << 0;
        QTest::newRow("phase 1, outlet open") << QByteArray("5121") << 130 << 1 << 2;
        QTest::newRow("phase 1, outlet closed again") << QByteArray("5121") << 240 << 1 << 0;
        QTest::newRow("phase 2, outlet open") << QByteArray("5121") << 280 << 2 << (1 | 4);
        QTest::newRow("phase 2, outlet closed") << QByteArray("5121") << 380 << 2 << 1;
        QTest::newRow("next cycle") << QByteArray("5121") << 388 + 30 << 1 << 2;
        // second layout: 2 outlet 2, 4 inlet 1, 8 inlet 2, 16 outlet 1, 32 rinse
        QTest::newRow("7E5 phase 1, outlet and rinse")
            << QByteArray("7E5") << 128 << 1 << (4 | 16 | 32);
        QTest::newRow("7E5 phase 1, outlet") << QByteArray("7E5") << 135 << 1 << (4 | 16);
        QTest::newRow("7E5 phase 2") << QByteArray("7E5") << 250 << 2 << 8;
        QTest::newRow("7E5 phase 2, outlet and rinse")
            << QByteArray("7E5") << 280 << 2 << (8 | 2 | 32);
    }
    void valves_follow_the_timings() {
        QFETCH(QByteArray, sw);
        QFETCH(int, tick);
        QFETCH(int, phase);
        QFETCH(int, valves);
        const QByteArray p = live_at(quiet + "SW=" + sw + "\n", tick * 40);
        QCOMPARE(byte_at(p, 25), phase);
        QCOMPARE(byte_at(p, 22), valves);
    }

    void a_changed_timing_changes_the_cycle() {
        DirectDevice d(scenario_from(quiet));
        d.now = 130 * 40;
        QCOMPARE(byte_at(d.answer("I"), 25), 1);
        d.ask(bytes_of({'w', '1', 20})); // phase 1 now lasts 20 ticks: 32 ticks in is phase 2
        QCOMPARE(byte_at(d.answer("I"), 25), 2);
    }

    // The pressure builds up through each phase and falls when the inlets switch.
    void pressure_cycles_with_the_phase() {
        const auto pressure = [](int tick) { return be16(live_at(quiet, tick * 40), 12); };
        QVERIFY(pressure(110) < pressure(200));
        QVERIFY(pressure(200) < pressure(240));
        QVERIFY(pressure(246) < pressure(240));
        QVERIFY(pressure(246) >= 800 && pressure(240) <= 2200);
    }

    // Values the program reads as signed 16-bit stay below 32768 whatever the
    // scatter, unless the scenario overrides them.
    void sixteen_bit_values_stay_below_32768() {
        sim::Concentrator device(scenario_from("FLOW_SETPOINT=400\nSUPPLY_VOLTAGE=959\nSEED=7\n"));
        for (qint64 ms = 0; ms < 60000; ms += 997) {
            device.receive(protocol::build_frame("I"), ms);
            const QByteArray p = frame_payloads(device.transmit(ms + 20)).value(0);
            QCOMPARE(p.size(), 47);
            for (int position : {10, 12, 18, 20, 36})
                QVERIFY2(byte_at(p, position) < 0x80, qPrintable(QString::number(position)));
        }
        const QByteArray forced =
            live_at(quiet + "LIVE_OVERRIDE=20: 90 00\nLIVE_OVERRIDE=36:FF\n", 500);
        QCOMPARE(be16(forced, 20), 0x9000);
        QCOMPARE(byte_at(forced, 36), 0xFF);
    }

    // The scatter depends on the seed and the moment only, never on how often
    // the device was asked.
    void noise_is_repeatable() {
        const QByteArray noisy = "NOISE=on\nSEED=42\n";
        DirectDevice a(scenario_from(noisy)), b(scenario_from(noisy));
        a.now = b.now = 7000;
        for (int i = 0; i < 5; ++i)
            a.ask("I", 0); // asked more often, at the same moment
        QCOMPARE(a.answer("I"), b.answer("I"));

        int different = 0, o2_off_centre = 0;
        for (qint64 ms = 0; ms < 20000; ms += 400) {
            const QByteArray x = live_at(noisy, ms), y = live_at("NOISE=on\nSEED=43\n", ms);
            different += x != y;
            o2_off_centre += byte_at(x, 8) != 93;
            QVERIFY(std::abs(byte_at(x, 8) - 93) <= 2);
        }
        QVERIFY(different > 40);
        QVERIFY(o2_off_centre > 0);
    }
};

QTEST_GUILESS_MAIN(TestSimLiveStatus)
#include "test_sim_live_status.moc"
