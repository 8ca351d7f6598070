// Dates as the device and the files give them, and numbers in the user's locale.

#include "config/dates.h"
#include "report_harness.h"

#include <QLocale>
#include <QTest>

#include <climits>

using namespace veltrako::config;
using veltrako::testing::row;

namespace {

QDateTime at(int y, int m, int d, int h = 0, int n = 0, int s = 0) {
    return QDateTime(QDate(y, m, d), QTime(h, n, s), Qt::UTC);
}

} // namespace

class TestDates : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    void make_date_rolls_over_and_clamps_data() {
        QTest::addColumn<QList<int>>("parts"); // day, month, year, hour, minute, second
        QTest::addColumn<QDateTime>("expected");
        row("valid date unchanged", QList<int>{15, 6, 2021, 13, 45, 30},
            at(2021, 6, 15, 13, 45, 30));
        row("32 January", QList<int>{32, 1, 2024, 0, 0, 0}, at(2024, 2, 1));
        row("31 February", QList<int>{31, 2, 2023, 0, 0, 0}, at(2023, 2, 28));
        row("31 February, leap year", QList<int>{31, 2, 2024, 0, 0, 0}, at(2024, 2, 29));
        row("month 13", QList<int>{5, 13, 2021, 0, 0, 0}, at(2022, 1, 5));
        row("second -1", QList<int>{1, 1, 2021, 0, 0, -1}, at(2020, 12, 31, 23, 59, 59));
    }
    void make_date_rolls_over_and_clamps() {
        QFETCH(QList<int>, parts);
        const QDateTime got = make_date(parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]);
        QTEST(got, "expected");
        QCOMPARE(got.timeSpec(), Qt::UTC);
    }

    // Device garbage in every part gives some date, never an overflow.
    void make_date_never_fails() {
        QVERIFY(make_date(INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX, INT_MAX).isValid());
        QVERIFY(make_date(INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN, INT_MIN).isValid());
    }

    void parse_date_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDateTime>("expected");
        row("date and time", "01.03.2024 23:59:59", at(2024, 3, 1, 23, 59, 59));
        row("same day alone", "01.03.2024", at(2024, 3, 1));
        row("blanks around", "  15.06.2021 13:45:30 ", at(2021, 6, 15, 13, 45, 30));
        row("time of day only", "12:00", QDateTime());
        row("two blanks make seven parts", "15.06.2021  13:45:30", QDateTime());
        row("garbage time", "15.06.2021 13:4x:30", QDateTime());
    }
    void parse_date() {
        QFETCH(QString, text);
        QTEST(veltrako::config::parse_date(text), "expected");
    }

    void text_to_number_data() {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<double>("value"); // -1: not a number
        const QLocale c = QLocale::c();
        row("C: point", c, "1.5", 1.5);
        row("C: comma", c, "1,5", -1.0);
        row("C: infinity", c, "inf", -1.0);
        row("de: comma", QLocale(QLocale::German, QLocale::Germany), "37,3", 37.3);
    }
    void text_to_number() {
        QFETCH(QLocale, locale);
        QFETCH(QString, text);
        QLocale::setDefault(locale);
        QTEST(veltrako::config::text_to_number(text).value_or(-1.0), "value");
    }

    // Time stamps of developer-page messages: the PC's local time, no zone name.
    void message_time_text_data() {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("expected");
        row("de", QLocale(QLocale::German, QLocale::Germany), "02.03.26 10:05:07");
        row("en_US", QLocale(QLocale::English, QLocale::UnitedStates), "3/2/26 10:05:07 AM");
    }
    void message_time_text() {
        QFETCH(QLocale, locale);
        QLocale::setDefault(locale);
        const QDateTime t(QDate(2026, 3, 2), QTime(10, 5, 7), Qt::UTC);
        QTEST(veltrako::config::message_time_text(t), "expected");
    }
};

QTEST_GUILESS_MAIN(TestDates)
#include "test_dates.moc"
