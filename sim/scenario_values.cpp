#include "scenario_values.h"

#include "device_time.h"

#include <QRegularExpression>

#include <cctype>

namespace veltrako::sim::values {

std::optional<qint64> integer(const QByteArray& text, qint64 low, qint64 high, QString& why) {
    bool ok = false;
    const QByteArray t = text.trimmed();
    const qint64 v = t.startsWith("0x") || t.startsWith("0X") ? t.mid(2).toLongLong(&ok, 16)
                                                              : t.toLongLong(&ok, 10);
    if (!ok) {
        why = QStringLiteral("\"%1\" is not a whole number").arg(QString::fromLatin1(t));
        return std::nullopt;
    }
    if (v < low || v > high) {
        why = QStringLiteral("%1 is outside %2..%3").arg(v).arg(low).arg(high);
        return std::nullopt;
    }
    return v;
}

std::optional<double> real(const QByteArray& text, double low, double high, QString& why) {
    bool ok = false;
    const QByteArray t = text.trimmed();
    const double v = t.toDouble(&ok);
    if (!ok) {
        why = QStringLiteral("\"%1\" is not a number").arg(QString::fromLatin1(t));
        return std::nullopt;
    }
    if (v < low || v > high) {
        why = QStringLiteral("%1 is outside %2..%3").arg(v).arg(low).arg(high);
        return std::nullopt;
    }
    return v;
}

std::optional<bool> flag(const QByteArray& text, QString& why) {
    const QByteArray t = text.trimmed().toLower();
    if (t == "on" || t == "yes" || t == "true" || t == "1")
        return true;
    if (t == "off" || t == "no" || t == "false" || t == "0")
        return false;
    why = QStringLiteral("\"%1\" is neither on nor off").arg(QString::fromLatin1(t));
    return std::nullopt;
}

std::optional<QByteArray> text(const QByteArray& value, QString& why) {
    const QByteArray t = value.trimmed();
    if (!t.startsWith('"'))
        return t;
    if (t.size() < 2 || !t.endsWith('"')) {
        why = QStringLiteral("the closing quote is missing");
        return std::nullopt;
    }
    QByteArray out;
    const QByteArray inner = t.mid(1, t.size() - 2);
    for (qsizetype i = 0; i < inner.size(); ++i) {
        const char c = inner.at(i);
        if (c != '\\') {
            out += c;
            continue;
        }
        if (++i >= inner.size()) {
            why = QStringLiteral("a backslash ends the text");
            return std::nullopt;
        }
        switch (inner.at(i)) {
        case 'r':
            out += '\r';
            break;
        case 'n':
            out += '\n';
            break;
        case 't':
            out += '\t';
            break;
        case '\\':
            out += '\\';
            break;
        case '"':
            out += '"';
            break;
        case 'x': {
            bool ok = false;
            const int v = inner.mid(i + 1, 2).toInt(&ok, 16);
            if (!ok || i + 2 >= inner.size()) {
                why = QStringLiteral("\\x needs two hexadecimal digits");
                return std::nullopt;
            }
            out += static_cast<char>(v);
            i += 2;
            break;
        }
        default:
            why = QStringLiteral("unknown escape \\%1").arg(QLatin1Char(inner.at(i)));
            return std::nullopt;
        }
    }
    return out;
}

std::optional<QByteArray> hex_bytes(const QByteArray& text, QString& why) {
    QByteArray digits = text.simplified();
    digits.replace(' ', QByteArray());
    const QByteArray bytes = QByteArray::fromHex(digits);
    for (char c : digits) {
        if (!std::isxdigit(static_cast<unsigned char>(c))) {
            why = QStringLiteral("\"%1\" is not hexadecimal").arg(QLatin1Char(c));
            return std::nullopt;
        }
    }
    if (digits.size() % 2 != 0) {
        why = QStringLiteral("an odd number of hexadecimal digits");
        return std::nullopt;
    }
    return bytes;
}

std::optional<QDateTime> date_time(const QByteArray& text, QString& why) {
    QByteArray t = text.trimmed();
    t.replace('T', ' ');
    const QList<QByteArray> parts = t.split(' ');
    const QDate date = QDate::fromString(QString::fromLatin1(parts.value(0)), Qt::ISODate);
    QTime time(0, 0);
    if (parts.size() > 2) {
        why = QStringLiteral("\"%1\" is not a date and time").arg(QString::fromLatin1(t));
        return std::nullopt;
    }
    if (parts.size() == 2) {
        const QString tt = QString::fromLatin1(parts.at(1));
        time = QTime::fromString(tt, tt.size() == 5 ? QStringLiteral("HH:mm")
                                                    : QStringLiteral("HH:mm:ss"));
    }
    if (!date.isValid() || !time.isValid()) {
        why = QStringLiteral("\"%1\" is not a date and time (yyyy-mm-dd hh:mm:ss)")
                  .arg(QString::fromLatin1(t));
        return std::nullopt;
    }
    const QDateTime dt(date, time, Qt::UTC);
    const qint64 s = device_seconds(dt);
    if (s < 0 || s > 0x7FFFFFFF) {
        why = QStringLiteral("%1 is before 2000 or past the device's 31-bit seconds")
                  .arg(dt.toString(Qt::ISODate));
        return std::nullopt;
    }
    return dt;
}

std::optional<ScenarioTime> scenario_time(const QByteArray& text, QString& why) {
    const QByteArray t = text.trimmed();
    if (t == "now")
        return ScenarioTime{};
    static const QRegularExpression offset(QStringLiteral(R"(^([+-])(\d{1,6})([dhm])$)"));
    const QRegularExpressionMatch m = offset.match(QString::fromLatin1(t));
    if (!m.hasMatch()) {
        const auto fixed = date_time(t, why);
        if (!fixed) {
            why += QStringLiteral(", or now, or a distance from CLOCK such as -60d");
            return std::nullopt;
        }
        return ScenarioTime{*fixed, 0};
    }
    const qint64 unit = m.captured(3) == QLatin1String("d")   ? 86400
                        : m.captured(3) == QLatin1String("h") ? 3600
                                                              : 60;
    const qint64 amount = m.captured(2).toLongLong() * unit;
    return ScenarioTime{QDateTime(), m.captured(1) == QLatin1String("-") ? -amount : amount};
}

std::optional<ComplianceRecord> compliance_period(const QByteArray& text, QString& why) {
    if (text.trimmed() == "-")
        return ComplianceRecord{};
    const QList<QByteArray> parts = text.split('/');
    if (parts.size() != 2) {
        why = QStringLiteral("expected \"start / end\" or \"-\"");
        return std::nullopt;
    }
    const auto start = date_time(parts.at(0), why);
    if (!start)
        return std::nullopt;
    const auto end = date_time(parts.at(1), why);
    if (!end)
        return std::nullopt;
    if (*end < *start) {
        why = QStringLiteral("the period ends before it starts");
        return std::nullopt;
    }
    return ComplianceRecord{static_cast<std::uint32_t>(device_seconds(*start)),
                            static_cast<std::uint32_t>(device_seconds(*end))};
}

} // namespace veltrako::sim::values
