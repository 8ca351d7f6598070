// Command payloads as the device must receive them.

#include "protocol/commands.h"

#include "protocol_harness.h"

#include <QTest>

using namespace veltrako::protocol;
using namespace veltrako::testing;

class TestCommands : public QObject {
    Q_OBJECT
private slots:
    void payloads_data() {
        const Table<QByteArray, QByteArray> row;
        const QDateTime ten_past(QDate(2000, 1, 1), QTime(0, 0, 10), Qt::UTC);
        row("I", cmd::live_status(), "I");
        row("T", cmd::read_clock(), "T");
        row("t at 2000-01-01 00:00:10", cmd::set_clock(ten_past), bytes_of({0x74, 0, 0, 0, 0x0A}));
        row("t big", cmd::set_clock_seconds(0x12345678u), bytes_of({'t', 0x12, 0x34, 0x56, 0x78}));
        row("S", cmd::read_remaining(), "S");
        row("s 999", cmd::set_remaining(999), bytes_of({'s', 0x03, 0xE7}));
        row("?", cmd::identity(), "?");
        row("!", cmd::information(), "!");
        row("C", cmd::reset_hours(), "C");
        row("e 0x0080/7", cmd::read_hours(), bytes_of({0x65, 0x00, 0x80, 0x07}));
        row("e 0x00E0/12", cmd::read_board(), bytes_of({'e', 0x00, 0xE0, 12}));
        row("e 0x00D0/4", cmd::read_text_d0(), bytes_of({'e', 0x00, 0xD0, 4}));
        row("e 0x00F0/12", cmd::read_serial(), bytes_of({'e', 0x00, 0xF0, 12}));
        row("e 0x0040/22", cmd::read_text_40(), bytes_of({'e', 0x00, 0x40, 22}));
        row("e 0x0058/8", cmd::read_text_58(), bytes_of({'e', 0x00, 0x58, 8}));
        row("status record 1", cmd::read_status_record(1), bytes_of({'e', 0x01, 0x00, 22}));
        row("status record 2", cmd::read_status_record(2), bytes_of({'e', 0x01, 0x16, 22}));
        row("status record 32", cmd::read_status_record(32), bytes_of({'e', 0x03, 0xAA, 22}));
        row("serial padded", cmd::write_serial("AB12"),
            bytes_of({'E', 0x00, 0xF0, 0x0C}) + "AB12        ");
        row("serial cut", cmd::write_serial("1234567890ABCDEF"),
            bytes_of({'E', 0x00, 0xF0, 0x0C}) + "1234567890AB");
        row("low power", cmd::write_low_power('5'), bytes_of({'E', 0x00, 0xE4, 1, '5'}));
        row("hours block",
            cmd::write_hours_block(cmd::addr_hours_copy,
                                   bytes_of({4, 3, 2, 1, 0, 0, 5, 0xAA, 0xBB})),
            bytes_of({'E', 0x00, 0x90, 9, 4, 3, 2, 1, 0, 0, 5, 0xAA, 0xBB}));
        row("r 0", cmd::read_timing(0), bytes_of({0x72, 0x30}));
        row("r 13", cmd::read_timing(13), bytes_of({0x72, 0x3D}));
        row("w 3 27", cmd::write_timing(3, 27), bytes_of({'w', 0x33, 27}));
        row("U", cmd::read_flow_selector(0), "U");
        row("O", cmd::read_flow_selector(1), "O");
        row("u 5", cmd::write_flow_selector(0, 5), bytes_of({'u', 5}));
        row("o 7", cmd::write_flow_selector(1, 7), bytes_of({'o', 7}));
        row("X", cmd::read_acoustic_alarm(), "X");
        row("x 2", cmd::write_acoustic_alarm(2), bytes_of({'x', 2}));
        row("K", cmd::compliance_count(), "K");
        row("k 300", cmd::compliance_record(300), bytes_of({0x6B, 0x01, 0x2C}));
        row("Z", cmd::compliance_erase(), "Z");
        row("b", cmd::boot_loader(), "b");
    }
    void payloads() {
        const auto [built, expected] = Table<QByteArray, QByteArray>::fetch();
        QCOMPARE(built.toHex(' '), expected.toHex(' '));
    }

    void initial_sequence_order() {
        QList<QByteArray> expected{"?",
                                   bytes_of({'e', 0x00, 0x80, 7}),
                                   bytes_of({'e', 0x00, 0xE0, 12}),
                                   bytes_of({'e', 0x00, 0xD0, 4}),
                                   bytes_of({'e', 0x00, 0xF0, 12}),
                                   "X"};
        for (int i = 0; i <= 13; ++i)
            expected << bytes_of({'r', 0x30 + i});
        expected << "U"
                 << "O"
                 << "!"
                 << "T"
                 << "S"
                 << "I"
                 << "!" << bytes_of({'e', 0x00, 0x40, 22}) << bytes_of({'e', 0x00, 0x58, 8});
        QCOMPARE(cmd::initial_sequence(), expected);
    }
};

QTEST_GUILESS_MAIN(TestCommands)
#include "test_commands.moc"
