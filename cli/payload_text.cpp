#include "payload_text.h"

#include <QRegularExpression>

namespace veltrako::cli {

namespace {

std::optional<QByteArray> hex_bytes(const QString& text) {
    static const QRegularExpression pairs(
        QStringLiteral("^\\s*[0-9A-Fa-f]{2}(\\s+[0-9A-Fa-f]{2})*\\s*$"));
    if (!pairs.match(text).hasMatch())
        return std::nullopt;
    return QByteArray::fromHex(text.toLatin1());
}

} // namespace

std::optional<QByteArray> parse_payload_argument(const QString& argument) {
    if (argument.startsWith(QLatin1String("hex:")))
        return hex_bytes(argument.mid(4));
    QByteArray payload;
    if (argument.startsWith(QLatin1String("text:")))
        payload = argument.mid(5).toLatin1();
    // Two or more blank-separated byte pairs read as hex; a single token
    // stays text, so "I" and "AA" are sent as typed.
    else if (auto bytes = hex_bytes(argument);
             bytes && argument.trimmed().contains(QLatin1Char(' ')))
        payload = *bytes;
    else
        payload = argument.toLatin1();
    if (payload.isEmpty())
        return std::nullopt;
    return payload;
}

} // namespace veltrako::cli
