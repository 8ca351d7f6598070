#include "print/fixed_text.h"

#include <algorithm>

namespace veltrako::print {

QString pad_to(const QString& text, int width) {
    if (width < 1)
        return {};
    if (text.size() < width)
        return text + QString(width - text.size(), QLatin1Char(' '));
    return text.left(width);
}

QString wrap_fixed(const QString& text, int width, int indent) {
    if (width < 1)
        return text;
    const QString line_start =
        QStringLiteral("\r\n") + QString(std::max(indent, 0), QLatin1Char(' '));
    QString result;
    qsizetype from = 0;
    while (text.size() - from > width) {
        result += text.mid(from, width);
        result += line_start;
        from += width;
    }
    return result + pad_to(text.mid(from), width);
}

} // namespace veltrako::print
