// Command payloads as the device must receive them.

#include "protocol/commands.h"

#include "test_bytes.h"

#include <QTest>

using namespace veltrako::protocol;
using veltrako::testing::bytes_of;

namespace {} // namespace

class TestCommands : public QObject {
    Q_OBJECT
private slots:
    void payloads_data() {
        QTest::addColumn<QByteArray>("built");
        QTest::addColumn<QByteArray>("expected");
        const QDateTime ten_past(QDate(2000, 1, 1), QTime(0, 0, 10), Qt::UTC);
        QTest::newRow("I") << cmd::live_status() << QByteArray("I");
        QTest::newRow("T") << cmd::read_clock() << QByteArray("T");
        QTest::newRow("t at 2000-01-01 00:00:10")
            << cmd::set_clock(ten_past) << bytes_of({0x74, 0, 0, 0, 0x0A});
        QTest::newRow("t big") << cmd::set_clock_seconds(0x12345678u)
                               << bytes_of({'t', 0x12, 0x34, 0x56, 0x78});
        QTest::newRow("S") << cmd::read_remaining() << QByteArray("S");
        QTest::newRow("s 999") << cmd::set_remaining(999) << bytes_of({'s', 0x03, 0xE7});
        QTest::newRow("?") << cmd::identity() << QByteArray("?");
        QTest::newRow("!") << cmd::information() << QByteArray("!");
        QTest::newRow("C") << cmd::reset_hours() << QByteArray("C");
        QTest::newRow("e 0x0080/7") << cmd::read_hours() << bytes_of({0x65, 0x00, 0x80, 0x07});
        QTest::newRow("e 0x00E0/12") << cmd::read_board() << bytes_of({'e', 0x00, 0xE0, 12});
        QTest::newRow("e 0x00D0/4") << cmd::read_text_d0() << bytes_of({'e', 0x00, 0xD0, 4});
        QTest::newRow("e 0x00F0/12") << cmd::read_serial() << bytes_of({'e', 0x00, 0xF0, 12});
        QTest::newRow("e 0x0040/22") << cmd::read_text_40() << bytes_of({'e', 0x00, 0x40, 22});
        QTest::newRow("e 0x0058/8") << cmd::read_text_58() << bytes_of({'e', 0x00, 0x58, 8});
        QTest::newRow("status record 1")
            << cmd::read_status_record(1) << bytes_of({'e', 0x01, 0x00, 22});
        QTest::newRow("status record 2")
            << cmd::read_status_record(2) << bytes_of({'e', 0x01, 0x16, 22});
        QTest::newRow("status record 32")
            << cmd::read_status_record(32) << bytes_of({'e', 0x03, 0xAA, 22});
        QTest::newRow("serial padded")
            << cmd::write_serial("AB12") << (bytes_of({'E', 0x00, 0xF0, 0x0C}) + "AB12        ");
        QTest::newRow("serial cut") << cmd::write_serial("1234567890ABCDEF")
                                    << (bytes_of({'E', 0x00, 0xF0, 0x0C}) + "1234567890AB");
        QTest::newRow("low power")
            << cmd::write_low_power('5') << bytes_of({'E', 0x00, 0xE4, 1, '5'});
        QTest::newRow("hours block")
            << cmd::write_hours_block(cmd::addr_hours_copy,
                                      bytes_of({4, 3, 2, 1, 0, 0, 5, 0xAA, 0xBB}))
            << bytes_of({'E', 0x00, 0x90, 9, 4, 3, 2, 1, 0, 0, 5, 0xAA, 0xBB});
        QTest::newRow("r 0") << cmd::read_timing(0) << bytes_of({0x72, 0x30});
        QTest::newRow("r 13") << cmd::read_timing(13) << bytes_of({0x72, 0x3D});
        QTest::newRow("w 3 27") << cmd::write_timing(3, 27) << bytes_of({'w', 0x33, 27});
        QTest::newRow("U") << cmd::read_flow_selector(0) << QByteArray("U");
        QTest::newRow("O") << cmd::read_flow_selector(1) << QByteArray("O");
        QTest::newRow("u 5") << cmd::write_flow_selector(0, 5) << bytes_of({'u', 5});
        QTest::newRow("o 7") << cmd::write_flow_selector(1, 7) << bytes_of({'o', 7});
        QTest::newRow("X") << cmd::read_acoustic_alarm() << QByteArray("X");
        QTest::newRow("x 2") << cmd::write_acoustic_alarm(2) << bytes_of({'x', 2});
        QTest::newRow("K") << cmd::compliance_count() << QByteArray("K");
        QTest::newRow("k 300") << cmd::compliance_record(300) << bytes_of({0x6B, 0x01, 0x2C});
        QTest::newRow("Z") << cmd::compliance_erase() << QByteArray("Z");
        QTest::newRow("b") << cmd::boot_loader() << QByteArray("b");
    }
    void payloads() {
        QFETCH(QByteArray, built);
        QFETCH(QByteArray, expected);
        QCOMPARE(built.toHex(' '), expected.toHex(' '));
    }

    void initial_sequence_order() {
        const QList<QByteArray> seq = cmd::initial_sequence();
        QCOMPARE(seq.size(), 29);
        QCOMPARE(seq.first(), QByteArray("?"));
        QCOMPARE(seq.at(1), cmd::read_hours());
        QCOMPARE(seq.at(5), QByteArray("X"));
        for (int i = 0; i <= 13; ++i)
            QCOMPARE(seq.at(6 + i), cmd::read_timing(i));
        const QList<QByteArray> tail{
            "U", "O", "!", "T", "S", "I", "!", cmd::read_text_40(), cmd::read_text_58()};
        QCOMPARE(seq.mid(20), tail);
        QCOMPARE(seq.indexOf("I"), 25); // the 26th command
    }
};

QTEST_GUILESS_MAIN(TestCommands)
#include "test_commands.moc"
