// The simulated concentrator's answers at the positions the program reads:
// the commands, writes shown in the read-back, any chunking; the live status
// ("I") with its float encoding, tick counter, alarm byte by family and valve
// cycle; the operating-hours blocks with their CRC and the reset "C".

#include "protocol/crc.h"
#include "sim_helpers.h"
#include "table.h"

using namespace veltrako;
using namespace veltrako::testing;

namespace {

QByteArray e_command(int address, int count) {
    return bytes_of({'e', address >> 8, address & 0xFF, count});
}

const QByteArray quiet = "NOISE=off\nTIMINGS=100 144 144 27 134 27 134 0 10 30 12 40 0 0\n";

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

} // namespace

class TestSimAnswers : public QObject {
    Q_OBJECT
private slots:
    // The requests go to a device as the default scenario describes it,
    // switched on at 02.03.2026 09:30 by the PC's clock, one second after power-on; a write is
    // acknowledged with its letter alone and changes what the matching read answers.
    void commands_data() {
        Table<QByteArrayList, QByteArrayList> row; // requests, answers
        // The serial number, board text, and the writes the command line makes
        // are read back end to end in test_cli and test_cli_set.
        row("!", {"!"}, {"!Veltrak O2"});
        row("e text 40", {e_command(0x40, 22)}, {e_command(0x40, 22) + "Veltrak O2 Geraet     "});
        row("e text 58", {e_command(0x58, 8)}, {e_command(0x58, 8) + "V2.1    "});
        row("e past the end", {e_command(0x3FE, 4)}, {e_command(0x3FE, 4) + "\xFF\xFF\xFF\xFF"});
        row("r 0", {"r0"}, {bytes_of({'r', '0', 100})});
        row("t", {bytes_of({'t', 0x12, 0x34, 0x56, 0x78}), "T"},
            {"t", bytes_of({'T', 0x12, 0x34, 0x56, 0x78})});
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
        const auto [requests, answers] = Table<QByteArrayList, QByteArrayList>::fetch();
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

    // Bytes of the live status at `ms` after power-on, as position/value pairs.
    void live_status_bytes_data() {
        const Table<QByteArray, qint64, QList<int>> table;
        const auto row = [&](const char* name, const QByteArray& s, qint64 ms, QList<int> bytes) {
            table(name, quiet + s, ms, bytes);
        };
        // Floats least significant byte first (-12.5 at 4, 30.25 at 14), the
        // flow set point in 1/80 l/min at 10 and 36, 24 V as 820 at 20, and
        // nothing past 47.
        row("fields",
            "O2=91\nFLOW_SETPOINT=2.5\nCOMPRESSOR_TEMP=47\nSUPPLY_VOLTAGE=24\nALARMS=0x81\n"
            "ALARMS2=0x04\nALARM_LEVEL=2\nGAS_TEMP=30.25\nSPEED_OF_SOUND=-12.5\n",
            1000, {4,  0,    5,  0, 6,  0x48, 7,  0xC1, 8,  91, 10, 0,   11, 200,
                   14, 0,    15, 0, 16, 0xF2, 17, 0x41, 18, 0,  19, 47,  20, 3,
                   21, 0x34, 23, 2, 24, 0x81, 35, 4,    36, 0,  37, 200, 48, -1});
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
        const auto [scenario, ms, bytes] = Table<QByteArray, qint64, QList<int>>::fetch();
        DirectDevice d(scenario);
        d.now = ms; // after power-on
        const QByteArray p = d.answer("I");
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
        Table<int, QByteArray, bool> row; // address, data, taken
        const QByteArray swapped = hours_block({9, 8, 7, 6, 5, 4, 3}, true);
        row("valid block", 0x80, hours_block({9, 8, 7, 6, 5, 4, 3}), true);
        row("CRC high byte first", 0x80, swapped, false);
        row("CRC wrong in the copy", 0x90, swapped, false);
        row("tens of minutes 6", 0x80, hours_block({0, 0, 0, 0, 0, 0, 6}), false);
        row("one digit alone", 0x82, bytes_of({7}), false);
        row("next to the block", 0x89, bytes_of({7}), true);
    }
    void hours_writes() {
        const auto [address, data, taken] = Table<int, QByteArray, bool>::fetch();
        DirectDevice d(hours_text);
        const QByteArray before = read(d, 0x80, 25);
        // The write is answered either way: the read-back tells.
        QCOMPARE(d.answer(bytes_of({'E', 0, address, int(data.size())}) + data), QByteArray("E"));
        if (taken)
            QCOMPARE(read(d, address, int(data.size())).toHex(' '), data.toHex(' '));
        else
            QCOMPARE(read(d, 0x80, 25).toHex(' '), before.toHex(' '));
    }
};

QTEST_GUILESS_MAIN(TestSimAnswers)
#include "test_sim_answers.moc"
