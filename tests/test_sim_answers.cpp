// The simulated concentrator's answers at the positions the program reads:
// every command, writes shown in the read-back, any chunking, the in-process
// link; the live status ("I") with its float encoding, tick counter, alarm
// byte by family and valve cycle; the memory as "e" and "E" see it (the
// operating-hours blocks with their CRC, the reset "C", the status records in
// both layouts with their end marker) and the usage memory as "K", "k" and
// "Z" see it (the count, the period in progress as the last record, the
// ring's wrap, erasing).

#include "protocol/crc.h"
#include "sim_helpers.h"

#include <QTest>

#include <cmath>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

QByteArray e_command(int address, int count) {
    return bytes_of({'e', address >> 8, address & 0xFF, count});
}

// IEEE-754 single, least significant byte first, taken apart by hand.
double single_at(const QByteArray& p, int position) {
    const int b1 = byte_at(p, position), b2 = byte_at(p, position + 1);
    const int b3 = byte_at(p, position + 2), b4 = byte_at(p, position + 3);
    const double mantissa = ((b3 & 0x7F) << 16) | (b2 << 8) | b1;
    return ((b4 & 0x80) ? -1.0 : 1.0) * (1.0 + mantissa / 8388608.0) *
           std::pow(2.0, (((b4 & 0x7F) << 1) | (b3 >> 7)) - 127);
}

const QByteArray quiet = "NOISE=off\nTIMINGS=100 144 144 27 134 27 134 0 10 30 12 40 0 0\n";

// The live status asked for `ms` after power-on.
QByteArray live_at(const QByteArray& scenario_text, qint64 ms) {
    DirectDevice d(scenario_text);
    d.now = ms;
    return d.answer("I");
}

// The data of an "e" answer.
QByteArray read(DirectDevice& d, int address, int count) {
    return d.answer(e_command(address, count)).mid(4);
}

// Hours block: six digits least significant first, tens of minutes, CRC low then high.
QByteArray hours_block(std::initializer_list<int> seven, bool crc_swapped = false) {
    QByteArray b = bytes_of(seven);
    const std::uint16_t crc = protocol::calc_crc(b);
    b += static_cast<char>(crc_swapped ? crc >> 8 : crc & 0xFF);
    b += static_cast<char>(crc_swapped ? crc & 0xFF : crc >> 8);
    return b;
}

const QByteArray hours_text = "NOISE=off\nHOURS=1234:50\n";

struct Record {
    quint32 start, end;
    bool operator==(const Record&) const = default;
};
constexpr Record erased{0xFFFFFFFF, 0xFFFFFFFF};

int count(DirectDevice& d) {
    return int(be_at(d.answer("K"), 2, 2));
}

Record record(DirectDevice& d, int n) {
    const QByteArray p = d.answer(bytes_of({'k', n >> 8, n & 0xFF}));
    if (p.size() != 11 || p.left(3) != bytes_of({'k', n >> 8, n & 0xFF}))
        qFatal("bad k answer %s", p.toHex(' ').constData());
    return {be_at(p, 4, 4), be_at(p, 8, 4)};
}

} // namespace

class TestSimAnswers : public QObject {
    Q_OBJECT
private slots:
    // The requests go to a device as the default scenario describes it,
    // switched on at 02.03.2026 09:30 by the PC's clock, one second after power-on; a write is
    // acknowledged with its letter alone and changes what the matching read answers.
    void commands_data() {
        QTest::addColumn<QByteArrayList>("requests");
        QTest::addColumn<QByteArrayList>("answers");
        const auto row = [](const char* name, QByteArrayList requests, QByteArrayList answers) {
            QTest::newRow(name) << requests << answers;
        };
        const QByteArray e_serial = e_command(0xF0, 12), e_board = e_command(0xE0, 12);
        row("?", {"?"}, {"?5121"});
        row("!", {"!"}, {"!Veltrak O2"});
        row("T", {"T"}, {"T" + be32(device_seconds({2026, 3, 2}, {9, 30, 1}))});
        row("S", {"S"}, {bytes_of({'S', 0x01, 0xF4})});
        row("e serial", {e_serial}, {e_serial + "VO2-0012345 "});
        row("e board", {e_board}, {e_board + "LP1240010077"});
        row("e hardware id", {e_command(0xD0, 4)}, {e_command(0xD0, 4) + "AE61"});
        row("e text 40", {e_command(0x40, 22)}, {e_command(0x40, 22) + "Veltrak O2 Geraet     "});
        row("e text 58", {e_command(0x58, 8)}, {e_command(0x58, 8) + "V2.1    "});
        row("e past the end", {e_command(0x3FE, 4)}, {e_command(0x3FE, 4) + "\xFF\xFF\xFF\xFF"});
        row("r 0", {"r0"}, {bytes_of({'r', '0', 100})});
        row("U", {"U"}, {bytes_of({'U', 4})});
        row("O", {"O"}, {bytes_of({'O', 10})});
        row("X", {"X"}, {bytes_of({'X', 1})});
        row("t", {bytes_of({'t', 0x12, 0x34, 0x56, 0x78}), "T"},
            {"t", bytes_of({'T', 0x12, 0x34, 0x56, 0x78})});
        row("s", {bytes_of({'s', 0x01, 0x02}), "S"}, {"s", bytes_of({'S', 0x01, 0x02})});
        row("E in the board text", {bytes_of({'E', 0x00, 0xE4, 1, '5'}), e_board},
            {"E", e_board + "LP1250010077"});
        row("w 13", {bytes_of({'w', '=', 200}), "r="}, {"w", bytes_of({'r', '=', 200})});
        row("u", {bytes_of({'u', 7}), "U"}, {"u", bytes_of({'U', 7})});
        row("o", {bytes_of({'o', 9}), "O"}, {"o", bytes_of({'O', 9})});
        row("x", {bytes_of({'x', 0}), "X"}, {"x", bytes_of({'X', 0})});
        // acknowledged, not taken
        row("s 999", {bytes_of({'s', 0x03, 0xE7}), "S"}, {"s", bytes_of({'S', 0x03, 0xE7})});
        row("s 1000", {bytes_of({'s', 0x03, 0xE8}), "S"}, {"s", bytes_of({'S', 0x01, 0xF4})});
        row("w index 14", {bytes_of({'w', '>', 7}), "r0", "r="},
            {"w", bytes_of({'r', '0', 100}), bytes_of({'r', '=', 0})});
        // not answered
        row("unknown letter", {"Q"}, {""});
        row("? with a tail", {"?x"}, {""});
        row("r index 14", {"r>"}, {""});
        row("e too long for a frame", {e_command(0x100, 97)}, {""});
        row("E count mismatch", {bytes_of({'E', 0x00, 0xF0, 2, 'X'})}, {""});
    }
    void commands() {
        QFETCH(QByteArrayList, requests);
        QFETCH(QByteArrayList, answers);
        DirectDevice d(sim::Scenario{}, QDateTime(QDate(2026, 3, 2), QTime(9, 30), Qt::UTC));
        for (qsizetype i = 0; i < requests.size(); ++i) {
            const QList<QByteArray> got = d.ask(requests.at(i));
            QCOMPARE(got.value(0).toHex(' '), answers.at(i).toHex(' '));
            QCOMPARE(got.size(), answers.at(i).isEmpty() ? 0 : 1);
        }
    }

    // Several commands in one write, one command in single bytes, and noise
    // or a damaged frame in front: each whole command is answered, in order.
    void any_chunking_of_the_commands() {
        DirectDevice d(sim::Scenario{});
        const QByteArray three =
            protocol::build_frame("?") + protocol::build_frame("U") + protocol::build_frame("X");
        QCOMPARE(frame_payloads(d.send_raw(three)),
                 (QList<QByteArray>{"?5121", bytes_of({'U', 4}), bytes_of({'X', 1})}));
        QByteArray out;
        for (char c : protocol::build_frame("O"))
            out += d.send_raw(QByteArray(1, c), 1);
        QCOMPARE(frame_payloads(out + d.send_raw({}, 10)),
                 (QList<QByteArray>{bytes_of({'O', 10})}));
        QByteArray damaged = protocol::build_frame("S");
        damaged.back() = static_cast<char>(damaged.back() ^ 1);
        QCOMPARE(frame_payloads(d.send_raw("\x00zz" + damaged + protocol::build_frame("?"))),
                 (QList<QByteArray>{"?5121"}));
    }

    // Through the link, the 51 bytes of a live status frame are there at once,
    // or with wire timing arrive over about 4.4 ms at 115200 baud.
    void the_link_carries_the_answers() {
        for (const bool realistic : {false, true}) {
            LinkedDevice l(scenario_from(quiet), realistic ? link::SimLink::WireTiming::realistic
                                                           : link::SimLink::WireTiming::instant);
            QCOMPARE(protocol::send_frame(l.ctx, "I"), link::FT_OK);
            l.clock.advance_ms(5);
            const QByteArray got = link::read_raw(l.ctx);
            QVERIFY2(realistic ? !got.isEmpty() && got.size() < 51 : got.size() == 51,
                     qPrintable(QString::number(got.size())));
            l.clock.advance_ms(10);
            const QList<QByteArray> payloads = frame_payloads(got + link::read_raw(l.ctx));
            QCOMPARE(payloads.size(), 1);
            QCOMPARE(payloads.first().size(), 47);
            QCOMPARE(payloads.first().at(0), 'I');
        }
    }

    void live_fields_at_their_positions() {
        const QByteArray p =
            live_at(quiet + "O2=91\nFLOW_SETPOINT=2.5\nCOMPRESSOR_TEMP=47\n"
                            "SUPPLY_VOLTAGE=24\nALARMS=0x81\nALARMS2=0x04\n"
                            "ALARM_LEVEL=2\nGAS_TEMP=30.25\nSPEED_OF_SOUND=-12.5\n",
                    1000);
        QCOMPARE(p.size(), 47);
        QCOMPARE(single_at(p, 4), -12.5);
        QCOMPARE(byte_at(p, 8), 91);
        QCOMPARE(be_at(p, 10, 2) * 0.0125, 2.5);
        QCOMPARE(single_at(p, 14), 30.25);
        QCOMPARE(be_at(p, 18, 2), 47u);
        QCOMPARE(be_at(p, 20, 2), 820u); // 24 V = 820 * 24 / 820
        QCOMPARE(byte_at(p, 23), 2);
        QCOMPARE(byte_at(p, 24), 0x81);
        QCOMPARE(byte_at(p, 35), 0x04);
        QCOMPARE(be_at(p, 36, 2) * 0.0125, 2.5);
    }

    // Bytes of the live status at `ms` after power-on, as position/value pairs.
    void live_status_bytes_data() {
        QTest::addColumn<QByteArray>("scenario");
        QTest::addColumn<qint64>("ms");
        QTest::addColumn<QList<int>>("bytes");
        const auto row = [](const char* name, const QByteArray& s, qint64 ms, QList<int> bytes) {
            QTest::newRow(name) << (quiet + s) << ms << bytes;
        };
        // tick counter at 2..3, 25 ticks a second, wrapping at 65536
        row("ticks 25 a second", "", 4000, {2, 0, 3, 100});
        row("ticks before the wrap", "TICKS_AT_POWER_ON=65530\n", 200, {2, 0xFF, 3, 0xFF});
        row("ticks wrapped", "TICKS_AT_POWER_ON=65530\n", 400, {2, 0, 3, 4});
        // Families "7C" to "7F", "8C" to "8F", "A8" to "AA" carry their alarm
        // bits at 47 and nothing at 24, so a reader of the wrong place sees 0.
        row("alarm 7B12", "SW=7B12\nALARMS=0x22\n", 500, {24, 0x22, 47, 0});
        row("alarm 7C12", "SW=7C12\nALARMS=0x22\n", 500, {24, 0, 47, 0x22});
        row("alarm AA1", "SW=AA1\nALARMS=0x22\n", 500, {24, 0, 47, 0x22});
        row("alarm AB1", "SW=AB1\nALARMS=0x22\n", 500, {24, 0x22, 47, 0});
        // Phase at 25, valves at 22: lead-in 100 ticks, phase 1 and 2 of 144.
        // First layout: 1 = inlet 2 instead of inlet 1, 2 = outlet 1, 4 = outlet 2
        row("lead-in", "", 50 * 40, {25, 0, 22, 0});
        row("phase 1, outlet open", "", 130 * 40, {25, 1, 22, 2});
        row("phase 2, outlet open", "", 280 * 40, {25, 2, 22, 1 | 4});
        row("next cycle", "", 418 * 40, {25, 1, 22, 2});
        // second layout: 2 outlet 2, 4 inlet 1, 8 inlet 2, 16 outlet 1, 32 rinse
        row("7E5 phase 1, outlet, rinse", "SW=7E5\n", 128 * 40, {25, 1, 22, 4 | 16 | 32});
        row("7E5 phase 2, outlet, rinse", "SW=7E5\n", 280 * 40, {25, 2, 22, 8 | 2 | 32});
        row("override", "LIVE_OVERRIDE=20: 90 00\n", 500, {20, 0x90, 21, 0});
    }
    void live_status_bytes() {
        QFETCH(QByteArray, scenario);
        QFETCH(qint64, ms);
        QFETCH(QList<int>, bytes);
        const QByteArray p = live_at(scenario, ms);
        QList<int> got;
        for (qsizetype i = 0; i + 1 < bytes.size(); i += 2)
            got << bytes.at(i) << byte_at(p, bytes.at(i));
        QCOMPARE(got, bytes);
    }

    void both_hours_blocks_carry_a_valid_crc_until_reset() {
        DirectDevice d(hours_text);
        const QByteArray expected = hours_block({4, 3, 2, 1, 0, 0, 5});
        QCOMPARE(read(d, 0x80, 9).toHex(' '), expected.toHex(' '));
        QCOMPARE(read(d, 0x90, 9).toHex(' '), expected.toHex(' '));
        // They count on in tens of minutes while the device runs...
        d.now = 10 * 60 * 1000;
        QCOMPARE(read(d, 0x80, 7), bytes_of({5, 3, 2, 1, 0, 0, 0})); // 1235:00
        QCOMPARE(read(d, 0x90, 9), read(d, 0x80, 9));
        // ... until "C" zeroes both.
        QCOMPARE(d.answer("C"), QByteArray("C"));
        const QByteArray zero = hours_block({0, 0, 0, 0, 0, 0, 0});
        QCOMPARE(read(d, 0x80, 9).toHex(' '), zero.toHex(' '));
        QCOMPARE(read(d, 0x90, 9).toHex(' '), zero.toHex(' '));
    }

    void hours_writes_data() {
        QTest::addColumn<int>("address");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<bool>("taken");
        const QByteArray valid = hours_block({9, 8, 7, 6, 5, 4, 3});
        const QByteArray swapped = hours_block({9, 8, 7, 6, 5, 4, 3}, true);
        QTest::newRow("valid block") << 0x80 << valid << true;
        QTest::newRow("CRC high byte first") << 0x80 << swapped << false;
        QTest::newRow("CRC wrong in the copy") << 0x90 << swapped << false;
        QTest::newRow("tens of minutes 6") << 0x80 << hours_block({0, 0, 0, 0, 0, 0, 6}) << false;
        QTest::newRow("one digit alone") << 0x82 << bytes_of({7}) << false;
        QTest::newRow("next to the block") << 0x89 << bytes_of({7}) << true;
    }
    void hours_writes() {
        QFETCH(int, address);
        QFETCH(QByteArray, data);
        QFETCH(bool, taken);
        DirectDevice d(hours_text);
        const QByteArray before = read(d, 0x80, 25);
        // The write is answered either way: the read-back tells.
        QCOMPARE(d.answer(bytes_of({'E', 0, address, int(data.size())}) + data), QByteArray("E"));
        if (taken)
            QCOMPARE(read(d, address, int(data.size())).toHex(' '), data.toHex(' '));
        else
            QCOMPARE(read(d, 0x80, 25).toHex(' '), before.toHex(' '));
    }

    void status_records_as_given() {
        const QByteArray r1 = QByteArray::fromHex("E3070800020000330000000000009594978787B4AABB");
        const QByteArray r2 = QByteArray::fromHex("E40708000000000000000000000095949787870000BB");
        DirectDevice d("STATUS_RECORD=" + r1.toHex(' ') + "\nSTATUS_RECORD=" + r2.toHex() + "\n");
        QCOMPARE(read(d, 0x100, 22), r1);
        QCOMPARE(read(d, 0x116, 22), r2);
        QCOMPARE(byte_at(read(d, 0x12C, 22), 2), 255);
    }

    // Generated records: data byte 2 is never 255 within the list and is 255
    // right after it; each layout keeps its fields in their places.
    void generated_status_records_data() {
        QTest::addColumn<QByteArray>("scenario");
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("extended");
        const auto row = [](const char* name, const QByteArray& s, int count, bool extended) {
            QTest::newRow(name) << s + "\nSTATUS_GENERATE=" + QByteArray::number(count) << count
                                << extended;
        };
        row("basic by family", "SW=5121", 5, false);
        row("extended by family", "SW=7E5", 6, true);
        row("extended by choice", "SW=5121\nSTATUS_LAYOUT=extended", 3, true);
        row("full", "", 32, false);
    }
    void generated_status_records() {
        QFETCH(QByteArray, scenario);
        QFETCH(int, count);
        QFETCH(bool, extended);
        DirectDevice d(scenario);
        for (int n = 0; n < count; ++n) {
            const QByteArray r = read(d, 0x100 + n * 22, 22);
            const auto b = [&](int i) { return byte_at(r, i); };
            QVERIFY(b(2) != 255 && b(2) * 256 + b(3) > 0);          // a block lasts some time
            QVERIFY(b(20) > 0 && b(21) <= b(20) && b(20) <= b(22)); // O2 min <= mean <= max
            if (extended) // temperature min < max, mean flow in 0.1 l/min
                QVERIFY(b(16) < b(17) && b(15) >= 10 && b(15) <= 30);
            else // temperature min <= mean <= max, mean flow
                QVERIFY(b(16) <= b(15) && b(15) <= b(17) && b(14) >= 10 && b(14) <= 30);
        }
        if (count < 32)
            QCOMPARE(byte_at(read(d, 0x100 + count * 22, 22), 2), 255);
        else
            QCOMPARE(read(d, 0x3C0, 22), QByteArray(22, '\xFF'));
    }

    void usage_records_then_the_running_period_until_erased() {
        DirectDevice d("CLOCK=2026-03-02 09:30:00\n"
                       "COMPLIANCE_RECORD=2026-02-27 07:10:00 / 2026-02-27 18:45:30\n"
                       "COMPLIANCE_RECORD=-\n"
                       "COMPLIANCE_RECORD=2026-03-01 08:00 / 2026-03-01 21:00\n");
        QCOMPARE(count(d), 3);
        QCOMPARE(record(d, 0), (Record{device_seconds({2026, 2, 27}, {7, 10}),
                                       device_seconds({2026, 2, 27}, {18, 45, 30})}));
        QCOMPARE(record(d, 1), erased);
        QCOMPARE(record(d, 2).end, device_seconds({2026, 3, 1}, {21, 0}));
        // Record `count` is the period in progress: since power-on, until now.
        d.now = 65 * 1000;
        QCOMPARE(record(d, 3), (Record{device_seconds({2026, 3, 2}, {9, 30}),
                                       device_seconds({2026, 3, 2}, {9, 31, 5})}));
        QCOMPARE(record(d, 4), erased);
        // Erasing empties the ring and starts a new period.
        d.now = 90 * 1000;
        QCOMPARE(d.answer("Z"), QByteArray("Z"));
        QCOMPARE(count(d), 0);
        QCOMPARE(record(d, 0).start, device_seconds({2026, 3, 2}, {9, 31, 30}));
        for (int n = 1; n <= 3; ++n)
            QCOMPARE(record(d, n), erased);
    }

    // A request for n returns slot n mod size. Once more records were written
    // than the ring holds, the oldest are overwritten, and the program, reading
    // up to the count, meets the repetition.
    void usage_ring_wrap_data() {
        QTest::addColumn<int>("size");
        QTest::addColumn<int>("written");
        QTest::newRow("256 slots, 100 records") << 256 << 100;
        QTest::newRow("256 slots, 257 records") << 256 << 257;
        QTest::newRow("4096 slots, 5000 records") << 4096 << 5000;
    }
    void usage_ring_wrap() {
        QFETCH(int, size);
        QFETCH(int, written);
        DirectDevice d(
            "CLOCK=2026-03-02 09:30:00\nCOMPLIANCE_RING_SIZE=" + QByteArray::number(size) +
            "\nCOMPLIANCE_GENERATE=" + QByteArray::number(written) +
            "\nCOMPLIANCE_FROM=2010-01-01\nCOMPLIANCE_TO=2026-03-01\n");
        QCOMPARE(count(d), written);
        for (int n = 1; n < written && written <= size; ++n) // generated periods follow each other
            QVERIFY(record(d, n).start >= record(d, n - 1).end);
        const Record first = record(d, 0);
        QCOMPARE(record(d, size), first);
        QCOMPARE(record(d, 2 * size + 1), record(d, 1));
        const Record last_slot = record(d, size - 1);
        if (written > size) // slot 0 holds record number `size`, newer than the last slot's
            QVERIFY(first.start > last_slot.start && last_slot != erased);
        else
            QCOMPARE(last_slot, erased);
        // The period in progress stands in slot `written` mod size.
        QCOMPARE(record(d, written + size).start, device_seconds({2026, 3, 2}, {9, 30}));
    }
};

QTEST_GUILESS_MAIN(TestSimAnswers)
#include "test_sim_answers.moc"
