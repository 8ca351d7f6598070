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

QDate date_of(Stamp s) {
    return QDate::fromJulianDay(origin_julian_day + day_number(s));
}

Stamp stamp_of(const QDate& d) {
    return (d.toJulianDay() - origin_julian_day) * seconds_per_day;
}

qint64 seconds_of(const std::vector<Period>& periods) {
    qint64 seconds = 0;
    for (const Period& p : periods)
        seconds += p.end - p.start;
    return seconds;
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
    const Stamp day = day_number(s);
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
    return stamp_of(date_of(s).addMonths(months)) + (s - day_start(day_number(s)));
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
    for (int i = 0; i <= last; ++i) {
        const ComplianceRecord& r = records[static_cast<std::size_t>(i)];
        if (r.start > r.end)
            continue;
        if (r.start != 0 && r.start < m.start)
            state.has_prev_month = true;
        if (r.end != 0 && r.end >= m.end)
            state.has_next_month = true;
    }
    // Deliberately each moment once: adding the periods as they stand would
    // count the ring-wrap duplicate of the readout, or a day the device
    // clock went back over, twice.
    state.total_hours = static_cast<double>(seconds_of(merged_periods(m.periods))) / 3600.0;
    return m;
}

MonthSummary summarise(const Month& month) {
    MonthSummary s;
    // Overlapping stretches count once, in the hours as in the days.
    const std::vector<Period> merged = merged_periods(month.periods);
    const std::vector<qint64> seconds = use_per_day(merged, day_number(month.start), month.days);
    s.total_hours = static_cast<double>(seconds_of(merged)) / 3600.0;
    s.days_used = static_cast<int>(
        std::count_if(seconds.begin(), seconds.end(), [](qint64 v) { return v > 0; }));
    if (s.days_used > 0)
        s.mean_hours_per_day_used = s.total_hours / s.days_used;
    qint64 longest = -1;
    for (std::size_t i = 1; i < merged.size(); ++i)
        longest = std::max(longest, merged[i].start - merged[i - 1].end);
    if (longest >= 0)
        s.longest_gap_hours = static_cast<double>(longest) / 3600.0;
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

PrescriptionDays prescription_days(const ComplianceRecords& records, const ComplianceState& state,
                                   Stamp month, double hours) {
    const Stamp first = month_start_of(month);
    const DayRange in_month{day_number(first), day_number(add_months(first, 1)) - 1};
    const DayRange days = counted_days(records, state).within(in_month);
    const std::vector<DayRange> meeting =
        days_meeting(merged_periods(record_periods(records, state.last_index)), hours);
    return {static_cast<int>(meeting_in(meeting, days)), static_cast<int>(days.count())};
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

QString month_summary_line(const Month& month, const ComplianceRecords& records,
                           const ComplianceState& state, double hours,
                           const config::LanguageTables& language, const QLocale& locale) {
    QString line = summary_text(summarise(month), language, locale);
    if (hours > 0)
        line += QStringLiteral("   ") +
                prescription_text(prescription_days(records, state, month.start, hours), hours,
                                  language, locale);
    return line;
}

QString month_usage_line(const ComplianceRecords& records, const ComplianceState& state,
                         Stamp month, double hours, const QLocale& locale) {
    const Month m = month_periods(records, state.last_index, month);
    const MonthSummary s = summarise(m);
    QString line = from_stamp(month).toString(QStringLiteral("yyyy-MM")) + QLatin1Char('|') +
                   device::format_value(s.total_hours, 1, locale) + QLatin1Char('|') +
                   device::format_value(s.days_used, 0, locale) + QLatin1Char('|') +
                   device::format_value(s.mean_hours_per_day_used, 1, locale);
    if (hours > 0) {
        const PrescriptionDays d = prescription_days(records, state, m.start, hours);
        line += QLatin1Char('|') + device::format_value(d.meeting, 0, locale) + QLatin1Char('|') +
                device::format_value(d.counted, 0, locale);
    }
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
