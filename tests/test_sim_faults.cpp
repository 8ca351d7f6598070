// Each fault of the simulated device does what its name says, whether set in
// the scenario or switched while the device runs; and the boot loader
// dialogue: entered by the framed "b", then raw bytes: the sync "I", data
// lines acknowledged with ">" (or refused with "E"), and "R" back to the
// application with the new firmware's identity.

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

// 0x42, N, address, N data bytes, and a checksum making the sum 0 mod 256.
QByteArray data_line(int address, const QByteArray& data, bool good = true) {
    QByteArray line = bytes_of({0x42, int(data.size()), address >> 8, address & 0xFF}) + data;
    int sum = 0;
    for (char c : line)
        sum += static_cast<unsigned char>(c);
    line += static_cast<char>((256 - sum % 256 + (good ? 0 : 1)) % 256);
    return line;
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
        QTest::addColumn<QByteArray>("faults");
        QTest::addColumn<QList<int>>("good");
        QTest::addColumn<int>("bad"); // at least; a damaged frame takes one try per "#" in it
        const auto row = [](const char* name, const char* faults, QList<int> good, int bad) {
            QTest::newRow(name) << QByteArray(faults) << good << bad;
        };
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
        QFETCH(QByteArray, faults);
        QFETCH(QList<int>, good);
        QFETCH(int, bad);
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

    // Each answer leaves in two parts, the second a few ms after the first,
    // so a reader in between finds half a frame.
    void split_answers() {
        sim::Concentrator device(scenario_from(quiet + "SPLIT_ANSWERS=on\n"));
        device.receive(protocol::build_frame("?"), 100);
        const double first = device.next_transmit_ms();
        const QByteArray head = device.transmit(first);
        QVERIFY(!head.isEmpty());
        QVERIFY(frame_payloads(head).isEmpty());
        const double second = device.next_transmit_ms();
        QCOMPARE(second - first, sim::Faults::split_gap_ms);
        QVERIFY(device.transmit(second - 1).isEmpty());
        QCOMPARE(frame_payloads(head + device.transmit(second)), (QList<QByteArray>{"?5121"}));
    }

    // The answer is due the device's latency plus the delay after the
    // command, and no earlier.
    void answer_delay() {
        sim::Concentrator device(scenario_from("LATENCY_MS=7\nANSWER_DELAY_MS=100"));
        device.receive(protocol::build_frame("?"), 500);
        const double due = device.next_transmit_ms();
        QCOMPARE(due, 500 + 7 + 100);
        QVERIFY(device.transmit(due - 1).isEmpty());
        QCOMPARE(frame_payloads(device.transmit(due)), (QList<QByteArray>{"?5121"}));
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

    void boot_loader_sync() {
        Loader d;
        QCOMPARE(d.send_raw("I"), QByteArray("ae60000 BL1.3\r\n"));
        // Frames mean nothing to the loader.
        QVERIFY(d.send_raw(protocol::build_frame("?")).isEmpty());
        QVERIFY(d.device.in_boot_loader());
        Loader lost("LOSE_SYNC=on\n");
        const QByteArray answer = lost.send_raw("I");
        QVERIFY(!answer.isEmpty() && !answer.startsWith("ae60000"));
        // Silent means the loader too, which still takes its lines.
        Loader silent("SILENT=on\n");
        QVERIFY(silent.send_raw("I" + data_line(0, "x")).isEmpty());
        QCOMPARE(silent.device.boot_loader().lines_this_session(), 1);
    }

    void boot_loader_data_lines_data() {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<QByteArray>("answer");
        QTest::addColumn<int>("programmed");
        const auto row = [](const char* name, const QByteArray& bytes, const char* answer,
                            int programmed) {
            QTest::newRow(name) << bytes << QByteArray(answer) << programmed;
        };
        row("good", data_line(0x1000, "\x01\x02\x03"), ">", 1);
        row("bad checksum", data_line(0x1000, "\x01\x02\x03", false), "E", 0);
        row("noise before", "\x00\x13" + data_line(0x2000, "z"), ">", 1);
        row("good, bad, good", data_line(1, "a") + data_line(2, "b", false) + data_line(2, "b"),
            ">E>", 2);
        row("incomplete", data_line(0x1000, "abc").left(5), "", 0);
    }
    void boot_loader_data_lines() {
        QFETCH(QByteArray, bytes);
        QFETCH(QByteArray, answer);
        QFETCH(int, programmed);
        Loader d;
        QCOMPARE(d.send_raw(bytes), answer);
        QCOMPARE(d.device.boot_loader().lines_this_session(), programmed);
    }

    // Line k is refused on its first attempt, its first two, or always; the
    // lines around it are taken.
    void boot_loader_nak_line_data() {
        QTest::addColumn<int>("attempts");
        QTest::addColumn<QByteArray>("answers");
        QTest::newRow("first attempt") << int(sim::NakAttempts::first) << QByteArray("E>");
        QTest::newRow("first two attempts")
            << int(sim::NakAttempts::first_two) << QByteArray("EE>");
        QTest::newRow("always") << int(sim::NakAttempts::always) << QByteArray("EEE");
    }
    void boot_loader_nak_line() {
        QFETCH(int, attempts);
        QFETCH(QByteArray, answers);
        Loader d;
        sim::Faults f;
        f.nak_line = 2;
        f.nak_attempts = sim::NakAttempts(attempts);
        d.device.set_faults(f);
        QCOMPARE(d.send_raw(data_line(0, "first")), QByteArray(">"));
        QByteArray got;
        for (int attempt = 0; attempt < 3 && !got.endsWith('>'); ++attempt)
            got += d.send_raw(data_line(5, "second"));
        QCOMPARE(got, answers);
        if (answers.endsWith('>'))
            QCOMPARE(d.send_raw(data_line(11, "third")), QByteArray(">"));
    }

    // The acknowledgement's form, set in the scenario; the line is programmed
    // whatever the form.
    void boot_loader_ack_form_data() {
        QTest::addColumn<QByteArray>("setting");
        QTest::addColumn<QByteArray>("answer");
        QTest::newRow("plain") << QByteArray("ACK_FORM=plain\n") << QByteArray(">");
        QTest::newRow("doubled") << QByteArray("ACK_FORM=doubled\n") << QByteArray(">>");
        QTest::newRow("trailing blank") << QByteArray("ACK_FORM=blank\n") << QByteArray("> ");
    }
    void boot_loader_ack_form() {
        QFETCH(QByteArray, setting);
        QFETCH(QByteArray, answer);
        Loader d(setting);
        QCOMPARE(d.send_raw(data_line(0x10, "ab")), answer);
        QCOMPARE(d.send_raw(data_line(0x10, "ab", false)), QByteArray("E"));
        QCOMPARE(d.device.boot_loader().lines_this_session(), 1);
    }

    void boot_loader_restarts_with_the_new_firmware() {
        Loader d;
        QCOMPARE(d.send_raw("I" + data_line(0, "abc") + data_line(3, "def")),
                 QByteArray("ae60000 BL1.3\r\n>>"));
        QVERIFY(d.send_raw("R").isEmpty());
        QVERIFY(!d.device.in_boot_loader());
        QCOMPARE(d.answer("?"), QByteArray("?5122"));
        QCOMPARE(d.device.boot_loader().programmed_lines(),
                 (QList<QByteArray>{data_line(0, "abc"), data_line(3, "def")}));
        QVERIFY(be_at(d.answer("I"), 2, 2) < 3); // the application starts again: ticks from 0

        // Without programming, the firmware stays; a command in the same
        // write as "R" reaches the application.
        Loader unchanged;
        QCOMPARE(frame_payloads(unchanged.send_raw("R" + protocol::build_frame("?"))),
                 (QList<QByteArray>{"?5121"}));
    }
};

QTEST_GUILESS_MAIN(TestSimFaults)
#include "test_sim_faults.moc"
