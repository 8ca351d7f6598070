// The device memory as "e" and "E" see it: the operating-hours blocks and
// their CRC, the reset "C", hours that count on, and the status records in
// both layouts with the end marker.

#include "protocol/crc.h"
#include "sim_helpers.h"

#include <QTest>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

QByteArray read_command(int address, int count) {
    return bytes_of({'e', address >> 8, address & 0xFF, count});
}

// The data of an "e" answer.
QByteArray read(DirectDevice& d, int address, int count) {
    return d.answer(read_command(address, count)).mid(4);
}

// Hours block: six digits least significant first, tens of minutes, CRC low then high.
QByteArray hours_block(std::initializer_list<int> seven, bool crc_swapped = false) {
    QByteArray b = bytes_of(seven);
    const std::uint16_t crc = protocol::calc_crc(b);
    b += static_cast<char>(crc_swapped ? crc >> 8 : crc & 0xFF);
    b += static_cast<char>(crc_swapped ? crc & 0xFF : crc >> 8);
    return b;
}

QByteArray write_command(int address, const QByteArray& data) {
    return bytes_of({'E', address >> 8, address & 0xFF, int(data.size())}) + data;
}

const QByteArray quiet = "NOISE=off\nHOURS=1234:50\n";

} // namespace

class TestSimMemory : public QObject {
    Q_OBJECT
private slots:
    void both_hours_blocks_carry_a_valid_crc() {
        DirectDevice d(scenario_from(quiet));
        const QByteArray expected = hours_block({4, 3, 2, 1, 0, 0, 5});
        QCOMPARE(read(d, 0x80, 9).toHex(' '), expected.toHex(' '));
        QCOMPARE(read(d, 0x90, 9).toHex(' '), expected.toHex(' '));
    }

    void hours_writes_data() {
        QTest::addColumn<int>("address");
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<bool>("taken");
        QTest::newRow("valid block") << 0x80 << hours_block({9, 8, 7, 6, 5, 4, 3}) << true;
        QTest::newRow("valid copy") << 0x90 << hours_block({9, 8, 7, 6, 5, 4, 3}) << true;
        QTest::newRow("CRC high byte first")
            << 0x80 << hours_block({9, 8, 7, 6, 5, 4, 3}, true) << false;
        QTest::newRow("CRC wrong in the copy")
            << 0x90 << hours_block({9, 8, 7, 6, 5, 4, 3}, true) << false;
        QTest::newRow("digit 10 with its CRC")
            << 0x80 << hours_block({10, 0, 0, 0, 0, 0, 0}) << false;
        QTest::newRow("tens of minutes 6") << 0x80 << hours_block({0, 0, 0, 0, 0, 0, 6}) << false;
        QTest::newRow("one digit alone") << 0x82 << bytes_of({7}) << false;
        QTest::newRow("next to the block") << 0x89 << bytes_of({7}) << true;
    }
    void hours_writes() {
        QFETCH(int, address);
        QFETCH(QByteArray, data);
        QFETCH(bool, taken);
        DirectDevice d(scenario_from(quiet));
        const QByteArray before = read(d, 0x80, 25);
        // The write is answered either way: the read-back tells.
        QCOMPARE(d.answer(write_command(address, data)), QByteArray("E"));
        const QByteArray after = read(d, address, static_cast<int>(data.size()));
        if (taken) {
            QCOMPARE(after.toHex(' '), data.toHex(' '));
        } else {
            QCOMPARE(read(d, 0x80, 25).toHex(' '), before.toHex(' '));
        }
    }

    void reset_zeroes_both_blocks() {
        DirectDevice d(scenario_from(quiet));
        QCOMPARE(d.answer("C"), QByteArray("C"));
        const QByteArray zero = hours_block({0, 0, 0, 0, 0, 0, 0});
        QCOMPARE(read(d, 0x80, 9).toHex(' '), zero.toHex(' '));
        QCOMPARE(read(d, 0x90, 9).toHex(' '), zero.toHex(' '));
    }

    // Operating hours count on in tens of minutes while the device runs.
    void hours_count_on() {
        DirectDevice d(scenario_from(quiet));
        d.now = 9 * 60 * 1000;
        QCOMPARE(read(d, 0x80, 7), bytes_of({4, 3, 2, 1, 0, 0, 5}));
        d.now = 10 * 60 * 1000;
        QCOMPARE(read(d, 0x80, 7), bytes_of({5, 3, 2, 1, 0, 0, 0})); // 1235:00
        QCOMPARE(read(d, 0x90, 9), read(d, 0x80, 9));
        d.now = 70 * 60 * 1000;
        QCOMPARE(read(d, 0x80, 7), bytes_of({6, 3, 2, 1, 0, 0, 0})); // 1236:00
    }

    void status_records_as_given() {
        const QByteArray r1 = QByteArray::fromHex("E3070800020000330000000000009594978787B4AABB");
        const QByteArray r2 = QByteArray::fromHex("E40708000000000000000000000095949787870000BB");
        DirectDevice d(scenario_from("STATUS_RECORD=" + r1.toHex(' ') +
                                     "\nSTATUS_RECORD=" + r2.toHex() + "\n"));
        QCOMPARE(read(d, 0x100, 22), r1);
        QCOMPARE(read(d, 0x116, 22), r2);
        const QByteArray end = read(d, 0x12C, 22);
        QCOMPARE(static_cast<unsigned char>(end.at(1)), 255);
        // The answer repeats the address and count before the data.
        QCOMPARE(d.answer(read_command(0x116, 22)).left(4), read_command(0x116, 22));
    }

    // Generated records: data byte 2 is never 255 within the list and is 255
    // right after it; each layout keeps its fields in their places.
    void generated_status_records_data() {
        QTest::addColumn<QByteArray>("scenario");
        QTest::addColumn<int>("count");
        QTest::addColumn<bool>("extended");
        QTest::newRow("basic by family")
            << QByteArray("SW=5121\nSTATUS_GENERATE=5\n") << 5 << false;
        QTest::newRow("extended by family")
            << QByteArray("SW=7E5\nSTATUS_GENERATE=6\n") << 6 << true;
        QTest::newRow("66 is extended") << QByteArray("SW=661\nSTATUS_GENERATE=2\n") << 2 << true;
        QTest::newRow("extended by choice")
            << QByteArray("SW=5121\nSTATUS_LAYOUT=extended\nSTATUS_GENERATE=3\n") << 3 << true;
        QTest::newRow("full") << QByteArray("STATUS_GENERATE=32\n") << 32 << false;
        QTest::newRow("none") << QByteArray("STATUS_GENERATE=0\n") << 0 << false;
    }
    void generated_status_records() {
        QFETCH(QByteArray, scenario);
        QFETCH(int, count);
        QFETCH(bool, extended);
        DirectDevice d(scenario_from(scenario));
        for (int n = 1; n <= count; ++n) {
            const QByteArray r = read(d, 0x100 + (n - 1) * 22, 22);
            const auto b = [&](int i) { return static_cast<unsigned char>(r.at(i - 1)); };
            QVERIFY2(b(2) != 255, qPrintable(QString::number(n)));
            QVERIFY(b(2) * 256 + b(3) > 0);                         // a block lasts some time
            QVERIFY(b(20) > 0 && b(21) <= b(20) && b(20) <= b(22)); // O2 min <= mean <= max
            if (extended) {
                QVERIFY(b(16) < b(17));              // temperature min < max
                QVERIFY(b(15) >= 10 && b(15) <= 30); // mean flow, 0.1 l/min
                QVERIFY(b(11) > 0 && b(12) > 0);     // levels
            } else {
                QVERIFY(b(16) <= b(15) && b(15) <= b(17)); // temperature min <= mean <= max
                QVERIFY(b(14) >= 10 && b(14) <= 30);       // mean flow
            }
        }
        if (count < 32)
            QCOMPARE(static_cast<unsigned char>(read(d, 0x100 + count * 22, 22).at(1)), 255);
        else
            QCOMPARE(read(d, 0x3C0, 22), QByteArray(22, '\xFF'));
    }

    // Memory outside the fields the device fills reads as erased.
    void unused_memory_reads_erased() {
        DirectDevice d(scenario_from(quiet));
        QCOMPARE(read(d, 0x00, 0x40), QByteArray(0x40, '\xFF'));
        QCOMPARE(read(d, 0x99, 0x37), QByteArray(0x37, '\xFF'));
    }
};

QTEST_GUILESS_MAIN(TestSimMemory)
#include "test_sim_memory.moc"
