// The usage figures an insurer reads: the month the chart shows and its
// sums, each moment of use counted once, the days that count (D) and the 30
// consecutive days judged against the prescription, as the month lines and
// the page's words show them.

#include "compliance/compliance_days.h"
#include "compliance/compliance_month.h"
#include "config/language.h"
#include "fake_user_interface.h"
#include "table.h"

using namespace veltrako;
using namespace veltrako::compliance;
using namespace veltrako::testing;

namespace {

// A period between two ISO times in UTC.
ComplianceRecord period(const char* from, const char* to) {
    const auto at = [](const char* t) {
        return to_stamp(QDateTime::fromString(QLatin1String(t) + 'Z', Qt::ISODate));
    };
    return {at(from), at(to)};
}

ComplianceMemory filled(const QList<ComplianceRecord>& records) {
    ComplianceMemory m;
    for (int i = 0; i < records.size(); ++i)
        m.records[std::size_t(i)] = records[i];
    m.state.last_index = int(records.size()) - 1;
    m.state.has_data = true;
    return m;
}

// `days` sessions of 8 h (08:00 to 16:00) a day from `first` on.
QList<ComplianceRecord> daily(QDate first, int days) {
    QList<ComplianceRecord> out;
    for (int i = 0; i < days; ++i) {
        const QDate d = first.addDays(i);
        out << ComplianceRecord{make_stamp(d.year(), d.month(), d.day(), 8),
                                make_stamp(d.year(), d.month(), d.day(), 16)};
    }
    return out;
}

// What `compliance` prints for a table: the month lines, then the 30 days.
QStringList printed_lines(const ComplianceMemory& m, double hours, double share) {
    QStringList lines;
    for (const Stamp month : months_with_use(m.records, m.state.last_index))
        lines << month_usage_line(m.records, m.state, month, hours, QLocale::c());
    if (const auto window = best_window(m.records, m.state, hours, share))
        lines << adherence_line(*window);
    return lines;
}

using Months = Table<QList<ComplianceRecord>, Stamp, Stamp, double, QByteArray, int, int, double>;
using Lines = Table<QList<ComplianceRecord>, QString, double, double, QStringList>;

} // namespace

class TestComplianceDays : public QObject {
    Q_OBJECT
private slots:
    // The month shown, its sums and the summary under the chart.
    void month_pass_data() {
        // records, month asked for, month shown, hours, neighbours with use
        // ("<" before, ">" after), days of the month, days used, longest gap
        // (-1: none)
        const Months row;
        using L = QList<ComplianceRecord>;
        const Stamp march = make_stamp(2021, 3, 1);
        row("22:00 on the 3rd to 06:00 on the 5th",
            L{period("2021-03-03T22:00:00", "2021-03-05T06:00:00")}, 0, march, 32, "", 31, 3, -1);
        row("begun in the previous month: from the 1st",
            L{period("2021-02-27T20:00:00", "2021-03-01T02:30:00")}, make_stamp(2021, 3, 15), march,
            2.5, "<", 31, 1, -1);
        row("running into the next month: up to its start",
            L{period("2021-02-28T23:00:00", "2021-03-01T01:00:00")}, make_stamp(2021, 2, 10),
            make_stamp(2021, 2, 1), 1, ">", 28, 1, -1);
        row("latest end chooses the month; start after end ignored",
            L{period("2021-06-02T08:00:00", "2021-06-02T09:00:00"),
              period("2022-01-05T10:00:00", "2022-01-04T10:00:00"),
              period("2021-05-30T08:00:00", "2021-05-30T10:00:00")},
            0, make_stamp(2021, 6, 1), 1, "<", 30, 1, -1);
        row("empty start or end draws nothing",
            L{{0, make_stamp(2021, 4, 2, 10)},
              {make_stamp(2021, 4, 3, 8), 0},
              period("2021-04-04T10:00:00", "2021-04-04T10:30:00")},
            make_stamp(2021, 4, 1), make_stamp(2021, 4, 1), 0.5, "", 30, 1, -1);
        row("no records: the present month, nothing used", L{}, 0, make_stamp(2026, 3, 1), 0, "",
            31, 0, -1);
        row("pause between two sessions",
            L{period("2021-03-03T08:00:00", "2021-03-03T10:00:00"),
              period("2021-03-05T08:00:00", "2021-03-05T12:00:00")},
            0, march, 6, "", 31, 2, 46);
        row("overlaps are one use: no negative pause, no hour twice",
            L{period("2021-03-10T08:00:00", "2021-03-10T12:00:00"),
              period("2021-03-10T09:00:00", "2021-03-10T10:00:00"),
              period("2021-03-10T13:00:00", "2021-03-10T14:00:00"),
              period("2021-03-01T06:00:00", "2021-03-01T07:00:00")},
            0, march, 6, "", 31, 2, 217);
        row("the ring-wrap duplicate of record 0 counts once",
            L{period("2021-03-07T22:00:00", "2021-03-08T06:00:00"),
              period("2021-03-08T22:00:00", "2021-03-09T06:00:00"),
              period("2021-03-07T22:00:00", "2021-03-08T06:00:00")},
            0, march, 16, "", 31, 3, 16);
        row("ending at midnight uses no time on the next day",
            L{period("2021-03-07T20:00:00", "2021-03-08T00:00:00")}, 0, march, 4, "", 31, 1, -1);
    }
    void month_pass() {
        const auto [records, shown, month, hours, neighbours, days, days_used, gap] =
            Months::fetch();
        ComplianceMemory m = filled(records);
        m.state.shown_month = shown;
        const Month result =
            compliance_month_pass(m.state, m.records, make_stamp(2026, 3, 2, 10, 0, 0));
        QCOMPARE(m.state.shown_month, month);
        QCOMPARE(m.state.total_hours, hours);
        QCOMPARE(m.state.has_prev_month, neighbours.contains('<'));
        QCOMPARE(m.state.has_next_month, neighbours.contains('>'));
        QCOMPARE(result.days, days);
        const MonthSummary s = summarise(result);
        QCOMPARE(s.days_used, days_used);
        QCOMPARE(s.mean_hours_per_day_used, days_used ? hours / days_used : 0.0);
        QCOMPARE(s.longest_gap_hours.value_or(-1.0), gap);
        QCOMPARE(s.total_hours, hours);
    }

    void months_with_use_lists_each_month_touched() {
        // Ends at midnight on March 1st; the zero-length session is no use.
        const ComplianceMemory m = filled({period("2021-01-31T22:00:00", "2021-03-01T00:00:00"),
                                           period("2020-11-05T10:00:00", "2020-11-05T10:00:00")});
        const std::vector<Stamp> expected{make_stamp(2021, 1, 1), make_stamp(2021, 2, 1)};
        QCOMPARE(months_with_use(m.records, m.state.last_index), expected);
    }

    // The lines of `compliance` and Besuch.txt: per month hours, days used,
    // mean, days meeting H and days counted, then the best 30 days.
    void usage_lines_data() {
        // records, where they come from ("file", or "readout": the last one
        // is the period still running), H, the share P, the lines
        const Lines row;
        using L = QList<ComplianceRecord>;
        const L example{period("2021-02-03T22:00:00", "2021-02-05T06:00:00"),
                        period("2021-02-05T08:00:00", "2021-02-05T09:30:00")};
        row("counted from the first record's day; across midnight", example, "file", 6, 70,
            {"2021-02|33.5|3|11.2|2|3", "30d|2021-02-03|2021-02-05|2|3|not met"});
        row("two overlapping records count once",
            L{period("2021-02-01T08:00:00", "2021-02-01T12:00:00"),
              period("2021-02-01T09:00:00", "2021-02-01T13:00:00")},
            "file", 6, 70, {"2021-02|5.0|1|5.0|0|1", "30d|2021-02-01|2021-02-01|0|1|not met"});
        row("the ring-wrap duplicate does not double a day",
            L{period("2021-03-01T22:00:00", "2021-03-02T06:00:00"),
              period("2021-03-02T22:00:00", "2021-03-03T06:00:00"),
              period("2021-03-01T22:00:00", "2021-03-02T06:00:00")},
            "file", 8, 70, {"2021-03|16.0|3|5.3|1|3", "30d|2021-03-01|2021-03-03|1|3|not met"});
        row("across a month's end",
            L{period("2021-01-31T20:00:00", "2021-02-01T08:00:00"),
              period("2021-02-02T10:00:00", "2021-02-02T18:00:00")},
            "file", 6, 60,
            {"2021-01|4.0|1|4.0|0|1", "2021-02|16.0|2|8.0|2|2",
             "30d|2021-01-31|2021-02-02|2|3|met"});
        row("H = 24: whole days only", L{period("2021-04-01T00:00:00", "2021-04-03T12:00:00")},
            "file", 24, 70, {"2021-04|60.0|3|20.0|2|3", "30d|2021-04-01|2021-04-03|2|3|not met"});
        row("H = 0: four fields, no 30 days", example, "file", 0, 70, {"2021-02|33.5|3|11.2"});
        row("ending at midnight: the next day is not counted",
            L{period("2021-03-07T20:00:00", "2021-03-08T00:00:00")}, "file", 4, 70,
            {"2021-03|4.0|1|4.0|1|1", "30d|2021-03-07|2021-03-07|1|1|met"});
        const L readout{period("2026-03-01T08:00:00", "2026-03-01T20:00:00"),
                        period("2026-03-02T07:00:00", "2026-03-02T10:00:00")};
        row("the readout's own day is not over: not counted", readout, "readout", 6, 70,
            {"2026-03|15.0|2|7.5|1|1", "30d|2026-03-01|2026-03-01|1|1|met"});
        row("the same from a file: its last day counts", readout, "file", 6, 70,
            {"2026-03|15.0|2|7.5|1|2", "30d|2026-03-01|2026-03-02|1|2|not met"});
        row("the best 30 of 40 days", daily({2021, 3, 1}, 8) + daily({2021, 3, 26}, 15), "file", 6,
            50,
            {"2021-03|112.0|14|8.0|14|31", "2021-04|72.0|9|8.0|9|9",
             "30d|2021-03-11|2021-04-09|15|30|met"});
        row("a tie: the earliest window", daily({2021, 3, 1}, 5) + daily({2021, 4, 5}, 5), "file",
            6, 70,
            {"2021-03|40.0|5|8.0|5|31", "2021-04|40.0|5|8.0|5|9",
             "30d|2021-03-01|2021-03-30|5|30|not met"});
    }
    void usage_lines() {
        const auto [records, origin, hours, share, lines] = Lines::fetch();
        ComplianceMemory m = filled(records);
        if (origin == "readout") {
            m.state.from_device = true;
            m.state.record_count = m.state.last_index;
        }
        QCOMPARE(printed_lines(m, hours, share), lines);
    }

    // The page and the printout say the same in the program's language.
    void adherence_in_words_data() {
        // language file, words, text
        const Table<QString, QLocale, QString> row;
        row("German", "langde.txt", QLocale(QLocale::German),
            "Beste 30 Tage: 05.03.–03.04.2021: 30 von 30 Tagen ≥ 6 h – erfüllt (≥ 70 %)");
        row("English", "langen.txt", QLocale(QLocale::English),
            "Best 30 days: 5 Mar–3 Apr 2021: 30 of 30 days ≥ 6 h – met (≥ 70 %)");
    }
    void adherence_in_words() {
        const auto [file, words, text] = Table<QString, QLocale, QString>::fetch();
        FakeUserInterface ui;
        config::LanguageTables language;
        QVERIFY(config::load_language(language, VELTRAKO2_LANG_DIR "/" + file, ui));
        language.words = words;
        const ComplianceMemory m = filled(daily({2021, 3, 5}, 30));
        const auto window = best_window(m.records, m.state, 6, 70);
        QVERIFY(window);
        QCOMPARE(adherence_text(*window, 6, 70, language, QLocale::c()), text);
    }
};

QTEST_GUILESS_MAIN(TestComplianceDays)
#include "test_compliance_days.moc"
