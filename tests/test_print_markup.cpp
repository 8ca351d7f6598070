// The print markup on the recording surface: runs and fonts, where they sit
// against tab stops and base line, how far a line moves down, the fixed-width
// text wrapping, and which printer the print dialog opens on. Turned text is
// checked where it lands: test_print_pdf and test_compliance_chart.

#include "print/fixed_text.h"
#include "print/markup.h"
#include "print/printer_choice.h"
#include "print/recording_surface.h"
#include "table.h"

using namespace veltrako::print;
using veltrako::testing::Table;

namespace {

// "text|flags|points|name" per run, flags B for bold and U for underline.
QStringList describe_all(const RecordingSurface& surface) {
    QStringList all;
    for (const RecordedRun& run : surface.runs)
        all << QStringLiteral("%1|%2%3|%4|%5")
                   .arg(run.text, run.font.bold ? QStringLiteral("B") : QString(),
                        run.font.underline ? QStringLiteral("U") : QString())
                   .arg(run.font.points)
                   .arg(run.font.name);
    return all;
}

} // namespace

using Runs = Table<QString, QStringList, bool>; // column, runs, answered with "ERROR"
// line, tab stops, page_left, run, its edge in half widths (0 left, 1
// centre, 2 right), where that edge lies
using Positions = Table<QString, TabStops, int, QString, int, double>;
// line, tab stops, result, lines down in 10-point line heights, printed
using Advance = Table<QString, int, bool, double, QStringList>;
using Wrap = Table<QString, int, int, QString>; // text, width, indent, wrapped
// default, printer chosen (empty: a file), next default, printer offered
// first and next (empty: the dialog opens on a file)
using Offered = Table<QString, QString, QString, QString, QString>;

class TestPrintMarkup : public QObject {
    Q_OBJECT
private slots:
    void runs_and_fonts_data() {
        const Runs row;
        row("bold run then normal run", "'b'Strong'/b' plain",
            QStringList{"Strong|B|10|Arial", " plain||10|Arial"}, false);
        row("underline on and off", "'u'under'/u'over",
            QStringList{"under|U|10|Arial", "over||10|Arial"}, false);
        row("bold and underline together", "'b''u'both", QStringList{"both|BU|10|Arial"}, false);
        row("unknown tag bold", "'bold'word", QStringList{"word||10|Arial"}, false);
        row("tags are case-sensitive", "'B'word'U'", QStringList{"word||10|Arial"}, false);
        row("empty tag ignored, no literal quote", "it''s",
            QStringList{"it||10|Arial", "s||10|Arial"}, false);
        row("font name trimmed", "'font  Courier New 'x", QStringList{"x||10|Courier New"}, false);
        row("font without blank", "'fontTimes'x", QStringList{"x||10|Times"}, false);
        row("font without a name keeps the font", "'font 'x", QStringList{"x||10|Arial"}, false);
        row("size with decimal comma", "'size 7,5'x", QStringList{"x||7.5|Arial"}, false);
        row("size that is no number", "'size abc'x", QStringList{"x||10|Arial"}, false);
        row("alignment tags print nothing", "'center''right''left'", QStringList{}, false);
        row("unclosed quote", "abc'b", QStringList{"abc||10|Arial"}, true);
        row("unclosed after a tag", "x'b'y'/b", QStringList{"x||10|Arial", "y|B|10|Arial"}, true);
    }

    void runs_and_fonts() {
        const auto [column, runs, error] = Runs::fetch();
        RecordingSurface surface;
        surface.move_to(1000, 1000);
        QCOMPARE(print_markup(surface, column), error ? QStringLiteral("ERROR") : QString());
        QCOMPARE(describe_all(surface), runs);
        for (const RecordedRun& run : surface.runs)
            QCOMPARE(run.y,
                     1000.0 - (run.font.points - 10) * 0.8 * 24); // top moves with the size only
    }

    void run_positions_data() {
        const Positions row;
        const TabStops middle{0, 5953};
        row("centred under the middle of the page", "\t'center'Title", middle, 15, "Title", 1,
            5968.0);
        row("title line: bold, larger, centred",
            "\t'center''size 13''b'Compliance'/b''size 11''/center'", middle, 15, "Compliance", 1,
            5968.0);
        row("right edge on the stop", "'right'99,5", TabStops{4000}, 0, "99,5", 2, 4000.0);
        row("left edge on the stop plus page_left", "a\tb", TabStops{100, 3000}, 15, "b", 0,
            3015.0);
        row("alignment back to left in the next column", "'right'a\tb", TabStops{2000, 3000}, 0,
            "b", 0, 3000.0);
        row("normal run after a bold run", "'b'Bold'/b'Normal", TabStops{1000}, 0, "Normal", 0,
            1000 + RecordingSurface::width_in(FontSpec{.bold = true}, QStringLiteral("Bold")));
        row("column after an unclosed quote", "abc'b\tnext", TabStops{0, 2000}, 0, "next", 0,
            2000.0);
    }

    void run_positions() {
        const auto [line, tab_stops, page_left, run, edge, expected] = Positions::fetch();
        RecordingSurface surface;
        surface.move_to(0, 500);
        QVERIFY(print_line(surface, line, tab_stops, page_left));
        const RecordedRun* found = surface.find_run(run);
        QVERIFY(found);
        QCOMPARE(found->x + RecordingSurface::width_of(*found) * edge / 2, expected);
    }

    void sizes_share_base_line_data() {
        Table<int, int>()("14 then 10", 14, 10)("10 then 14", 10, 14);
    }
    void sizes_share_base_line() {
        const auto [first, second] = Table<int, int>::fetch();
        RecordingSurface surface;
        surface.move_to(0, 3000);
        print_line(surface, QStringLiteral("'size %1'Big'size %2'small").arg(first).arg(second),
                   {1000}, 0);
        QCOMPARE(surface.runs.size(), std::size_t(2));
        const RecordedRun& big = surface.runs[0];
        const RecordedRun& small = surface.runs[1];
        QVERIFY(big.font.points == first && small.font.points == second);
        QCOMPARE(RecordingSurface::base_line_of(small), RecordingSurface::base_line_of(big));
        QCOMPARE(small.x, big.x + RecordingSurface::width_of(big));
        // The base line is where a 10-point run started at 3000 would have it.
        FontSpec ten;
        QCOMPARE(RecordingSurface::base_line_of(big),
                 3000 + 0.8 * RecordingSurface::height_in(ten, QStringLiteral("m")));
    }

    void line_advance_data() {
        const Advance row;
        row("empty line: half the height of X", "", 1, true, 0.5, QStringList{});
        row("text line", "text", 1, true, 1.0, QStringList{"text"});
        row("columns", "a\tb\tc", 3, true, 1.0, QStringList{"a", "b", "c"});
        row("only tags", "'b''/b'", 1, true, 1.0, QStringList{});
        row("missing tab stop ends the line", "a\tb\tc", 2, false, 0.0, QStringList{"a", "b"});
        row("no tab stop at all", "a", 0, false, 0.0, QStringList{});
    }

    void line_advance() {
        const auto [line, stop_count, result, lines_down, printed] = Advance::fetch();
        RecordingSurface surface;
        surface.move_to(777, 1000);
        const double line_height = surface.text_height(QStringLiteral("X"));
        TabStops stops;
        for (int i = 0; i < stop_count; ++i)
            stops.push_back(2000.0 * i);
        QCOMPARE(print_line(surface, line, stops, 0), result);
        QCOMPARE(surface.current_y(), 1000 + lines_down * line_height);
        QCOMPARE(surface.run_texts(), printed);
        for (const RecordedRun& run : surface.runs)
            QCOMPARE(run.y, 1000.0);
    }

    // Fonts carry over to the next line (alignment does not: run_positions).
    void settings_outlast_the_line() {
        RecordingSurface surface;
        QVERIFY(print_line(surface, QStringLiteral("'b''u''font Courier''size 12'first"), {0}, 0));
        QVERIFY(print_line(surface, QStringLiteral("second"), {0}, 0));
        QCOMPARE(describe_all(surface),
                 (QStringList{"first|BU|12|Courier", "second|BU|12|Courier"}));
        QVERIFY(surface.runs[1].y > surface.runs[0].y);
    }

    void wrap_fixed_data() {
        const Wrap row;
        row("last piece padded", "abcdefgh", 3, 2, "abc\r\n  def\r\n  gh ");
        row("exact multiple: last piece as it is", "abcdef", 3, 1, "abc\r\n def");
        row("short text padded", "ab", 4, 0, "ab  ");
        row("exactly one piece", "abcd", 4, 3, "abcd");
        row("empty text", "", 3, 5, "   ");
        row("no width", "abcd", 0, 2, "abcd");
    }

    void wrap_fixed() {
        const auto [text, width, indent, expected] = Wrap::fetch();
        QCOMPARE(veltrako::print::wrap_fixed(text, width, indent), expected);
    }

    void printer_offered_data() {
        const Offered row;
        row("another printer chosen", "Office", "Lab", "Office", "Office", "Lab");
        row("the default chosen, default changed since", "Office", "Office", "Lab", "Office",
            "Office");
        row("printed to a file", "Office", "", "Office", "Office", "");
        row("no printer installed", "", "", "", "", "");
    }

    void printer_offered() {
        const auto [first_default, chosen_printer, second_default, first, second] =
            Offered::fetch();
        PrinterChoice choice;
        QCOMPARE(begin_printer_choice(choice, first_default), first);
        end_printer_choice(choice, chosen_printer);
        QCOMPARE(begin_printer_choice(choice, second_default), second);
        QCOMPARE(choice.to_file, chosen_printer.isEmpty());
        QCOMPARE(choice.printer_default, second_default);
    }
};

QTEST_GUILESS_MAIN(TestPrintMarkup)
#include "test_print_markup.moc"
