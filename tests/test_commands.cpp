// Command payloads as the device must receive them.

#include "protocol/commands.h"

#include "protocol_harness.h"

using namespace veltrako::protocol;
using namespace veltrako::testing;

class TestCommands : public QObject {
    Q_OBJECT
private slots:
    void payloads_data() {
        const Table<QByteArray, QByteArray> row;
        const QDateTime ten_past(QDate(2000, 1, 1), QTime(0, 0, 10), Qt::UTC);
        // The one-letter commands in a row: a wrong letter shows as a wrong byte.
        row("one-letter commands",
            cmd::live_status() + cmd::read_clock() + cmd::read_remaining() + cmd::identity() +
                cmd::information() + cmd::reset_hours() + cmd::read_flow_selector(0) +
                cmd::read_flow_selector(1) + cmd::read_acoustic_alarm() + cmd::compliance_count() +
                cmd::compliance_erase() + cmd::boot_loader(),
            "ITS?!CUOXKZb");
        row("t at 2000-01-01 00:00:10", cmd::set_clock(ten_past), bytes_of({0x74, 0, 0, 0, 0x0A}));
        row("t big", cmd::set_clock_seconds(0x12345678u), bytes_of({'t', 0x12, 0x34, 0x56, 0x78}));
        row("s 999", cmd::set_remaining(999), bytes_of({'s', 0x03, 0xE7}));
        row("status records 1, 2, 32",
            cmd::read_status_record(1) + cmd::read_status_record(2) + cmd::read_status_record(32),
            bytes_of({'e', 0x01, 0x00, 22, 'e', 0x01, 0x16, 22, 'e', 0x03, 0xAA, 22}));
        const QByteArray serial = bytes_of({'E', 0, 0xF0, 12}),
                         hours = bytes_of({4, 3, 2, 1, 0, 0, 5, 0xAA, 0xBB});
        row("serial padded", cmd::write_serial("AB12"), serial + "AB12        ");
        row("serial cut", cmd::write_serial("1234567890ABC"), serial + "1234567890AB");
        row("low power", cmd::write_low_power('5'), bytes_of({'E', 0x00, 0xE4, 1, '5'}));
        row("hours block", cmd::write_hours_block(cmd::addr_hours_copy, hours),
            bytes_of({'E', 0, 0x90, 9}) + hours);
        row("w 3 27", cmd::write_timing(3, 27), bytes_of({'w', 0x33, 27}));
        row("u 5, o 7, x 2",
            cmd::write_flow_selector(0, 5) + cmd::write_flow_selector(1, 7) +
                cmd::write_acoustic_alarm(2),
            bytes_of({'u', 5, 'o', 7, 'x', 2}));
        row("k 300", cmd::compliance_record(300), bytes_of({0x6B, 0x01, 0x2C}));
    }
    void payloads() {
        const auto [built, expected] = Table<QByteArray, QByteArray>::fetch();
        QCOMPARE(built.toHex(' '), expected.toHex(' '));
    }

    // Also the memory reads and the timing reads r0..r13 (0x30 + index),
    // each at its place in the order the device record is filled.
    void initial_sequence_order() {
        QStringList sent;
        for (const QByteArray& p : cmd::initial_sequence())
            sent << QString::fromLatin1(p.toHex());
        QCOMPARE(sent.join(' '), "3f 65008007 6500e00c 6500d004 6500f00c 58 7230 7231 7232 7233 "
                                 "7234 7235 7236 7237 7238 7239 723a 723b 723c 723d 55 4f 21 54 "
                                 "53 49 21 65004016 65005808");
    }
};

QTEST_GUILESS_MAIN(TestCommands)
#include "test_commands.moc"
