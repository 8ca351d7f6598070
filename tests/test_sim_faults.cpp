// Each fault of the simulated device does what its name says, whether set in
// the scenario or switched while the device runs; and the boot loader
// dialogue: entered by the framed "b", then raw bytes: the sync "I", data
// lines acknowledged with ">" (or refused with "E"), and "R" back to the
// application with the new firmware's identity.

#include "protocol_harness.h"
#include "sim_helpers.h"

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

// A device whose boot loader runs.
struct Loader : DirectDevice {
    explicit Loader(const QByteArray& text = "SW=5121\nSW_AFTER_UPDATE=5122\n")
        : DirectDevice(text) {
        if (!send_raw(protocol::build_frame("b")).isEmpty() || !device.in_boot_loader())
            qFatal("the device did not enter its boot loader");
    }
};

} // namespace

class TestSimFaults : public QObject {
    Q_OBJECT
private slots:
    // Nine requests in one go, each answer carrying its request's index.
    void answers_under_faults_data() {
        // faults, indexes answered, damaged frames at least (one try per "#" in it)
        const Table<QByteArray, QList<int>, int> row;
        const QList<int> all{0, 1, 2, 3, 4, 5, 6, 7, 8};
        row("none", "", all, 0);
        row("silent", "SILENT=on", {}, 0);
        row("drop every 3rd", "DROP_EVERY=3", {0, 1, 3, 4, 6, 7}, 0);
        row("drop every answer", "DROP_EVERY=1", {}, 0);
        row("corrupt every 2nd", "CORRUPT_CRC_EVERY=2", {0, 2, 4, 6, 8}, 4);
        row("drop 3rd, corrupt 2nd", "DROP_EVERY=3\nCORRUPT_CRC_EVERY=2", {0, 4, 6}, 3);
        row("garbage between frames", "GARBAGE_BETWEEN_FRAMES=on", all, 9);
    }
    void answers_under_faults() {
        const auto [faults, good, bad] = Table<QByteArray, QList<int>, int>::fetch();
        DirectDevice d(quiet + faults + "\n");
        int damaged = 0;
        QCOMPARE(answered_indexes(frame_payloads(d.send_raw(timing_reads(9), 200), &damaged)),
                 good);
        QVERIFY(damaged >= bad);
        QVERIFY(bad > 0 || damaged == 0);
        // "Every Nth answer" counts from the moment the faults were set.
        d.device.set_faults(d.device.faults());
        QCOMPARE(answered_indexes(frame_payloads(d.send_raw(timing_reads(1), 200))).size(),
                 good.isEmpty() ? 0 : 1);
    }

    // Faults aimed at one record of the usage memory: record 3 asked for
    // twice in one go, and what comes back within `wait` ms.
    void record_faults_data() {
        // faults, ms waited, the record numbers answered (-1: an answer too
        // short to be a record)
        const Table<QByteArray, int, QList<int>> row;
        row("none", "", 50, {3, 3});
        row("late: nothing yet", "LATE_ANSWER_RECORD=3\nLATE_ANSWER_MS=500", 400, {});
        row("late: both, in order", "LATE_ANSWER_RECORD=3\nLATE_ANSWER_MS=500", 600, {3, 3});
        row("duplicated once", "DUPLICATE_ANSWER_RECORD=3", 50, {3, 3, 3});
        row("wrong index once", "WRONG_INDEX_RECORD=3", 50, {4, 3});
        row("refused always", "REFUSED_ANSWER_RECORD=3", 50, {-1, -1});
        row("refused once", "REFUSED_ANSWER_RECORD=3\nREFUSED_ANSWERS=1", 50, {-1, 3});
        row("withheld", "WITHHELD_RECORD=3", 500, {});
        row("another record is not hit", "WITHHELD_RECORD=4\nWRONG_INDEX_RECORD=2", 50, {3, 3});
    }
    void record_faults() {
        const auto [faults, wait, numbers] = Table<QByteArray, int, QList<int>>::fetch();
        DirectDevice d(quiet + "COMPLIANCE_GENERATE=9\nCOMPLIANCE_FROM=-9d\nCOMPLIANCE_TO=-1d\n" +
                       faults + "\n");
        const QByteArray ask = protocol::build_frame(bytes_of({'k', 0, 3}));
        QList<int> got;
        for (const QByteArray& p : frame_payloads(d.send_raw(ask + ask, wait)))
            got << (p.size() == 11 ? int(be_at(p, 2, 2)) : -1);
        QCOMPARE(got, numbers);
    }

    // The answer is due the device's latency plus the delay after the
    // command, and no earlier. A split answer leaves in two parts, the second
    // a few ms after the first, so a reader in between finds half a frame.
    void answer_timing() {
        sim::Concentrator device(scenario_from("LATENCY_MS=7\nANSWER_DELAY_MS=100"));
        device.receive(protocol::build_frame("?"), 500);
        const double due = device.next_transmit_ms();
        QCOMPARE(due, 500 + 7 + 100);
        QVERIFY(device.transmit(due - 1).isEmpty());
        QCOMPARE(frame_payloads(device.transmit(due)), (QList<QByteArray>{"?5121"}));

        sim::Concentrator split(scenario_from(quiet + "SPLIT_ANSWERS=on\n"));
        split.receive(protocol::build_frame("?"), 100);
        const double first = split.next_transmit_ms();
        const QByteArray head = split.transmit(first);
        QVERIFY(!head.isEmpty() && frame_payloads(head).isEmpty());
        const double second = split.next_transmit_ms();
        QCOMPARE(second - first, sim::Faults::split_gap_ms);
        QVERIFY(split.transmit(second - 1).isEmpty());
        QCOMPARE(frame_payloads(head + split.transmit(second)), (QList<QByteArray>{"?5121"}));
    }

    // A pulled cable: the link counts no device, reads and writes fail, and
    // what was on its way is lost; plugged in again, the device answers.
    void unplug() {
        LinkedDevice l(scenario_from(quiet));
        protocol::send_frame(l.ctx, "?");
        sim::Faults pulled;
        pulled.unplug = true;
        l.device->set_faults(pulled);
        l.clock.advance_ms(20);
        link::DeviceLink& backend = *l.ctx.link.backend;
        std::uint32_t n = 9;
        QCOMPARE(backend.list_device_count(n), link::FT_OK);
        QCOMPARE(n, 0u);
        QVERIFY(backend.get_queue_status(l.ctx.link.device_handle, n) != link::FT_OK);
        QVERIFY(protocol::send_frame(l.ctx, "?") != link::FT_OK);
        l.device->receive(protocol::build_frame("?"), l.clock.elapsed_ms()); // nobody hears it

        l.device->set_faults({});
        l.clock.advance_ms(20);
        QVERIFY(link::read_raw(l.ctx).isEmpty());
        protocol::send_frame(l.ctx, "?");
        l.clock.advance_ms(20);
        QCOMPARE(frame_payloads(link::read_raw(l.ctx)), (QList<QByteArray>{"?5121"}));
    }

    void boot_loader_data_lines_data() {
        const Table<QByteArray, QByteArray, int> row; // bytes, answer, lines programmed
        row("good", loader_line(0x1000, "\x01\x02\x03"), ">", 1);
        row("bad checksum", loader_line(0x1000, "\x01\x02\x03", false), "E", 0);
        row("noise before", "\x00\x13" + loader_line(0x2000, "z"), ">", 1);
        row("good, bad, good",
            loader_line(1, "a") + loader_line(2, "b", false) + loader_line(2, "b"), ">E>", 2);
        row("incomplete", loader_line(0x1000, "abc").left(5), "", 0);
    }
    void boot_loader_data_lines() {
        const auto [bytes, answer, programmed] = Table<QByteArray, QByteArray, int>::fetch();
        Loader d;
        QCOMPARE(d.send_raw(bytes), answer);
        QCOMPARE(d.device.boot_loader().lines_this_session(), programmed);
    }

    // Sync, lines, and "R" back to the application with the new firmware.
    // The lines programmed are checked end to end by the firmware update test.
    void boot_loader_sync_and_restart() {
        Loader d;
        // Frames mean nothing to the loader.
        QVERIFY(d.send_raw(protocol::build_frame("?")).isEmpty());
        QCOMPARE(d.send_raw("I" + loader_line(0, "abc") + loader_line(3, "def")),
                 QByteArray("ae60000 BL1.3\r\n>>"));
        QVERIFY(d.send_raw("R").isEmpty());
        QVERIFY(!d.device.in_boot_loader());
        QCOMPARE(d.answer("?"), QByteArray("?5122"));
        QVERIFY(be_at(d.answer("I"), 2, 2) < 3); // the application starts again: ticks from 0

        // Without programming, the firmware stays; a command in the same
        // write as "R" reaches the application.
        Loader unchanged;
        QCOMPARE(frame_payloads(unchanged.send_raw("R" + protocol::build_frame("?"))),
                 (QList<QByteArray>{"?5121"}));

        Loader lost("LOSE_SYNC=on\n");
        const QByteArray answer = lost.send_raw("I");
        QVERIFY(!answer.isEmpty() && !answer.startsWith("ae60000"));
        // Silent means the loader too, which still takes its lines.
        Loader silent("SILENT=on\n");
        QVERIFY(silent.send_raw("I" + loader_line(0, "x")).isEmpty());
        QCOMPARE(silent.device.boot_loader().lines_this_session(), 1);
    }
};

QTEST_GUILESS_MAIN(TestSimFaults)
#include "test_sim_faults.moc"
