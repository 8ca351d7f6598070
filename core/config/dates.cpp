#include "config/dates.h"

#include <QLocale>
#include <QRegularExpression>
#include <QStringList>

#include <algorithm>
#include <cmath>

namespace veltrako::config {

namespace {

constexpr int part_limit = 1'000'000;

int held(int part) {
    return std::clamp(part, -part_limit, part_limit);
}

} // namespace

QDateTime make_date(int day, int month, int year, int hour, int minute, int second) {
    // Calendar steps one after the other, in this order: adding months after
    // the days is what makes 31.02. clamp to the end of February.
    QDate date(2000, 1, 1);
    date = date.addDays(held(day) - 1);
    date = date.addMonths(held(month) - 1);
    date = date.addYears(held(year) - 2000);
    const qint64 seconds =
        qint64{held(hour)} * 3600 + qint64{held(minute)} * 60 + qint64{held(second)};
    return QDateTime(date, QTime(0, 0), Qt::UTC).addSecs(seconds);
}

QDateTime parse_date(const QString& text) {
    QString t = text.trimmed();
    t.replace(QLatin1Char(' '), QLatin1Char(':'));
    t.replace(QLatin1Char('.'), QLatin1Char(':'));
    const QStringList parts = t.split(QLatin1Char(':'));
    if (parts.size() != 6 && parts.size() != 3)
        return {};

    int value[6] = {0, 0, 0, 0, 0, 0};
    for (qsizetype i = 0; i < parts.size(); ++i) {
        bool ok = false;
        value[i] = parts[i].toInt(&ok);
        if (!ok)
            return {};
    }
    return make_date(value[0], value[1], value[2], value[3], value[4], value[5]);
}

std::optional<double> text_to_number(const QString& text) {
    bool ok = false;
    const double value = QLocale().toDouble(text, &ok);
    if (!ok || !std::isfinite(value))
        return std::nullopt;
    return value;
}

QString message_time_text(const QDateTime& t) {
    const QLocale locale;
    // The long time form with seconds, but without the time-zone name Qt adds
    // to it: the PC's clock is shown as the technician reads it.
    QString time_format = locale.timeFormat(QLocale::LongFormat);
    static const QRegularExpression zone(QStringLiteral("\\s*\\bt+\\b"));
    time_format.remove(zone);
    return locale.toString(t.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
           locale.toString(t.time(), time_format.trimmed());
}

} // namespace veltrako::config
