#include "device/device_clock.h"

#include "app_context.h"
#include "config/language.h"
#include "device/device_record.h"
#include "device/device_view.h"

#include <QLocale>

#include <array>
#include <cstdlib>

namespace veltrako::device {

namespace {

constexpr int text_behind = 8250;
constexpr int text_ahead = 8251;
// Singular and plural of year, month, day, hour, minute, in that order.
constexpr int text_first_unit = 8252;

QDateTime zero_date() {
    return QDateTime(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC);
}

} // namespace

std::optional<QDateTime> device_present_time(const DeviceRecord& record, qint64 elapsed_ms) {
    if (!record.geraetezeit_ms || !record.geraetezeit.isValid() ||
        record.geraetezeit == zero_date())
        return std::nullopt;
    return record.geraetezeit.addMSecs(elapsed_ms - *record.geraetezeit_ms);
}

QString clock_distance_text(const QDateTime& from, const QDateTime& to,
                            const config::LanguageTables& language) {
    const QDateTime a = std::min(from, to);
    const QDateTime b = std::max(from, to);
    // Whole calendar months first, each count taken from the earlier time.
    int months = (b.date().year() - a.date().year()) * 12 + b.date().month() - a.date().month();
    while (months > 0 && a.addMonths(months) > b)
        --months;
    const qint64 rest = a.addMonths(months).secsTo(b);
    const std::array<qint64, 5> amounts = {months / 12, months % 12, rest / 86400,
                                           rest % 86400 / 3600, rest % 3600 / 60};
    std::size_t first = 0;
    while (first + 1 < amounts.size() && amounts[first] == 0)
        ++first;
    const QLocale numbers;
    const auto part = [&](std::size_t unit) {
        const qint64 n = amounts[unit];
        return format_value(static_cast<double>(n), 0, numbers) + QLatin1Char(' ') +
               language.text(text_first_unit + 2 * static_cast<int>(unit) + (n == 1 ? 0 : 1));
    };
    QString text = part(first);
    if (first + 1 < amounts.size() && amounts[first + 1] != 0)
        text += QLatin1Char(' ') + part(first + 1);
    return text;
}

QString clock_offset_note(const AppContext& ctx) {
    const std::optional<QDateTime> device = device_present_time(ctx.device, ctx.clock.elapsed_ms());
    if (!device)
        return {};
    const QDateTime pc = ctx.clock.now();
    const qint64 ahead = pc.secsTo(*device);
    if (std::abs(ahead) <= clock_note_threshold_s)
        return {};
    QString text = ctx.language.text(ahead < 0 ? text_behind : text_ahead);
    return text.replace(QStringLiteral("%1"), clock_distance_text(pc, *device, ctx.language));
}

} // namespace veltrako::device
