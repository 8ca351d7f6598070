#include "compliance/compliance_month.h"

#include "config/language.h"
#include "device/device_view.h"

#include <algorithm>
#include <cmath>
#include <set>

namespace veltrako::compliance {

namespace {

// "Tage ≥ %1 h: %2 von %3 (%4 %)"
constexpr int text_prescription = 8400;

const qint64 origin_julian_day = QDate(1899, 12, 30).toJulianDay();

qint64 day_of(Stamp s) {
    // Stamps before the origin do not occur; floor division keeps them sane anyway.
    return s >= 0 ? s / seconds_per_day : -((-s + seconds_per_day - 1) / seconds_per_day);
}

QDate date_of(Stamp s) {
    return QDate::fromJulianDay(origin_julian_day + day_of(s));
}

Stamp stamp_of(const QDate& d) {
    return (d.toJulianDay() - origin_julian_day) * seconds_per_day;
}

} // namespace

Stamp to_stamp(const QDateTime& t) {
    if (t.isNull() || !t.isValid())
        return 0;
    return stamp_of(t.date()) + t.time().msecsSinceStartOfDay() / 1000;
}

QDateTime from_stamp(Stamp s) {
    if (s == 0)
        return {};
    const Stamp day = day_of(s);
    return QDateTime(date_of(s), QTime(0, 0), Qt::UTC).addSecs(s - day * seconds_per_day);
}

Stamp make_stamp(int year, int month, int day, int hour, int minute, int second) {
    return stamp_of(QDate(year, month, day)) + hour * 3600 + minute * 60 + second;
}

Stamp month_start_of(Stamp s) {
    const QDate d = date_of(s);
    return stamp_of(QDate(d.year(), d.month(), 1));
}

Stamp add_months(Stamp s, int months) {
    const Stamp day_start = day_of(s) * seconds_per_day;
    return stamp_of(date_of(s).addMonths(months)) + (s - day_start);
}

std::optional<Period> clip_to_month(const ComplianceRecord& r, Stamp month_start, Stamp month_end) {
    if (r.start == 0 || r.end == 0 || r.start > r.end)
        return std::nullopt;
    Stamp cs = 0;
    if (r.start >= month_start && r.start < month_end)
        cs = r.start;
    else if (r.start < month_start && r.end >= month_start)
        cs = month_start;
    if (cs == 0)
        return std::nullopt;
    return Period{cs, std::min(r.end, month_end)};
}

Month month_periods(const ComplianceRecords& records, int last_index, Stamp month_start) {
    Month m;
    m.start = month_start_of(month_start);
    m.end = add_months(m.start, 1);
    m.days = static_cast<int>((m.end - m.start) / seconds_per_day);
    const int last = std::clamp(last_index, -1, table_upper);
    for (int i = 0; i <= last; ++i) {
        if (const auto p = clip_to_month(records[static_cast<std::size_t>(i)], m.start, m.end))
            m.periods.push_back(*p);
    }
    return m;
}

Month compliance_month_pass(ComplianceState& state, const ComplianceRecords& records, Stamp now) {
    state.has_prev_month = false;
    state.has_next_month = false;
    const int last = std::clamp(state.last_index, -1, table_upper);
    if (state.shown_month == 0) {
        Stamp latest = 0;
        for (int i = 0; i <= last; ++i) {
            const ComplianceRecord& r = records[static_cast<std::size_t>(i)];
            if (r.start > r.end)
                continue;
            latest = std::max(latest, r.end);
        }
        state.shown_month = latest != 0 ? latest : now;
    }
    Month m = month_periods(records, last, state.shown_month);
    state.shown_month = m.start;
    qint64 seconds = 0;
    for (int i = 0; i <= last; ++i) {
        const ComplianceRecord& r = records[static_cast<std::size_t>(i)];
        if (r.start > r.end)
            continue;
        if (r.start != 0 && r.start < m.start)
            state.has_prev_month = true;
        if (r.end != 0 && r.end >= m.end)
            state.has_next_month = true;
    }
    for (const Period& p : m.periods)
        seconds += p.end - p.start;
    state.total_hours = static_cast<double>(seconds) / 3600.0;
    return m;
}

MonthSummary summarise(const Month& month) {
    MonthSummary s;
    qint64 seconds = 0;
    std::vector<bool> used(static_cast<std::size_t>(month.days), false);
    for (const Period& p : month.periods) {
        seconds += p.end - p.start;
        if (p.end <= p.start)
            continue;
        // Days touched by [start, end): the end itself belongs to no use.
        const qint64 first = (p.start - month.start) / seconds_per_day;
        const qint64 last = (p.end - 1 - month.start) / seconds_per_day;
        for (qint64 d = first; d <= last && d < month.days; ++d)
            used[static_cast<std::size_t>(d)] = true;
    }
    s.total_hours = static_cast<double>(seconds) / 3600.0;
    s.days_used = static_cast<int>(std::count(used.begin(), used.end(), true));
    if (s.days_used > 0)
        s.mean_hours_per_day_used = s.total_hours / s.days_used;

    // Overlapping or touching stretches count as one use; the pauses lie between.
    std::vector<Period> sorted;
    for (const Period& p : month.periods)
        if (p.end > p.start)
            sorted.push_back(p);
    std::sort(sorted.begin(), sorted.end(),
              [](const Period& a, const Period& b) { return a.start < b.start; });
    if (!sorted.empty()) {
        Stamp covered_to = sorted.front().end;
        qint64 longest = -1;
        for (std::size_t i = 1; i < sorted.size(); ++i) {
            if (sorted[i].start > covered_to)
                longest = std::max(longest, sorted[i].start - covered_to);
            covered_to = std::max(covered_to, sorted[i].end);
        }
        if (longest >= 0)
            s.longest_gap_hours = static_cast<double>(longest) / 3600.0;
    }
    return s;
}

QString summary_text(const MonthSummary& s, const config::LanguageTables& language,
                     const QLocale& locale) {
    const QString gap = s.longest_gap_hours ? device::format_value(*s.longest_gap_hours, 1, locale)
                                            : QStringLiteral("-");
    return language.text(6012) + QStringLiteral(": ") +
           device::format_value(s.days_used, 0, locale) + QStringLiteral("   ") +
           language.text(6013) + QStringLiteral(": ") +
           device::format_value(s.mean_hours_per_day_used, 1, locale) + QStringLiteral("   ") +
           language.text(6014) + QStringLiteral(": ") + gap;
}

PrescriptionDays prescription_days(const Month& month, double hours, Stamp last_end) {
    PrescriptionDays d;
    if (month.days <= 0 || last_end <= month.start)
        return d;
    // The end itself is no use: a record ending at midnight leaves that day out.
    const qint64 last_day = (last_end - 1 - month.start) / seconds_per_day;
    d.counted = static_cast<int>(std::min<qint64>(last_day + 1, month.days));
    std::vector<qint64> seconds(static_cast<std::size_t>(month.days), 0);
    for (const Period& p : month.periods) {
        for (Stamp from = p.start; from < p.end;) {
            const qint64 day = (from - month.start) / seconds_per_day;
            if (day < 0 || day >= month.days)
                break;
            const Stamp day_end = month.start + (day + 1) * seconds_per_day;
            const Stamp to = std::min(p.end, day_end);
            seconds[static_cast<std::size_t>(day)] += to - from;
            from = to;
        }
    }
    // Whole seconds, so that 15 h means 54000 s and not a rounding error short of it.
    const qint64 needed = std::llround(hours * 3600.0);
    for (int day = 0; day < d.counted; ++day)
        if (seconds[static_cast<std::size_t>(day)] >= needed)
            ++d.meeting;
    return d;
}

Stamp last_record_end(const ComplianceRecords& records, int last_index) {
    Stamp last = 0;
    const int end = std::clamp(last_index, -1, table_upper);
    for (int i = 0; i <= end; ++i) {
        const ComplianceRecord& r = records[static_cast<std::size_t>(i)];
        if (r.start != 0 && r.end > r.start)
            last = std::max(last, r.end);
    }
    return last;
}

QString prescription_text(const PrescriptionDays& days, double hours,
                          const config::LanguageTables& language, const QLocale& locale) {
    const QString percent =
        days.counted > 0 ? device::format_value(100.0 * days.meeting / days.counted, 0, locale)
                         : QStringLiteral("-");
    return language.text(text_prescription)
        .arg(device::format_value(hours, hours == std::floor(hours) ? 0 : 1, locale),
             device::format_value(days.meeting, 0, locale),
             device::format_value(days.counted, 0, locale), percent);
}

QString month_summary_line(const Month& month, const ComplianceRecords& records, int last_index,
                           double hours, const config::LanguageTables& language,
                           const QLocale& locale) {
    QString line = summary_text(summarise(month), language, locale);
    if (hours > 0)
        line +=
            QStringLiteral("   ") +
            prescription_text(prescription_days(month, hours, last_record_end(records, last_index)),
                              hours, language, locale);
    return line;
}

QString month_usage_line(const ComplianceRecords& records, int last_index, Stamp month,
                         double hours, const QLocale& locale) {
    const Month m = month_periods(records, last_index, month);
    const MonthSummary s = summarise(m);
    QString line = from_stamp(month).toString(QStringLiteral("yyyy-MM")) + QLatin1Char('|') +
                   device::format_value(s.total_hours, 1, locale) + QLatin1Char('|') +
                   device::format_value(s.days_used, 0, locale) + QLatin1Char('|') +
                   device::format_value(s.mean_hours_per_day_used, 1, locale);
    if (hours > 0)
        line += QLatin1Char('|') +
                device::format_value(
                    prescription_days(m, hours, last_record_end(records, last_index)).meeting, 0,
                    locale);
    return line;
}

std::vector<Stamp> months_with_use(const ComplianceRecords& records, int last_index) {
    std::set<Stamp> months;
    const int last = std::clamp(last_index, -1, table_upper);
    for (int i = 0; i <= last; ++i) {
        const ComplianceRecord& r = records[static_cast<std::size_t>(i)];
        if (r.start == 0 || r.end == 0 || r.end <= r.start)
            continue;
        // The end itself is no use: a stretch ending at midnight on the 1st
        // gives nothing to that month.
        const Stamp last_month = month_start_of(r.end - 1);
        for (Stamp m = month_start_of(r.start); m <= last_month; m = add_months(m, 1))
            months.insert(m);
    }
    return {months.begin(), months.end()};
}

} // namespace veltrako::compliance
