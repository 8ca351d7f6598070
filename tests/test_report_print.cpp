// The printed report: what lands on the page, recorded without pixels. The
// PDF of a report is read back in test_cli_report, the picture on the page
// in test_report_page.

#include "config/language.h"
#include "inspected_device.h"
#include "print/recording_surface.h"
#include "report/report_print.h"
#include "table.h"

#include <QGuiApplication>

#include <algorithm>

using namespace veltrako;
using namespace veltrako::report;
using veltrako::print::RecordingSurface;
using veltrako::testing::Table;

namespace {

config::LanguageTables captions() {
    config::LanguageTables t;
    // Every caption the printout asks for gets a distinct text.
    for (int n : {7010, 7011, 7012, 7013, 7014, 7015, 7016, 7017, 7018})
        t.language_text[static_cast<std::size_t>(n)] = QStringLiteral("L%1").arg(n);
    for (int n = 11011; n <= 11090; ++n)
        t.language_text[static_cast<std::size_t>(n)] = QStringLiteral("L%1").arg(n);
    for (int n = 11250; n <= 11256; ++n)
        t.language_text[static_cast<std::size_t>(n)] = QStringLiteral("L%1").arg(n);
    for (int n = 8901; n <= 8915; ++n)
        t.language_text[static_cast<std::size_t>(n)] = QStringLiteral("L%1").arg(n);
    t.language_text[8905] = QStringLiteral("L8905 %1");
    t.language_text[8914] = QStringLiteral("L8914 %1");
    return t;
}

// Every measured value typed, the O2 far enough from the device's 95 % for
// the note.
void measured(ReportRecord& r, const QString& protection_class = QStringLiteral("I")) {
    r.set_value(QStringLiteral("m_O2"), QStringLiteral("80,5"));
    r.set_value(QStringLiteral("m_Flow"), QStringLiteral("2.1"));
    r.set_value(QStringLiteral("t_Schutzklasse"), protection_class);
    r.set_value(QStringLiteral("m_Schutzleiter"), QStringLiteral("0,12"));
    r.set_value(QStringLiteral("m_Ableitstrom"), QStringLiteral("0,05"));
    r.set_value(QStringLiteral("t_Messgeraet"),
                QStringLiteral("Oxy 3 (kal. 01/2026), Secutest 'Pro' (kal. 02/2026)"));
}

ReportRecord filled(const QString& family = QStringLiteral("52")) {
    ReportRecord r;
    r.report_device = testing::inspected_device(family);
    r.set_value(QStringLiteral("t_Patient"), QStringLiteral("Heinz O'Brien"));
    r.set_value(QStringLiteral("t_Pruefer"), QStringLiteral("M. Huber"));
    r.set_value(QStringLiteral("t_Datum"), QStringLiteral("02.03.2026"));
    r.set_value(QStringLiteral("t_Bemerkungen"), QStringLiteral("erste Zeile\r\nzweite Zeile"));
    return r;
}

} // namespace

class TestReportPrint : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }

    void page_holds_the_report() {
        RecordingSurface s;
        print_report(s, filled(), captions(), QLocale());
        QCOMPARE(s.page, 0);
        // Typed text as it stands: the quote is no tag.
        // O2 rounded; 16 valve steps of 0.04 s.
        for (const char* text :
             {"Heinz O'Brien", "M. Huber", "VO2-7E00042", "012345:30", "95", "0,64",
              "L7018 02.03.2026  ", "L7010", "L7011", "L7012", "L7013", "L7014", "L11071", "L11072",
              "L11081", "L11088", "L11089", "L11090", "L11070"})
            QVERIFY2(s.find_run(QString::fromUtf8(text)), text);
        // The remark keeps its two lines, one under the other.
        const auto* first = s.find_run(QStringLiteral("erste Zeile"));
        const auto* second = s.find_run(QStringLiteral("zweite Zeile"));
        QVERIFY(first && second);
        QCOMPARE(first->x, second->x);
        QVERIFY(second->y > first->y);
    }

    // Whatever the model and however long the remarks and accessories, every
    // text, line and box lies inside the printable area of its page, and the
    // rows that do not fit go on the next page under the continuation
    // header. The remarks grow line by line, so that the end of the page
    // falls on every part of the report once.
    void everything_inside_the_printable_area_data() {
        // family, accessory lines, width, height, device rows, timing rows: a
        // family leaves out the settings it does not have
        const Table<QString, int, double, double, int, int> row;
        // A4 less the 5 mm the PDF leaves; a printer that cannot reach the
        // last 12 mm on either side.
        row("14 timings, PDF", "25", 2, 11339.0, 16271.0, 10, 14);
        row("14 timings, 40 accessory lines, PDF", "25", 40, 11339.0, 16271.0, 10, 14);
        row("14 timings, wide printer margins", "25", 40, 11226.0, 15478.0, 10, 14);
        row("7 timings and alarm signal, PDF", "30", 40, 11339.0, 16271.0, 11, 7);
        row("7 timings and flow settings, PDF", "52", 40, 11339.0, 16271.0, 13, 7);
    }
    void everything_inside_the_printable_area() {
        const auto [family, accessory_lines, width, height, device_rows, timings] =
            Table<QString, int, double, double, int, int>::fetch();
        const auto lines = [](const QString& word, int n) {
            QStringList l;
            for (int i = 1; i <= n; ++i)
                l << QStringLiteral("%1 %2").arg(word).arg(i);
            return l.join(QStringLiteral("\r\n"));
        };
        ReportRecord r = filled(family);
        measured(r);
        r.set_value(QStringLiteral("t_Zubehoer"), lines(QStringLiteral("Teil"), accessory_lines));
        QCOMPARE(int(device_data_rows(r, captions(), QLocale()).size()), device_rows);
        QCOMPARE(int(timing_rows(r, captions(), QLocale()).size()), timings);
        const QString continuation = QStringLiteral("L7010 \u2013 VO2-7E00042 \u2013 02.03.2026");
        for (int remarks = 0; remarks <= 60; ++remarks) {
            r.set_value(QStringLiteral("t_Bemerkungen"), lines(QStringLiteral("Zeile"), remarks));
            RecordingSurface s(width, height);
            print_report(s, r, captions(), QLocale());
            const auto inside = [&](double x1, double y1, double x2, double y2) {
                return x1 >= 0 && y1 >= 0 && x2 <= width && y2 <= height;
            };
            const QString at = QStringLiteral(" with %1 remark lines").arg(remarks);
            for (const auto& run : s.runs)
                QVERIFY2(inside(run.x, run.y, run.x + RecordingSurface::width_of(run),
                                run.y + RecordingSurface::height_in(run.font, run.text)),
                         qPrintable(run.text + at));
            for (const auto& l : s.lines)
                QVERIFY2(inside(std::min(l.x1, l.x2), std::min(l.y1, l.y2), std::max(l.x1, l.x2),
                                std::max(l.y1, l.y2)),
                         qPrintable(QStringLiteral("line at %1").arg(l.y1) + at));
            for (const auto& b : s.boxes)
                QVERIFY2(inside(b.left, b.top, b.right, b.bottom),
                         qPrintable(QStringLiteral("box at %1").arg(b.top) + at));
            // Every page after the first opens with the continuation header.
            for (int page = 1; page <= s.page; ++page) {
                const auto first = std::find_if(s.runs.begin(), s.runs.end(),
                                                [&](const auto& run) { return run.page == page; });
                QVERIFY2(first != s.runs.end() && first->text == continuation, qPrintable(at));
            }
            // The last valve timing and its value share a row.
            const auto* last = s.find_run(QStringLiteral("L7017 %1").arg(timings - 1));
            if (timings == 7)
                last = s.find_run(QStringLiteral("L11064"));
            QVERIFY2(last, qPrintable(at));
            const auto value = std::find_if(s.runs.begin(), s.runs.end(), [&](const auto& run) {
                return run.page == last->page && run.x > last->x && run.y == last->y;
            });
            QVERIFY2(value != s.runs.end(), qPrintable(at));
            // The signature ends the last page, never alone there: the last
            // rows of the device data go with it; no caption ends a page.
            const auto* signature = s.find_run(QStringLiteral("L7013"));
            QCOMPARE(signature->page, s.page);
            // The framed result stands right above it, on the same page.
            const auto* result = s.find_run(QStringLiteral("L8904: L8902"));
            QVERIFY2(result && result->page == s.page && result->y < signature->y, qPrintable(at));
            const auto* last_value =
                s.find_run(device_data_rows(r, captions(), QLocale()).back().first);
            const auto* lower =
                std::pair(last->page, last->y) > std::pair(last_value->page, last_value->y)
                    ? last
                    : last_value;
            QVERIFY2(lower->page == s.page && lower->y < signature->y, qPrintable(at));
            QVERIFY2(s.find_run(QStringLiteral("L11070"))->page ==
                         s.find_run(QStringLiteral("L7016"))->page,
                     qPrintable(at));
        }
    }

    // A report as technicians fill it in, for every model, takes one page
    // with the signature at its foot under the device data.
    void usual_report_takes_one_page() {
        for (const QString& family : {QStringLiteral("25"), QStringLiteral("30"),
                                      QStringLiteral("52"), QStringLiteral("7E")}) {
            ReportRecord r = filled(family);
            measured(r);
            r.set_value(QStringLiteral("t_Bemerkungen"),
                        QStringLiteral("Filter gewechselt\r\nAlarme geprüft\r\nFlow 2 l/min"));
            r.set_value(QStringLiteral("t_Zubehoer"), QStringLiteral("Maske\r\nSchlauch 2 m"));
            RecordingSurface s(11339.0, 16271.0);
            print_report(s, r, captions(), QLocale());
            QVERIFY2(s.page == 0, qPrintable(family));
            const auto* signature = s.find_run(QStringLiteral("L7013"));
            const auto lowest =
                std::max_element(s.runs.begin(), s.runs.end(),
                                 [](const auto& a, const auto& b) { return a.y < b.y; });
            QVERIFY2(signature->y == lowest->y, qPrintable(family));
        }
    }

    // The measured values in a table of value, unit, limit and verdict,
    // judged by the report's limits; for class II the protective earth is
    // not judged; the result and the O2 note framed above the signature.
    void measurements_in_a_table_data() {
        // class, runs that share a line: caption, value, unit, limit, verdict
        Table<QString, QStringList> row;
        row("O2", "I", {"L11251", "80,5", "%", "\u2265 82", "L8902"});
        row("flow with the set flow", "I",
            {"L11252 (L8914 2,0)", "2,1", "l/min", "1,8\u20132,2", "L8901"});
        row("earth, class I", "I", {"L11254", "0,12", "\u03a9", "\u2264 0,3", "L8901"});
        row("earth, class II", "II", {"L11254", "0,12", "\u03a9", "\u2013", "L8915"});
        row("leakage, class II", "II", {"L11255", "0,05", "mA", "\u2264 0,1", "L8901"});
        row("class", "II", {"L11253", "II"});
        row("instruments, as typed", "I",
            {"L11256", "Oxy 3 (kal. 01/2026), Secutest 'Pro' (kal. 02/2026)"});
        row("column titles", "I", {"L8907", "L8908", "L8909", "L8910"});
        row("result and note", "I", {"L8904: L8902"});
    }
    void measurements_in_a_table() {
        const auto [protection_class, texts] = Table<QString, QStringList>::fetch();
        ReportRecord r = filled();
        measured(r, protection_class);
        RecordingSurface s;
        print_report(s, r, captions(), QLocale());
        const auto* first = s.find_run(texts.first());
        QVERIFY2(first, qPrintable(texts.first()));
        for (const QString& text : texts) {
            const auto on_line = std::find_if(s.runs.begin(), s.runs.end(), [&](const auto& run) {
                return run.text == text && run.page == first->page &&
                       std::abs(run.y - first->y) < 200;
            });
            QVERIFY2(on_line != s.runs.end(), qPrintable(text));
        }
        const auto* note = s.find_run(QStringLiteral("L8905 14,5"));
        QVERIFY(note && note->y > s.find_run(QStringLiteral("L8904: L8902"))->y);
        // A stricter limit of the report's own is the one printed.
        r.limits.o2_min = 90;
        RecordingSurface stricter;
        print_report(stricter, r, captions(), QLocale());
        QVERIFY(stricter.find_run(QStringLiteral("\u2265 90")));
    }

    // Ticked boxes, two or all but one: each tick is two strokes drawn twice,
    // and no other box gets one.
    void ticks() {
        for (const QStringList& ticked :
             {QStringList{"ck_Minflow", "ck_Typenschild"},
              QStringList{"ck_Selbsttest", "ck_Ansaugtest", "ck_Maxflow", "ck_Minflow",
                          "ck_Visuell", "ck_Leistung", "ck_Typenschild"}}) {
            ReportRecord r = filled();
            for (const QString& key : ticked)
                r.set_value(key, QStringLiteral("1"));
            RecordingSurface s;
            print_report(s, r, captions(), QLocale());
            // 8 boxes of 4 sides, the result's frame, 2 signature lines, 4
            // strokes per tick.
            QCOMPARE(int(std::count_if(s.lines.begin(), s.lines.end(),
                                       [](const auto& l) { return l.colour == print::black; })),
                     8 * 4 + 4 + 2 + 4 * int(ticked.size()));
        }
    }
};

QTEST_MAIN(TestReportPrint)
#include "test_report_print.moc"
