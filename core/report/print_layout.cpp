#include "report/print_layout.h"

#include "print/fixed_text.h"

#include <QRegularExpression>

#include <algorithm>

namespace veltrako::report::layout {

using print::Alignment;
using print::DrawingSurface;
using print::fitted_text;

namespace {

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

} // namespace

QString markup_safe(QString text) {
    return text.replace(QLatin1Char('\''), QChar(0x2019))
        .replace(QLatin1Char('\t'), QLatin1Char(' '));
}

void use_font(DrawingSurface& s, double points, bool bold, const QString& name) {
    print::FontSpec f;
    f.name = name;
    f.points = points;
    f.bold = bold;
    s.set_font(f);
}

void plain(DrawingSurface& s, double x, double y, const QString& text, Alignment alignment) {
    s.move_to(x, y);
    print::print_run(s, text, alignment);
}

QString one_line(QString text) {
    static const QRegularExpression breaks(QStringLiteral("[\r\n\t]+"));
    return text.replace(breaks, QStringLiteral(" ")).trimmed();
}

PageLayout::PageLayout(DrawingSurface& s, const config::LanguageTables& language)
    : s_(s), language_(language) {
    // About 15 mm inside the printable area on every side.
    left = 850;
    right = s.scale_width() - 850;
    bottom = s.scale_height() - 700;
    y = 700;
}

void PageLayout::need(double needed, double limit) {
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

void PageLayout::markup(const QString& line, const print::TabStops& stops) {
    s_.set_current_y(y);
    print::print_line(s_, line, stops, 0);
    y = s_.current_y();
}

void PageLayout::heading(const QString& caption, double keep_with) {
    y += 160;
    need(400 + keep_with, bottom);
    use_font(s_, 10.5, true);
    const double h = s_.text_height(QStringLiteral("X"));
    s_.fill_box(left, y - 30, right, y + h + 30, band_grey);
    markup(QStringLiteral("'b'") + markup_safe(caption) + QStringLiteral("'/b'"), {left + 80});
    y += 90;
}

void PageLayout::field(double x, double caption_width, double x_end, int caption,
                       const QString& value) {
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

void PageLayout::check(double x, double row_y, const QString& caption, bool checked) {
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

namespace {

// Typed text in lines of `width` characters, broken between words where it
// can be; a word longer than a line is cut into pieces of its width.
QStringList box_lines(const QString& value, int width) {
    QStringList lines;
    static const QRegularExpression breaks(QStringLiteral("\r\n|\r|\n"));
    for (const QString& paragraph : value.split(breaks))
        for (const QString& words : word_lines(paragraph, width)) {
            const QString wrapped = print::wrap_fixed(words, width, 0);
            for (const QString& l : wrapped.split(QStringLiteral("\r\n")))
                lines << l;
        }
    while (!lines.isEmpty() && lines.constLast().trimmed().isEmpty())
        lines.removeLast();
    return lines;
}

constexpr double box_pad = 100;

} // namespace

int PageLayout::box_characters(double width) const {
    return std::max(10,
                    static_cast<int>((width - 2 * box_pad) / s_.text_width(QStringLiteral("0"))));
}

void PageLayout::frame(double x1, double y1, double x2, double y2) {
    s_.draw_line(x1, y1, x2, y1, rule_grey);
    s_.draw_line(x2, y1, x2, y2, rule_grey);
    s_.draw_line(x2, y2, x1, y2, rule_grey);
    s_.draw_line(x1, y2, x1, y1, rule_grey);
}

void PageLayout::text_box(const QString& value, int min_lines) {
    use_font(s_, 9.5, false, remark_font);
    const double h = s_.text_height(QStringLiteral("X"));
    const QStringList lines = box_lines(value, box_characters(right - left));
    const int shown = std::max<int>(min_lines, static_cast<int>(lines.size()));
    int i = 0;
    while (i < shown) {
        // As many lines as fit on this page go into one box.
        need(h + 2 * box_pad, bottom);
        const double top = y;
        const int room = std::max(1, static_cast<int>((bottom - top - 2 * box_pad) / h));
        const int count = std::min(shown - i, room);
        for (int k = 0; k < count; ++k, ++i)
            if (i < lines.size())
                plain(s_, left + box_pad, top + box_pad + k * h, without_padding(lines[i]));
        const double box_bottom = top + 2 * box_pad + count * h;
        frame(left, top, right, box_bottom);
        y = box_bottom;
        if (i < shown)
            need(bottom, bottom); // the rest goes on the next page
    }
}

bool PageLayout::text_boxes_side_by_side(const QString& left_caption, const QString& left_value,
                                         const QString& right_caption, const QString& right_value,
                                         int min_lines, int max_lines) {
    use_font(s_, 9.5, false, remark_font);
    const double gap = 250;
    const double mid = (left + right) / 2;
    const int width = box_characters(mid - gap / 2 - left);
    const QStringList left_lines = box_lines(left_value, width);
    const QStringList right_lines = box_lines(right_value, width);
    const int shown =
        std::max<int>(min_lines, static_cast<int>(std::max(left_lines.size(), right_lines.size())));
    if (shown > max_lines)
        return false;
    const double h = s_.text_height(QStringLiteral("X"));
    const double box_height = 2 * box_pad + shown * h;
    heading(left_caption, box_height);
    // The band is the heading's; the second caption goes into it.
    use_font(s_, 10.5, true);
    plain(s_, mid + gap / 2 + 80, y - 90 - s_.text_height(QStringLiteral("X")),
          markup_safe(right_caption));
    use_font(s_, 9.5, false, remark_font);
    const double top = y;
    const std::pair<double, const QStringList*> boxes[] = {{left, &left_lines},
                                                           {mid + gap / 2, &right_lines}};
    for (const auto& [x, lines] : boxes) {
        for (qsizetype k = 0; k < lines->size(); ++k)
            plain(s_, x + box_pad, top + box_pad + static_cast<double>(k) * h,
                  without_padding((*lines)[k]));
        frame(x, top, x + (mid - gap / 2 - left), top + box_height);
    }
    y = top + box_height;
    return true;
}

void PageLayout::row(const QString& caption, const std::optional<QString>& value, double x,
                     double x_end, double row_y) {
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

double PageLayout::rows(const CaptionRows& data, double x, double x_end, double top,
                        double points) {
    use_font(s_, points);
    double row_y = top;
    for (const auto& [caption, value] : data) {
        row(caption, value, x, x_end, row_y);
        row_y += row_height();
    }
    return row_y;
}

void PageLayout::paired_rows(const CaptionRows& left_rows, double x_mid_end,
                             const QString& right_title, const CaptionRows& right_rows,
                             double x_mid, double tail) {
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

} // namespace veltrako::report::layout
