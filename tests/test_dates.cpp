// Dates as the device and the files give them, and numbers in the user's locale.

#include "config/dates.h"
#include "table.h"

#include <QLocale>

#include <climits>

using namespace veltrako::config;
using veltrako::testing::Table;

namespace {

QDateTime at(int y, int m, int d, int h = 0, int n = 0, int s = 0) {
    return QDateTime(QDate(y, m, d), QTime(h, n, s), Qt::UTC);
}

} // namespace

class TestDates : public QObject {
    Q_OBJECT
private slots:
    void cleanup() { QLocale::setDefault(QLocale::c()); }

    // Device garbage in any part gives some date, never an overflow.
    void make_date_rolls_over_and_clamps_data() {
        const Table<QList<int>, QDateTime> row; // day, month, year, hour, minute, second
        row("valid date unchanged", {15, 6, 2021, 13, 45, 30}, at(2021, 6, 15, 13, 45, 30));
        row("32 January", {32, 1, 2024, 0, 0, 0}, at(2024, 2, 1));
        row("31 February", {31, 2, 2023, 0, 0, 0}, at(2023, 2, 28));
        row("31 February, leap year", {31, 2, 2024, 0, 0, 0}, at(2024, 2, 29));
        row("month 13", {5, 13, 2021, 0, 0, 0}, at(2022, 1, 5));
        row("second -1", {1, 1, 2021, 0, 0, -1}, at(2020, 12, 31, 23, 59, 59));
        row("all at the largest", QList<int>(6, INT_MAX), QDateTime());
        row("all at the smallest", QList<int>(6, INT_MIN), QDateTime());
    }
    void make_date_rolls_over_and_clamps() {
        const auto [p, expected] = Table<QList<int>, QDateTime>::fetch();
        const QDateTime got = make_date(p[0], p[1], p[2], p[3], p[4], p[5]);
        QVERIFY(got.isValid() && got.timeSpec() == Qt::UTC);
        if (expected.isValid())
            QCOMPARE(got, expected);
    }

    void parse_date_data() {
        const Table<QString, QDateTime> row;
        row("date and time", "01.03.2024 23:59:59", at(2024, 3, 1, 23, 59, 59));
        row("same day alone", "01.03.2024", at(2024, 3, 1));
        row("blanks around", "  15.06.2021 13:45:30 ", at(2021, 6, 15, 13, 45, 30));
        row("time of day only", "12:00", QDateTime());
        row("two blanks make seven parts", "15.06.2021  13:45:30", QDateTime());
        row("garbage time", "15.06.2021 13:4x:30", QDateTime());
    }
    void parse_date() {
        const auto [text, expected] = Table<QString, QDateTime>::fetch();
        QCOMPARE(veltrako::config::parse_date(text), expected);
    }

    // Numbers in the user's locale (-1: not a number), and the time stamps of
    // developer-page messages: the PC's local time, no zone name.
    void in_the_locale_data() {
        const Table<QLocale, QString, double, QString> row;
        const QLocale c = QLocale::c(), de(QLocale::German, QLocale::Germany);
        row("C: point", c, "1.5", 1.5, "")("C: comma", c, "1,5", -1.0, "");
        row("C: infinity", c, "inf", -1.0, "")("de: comma", de, "37,3", 37.3, "02.03.26 10:05:07");
        row("en_US", QLocale(QLocale::English, QLocale::UnitedStates), "", -1.0,
            "3/2/26 10:05:07 AM");
    }
    void in_the_locale() {
        const auto [locale, text, value, time] = Table<QLocale, QString, double, QString>::fetch();
        QLocale::setDefault(locale);
        QCOMPARE(veltrako::config::text_to_number(text).value_or(-1.0), value);
        const QDateTime t(QDate(2026, 3, 2), QTime(10, 5, 7), Qt::UTC);
        if (!time.isEmpty())
            QCOMPARE(veltrako::config::message_time_text(t), time);
    }
};

QTEST_GUILESS_MAIN(TestDates)
#include "test_dates.moc"
