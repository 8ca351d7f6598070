#include "compliance/compliance_chart.h"

#include "config/language.h"
#include "device/device_view.h"
#include "print/markup.h"

namespace veltrako::compliance {

namespace {

const QString tall = QStringLiteral("Xg");

} // namespace

ChartTexts chart_texts(const config::LanguageTables& language, const QLocale& numbers) {
    return {language.text(6001), language.text(6002), language.words, numbers};
}

QString month_title(Stamp month, const QLocale& locale) {
    const QDate d = from_stamp(month).date();
    // The stand-alone form: in some languages the name inside a date differs.
    return locale.standaloneMonthName(d.month()) + QLatin1Char(' ') +
           locale.toString(d, QStringLiteral("yyyy"));
}

Month compliance_draw(print::DrawingSurface& surface, double left, double top, double width,
                      double height, double fontsize, ComplianceState& state,
                      const ComplianceRecords& records, const ChartTexts& texts, Stamp now) {
    const Month month = compliance_month_pass(state, records, now);

    const double m = 0.005 * width;
    const double title_size = 1.2 * fontsize;
    surface.set_font_size(fontsize);
    surface.set_bold(false);
    const double left_margin = surface.text_width(QStringLiteral("XXXXX")) + m;
    const double right_margin = surface.text_width(QStringLiteral("X")) + m;
    const double top_margin = 3 * surface.text_height(tall) + m;
    const double bottom_margin = 3 * surface.text_height(tall) + m;
    const double hour_step = (height - top_margin - bottom_margin) / 24;
    // Always a 31st of the plot: a short month leaves the right part empty.
    const double day_step = (width - left_margin - right_margin) / 31;
    const double x0 = left + left_margin;
    const double y0 = top + top_margin; // 24:00
    const double y24 = y0 + 24 * hour_step;

    // Title.
    const QString title = month_title(month.start, texts.words);
    surface.set_bold(true);
    surface.set_font_size(title_size);
    surface.move_to(left + (width - surface.text_width(title)) / 2, top + m);
    surface.print(title, false);
    surface.set_bold(false);
    surface.set_font_size(fontsize);

    // Axis titles: the hours' turned to read upwards, centred on the left edge.
    surface.move_to(left + m, top + (height + surface.text_width(texts.hour_axis)) / 2);
    print::print_rotated(surface, 90, texts.hour_axis);
    surface.move_to(left + (width - surface.text_width(texts.day_axis)) / 2,
                    top + height - surface.text_height(texts.day_axis));
    surface.print(texts.day_axis, false);

    // Bars. Day d (1-based) of a moment and its height in that day's column.
    const auto day_of = [&](Stamp t) {
        return static_cast<int>((t - month.start) / seconds_per_day) + 1;
    };
    const auto y_of = [&](Stamp t, int day) {
        const Stamp day_start = month.start + (day - 1) * seconds_per_day;
        const double f = 1.0 - static_cast<double>(t - day_start) / seconds_per_day;
        return y0 + f * 24 * hour_step;
    };
    const auto bar = [&](int day, double y_low, double y_high) {
        // A stretch that ends at midnight leaves nothing on the next day.
        if (day < 1 || day > month.days || y_low == y_high)
            return;
        surface.fill_box(x0 + (day - 1) * day_step, y_low, x0 + day * day_step, y_high, bar_colour);
    };
    for (const Period& p : month.periods) {
        const int ds = day_of(p.start);
        const int de = day_of(p.end);
        if (ds == de) {
            bar(ds, y_of(p.start, ds), y_of(p.end, ds));
            continue;
        }
        bar(ds, y_of(p.start, ds), y0);
        for (int d = ds + 1; d < de; ++d)
            bar(d, y24, y0);
        bar(de, y24, y_of(p.end, de));
    }

    // Hour grid with its labels left of the plot.
    const double grid_right = x0 + month.days * day_step;
    for (int h = 0; h <= 24; ++h) {
        const double y = y0 + h * hour_step;
        surface.draw_line(x0, y, grid_right, y, grid_colour);
        const QString label = device::format_value(24 - h, 0, texts.numbers);
        surface.move_to(x0 - surface.text_width(label) - m, y - surface.text_height(label) / 2);
        surface.print(label, false);
    }
    // Day grid with the day numbers under the 00:00 line.
    for (int d = 0; d <= month.days; ++d) {
        const double x = x0 + d * day_step;
        surface.draw_line(x, y0, x, y24, grid_colour);
        if (d == 0)
            continue;
        const QString label = device::format_value(d, 0, texts.numbers);
        surface.move_to(x0 + (d - 0.5) * day_step - surface.text_width(label) / 2, y24 + m);
        surface.print(label, false);
    }
    return month;
}

} // namespace veltrako::compliance
