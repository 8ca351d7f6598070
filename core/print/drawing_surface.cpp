#include "print/drawing_surface.h"

#include <QRegularExpression>

namespace veltrako::print {

namespace {
const QRegularExpression& line_break() {
    static const QRegularExpression pattern(QStringLiteral("\r\n|\r|\n"));
    return pattern;
}
} // namespace

int DrawingSurface::line_count(const QString& text) {
    int lines = 1;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (text[i] == QLatin1Char('\n'))
            ++lines;
        else if (text[i] == QLatin1Char('\r')) {
            ++lines;
            if (i + 1 < text.size() && text[i + 1] == QLatin1Char('\n'))
                ++i;
        }
    }
    return lines;
}

void DrawingSurface::print(const QString& text, bool line_end) {
    const QStringList lines = text.split(line_break());
    for (qsizetype i = 0; i < lines.size(); ++i) {
        const QString& line = lines[i];
        if (i > 0)
            move_to(0, y_ + text_height(QString()));
        if (!line.isEmpty()) {
            draw_text(x_, y_, line);
            x_ += text_width(line);
        }
    }
    if (line_end)
        move_to(0, y_ + text_height(QString()));
}

QString fitted_text(const DrawingSurface& s, const QString& text, double width) {
    if (s.text_width(text) <= width)
        return text;
    QString cut = text;
    while (!cut.isEmpty() && s.text_width(cut + QChar(0x2026)) > width)
        cut.chop(1);
    return cut + QChar(0x2026);
}

} // namespace veltrako::print
