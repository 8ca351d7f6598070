// Each fault of the simulated device does what its name says, whether set in
// the scenario or switched while the device runs.

#include "link/sim_link.h"
#include "manual_clock.h"
#include "sim_helpers.h"

#include <QTest>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

// Timing reads "r0", "r1", ... in one go; the answers carry the index.
QByteArray timing_reads(int n) {
    QByteArray out;
    for (int i = 0; i < n; ++i)
        out += protocol::build_frame(bytes_of({'r', '0' + i}));
    return out;
}

QList<int> answered_indexes(const QList<QByteArray>& payloads) {
    QList<int> out;
    for (const QByteArray& p : payloads)
        out << p.at(1) - '0';
    return out;
}

const QByteArray quiet = "NOISE=off\n";

} // namespace

class TestSimFaults : public QObject {
    Q_OBJECT
private slots:
    void silent_answers_nothing() {
        DirectDevice d(scenario_from(quiet + "SILENT=on\n"));
        QVERIFY(d.send_raw(timing_reads(5) + protocol::build_frame("?")).isEmpty());
        QCOMPARE(d.device.next_transmit_ms(), link::SimPeer::nothing_pending);
        // The device still takes the commands: a write while silent shows later.
        d.ask(bytes_of({'w', '2', 77}));
        d.device.set_faults({});
        QCOMPARE(d.answer("r2"), bytes_of({'r', '2', 77}));
    }

    void drop_and_corrupt_data() {
        QTest::addColumn<int>("drop_every");
        QTest::addColumn<int>("corrupt_every");
        QTest::addColumn<QList<int>>("good");
        QTest::addColumn<int>("bad");
        QTest::newRow("none") << 0 << 0 << QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8} << 0;
        QTest::newRow("drop every 3rd") << 3 << 0 << QList<int>{0, 1, 3, 4, 6, 7} << 0;
        QTest::newRow("drop every answer") << 1 << 0 << QList<int>{} << 0;
        QTest::newRow("corrupt every 2nd") << 0 << 2 << QList<int>{0, 2, 4, 6, 8} << 4;
        QTest::newRow("corrupt every 4th") << 0 << 4 << QList<int>{0, 1, 2, 4, 5, 6, 8} << 2;
        QTest::newRow("drop 3rd, corrupt 2nd") << 3 << 2 << QList<int>{0, 4, 6} << 3;
    }
    void drop_and_corrupt() {
        QFETCH(int, drop_every);
        QFETCH(int, corrupt_every);
        QFETCH(QList<int>, good);
        QFETCH(int, bad);
        DirectDevice d(scenario_from(quiet));
        sim::Faults f;
        f.drop_every = drop_every;
        f.corrupt_crc_every = corrupt_every;
        d.device.set_faults(f);
        int damaged = 0;
        const QList<QByteArray> payloads = frame_payloads(d.send_raw(timing_reads(9)), &damaged);
        QCOMPARE(answered_indexes(payloads), good);
        // A damaged frame is rejected by its CRC, which takes one try per "#" in it.
        QVERIFY(damaged >= bad);
        QVERIFY(bad > 0 || damaged == 0);
    }

    // The answers are counted from the moment the faults were set.
    void counting_starts_when_the_faults_are_set() {
        DirectDevice d(scenario_from(quiet + "DROP_EVERY=2\n"));
        QCOMPARE(answered_indexes(frame_payloads(d.send_raw(timing_reads(3)))), (QList<int>{0, 2}));
        d.device.set_faults(d.device.faults()); // the count begins anew
        QCOMPARE(answered_indexes(frame_payloads(d.send_raw(timing_reads(2)))), (QList<int>{0}));
    }

    void garbage_between_frames() {
        const QByteArray noise = bytes_of({0x00, 0x55, 0xAA, '#', 0xFF, '\r', '\n'});
        DirectDevice d(scenario_from(quiet + "GARBAGE_BETWEEN_FRAMES=on\n"));
        const QByteArray raw = d.send_raw(protocol::build_frame("U") + protocol::build_frame("O"));
        QCOMPARE(raw.toHex(' '), (noise + protocol::build_frame(bytes_of({'U', 4})) + noise +
                                  protocol::build_frame(bytes_of({'O', 10})))
                                     .toHex(' '));
        sim::Faults chosen;
        chosen.garbage_between_frames = "xyz";
        d.device.set_faults(chosen);
        QVERIFY(d.send_raw(protocol::build_frame("X")).startsWith("xyz#"));
    }

    // Each answer leaves in two parts, the second a few ms after the first,
    // so a reader in between finds half a frame.
    void split_answers() {
        sim::Concentrator device(scenario_from(quiet + "SPLIT_ANSWERS=on\n"));
        device.receive(protocol::build_frame("?"), 100);
        const qint64 first = device.next_transmit_ms();
        const QByteArray head = device.transmit(first);
        QVERIFY(!head.isEmpty());
        QVERIFY(frame_payloads(head).isEmpty());
        const qint64 second = device.next_transmit_ms();
        QCOMPARE(second - first, sim::Faults::split_gap_ms);
        QVERIFY(device.transmit(second - 1).isEmpty());
        QCOMPARE(frame_payloads(head + device.transmit(second)), (QList<QByteArray>{"?5121"}));

        // Over the link: the first read gets the head, a later one the tail.
        ManualClock clock;
        auto shared =
            std::make_shared<sim::Concentrator>(scenario_from(quiet + "SPLIT_ANSWERS=on\n"));
        link::SimLink link(clock, shared);
        link::FtHandle h = 0;
        link.open(0, h);
        link.set_baud_rate(h, 115200);
        link.set_data_characteristics(h, link::FT_BITS_8, link::FT_STOP_BITS_2,
                                      link::FT_PARITY_NONE);
        std::uint32_t n = 0;
        link.write(h, protocol::build_frame("?"), n);
        clock.advance_ms(sim::Concentrator::processing_ms);
        QByteArray one, two;
        link.read(h, one, 100, n);
        one.truncate(n);
        clock.advance_ms(sim::Faults::split_gap_ms);
        link.read(h, two, 100, n);
        two.truncate(n);
        QVERIFY(!one.isEmpty() && !two.isEmpty());
        QCOMPARE(frame_payloads(one + two), (QList<QByteArray>{"?5121"}));
    }

    void answer_delay() {
        DirectDevice d(scenario_from(quiet + "ANSWER_DELAY_MS=100\n"));
        QVERIFY(d.send_raw(protocol::build_frame("?"), 100).isEmpty());
        QCOMPARE(frame_payloads(d.send_raw({}, sim::Concentrator::processing_ms)),
                 (QList<QByteArray>{"?5121"}));
    }

    void unplug() {
        ManualClock clock;
        auto device = std::make_shared<sim::Concentrator>(scenario_from(quiet));
        link::SimLink link(clock, device);
        link::FtHandle h = 0;
        QCOMPARE(link.open(0, h), link::FT_OK);
        link.set_baud_rate(h, 115200);
        link.set_data_characteristics(h, link::FT_BITS_8, link::FT_STOP_BITS_2,
                                      link::FT_PARITY_NONE);
        std::uint32_t n = 0;
        link.write(h, protocol::build_frame("?"), n); // answer on its way when the cable goes

        sim::Faults pulled;
        pulled.unplug = true;
        device->set_faults(pulled);
        clock.advance_ms(20);
        QVERIFY(!device->plugged_in());
        std::uint32_t count = 9;
        QCOMPARE(link.list_device_count(count), link::FT_OK);
        QCOMPARE(count, 0u);
        QByteArray buffer;
        QVERIFY(link.read(h, buffer, 10, n) != link::FT_OK);
        QVERIFY(link.write(h, protocol::build_frame("?"), n) != link::FT_OK);
        device->receive(protocol::build_frame("?"),
                        clock.elapsed_ms()); // a pulled cable hears nothing
        QCOMPARE(device->next_transmit_ms(), link::SimPeer::nothing_pending);

        device->set_faults({});
        clock.advance_ms(20);
        QCOMPARE(link.get_queue_status(h, n), link::FT_OK);
        QCOMPARE(n, 0u); // what was on the wire is lost
        link.write(h, protocol::build_frame("?"), n);
        clock.advance_ms(20);
        link.read(h, buffer, 100, n);
        QCOMPARE(frame_payloads(buffer.left(n)), (QList<QByteArray>{"?5121"}));
    }

    void the_flaky_sample_shows_its_faults() {
        QString error;
        const auto s = sim::load_scenario(QStringLiteral("flaky"), &error);
        QVERIFY2(s, qPrintable(error));
        DirectDevice d(*s);
        int damaged = 0;
        QByteArray raw;
        for (int i = 0; i < 35; ++i)
            raw += d.send_raw(protocol::build_frame("?"), 100);
        const QList<QByteArray> payloads = frame_payloads(raw, &damaged);
        QVERIFY(payloads.size() > 20 && payloads.size() < 35);
        QVERIFY(damaged > 0);
        QVERIFY(!raw.startsWith('#'));
    }
};

QTEST_GUILESS_MAIN(TestSimFaults)
#include "test_sim_faults.moc"
