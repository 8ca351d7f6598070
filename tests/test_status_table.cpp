// The status table from the record bytes: the model line of the basic
// layout, the extended layout, the alarm time code, locale and rounding, and
// shipped headings that sit over their columns.

#include "config/language.h"
#include "device/device_record.h"
#include "fake_user_interface.h"
#include "protocol_harness.h"
#include "status/status_table.h"

using namespace veltrako;
using namespace veltrako::testing;

namespace {

const QLocale german(QLocale::German, QLocale::Germany);

// Block 227, 1800 s, alarm word 0002, alarm time 3 coded 33, no mean
// temperature, 37.25 and 37.75 degrees, valve times 135 x 0.04 s, 6.0 l/min,
// O2 75 % + 10.6 (mean), 8.8 (min), 12.2 (max).
const QByteArray model =
    bytes_of({0xE3, 0x07, 0x08, 0x00, 0x02, 0x00, 0x00, 0x21, 0x00, 0x00, 0x00,
              0x00, 0x00, 0x3C, 0x00, 0x95, 0x97, 0x87, 0x87, 0x6A, 0x58, 0x7A});
// Alarm words 81 and 04, alarm times 1/3/5/9/10 coded 45, 0, 17, 1, 0;
// levels 204, 178; counts 12, 0; then as above but 2.0 l/min, 37.0 degrees
// and 5.36 s.
const QByteArray extended = bytes_of({16,  0x07, 0x08, 0x81, 0x04, 45,  0,   17,  1,   0,   204,
                                      178, 12,   0,    20,   148,  151, 135, 134, 180, 170, 187});

} // namespace

class TestStatusTable : public QObject {
    Q_OBJECT
private slots:
    void record_lines_data() {
        const Table<QByteArray, bool, QLocale, QString> row; // record, extended, locale, line
        // The model record itself: test_status_memory and test_cli (German and C).
        row("extended", extended, true, german,
            "    16  1800 81$    84     -    18 04$     1     -  80,0  69,8   120   ---  37,0  "
            "37,8  "
            "5,40  5,36   2,0  92,0  93,7  93,0");
        row("basic, bytes of 1: O2 75,1",
            QByteArray(1, '\x01') + bytes_of({0xFF, 0xFF, 0xFF, 0xFF}) + QByteArray(17, '\x01'),
            false, german,
            "     1 65535  FFFF     1     1     1     1     1     1     1     1   0,3   0,3   0,3  "
            "0,04  0,04   0,1  75,1  75,1  75,1");
        row("erased record: dashes", QByteArray(22, '\0'), false, german,
            "     0     0  0000     -     -     -     -     -     -     -     -   ---   ---   ---"
            "   ---   ---   ---   ---   ---   ---");
    }
    void record_lines() {
        const auto [record, is_extended, locale, line] =
            Table<QByteArray, bool, QLocale, QString>::fetch();
        QCOMPARE(status::format_status_line(record, is_extended, locale), line);
    }

    void alarm_time_code() {
        // code, seconds; 9, 25 and 41 give halves, rounded to even
        const std::pair<int, int> rows[] = {{1, 1},   {9, 9},   {16, 16},   {17, 18},
                                            {25, 27}, {41, 75}, {255, 2159}};
        for (const auto& [code, seconds] : rows)
            QCOMPARE(std::pair(code, int(status::alarm_seconds(std::uint8_t(code)))),
                     std::pair(code, seconds));
    }

    // Column names and units of the shipped files end where their columns end.
    void shipped_headings_line_up_data() {
        Table<QString, bool>()("de basic", "de", false)("de extended", "de", true)(
            "en basic", "en", false)("en extended", "en", true);
    }
    void shipped_headings_line_up() {
        const auto [code, is_extended] = Table<QString, bool>::fetch();
        config::LanguageTables language;
        FakeUserInterface ui;
        QVERIFY(config::load_language(
            language, QStringLiteral(VELTRAKO_LANG_DIR "/lang%1.txt").arg(code), ui));
        device::DeviceRecord d;
        d.o22_source = is_extended;
        status::StatusMemory memory;
        memory.records = {QByteArray(), is_extended ? extended : model};
        const QStringList lines =
            status::format_status(memory, d, language, QDateTime(), german).split("\r\n");
        QSet<int> ends; // right edges of the record's columns
        for (int at = 0; at < lines[8].size(); ++at)
            if (lines[8][at] != ' ' && (at + 1 == lines[8].size() || lines[8][at + 1] == ' '))
                ends << at + 1;
        QCOMPARE(ends.size(), is_extended ? 21 : 20);
        for (const QString& heading : {lines[5], lines[6]})
            for (int at = 0; at < heading.size(); ++at)
                if (heading[at] != ' ' && (at + 1 == heading.size() || heading[at + 1] == ' '))
                    QVERIFY2(ends.contains(at + 1), qPrintable(heading.left(at + 1)));
        QVERIFY(is_extended ? lines[4].contains('|') && !lines[4].contains('/')
                            : lines[4].contains('/'));
    }
};

QTEST_GUILESS_MAIN(TestStatusTable)
#include "test_status_table.moc"
