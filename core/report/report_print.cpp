#include "report/report_print.h"

#include "config/language.h"
#include "device/device_view.h"
#include "device/parameter_values.h"
#include "print/drawing_surface.h"
#include "print/fixed_text.h"
#include "print/markup.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>
#include <optional>

namespace veltrako::report {

namespace {

using print::Alignment;
using print::DrawingSurface;
using print::fitted_text;
using print::Rgb;

constexpr Rgb rule_grey{150, 150, 150};
constexpr Rgb band_grey{232, 232, 232};
constexpr Rgb row_grey{215, 215, 215};
const QString body_font = QStringLiteral("Arial");
// Remarks are broken into lines by character count: a fixed pitch keeps
// them inside their box.
const QString remark_font = QStringLiteral("Courier New");

// The device keys of the data block with the language text of their caption
// (the captions of the "Gerät" page, units included).
struct KeyCaption {
    const char* key;
    int text;
};
constexpr KeyCaption device_rows[] = {
    {"SN", 11011},
    {"LP", 11013},
    {"SW", 11015},
    {"BSTD", 11016},
    {"REST", 11019},
    {"O2", 11026},
    {"VOLUMENSTROM", 11027},
    {"SOLL_VOLUMENSTROM", 11028},
    {"GASTEMP", 11031},
    {"KOMPRESSORTEMP", 11032},
    {"MIN_VOLUMENSTROM", 11023},
    {"MAX_VOLUMENSTROM", 11024},
    {"ALARMSIGNAL", 7015},
};

// Device steps of the valve timings, in seconds.
constexpr double timing_step = 0.04;

// A language text inside a markup line: a single quote would open a tag and
// a tab start a column, so they become a typographic apostrophe and a blank.
QString markup_safe(QString text) {
    return text.replace(QLatin1Char('\''), QChar(0x2019))
        .replace(QLatin1Char('\t'), QLatin1Char(' '));
}

void use_font(DrawingSurface& s, double points, bool bold = false,
              const QString& name = body_font) {
    print::FontSpec f;
    f.name = name;
    f.points = points;
    f.bold = bold;
    s.set_font(f);
}

// Text typed by a person, printed as it stands at (x, y).
void plain(DrawingSurface& s, double x, double y, const QString& text,
           Alignment alignment = Alignment::left) {
    s.move_to(x, y);
    print::print_run(s, text, alignment);
}

// One line of text, the line breaks of typed text made blanks.
QString one_line(QString text) {
    static const QRegularExpression breaks(QStringLiteral("[\r\n\t]+"));
    return text.replace(breaks, QStringLiteral(" ")).trimmed();
}

// A line of wrap_fixed without the blanks that pad it to the box width.
QString without_padding(QString line) {
    while (line.endsWith(QLatin1Char(' ')))
        line.chop(1);
    return line;
}

// A paragraph in lines of at most `width` characters, broken between words
// where it can be.
QStringList word_lines(const QString& paragraph, int width) {
    QStringList lines;
    QString line;
    for (const QString& word : paragraph.split(QLatin1Char(' '))) {
        if (!line.isEmpty() && line.size() + 1 + word.size() > width) {
            lines << line;
            line.clear();
        }
        line += line.isEmpty() ? word : QLatin1Char(' ') + word;
    }
    lines << line;
    return lines;
}

class PageLayout {
public:
    PageLayout(DrawingSurface& s, const config::LanguageTables& language)
        : s_(s), language_(language) {
        // About 15 mm inside the printable area on every side.
        left = 850;
        right = s.scale_width() - 850;
        bottom = s.scale_height() - 700;
        y = 700;
    }

    QString text(int n) const { return language_.text(n); }

    // Moves to the next page when `needed` twips do not fit above `limit`.
    void need(double needed, double limit) {
        if (y + needed <= limit)
            return;
        if (!s_.new_page())
            return;
        y = 700;
        if (continuation.isEmpty())
            return;
        // Every further page says whose report it continues.
        const print::FontSpec font = s_.font();
        use_font(s_, 8);
        plain(s_, left, y, continuation);
        y += s_.text_height(QStringLiteral("X")) + 20;
        s_.draw_line(left, y, right, y, rule_grey);
        y += 120;
        s_.set_font(font);
    }

    // A markup line at y.
    void markup(const QString& line, const print::TabStops& stops) {
        s_.set_current_y(y);
        print::print_line(s_, line, stops, 0);
        y = s_.current_y();
    }

    // A band with the caption; `keep_with` twips of what follows must fit
    // under it, so a caption never ends a page alone.
    void heading(const QString& caption, double keep_with = 500) {
        y += 160;
        need(400 + keep_with, bottom);
        use_font(s_, 10.5, true);
        const double h = s_.text_height(QStringLiteral("X"));
        s_.fill_box(left, y - 30, right, y + h + 30, band_grey);
        markup(QStringLiteral("'b'") + markup_safe(caption) + QStringLiteral("'/b'"), {left + 80});
        y += 90;
    }

    // Caption, then the value on a line to fill in, from x to x_end.
    void field(double x, double caption_width, double x_end, int caption, const QString& value) {
        use_font(s_, 9);
        const double h = s_.text_height(QStringLiteral("X"));
        s_.move_to(x, y + 30);
        print::print_markup(s_, markup_safe(text(caption)));
        use_font(s_, 10.5);
        const double value_x = x + caption_width;
        plain(s_, value_x + 40, y, fitted_text(s_, one_line(value), x_end - value_x - 80));
        const double line_y = y + std::max(h, s_.text_height(QStringLiteral("X"))) + 10;
        s_.draw_line(value_x, line_y, x_end, line_y, rule_grey);
    }

    // A check box with its caption; ticked when `checked`.
    void check(double x, double row_y, const QString& caption, bool checked) {
        use_font(s_, 10);
        const double h = s_.text_height(QStringLiteral("X"));
        const double size = 200;
        const double top = row_y + (h - size) / 2;
        s_.draw_line(x, top, x + size, top, print::black);
        s_.draw_line(x + size, top, x + size, top + size, print::black);
        s_.draw_line(x + size, top + size, x, top + size, print::black);
        s_.draw_line(x, top + size, x, top, print::black);
        if (checked) {
            // A tick drawn with two strokes, a little heavier than the box.
            for (double d : {0.0, 12.0}) {
                s_.draw_line(x + 40, top + 105 + d, x + 85, top + 155 + d, print::black);
                s_.draw_line(x + 85, top + 155 + d, x + 175, top + 35 + d, print::black);
            }
        }
        s_.move_to(x + size + 120, row_y);
        print::print_markup(s_, markup_safe(caption));
    }

    // Typed text broken into lines of a fixed number of characters inside a
    // box of at least `min_lines` lines.
    void text_box(const QString& value, int min_lines) {
        use_font(s_, 9.5, false, remark_font);
        const double pad = 100;
        const double h = s_.text_height(QStringLiteral("X"));
        const int width = std::max(
            10, static_cast<int>((right - left - 2 * pad) / s_.text_width(QStringLiteral("0"))));
        QStringList lines;
        static const QRegularExpression breaks(QStringLiteral("\r\n|\r|\n"));
        for (const QString& paragraph : value.split(breaks))
            for (const QString& words : word_lines(paragraph, width)) {
                // A word longer than the box is cut into pieces of its width.
                const QString wrapped = print::wrap_fixed(words, width, 0);
                for (const QString& l : wrapped.split(QStringLiteral("\r\n")))
                    lines << l;
            }
        while (!lines.isEmpty() && lines.constLast().trimmed().isEmpty())
            lines.removeLast();
        const int shown = std::max<int>(min_lines, static_cast<int>(lines.size()));
        int i = 0;
        while (i < shown) {
            // As many lines as fit on this page go into one box.
            need(h + 2 * pad, bottom);
            const double top = y;
            const int room = std::max(1, static_cast<int>((bottom - top - 2 * pad) / h));
            const int count = std::min(shown - i, room);
            for (int k = 0; k < count; ++k, ++i)
                if (i < lines.size())
                    plain(s_, left + pad, top + pad + k * h, without_padding(lines[i]));
            const double box_bottom = top + 2 * pad + count * h;
            s_.draw_line(left, top, right, top, rule_grey);
            s_.draw_line(right, top, right, box_bottom, rule_grey);
            s_.draw_line(right, box_bottom, left, box_bottom, rule_grey);
            s_.draw_line(left, box_bottom, left, top, rule_grey);
            y = box_bottom;
            if (i < shown)
                need(bottom, bottom); // the rest goes on the next page
        }
    }

    // Height of a caption-and-value row in the present font.
    double row_height() const { return s_.text_height(QStringLiteral("X")) + 50; }

    // One row from x to x_end at row_y: the caption, the value in bold at
    // the right, a thin line under it. A row without a value is a title,
    // its caption in bold.
    void row(const QString& caption, const std::optional<QString>& value, double x, double x_end,
             double row_y) {
        const double h = row_height();
        s_.set_bold(!value);
        s_.move_to(x + 40, row_y + 25);
        print::print_markup(s_, markup_safe(caption));
        s_.set_bold(true);
        if (value)
            plain(s_, x_end - 40, row_y + 25, one_line(*value), Alignment::right);
        s_.set_bold(false);
        s_.draw_line(x, row_y + h, x_end, row_y + h, row_grey);
    }

    // Caption and value rows in a column, with a thin line under each.
    double rows(const CaptionRows& data, double x, double x_end, double top, double points = 9.5) {
        use_font(s_, points);
        double row_y = top;
        for (const auto& [caption, value] : data) {
            row(caption, value, x, x_end, row_y);
            row_y += row_height();
        }
        return row_y;
    }

    // Two columns of rows side by side, from `left` to x_mid_end and from
    // x_mid to `right`, the right one under its title. More than seven right
    // rows stand in two halves side by side, so that fourteen valve timings
    // take no more lines than seven. Rows go line by line: a line that does
    // not fit above the foot of the page goes on the next one, where the
    // right column's title comes again if it has rows left. The last line
    // goes on only with `tail` twips of room under it, so that what follows
    // (the signature) is never left on a page of its own.
    void paired_rows(const CaptionRows& left_rows, double x_mid_end, const QString& right_title,
                     const CaptionRows& right_rows, double x_mid, double tail) {
        use_font(s_, 9.5);
        const std::size_t halves = right_rows.size() > 7 ? 2 : 1;
        const std::size_t right_lines = (right_rows.size() + halves - 1) / halves;
        const double half_width = (right - x_mid) / static_cast<double>(halves);
        std::size_t l = 0;
        std::size_t r = 0; // right lines done
        bool title_due = true;
        while (l < left_rows.size() || r < right_lines || title_due) {
            const double above = y;
            const bool last_line =
                l + 1 >= left_rows.size() && (title_due ? right_lines == 0 : r + 1 >= right_lines);
            need(row_height() + (last_line ? tail : 0), bottom);
            if (y < above && r < right_lines)
                title_due = true;
            if (l < left_rows.size()) {
                row(left_rows[l].first, left_rows[l].second, left, x_mid_end, y);
                ++l;
            }
            if (title_due) {
                row(right_title, std::nullopt, x_mid, right, y);
                title_due = false;
            } else if (r < right_lines) {
                for (std::size_t h = 0; h < halves; ++h) {
                    const std::size_t i = r + h * right_lines;
                    if (i >= right_rows.size())
                        break;
                    const double x = x_mid + static_cast<double>(h) * half_width;
                    // A gap between the halves; the outer edge stays the column's.
                    const double x_end = h + 1 < halves ? x + half_width - 150 : right;
                    row(right_rows[i].first, right_rows[i].second, x, x_end, y);
                }
                ++r;
            }
            y += row_height();
        }
    }

    DrawingSurface& s_;
    const config::LanguageTables& language_;
    double left = 0;
    double right = 0;
    double bottom = 0;
    double y = 0;
    // The line at the top of every further page.
    QString continuation;
};

} // namespace

CaptionRows device_data_rows(const ReportRecord& report, const config::LanguageTables& language,
                             const QLocale& locale) {
    const device::DeviceRecord& d = report.report_device;
    const device::ModelControls model = device::model_controls(d);
    CaptionRows rows;
    for (const KeyCaption& row : device_rows) {
        const QString key = QLatin1String(row.key);
        if ((key.endsWith(QLatin1String("_VOLUMENSTROM")) &&
             key != QLatin1String("SOLL_VOLUMENSTROM") && !model.flow_selectors) ||
            (key == QLatin1String("ALARMSIGNAL") && !model.acoustic))
            continue;
        const QString value = key == QLatin1String("REST")
                                  ? d.rest_text
                                  : device::parameter_value(d, key, locale).trimmed();
        rows.emplace_back(language.text(row.text), value);
    }
    return rows;
}

CaptionRows timing_rows(const ReportRecord& report, const config::LanguageTables& language,
                        const QLocale& locale) {
    const device::DeviceRecord& d = report.report_device;
    const int count = device::model_controls(d).extra_timings ? device::timing_count : 7;
    CaptionRows rows;
    for (int i = 0; i < count; ++i) {
        const QString caption = i < 7 ? language.text(11058 + i)
                                      : language.text(7017) + QLatin1Char(' ') + QString::number(i);
        rows.emplace_back(
            caption,
            device::format_value(d.zeiten[static_cast<std::size_t>(i)] * timing_step, 2, locale));
    }
    return rows;
}

double draw_device_data(DrawingSurface& surface, const ReportRecord& report,
                        const config::LanguageTables& language, const QLocale& locale, double left,
                        double top, double width) {
    if (!report.device_valid())
        return top;
    const double points = surface.font().points;
    PageLayout page(surface, language);
    double y =
        page.rows(device_data_rows(report, language, locale), left, left + width, top, points);
    y += 150;
    surface.move_to(left + 40, y);
    surface.set_bold(true);
    print::print_markup(surface, markup_safe(language.text(7016)));
    surface.set_bold(false);
    y += surface.text_height(QStringLiteral("X")) + 30;
    return page.rows(timing_rows(report, language, locale), left, left + width, y, points);
}

void print_report(DrawingSurface& s, const ReportRecord& report,
                  const config::LanguageTables& language, const QLocale& locale) {
    PageLayout page(s, language);
    const device::DeviceRecord& d = report.report_device;
    const double left = page.left;
    const double right = page.right;
    const double mid = (left + right) / 2;
    const auto value = [&](const char* key) { return report.value(QLatin1String(key)); };

    // Header: title, the date and time of the inspection, then the device
    // identity as a band.
    use_font(s, 16, true);
    page.markup(QStringLiteral("'b'") + markup_safe(language.text(7010)), {left});
    use_font(s, 10);
    const QString when = language.text(7018) + QLatin1Char(' ') + one_line(value("t_Datum")) +
                         QStringLiteral("  ") + one_line(value("t_Uhrzeit"));
    plain(s, left, page.y + 20, when);
    page.y += s.text_height(QStringLiteral("X")) + 60;
    s.fill_box(left, page.y, right, page.y + 40, print::black);
    page.y += 140;

    use_font(s, 8);
    const double caption_h = s.text_height(QStringLiteral("X"));
    use_font(s, 10.5, true);
    const double value_h = s.text_height(QStringLiteral("X"));
    const double band_h = caption_h + value_h + 140;
    s.fill_box(left, page.y, right, page.y + band_h, band_grey);
    const int id_captions[] = {11011, 11013, 11015, 11016};
    const QString id_values[] = {d.SN.trimmed(), d.LP.trimmed(), d.SW, d.BSTD};
    const double column = (right - left) / 4;
    for (int i = 0; i < 4; ++i) {
        const double x = left + 80 + i * column;
        use_font(s, 8);
        s.move_to(x, page.y + 50);
        print::print_markup(s, markup_safe(language.text(id_captions[i])));
        use_font(s, 10.5, true);
        plain(s, x, page.y + 70 + caption_h, fitted_text(s, one_line(id_values[i]), column - 160));
    }
    page.y += band_h;
    page.continuation = language.text(7010) + QStringLiteral(" \u2013 ") + d.SN.trimmed() +
                        QStringLiteral(" \u2013 ") + one_line(value("t_Datum"));

    // Patient and insurer.
    page.heading(language.text(7011));
    use_font(s, 10.5);
    const double row = s.text_height(QStringLiteral("X")) + 170;
    page.field(left, 1500, mid - 250, 11074, value("t_Patient"));
    page.field(mid, 1500, right, 11073, value("t_Krankenkasse"));
    page.y += row;
    page.field(left, 1500, mid - 250, 11075, value("t_Strasse"));
    page.field(mid, 1500, right, 11077, value("t_Telefon"));
    page.y += row;
    page.field(left, 1500, mid - 250, 11076, value("t_Ort"));
    page.y += row;

    // The inspection: who, when.
    page.heading(language.text(7012));
    page.field(left, 1500, mid - 250, 11078, value("t_Pruefer"));
    page.field(mid, 1100, mid + 2500, 11079, value("t_Datum"));
    page.field(mid + 2700, 900, right, 11080, value("t_Uhrzeit"));
    page.y += row;

    // The checks: the functional test in two columns, then the maker's part.
    const auto checked = [&](const char* key) { return check_state(value(key)).value_or(false); };
    page.heading(language.text(11071));
    const std::pair<const char*, int> tests[] = {
        {"ck_Selbsttest", 11081}, {"ck_Ansaugtest", 11082}, {"ck_Maxflow", 11083},
        {"ck_Minflow", 11084},    {"ck_Visuell", 11087},    {"ck_Leistung", 11085},
    };
    use_font(s, 10);
    const double check_row = s.text_height(QStringLiteral("X")) + 110;
    for (int i = 0; i < 6; ++i) {
        const double x = i % 2 == 0 ? left + 80 : mid;
        page.check(x, page.y + (i / 2) * check_row, language.text(tests[i].second),
                   checked(tests[i].first));
    }
    page.y += 3 * check_row;
    page.heading(language.text(11072));
    page.check(left + 80, page.y, language.text(11086), checked("ck_Typenschild"));
    page.check(mid, page.y, language.text(11088), checked("ck_stk"));
    page.y += check_row;

    // Remarks and accessories, as typed.
    page.heading(language.text(11089));
    page.text_box(value("t_Bemerkungen"), 3);
    page.heading(language.text(11090));
    page.text_box(value("t_Zubehoer"), 2);

    // The device data of the snapshot: values left, valve timings right;
    // the caption goes on with a few rows under it.
    use_font(s, 9);
    const double signature_room = 1000 + 60 + s.text_height(QStringLiteral("X")) + 40;
    page.heading(language.text(11070), 2600);
    page.paired_rows(device_data_rows(report, language, locale), mid - 250, language.text(7016),
                     timing_rows(report, language, locale), mid, signature_room);

    // Signature, at the foot of the page of the last rows: they kept room
    // for it.
    use_font(s, 9);
    page.need(signature_room, page.bottom);
    const double line_y =
        std::max(page.y + 1000, page.bottom - s.text_height(QStringLiteral("X")) - 100);
    s.draw_line(left, line_y, left + 4200, line_y, print::black);
    s.draw_line(right - 5000, line_y, right, line_y, print::black);
    s.move_to(left, line_y + 60);
    print::print_markup(s, markup_safe(language.text(7014)));
    s.move_to(right - 5000, line_y + 60);
    print::print_markup(s, markup_safe(language.text(7013)));
}

} // namespace veltrako::report
