#include "report/measurement_print.h"

#include "device/device_view.h"
#include "print/drawing_surface.h"
#include "print/markup.h"

#include <algorithm>

namespace veltrako::report {

namespace {

using namespace layout;
using print::Alignment;
using print::DrawingSurface;
using print::fitted_text;

// Captions of the table: the box's own captions, the column titles.
constexpr int text_heading = 11250;
constexpr int text_o2 = 11251;
constexpr int text_flow = 11252;
constexpr int text_class = 11253;
constexpr int text_earth = 11254;
constexpr int text_leakage = 11255;
constexpr int text_instruments = 11256;
constexpr int text_result = 8904;
constexpr int text_columns = 8907;  // value, unit, limit, verdict: 8907..8910
constexpr int text_set_flow = 8914; // "Soll %1 l/min"
constexpr int text_not_applicable = 8915;

constexpr double table_points = 9.5;

// Where the columns start, as shares of the page's width: the value ends at
// its edge (numbers right-aligned), the rest begin at theirs.
struct Columns {
    double caption, value_end, unit, limit, verdict, text;
};
Columns columns(const PageLayout& page) {
    const double w = page.right - page.left;
    return {page.left + 80,       page.left + 0.46 * w, page.left + 0.49 * w,
            page.left + 0.59 * w, page.left + 0.75 * w, page.left + 0.33 * w};
}

// The value as the report shows it: a number in the user's form, anything
// else (a file's) as it stands.
QString shown_value(const QString& typed, const QLocale& locale) {
    const std::optional<double> v = parse_measurement(typed);
    return v ? measurement_text(*v, locale) : one_line(typed);
}

} // namespace

void print_measurements(PageLayout& page, const ReportRecord& report, const Judgement& judgement,
                        const QLocale& locale) {
    DrawingSurface& s = page.s_;
    const Columns c = columns(page);
    use_font(s, table_points);
    const double h = page.row_height();
    // The band names the columns, and keeps the table's first rows with it.
    page.heading(page.text(text_heading), 3 * h);
    const double band_y = page.y - 90;
    use_font(s, 8, true);
    const double titles_y = band_y - s.text_height(QStringLiteral("X")) - 10;
    const double title_x[] = {c.value_end, c.unit, c.limit, c.verdict};
    for (int i = 0; i < 4; ++i)
        plain(s, title_x[i], titles_y, page.text(text_columns + i),
              i == 0 ? Alignment::right : Alignment::left);

    const auto value = [&](const char* key) { return report.value(QLatin1String(key)); };
    const auto line = [&](const QString& caption, const QString& shown, const QString& unit,
                          const QString& limit, const QString& verdict, bool failed) {
        page.need(h, page.bottom);
        use_font(s, table_points);
        plain(s, c.caption, page.y + 25, fitted_text(s, caption, c.value_end - c.caption - 900));
        use_font(s, table_points, true);
        plain(s, c.value_end, page.y + 25, fitted_text(s, shown, 850), Alignment::right);
        use_font(s, table_points);
        plain(s, c.unit, page.y + 25, unit);
        plain(s, c.limit, page.y + 25, limit);
        use_font(s, table_points, failed);
        plain(s, c.verdict, page.y + 25, fitted_text(s, verdict, page.right - c.verdict));
        s.draw_line(page.left, page.y + h, page.right, page.y + h, row_grey);
        page.y += h;
    };
    const auto judged = [&](int caption, const char* key, const QString& unit, const Judged& j) {
        line(page.text(caption), shown_value(value(key), locale), unit, limit_caption(j, locale),
             verdict_text(j.verdict, page.language_), j.verdict == Verdict::fail);
    };

    judged(text_o2, key_o2, QStringLiteral("%"), judgement.o2);
    QString flow = page.text(text_flow);
    if (judgement.set_flow)
        flow += QStringLiteral(" (") +
                page.text(text_set_flow).arg(device::format_value(*judgement.set_flow, 1, locale)) +
                QLatin1Char(')');
    line(flow, shown_value(value(key_flow), locale), QStringLiteral("l/min"),
         limit_caption(judgement.flow, locale),
         verdict_text(judgement.flow.verdict, page.language_),
         judgement.flow.verdict == Verdict::fail);
    line(page.text(text_class), one_line(value(key_protection_class)), {}, {}, {}, false);
    if (judgement.protection_class == ProtectionClass::ii)
        line(page.text(text_earth), shown_value(value(key_earth), locale), QStringLiteral("\u03a9"),
             QStringLiteral("\u2013"), page.text(text_not_applicable), false);
    else
        judged(text_earth, key_earth, QStringLiteral("\u03a9"), judgement.earth);
    judged(text_leakage, key_leakage, QStringLiteral("mA"), judgement.leakage);

    // The instruments: free text from the text column to the right edge.
    page.need(h, page.bottom);
    use_font(s, table_points);
    plain(s, c.caption, page.y + 25, page.text(text_instruments));
    plain(s, c.text, page.y + 25,
          fitted_text(s, one_line(value(key_instruments)), page.right - c.text - 40));
    s.draw_line(page.left, page.y + h, page.right, page.y + h, row_grey);
    page.y += h;
}

double result_frame_height(DrawingSurface& s, const Judgement& judgement) {
    use_font(s, 11, true);
    double h = s.text_height(QStringLiteral("X")) + 2 * 90;
    if (judgement.o2_deviation) {
        use_font(s, 9);
        h += s.text_height(QStringLiteral("X")) + 30;
    }
    return h;
}

void print_result_frame(PageLayout& page, double top, const Judgement& judgement,
                        const QLocale& locale) {
    DrawingSurface& s = page.s_;
    const double bottom = top + result_frame_height(s, judgement);
    s.draw_line(page.left, top, page.right, top, print::black);
    s.draw_line(page.right, top, page.right, bottom, print::black);
    s.draw_line(page.right, bottom, page.left, bottom, print::black);
    s.draw_line(page.left, bottom, page.left, top, print::black);
    use_font(s, 11, true);
    double y = top + 90;
    plain(s, page.left + 120, y,
          page.text(text_result) + QStringLiteral(": ") +
              result_text(judgement.result, page.language_));
    y += s.text_height(QStringLiteral("X")) + 30;
    const QString note = o2_sensor_note(judgement, page.language_, locale);
    if (!note.isEmpty()) {
        use_font(s, 9);
        plain(s, page.left + 120, y, fitted_text(s, note, page.right - page.left - 240));
    }
}

} // namespace veltrako::report
