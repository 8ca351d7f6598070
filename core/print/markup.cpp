#include "print/markup.h"

#include <QLocale>

namespace veltrako::print {

namespace {

constexpr QChar quote = QLatin1Char('\'');

// Where the base line lies below the top of a run, as a share of the line
// height: a size change keeps the runs of a line on one base line.
constexpr double base_line_share = 0.8;

// Largest font size a tag may set, in points.
constexpr double largest_size = 2160;

QString trim_blanks(const QString& text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text[first] == QLatin1Char(' '))
        ++first;
    while (last > first && text[last - 1] == QLatin1Char(' '))
        --last;
    return text.mid(first, last - first);
}

// The size in points, or 0 when the text is no usable size. Both decimal
// marks are taken, so a line written on either kind of system reads the same.
double parse_size(const QString& text) {
    QString number = text;
    number.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    const double points = QLocale::c().toDouble(number, &ok);
    return ok && points > 0 && points <= largest_size ? points : 0;
}

void apply_tag(DrawingSurface& surface, const QString& tag, Alignment& alignment) {
    if (tag == QLatin1String("b"))
        surface.set_bold(true);
    else if (tag == QLatin1String("u"))
        surface.set_underline(true);
    else if (tag == QLatin1String("/b"))
        surface.set_bold(false);
    else if (tag == QLatin1String("/u"))
        surface.set_underline(false);
    else if (tag == QLatin1String("right"))
        alignment = Alignment::right;
    else if (tag == QLatin1String("center"))
        alignment = Alignment::center;
    else if (tag == QLatin1String("left"))
        alignment = Alignment::left;
    else if (tag.startsWith(QLatin1String("font"))) {
        const QString name = trim_blanks(tag.mid(4));
        if (!name.isEmpty())
            surface.set_font_name(name);
    } else if (tag.startsWith(QLatin1String("size"))) {
        const double points = parse_size(trim_blanks(tag.mid(4)));
        if (points > 0) {
            const QString m = QStringLiteral("m");
            surface.set_current_y(surface.current_y() + base_line_share * surface.text_height(m));
            surface.set_font_size(points);
            surface.set_current_y(surface.current_y() - base_line_share * surface.text_height(m));
        }
    }
}

} // namespace

bool print_line(DrawingSurface& surface, const QString& text, const TabStops& tab_stops,
                int page_left) {
    const QStringList columns = text.split(QLatin1Char('\t'));
    for (qsizetype i = 0; i < columns.size(); ++i) {
        if (static_cast<std::size_t>(i) >= tab_stops.size())
            return false;
        surface.set_current_x(tab_stops[static_cast<std::size_t>(i)] + page_left);
        print_markup(surface, columns[i]);
    }
    if (text.isEmpty())
        surface.set_current_y(surface.current_y() + surface.text_height(QStringLiteral("X")) / 2);
    else
        surface.print(QString(), true);
    return true;
}

QString print_markup(DrawingSurface& surface, const QString& column) {
    Alignment alignment = Alignment::left;
    QString pending;
    for (qsizetype i = 0; i < column.size(); ++i) {
        if (column[i] != quote) {
            pending += column[i];
            continue;
        }
        print_run(surface, pending, alignment);
        pending.clear();
        const qsizetype close = column.indexOf(quote, i + 1);
        if (close < 0)
            return markup_error;
        apply_tag(surface, column.mid(i + 1, close - i - 1), alignment);
        i = close;
    }
    print_run(surface, pending, alignment);
    return {};
}

void print_run(DrawingSurface& surface, const QString& text, Alignment alignment) {
    if (text.isEmpty())
        return;
    if (alignment == Alignment::right)
        surface.set_current_x(surface.current_x() - surface.text_width(text));
    else if (alignment == Alignment::center)
        surface.set_current_x(surface.current_x() - surface.text_width(text) / 2);
    surface.print(text, false);
}

FontSpec create_font(double points, const QString& face_name, double angle) {
    FontSpec font;
    font.name = face_name;
    font.points = points;
    font.angle = angle;
    return font;
}

void print_rotated(DrawingSurface& surface, double angle, const QString& text) {
    QString name = surface.font().name;
    name.remove(QLatin1Char(' '));
    surface.draw_turned_text(surface.current_x(), surface.current_y(),
                             create_font(surface.font().points, name, angle), text);
}

} // namespace veltrako::print
