// The monthly usage chart and its printout, measured on the recording
// surface (exact geometry, no pixels), and printed to a PDF that is read back
// as text.

#include "compliance/compliance_chart.h"
#include "compliance/compliance_file.h"
#include "compliance/compliance_print.h"
#include "config/language.h"
#include "painter_surface.h"
#include "print/recording_surface.h"
#include "table.h"

#include <QGuiApplication>

using namespace veltrako;
using namespace veltrako::compliance;
using namespace veltrako::print;
using namespace veltrako::testing;

namespace {

constexpr double W = 9000;
constexpr double H = 6000;
constexpr double F = 10;

ComplianceRecord period(QDateTime a, QDateTime b) {
    return {to_stamp(a), to_stamp(b)};
}
QDateTime t(int y, int mo, int d, int h, int mi = 0) {
    return QDateTime(QDate(y, mo, d), QTime(h, mi), Qt::UTC);
}

struct Drawn {
    ComplianceMemory memory;
    RecordingSurface surface{W + 1000, H + 1000};
    Month month;
    config::LanguageTables language;

    // `words`: the program's language, for the month names.
    explicit Drawn(const QList<ComplianceRecord>& records, const QLocale& words = QLocale::c(),
                   Stamp shown = 0) {
        language.words = words;
        memory.state.shown_month = shown;
        for (int i = 0; i < records.size(); ++i)
            memory.records[std::size_t(i)] = records[i];
        memory.state.last_index = int(records.size()) - 1;
        language.language_text[6001] = QStringLiteral("Hours");
        language.language_text[6002] = QStringLiteral("Day");
        month = compliance_draw(surface, 500, 400, W, H, F, memory.state, memory.records,
                                chart_texts(language, QLocale::c()), make_stamp(2026, 3, 2));
    }
    // The plot as the chart lays it out for the recording surface's measures.
    double m() const { return 0.005 * W; }
    double x0() const { return 500 + 5 * F * 20 * 0.5 + m(); }
    double y0() const { return 400 + 3 * F * 20 * 1.2 + m(); }
    double day_step() const { return (W - (x0() - 500) - (F * 20 * 0.5 + m())) / 31; }
    double hour_step() const { return (H - 2 * (y0() - 400)) / 24; }
};

config::LanguageTables print_texts(const char* days, const char* mean, const char* pause) {
    config::LanguageTables language;
    language.language_text[6003] = QStringLiteral("Compliance");
    language.language_text[6012] = QString::fromLatin1(days);
    language.language_text[6013] = QString::fromLatin1(mean);
    language.language_text[6014] = QString::fromLatin1(pause);
    const std::pair<int, const char*> captions[] = {
        {11011, "Serial number"}, {11013, "LP number"}, {8103, "File"},     {8101, "Month"},
        {11101, "Hours"},         {8102, "Printed on"}, {11074, "Patient"}, {11100, "Test data"},
        {7014, "Place, date"},    {8104, "Signature"}};
    for (const auto& [n, text] : captions)
        language.language_text[std::size_t(n)] = QString::fromLatin1(text);
    const std::pair<int, const char*> adherence[] = {{8400, "%1 h: %2/%3 (%4%)"},
                                                     {8510, "Best: %1-%2: %3/%4 %5 h %6 (%7%)"},
                                                     {8511, "met"},
                                                     {8512, "not met"},
                                                     {8513, "d.M."},
                                                     {8514, "d.M.yyyy"}};
    for (const auto& [n, text] : adherence)
        language.language_text[std::size_t(n)] = QString::fromLatin1(text);
    return language;
}

bool near(double a, double b) {
    return std::abs(a - b) < 1e-6;
}

} // namespace

using Bars = Table<QList<ComplianceRecord>, QList<QList<double>>>;
using Axes = Table<int, int, int, QLocale, QString>;
using Printouts = Table<QString, QString, QString, QString, int>;

class TestComplianceChart : public QObject {
    Q_OBJECT
private slots:
    void bars_data() {
        // records; per bar: day column, then the hours (from 00:00) of its
        // lower and upper end
        const Bars row;
        row("22:00 on the 3rd to 06:00 on the 5th", {period(t(2021, 3, 3, 22), t(2021, 3, 5, 6))},
            {{3, 22, 24}, {4, 0, 24}, {5, 0, 6}});
        row("half hours", {period(t(2021, 3, 10, 8, 30), t(2021, 3, 10, 12))}, {{10, 8.5, 12}});
        row("to midnight: nothing on the next day", {period(t(2021, 3, 30, 18), t(2021, 3, 31, 0))},
            {{30, 18, 24}});
        row("from the previous month, into the next",
            {period(t(2021, 3, 28, 12), t(2021, 3, 31, 23)),
             period(t(2021, 2, 27, 12), t(2021, 3, 1, 3)),
             period(t(2021, 3, 31, 23), t(2021, 4, 2, 3))},
            {{28, 12, 24}, {29, 0, 24}, {30, 0, 24}, {31, 0, 23}, {1, 0, 3}, {31, 23, 24}});
    }
    void bars() {
        const auto [records, bars] = Bars::fetch();
        // Always March 2021, whatever the latest month.
        Drawn d(records, QLocale::c(), make_stamp(2021, 3, 17));
        QCOMPARE(int(d.surface.boxes.size()), int(bars.size()));
        for (int i = 0; i < bars.size(); ++i) {
            const RecordedBox& b = d.surface.boxes[std::size_t(i)];
            const double day = bars[i][0];
            QCOMPARE(b.colour, bar_colour);
            QVERIFY(near(b.left, d.x0() + (day - 1) * d.day_step()));
            QVERIFY(near(b.right, d.x0() + day * d.day_step()));
            QVERIFY(near(b.bottom, d.y0() + (24 - bars[i][1]) * d.hour_step()));
            QVERIFY(near(b.top, d.y0() + (24 - bars[i][2]) * d.hour_step()));
        }
    }

    // The grid and labels of a month: a short month leaves the rest blank,
    // the title names the month in the program's language.
    void axes_data() {
        // year, month, days, language, title
        const Axes row;
        row("February 2021", 2021, 2, 28, QLocale::c(), "February 2021");
        row("February 2024", 2024, 2, 29, QLocale::c(), "February 2024");
        row("April", 2021, 4, 30, QLocale::c(), "April 2021");
        row("English", 2007, 1, 31, QLocale(QLocale::English), "January 2007");
        row("German", 2007, 3, 31, QLocale(QLocale::German), QString::fromUtf8("März 2007"));
    }
    void axes() {
        const auto [year, month, days, locale, title] = Axes::fetch();
        Drawn d({period(t(year, month, 2, 8), t(year, month, 2, 9))}, locale);
        QStringList day_labels;
        for (const RecordedRun& r : d.surface.runs)
            if (r.y > d.y0() + 24 * d.hour_step() && r.text != QLatin1String("Day"))
                day_labels << r.text;
        QCOMPARE(day_labels.size(), days);
        QCOMPARE(day_labels.last(), QString::number(days));
        // 25 hour lines as wide as the month, days + 1 day lines.
        QCOMPARE(int(d.surface.lines.size()), 25 + days + 1);
        const RecordedLine& top_line = d.surface.lines.front();
        QVERIFY(near(top_line.x2, d.x0() + days * d.day_step()));
        QCOMPARE(top_line.colour, grid_colour);
        // Day label 1 centred in its column, under the 00:00 line.
        const auto one =
            std::find_if(d.surface.runs.begin(), d.surface.runs.end(), [&](const RecordedRun& r) {
                return r.text == QLatin1String("1") && r.y > d.y0() + 24 * d.hour_step();
            });
        QVERIFY(one != d.surface.runs.end());
        QVERIFY(near(one->x + RecordingSurface::width_of(*one) / 2, d.x0() + 0.5 * d.day_step()));

        const RecordedRun* run = d.surface.find_run(title);
        QVERIFY2(run, qPrintable(d.surface.run_texts().join('|')));
        QVERIFY(run->font.bold);
        QCOMPARE(run->font.points, 1.2 * F);
        QVERIFY(near(run->x + RecordingSurface::width_of(*run) / 2, 500 + W / 2));
        // The hour axis reads upwards, centred on the left edge.
        const RecordedRun* hours = d.surface.find_run(QStringLiteral("Hours"));
        QVERIFY(hours);
        QCOMPARE(hours->font.angle, 90.0);
        QVERIFY(near(hours->y - RecordingSurface::width_of(*hours) / 2, 400 + H / 2));
        // The day axis title sits on the bottom edge.
        const RecordedRun* day = d.surface.find_run(QStringLiteral("Day"));
        QVERIFY(day && near(day->y + RecordingSurface::height_in(day->font, "Day"), 400 + H));
        // Hour labels 24 at the top line down to 0 at the bottom.
        const RecordedRun* h0 = d.surface.find_run(QStringLiteral("0"));
        QVERIFY(h0 && near(h0->y + RecordingSurface::height_in(h0->font, "0") / 2,
                           d.y0() + 24 * d.hour_step()));
    }

    void printout_says_whose_it_is_data() {
        // origin, title, the identity's caption and value runs in print
        // order ("…": the value is cut there, at the edge of the page), the
        // summary, the bars
        const Printouts row;
        row("device, patient on the form", "device", "Compliance",
            "Serial number:|VO2-7/1|LP number:|LP12|Month:|March 2021|Hours:|36.0|"
            "Printed on:|1 Apr 2021 10:30:00|Patient:|Erika O'Neill",
            "Days: 4   Mean: 9.0   Pause: 98.0", 4);
        row("loaded file, serial number from its name", "file", "Compliance",
            "Serial number:|VO2-7|File:|Compliance_VO2-7_20210401_103000.txt|Month:|March 2021|"
            "Hours:|36.0|Printed on:|1 Apr 2021 10:30:00",
            "Days: 4   Mean: 9.0   Pause: 98.0", 4);
        row("a name longer than the page", "long", "Compliance",
            "Month:|March 2021|Hours:|36.0|Printed on:|1 Apr 2021 10:30:00|Patient:|…",
            "Days: 4   Mean: 9.0   Pause: 98.0", 4);
        // With 8 h prescribed: the 4th alone reached it, of the 3rd to the
        // 9th; the best 30 days follow the summary.
        row("a prescription", "prescribed", "Compliance",
            "Month:|March 2021|Hours:|36.0|Printed on:|1 Apr 2021 10:30:00",
            "Days: 4   Mean: 9.0   Pause: 98.0", 4);
        // One session: the mean rounds up, and there is no pause.
        row("test data say so in the title", "test", "Compliance \u2013 Test data",
            "Month:|March 2021|Hours:|32.0|Printed on:|1 Apr 2021 10:30:00",
            "Days: 3   Mean: 10.7   Pause: -", 3);
    }
    void printout_says_whose_it_is() {
        const auto [origin, title, identity_runs, summary_text, boxes] = Printouts::fetch();
        const QStringList identity = identity_runs.split('|');
        ComplianceMemory memory;
        memory.records[0] = period(t(2021, 3, 3, 22), t(2021, 3, 5, 6));
        memory.records[1] = period(t(2021, 3, 9, 8), t(2021, 3, 9, 12));
        memory.state.last_index = 1;
        PrintedFor printed_for{QString(), to_stamp(t(2021, 4, 1, 10, 30))};
        if (origin == "device") {
            memory.state.serial_number = "VO2-7/1";
            memory.state.lp_number = "LP12";
            printed_for.patient = "Erika O'Neill"; // printed as typed, not read as markup
        } else if (origin == "long") {
            printed_for.patient = QString(200, 'W');
        } else if (origin == "prescribed") {
            printed_for.prescribed_hours = 8;
        } else if (origin == "file") {
            memory.state.file_name = "Compliance_VO2-7_20210401_103000.txt";
            memory.state.serial_number = serial_from_file_name(memory.state.file_name);
        } else {
            memory.state.test_data = true;
            memory.state.last_index = 0;
        }
        RecordingSurface page;
        compliance_print_page(page, memory.state, memory.records,
                              print_texts("Days", "Mean", "Pause"), QLocale::c(), 0, printed_for);
        const RecordedRun* heading = page.find_run(title);
        QVERIFY2(heading && heading->font.bold, qPrintable(page.run_texts().join('|')));
        QCOMPARE(heading->font.points, 13.0);
        QVERIFY(near(heading->x + RecordingSurface::width_of(*heading) / 2,
                     page.scale_width() / 2 + 15));
        const RecordedRun* month = page.find_run(QStringLiteral("March 2021"));
        QVERIFY(month && month->y > heading->y);
        const RecordedRun* summary = page.find_run(summary_text);
        QVERIFY2(summary, qPrintable(page.run_texts().join('|')));
        double chart_bottom = 0;
        for (const RecordedLine& l : page.lines)
            if (l.colour == grid_colour)
                chart_bottom = std::max(chart_bottom, std::max(l.y1, l.y2));
        QVERIFY(summary->y > chart_bottom);
        QCOMPARE(int(page.boxes.size()), boxes);
        const RecordedRun* best =
            page.find_run(QStringLiteral("Best: 3.3.-9.3.2021: 1/7 8 h not met (70%)"));
        QCOMPARE(best != nullptr, origin == "prescribed");
        QVERIFY(!best || best->y > summary->y);

        // The identity under the summary, in order, nothing else among it.
        const QStringList texts = page.run_texts();
        const qsizetype first = texts.indexOf(identity.first());
        QVERIFY2(first > texts.indexOf(summary->text), qPrintable(texts.join('|')));
        QStringList shown = texts.mid(first, identity.size());
        if (identity.last() == "…" && shown.last().endsWith("…"))
            shown.last() = "…";
        QCOMPARE(shown, identity);
        // Every line of it stays on the page.
        for (const RecordedRun& run : page.runs)
            QVERIFY2(run.x + RecordingSurface::width_of(run) <= page.scale_width(),
                     qPrintable(run.text));
        // Place, date and signature on two lines at the foot, below all else,
        // inside the page.
        const RecordedRun* place = page.find_run(QStringLiteral("Place, date"));
        const RecordedRun* sign = page.find_run(QStringLiteral("Signature"));
        QVERIFY(place && sign && near(place->y, sign->y) && sign->x > page.scale_width() / 2);
        QVERIFY(place->y > page.find_run(texts[first + identity.size() - 1])->y);
        QVERIFY(place->y + RecordingSurface::height_in(place->font, "X") < page.scale_height());
        int signature_lines = 0;
        for (const RecordedLine& l : page.lines)
            signature_lines += l.colour == black && near(l.y1, place->y - 60) ? 1 : 0;
        QCOMPARE(signature_lines, 2);
    }
};

QTEST_MAIN(TestComplianceChart)
#include "test_compliance_chart.moc"
