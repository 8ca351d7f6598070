// Dates as the device and the files give them, and numbers in the user's locale.

#include "config/dates.h"

#include <QLocale>
#include <QTest>

#include <climits>

using namespace veltrako::config;

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
        QTest::newRow("valid date unchanged")
            << QList<int>{15, 6, 2021, 13, 45, 30} << at(2021, 6, 15, 13, 45, 30);
        QTest::newRow("32 January") << QList<int>{32, 1, 2024, 0, 0, 0} << at(2024, 2, 1);
        QTest::newRow("31 February") << QList<int>{31, 2, 2023, 0, 0, 0} << at(2023, 2, 28);
        QTest::newRow("31 February, leap year")
            << QList<int>{31, 2, 2024, 0, 0, 0} << at(2024, 2, 29);
        QTest::newRow("29 February, common year")
            << QList<int>{29, 2, 2001, 0, 0, 0} << at(2001, 2, 28);
        QTest::newRow("month 13") << QList<int>{5, 13, 2021, 0, 0, 0} << at(2022, 1, 5);
        QTest::newRow("month 0") << QList<int>{1, 0, 2021, 0, 0, 0} << at(2020, 12, 1);
        QTest::newRow("day 0") << QList<int>{0, 3, 2021, 0, 0, 0} << at(2021, 2, 28);
        QTest::newRow("hour 24") << QList<int>{31, 12, 2021, 24, 0, 0} << at(2022, 1, 1);
        QTest::newRow("3600 seconds") << QList<int>{1, 1, 2021, 0, 0, 3600} << at(2021, 1, 1, 1);
        QTest::newRow("second -1")
            << QList<int>{1, 1, 2021, 0, 0, -1} << at(2020, 12, 31, 23, 59, 59);
    }
    void make_date_rolls_over_and_clamps() {
        QFETCH(QList<int>, parts);
        QFETCH(QDateTime, expected);
        const QDateTime got = make_date(parts[0], parts[1], parts[2], parts[3], parts[4], parts[5]);
        QCOMPARE(got, expected);
        QCOMPARE(got.timeSpec(), Qt::UTC);
    }

    void make_date_never_fails_data() {
        QTest::addColumn<int>("extreme");
        QTest::newRow("INT_MAX") << INT_MAX;
        QTest::newRow("INT_MIN") << INT_MIN;
    }
    void make_date_never_fails() {
        QFETCH(int, extreme);
        for (int part = 0; part < 6; ++part) {
            int p[6] = {1, 1, 2000, 0, 0, 0};
            p[part] = extreme;
            QVERIFY2(make_date(p[0], p[1], p[2], p[3], p[4], p[5]).isValid(),
                     qPrintable(QString::number(part)));
        }
    }

    void parse_date_data() {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QDateTime>("expected");
        QTest::newRow("date and time") << "15.06.2021 13:45:30" << at(2021, 6, 15, 13, 45, 30);
        QTest::newRow("date alone") << "15.06.2021" << at(2021, 6, 15);
        QTest::newRow("blanks around") << "  15.06.2021 13:45:30 " << at(2021, 6, 15, 13, 45, 30);
        QTest::newRow("out-of-range day clamps") << "31.02.2023" << at(2023, 2, 28);
        QTest::newRow("time of day only") << "12:00" << QDateTime();
        QTest::newRow("empty") << "" << QDateTime();
        QTest::newRow("two blanks make seven parts") << "15.06.2021  13:45:30" << QDateTime();
        QTest::newRow("word for a month") << "15.Juni.2021" << QDateTime();
        QTest::newRow("garbage time") << "15.06.2021 13:4x:30" << QDateTime();
    }
    void parse_date() {
        QFETCH(QString, text);
        QFETCH(QDateTime, expected);
        const QDateTime got = veltrako::config::parse_date(text);
        QCOMPARE(got.isNull(), expected.isNull());
        QCOMPARE(got, expected);
    }

    void parse_date_same_day_with_and_without_time() {
        const QDateTime with_time =
            veltrako::config::parse_date(QStringLiteral("01.03.2024 23:59:59"));
        const QDateTime date_only = veltrako::config::parse_date(QStringLiteral("01.03.2024"));
        QCOMPARE(with_time.date(), date_only.date());
        QCOMPARE(date_only.time(), QTime(0, 0));
    }

    void text_to_number_data() {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("text");
        QTest::addColumn<bool>("is_number");
        QTest::addColumn<double>("value");
        const QLocale c = QLocale::c();
        const QLocale de(QLocale::German, QLocale::Germany);
        QTest::newRow("C: point") << c << "1.5" << true << 1.5;
        QTest::newRow("C: word") << c << "schnell" << false << 0.0;
        QTest::newRow("C: empty") << c << "" << false << 0.0;
        QTest::newRow("C: comma") << c << "1,5" << false << 0.0;
        QTest::newRow("C: infinity") << c << "inf" << false << 0.0;
        QTest::newRow("C: not a number") << c << "nan" << false << 0.0;
        QTest::newRow("de: comma") << de << "37,3" << true << 37.3;
        QTest::newRow("de: word") << de << "abc" << false << 0.0;
    }
    void text_to_number() {
        QFETCH(QLocale, locale);
        QFETCH(QString, text);
        QFETCH(bool, is_number);
        QFETCH(double, value);
        QLocale::setDefault(locale);
        const std::optional<double> got = veltrako::config::text_to_number(text);
        QCOMPARE(got.has_value(), is_number);
        if (is_number)
            QCOMPARE(*got, value);
    }
};

QTEST_GUILESS_MAIN(TestDates)
#include "test_dates.moc"
