// The status memory table from the record bytes: the model line of the basic
// layout, the extended layout, the alarm time code, locale and rounding, and
// headings of the shipped language files that line up with the columns.

#include "config/language.h"
#include "device/device_record.h"
#include "fake_user_interface.h"
#include "status/status_table.h"
#include "test_bytes.h"

#include <QTest>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

const QLocale german(QLocale::German, QLocale::Germany);

// The model record: block 227, 1800 s, alarm word 0002, alarm time 3 coded
// 33, no mean temperature, 37.25 and 37.75 degrees, valve times 135 x 0.04 s,
// 6.0 l/min, O2 75 % + 8.8 / 12.2 / 10.6.
QByteArray model_record() {
    return bytes_of({0xE3, 0x07, 0x08, 0x00, 0x02, 0x00, 0x00, 0x21, 0x00, 0x00, 0x00,
                     0x00, 0x00, 0x3C, 0x00, 0x95, 0x97, 0x87, 0x87, 0x6A, 0x58, 0x7A});
}

// Block 16, 1800 s, alarm words 81 and 04, alarm times 1/3/5/9/10 coded
// 45, 0, 17, 1, 0; levels 204 and 178; counts 12 and 0; 2.0 l/min;
// 37.0 / 37.75 degrees; valve times 5.40 and 5.36 s; O2 mean/min/max 180/170/187.
QByteArray extended_record() {
    return bytes_of({16,  0x07, 0x08, 0x81, 0x04, 45,  0,   17,  1,   0,   204,
                     178, 12,   0,    20,   148,  151, 135, 134, 180, 170, 187});
}

config::LanguageTables shipped_language(const QString& code) {
    config::LanguageTables t;
    FakeUserInterface ui;
    if (!config::load_language(t, QStringLiteral(VELTRAKO_LANG_DIR "/lang%1.txt").arg(code), ui))
        qFatal("language file %s does not load", qPrintable(code));
    return t;
}

// Right edges of the columns of a record line.
QList<int> column_ends(bool extended) {
    const QList<int> widths =
        extended ? QList<int>{6, 6, 4, 6, 6, 6, 4, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6, 6}
                 : QList<int>(20, 6);
    QList<int> ends;
    int at = 0;
    for (int w : widths)
        ends << (at += w);
    return ends;
}

} // namespace

class TestStatusTable : public QObject {
    Q_OBJECT
private slots:
    void record_lines_data() {
        QTest::addColumn<QByteArray>("record");
        QTest::addColumn<bool>("extended");
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("line");
        QTest::newRow("model line, German")
            << model_record() << false << german
            << "   227  1800  0002     -     -    51     -     -     -     -     -   ---  37,3  "
               "37,8  5,40  5,40   6,0  83,8  87,2  85,6";
        QTest::newRow("model line, C locale: same rounding, dots")
            << model_record() << false << QLocale::c()
            << "   227  1800  0002     -     -    51     -     -     -     -     -   ---  37.3  "
               "37.8  5.40  5.40   6.0  83.8  87.2  85.6";
        QTest::newRow("extended")
            << extended_record() << true << german
            << "    16  1800 81$    84     -    18 04$     1     -  80,0  69,8   120   ---  37,0  "
               "37,8  5,40  5,36   2,0  92,0  93,7  93,0";
        // Every measured byte 1; O2 1 is 75.1 %; alarm word with all bits.
        QTest::newRow("basic, smallest values")
            << QByteArray(1, '\x01') + bytes_of({0xFF, 0xFF, 0xFF, 0xFF}) + QByteArray(17, '\x01')
            << false << german
            << "     1 65535  FFFF     1     1     1     1     1     1     1     1   0,3   0,3   "
               "0,3  "
               "0,04  0,04   0,1  75,1  75,1  75,1";
        QTest::newRow("extended, largest values")
            << QByteArray(22, '\xFF') << true << german
            << "   255 65535 FF$  2159  2159  2159 FF$  2159  2159 100,0 100,0  2550  2550  63,8  "
               "63,8 10,20 10,20  25,5 100,5 100,5 100,5";
        QTest::newRow("erased basic record: dashes")
            << QByteArray(22, '\0') << false << german
            << "     0     0  0000     -     -     -     -     -     -     -     -   ---   ---   "
               "---"
               "   ---   ---   ---   ---   ---   ---";
    }
    void record_lines() {
        QFETCH(QByteArray, record);
        QFETCH(bool, extended);
        QFETCH(QLocale, locale);
        QFETCH(QString, line);
        QCOMPARE(status::format_status_line(record, extended, locale), line);
    }

    void alarm_time_code_data() {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("seconds");
        QTest::newRow("1") << 1 << 1;
        QTest::newRow("8: below the first half") << 8 << 8;
        QTest::newRow("9: half, to even 0") << 9 << 9;
        QTest::newRow("16") << 16 << 16;
        QTest::newRow("17: k = 1") << 17 << 18;
        QTest::newRow("25: half, to even 2") << 25 << 27;
        QTest::newRow("33") << 33 << 51;
        QTest::newRow("41: half, to even 2") << 41 << 75;
        QTest::newRow("45") << 45 << 84;
        QTest::newRow("255") << 255 << 2159;
    }
    void alarm_time_code() {
        QFETCH(int, code);
        QFETCH(int, seconds);
        QCOMPARE(status::alarm_seconds(static_cast<std::uint8_t>(code)), seconds);
    }

    void table_heading_and_layout_data() {
        QTest::addColumn<bool>("extended");
        QTest::newRow("basic") << false;
        QTest::newRow("extended") << true;
    }
    void table_heading_and_layout() {
        QFETCH(bool, extended);
        config::LanguageTables language;
        for (int n = 3810; n <= 3821; ++n)
            language.language_text[n] = QStringLiteral("t%1/x").arg(n);
        device::DeviceRecord d;
        d.SN = QStringLiteral("VO2-0012345 ");
        d.LP = QStringLiteral("LP1240010077");
        d.SW = QStringLiteral("5121");
        d.o22_source = extended;
        status::StatusMemory memory;
        memory.records = {QByteArray(), model_record(), extended_record()};
        const QDateTime at(QDate(2026, 3, 2), QTime(9, 5, 7), Qt::UTC);

        const QString table = status::format_status(memory, d, language, at, german);
        QVERIFY(table.endsWith("\r\n"));
        const QStringList lines = table.split("\r\n");
        QCOMPARE(lines.size(), 4 + 4 + 2 + 1);
        QCOMPARE(lines[0], "t3810/x     VO2-0012345 ");
        QCOMPARE(lines[1], "t3811/x     LP1240010077");
        QCOMPARE(lines[2], "t3812/x     5121");
        QCOMPARE(lines[3], "t3813/x     02.03.2026 09:05:07");
        const int first = extended ? 3818 : 3814;
        for (int i = 0; i < 4; ++i)
            QCOMPARE(lines[4 + i], extended ? QStringLiteral("t%1|x").arg(first + i)
                                            : QStringLiteral("t%1/x").arg(first + i));
        QCOMPARE(lines[8], status::format_status_line(model_record(), extended, german));
        QCOMPARE(lines[9], status::format_status_line(extended_record(), extended, german));
        QVERIFY(lines[10].isEmpty());
    }

    // The column names and units of the shipped files sit over their columns.
    void shipped_headings_line_up_data() {
        QTest::addColumn<QString>("code");
        QTest::addColumn<bool>("extended");
        for (const char* code : {"de", "en"}) {
            QTest::addRow("%s basic", code) << QString::fromLatin1(code) << false;
            QTest::addRow("%s extended", code) << QString::fromLatin1(code) << true;
        }
    }
    void shipped_headings_line_up() {
        QFETCH(QString, code);
        QFETCH(bool, extended);
        const config::LanguageTables language = shipped_language(code);
        device::DeviceRecord d;
        d.o22_source = extended;
        status::StatusMemory memory;
        memory.records = {QByteArray(), extended ? extended_record() : model_record()};
        const QStringList lines =
            status::format_status(memory, d, language, QDateTime::currentDateTimeUtc(), german)
                .split("\r\n");
        const QString record = lines[8];
        const QList<int> ends = column_ends(extended);
        QCOMPARE(record.size(), ends.last());
        QVERIFY(!lines[4].contains(extended ? '/' : '|'));
        for (int i : {5, 6}) { // names and units
            const QString& heading = lines[i];
            QVERIFY2(heading.size() <= ends.last(), qPrintable(heading));
            for (int at = 0; at < heading.size(); ++at) {
                const bool word_ends =
                    heading[at] != ' ' && (at + 1 == heading.size() || heading[at + 1] == ' ');
                if (word_ends)
                    QVERIFY2(
                        ends.contains(at + 1),
                        qPrintable(QStringLiteral("\"%1\" ends at %2").arg(heading).arg(at + 1)));
            }
        }
        QCOMPARE(lines[7], QString(122, '-'));
        for (int n : {3806, 3807, 3808, 3809})
            QVERIFY(!language.text(n).isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestStatusTable)
#include "test_status_table.moc"
