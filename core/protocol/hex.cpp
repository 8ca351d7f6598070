#include "protocol/hex.h"

namespace veltrako::protocol {

QString hex_digits(qint64 value, int digits) {
    const QString text = QString::number(value, 16).toUpper();
    if (text.size() >= digits)
        return text.right(digits);
    return QString(digits - text.size(), QLatin1Char('0')) + text;
}

QString hex_dump(const QByteArray& data) {
    static const char digits[] = "0123456789ABCDEF";
    QString out;
    out.reserve(data.size() * 3);
    for (const char c : data) {
        const auto b = static_cast<unsigned char>(c);
        out += QLatin1Char(digits[b >> 4]);
        out += QLatin1Char(digits[b & 0x0F]);
        out += QLatin1Char(' ');
    }
    return out;
}

} // namespace veltrako::protocol
