#include "compliance/compliance_days.h"

#include "compliance/compliance_month.h"
#include "config/language.h"
#include "device/device_view.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltrako::compliance {

namespace {

// "Beste 30 Tage: %1–%2: %3 von %4 Tagen ≥ %5 h – %6 (≥ %7 %)"
constexpr int text_adherence = 8510;
constexpr int text_met = 8511;
constexpr int text_not_met = 8512;
// Date forms of the window: its first day when the year follows with its
// last day ("dd.MM."), and a whole date ("dd.MM.yyyy").
constexpr int text_date_without_year = 8513;
constexpr int text_date = 8514;

QDate date_of_day(qint64 day) {
    return from_stamp(day_start(day)).date();
}

} // namespace

qint64 day_number(Stamp s) {
    // Stamps before the origin do not occur; floor division keeps them sane anyway.
    return s >= 0 ? s / seconds_per_day : -((-s + seconds_per_day - 1) / seconds_per_day);
}

std::vector<Period> merged_periods(std::vector<Period> periods) {
    std::erase_if(periods, [](const Period& p) { return p.end <= p.start; });
    std::sort(periods.begin(), periods.end(),
              [](const Period& a, const Period& b) { return a.start < b.start; });
    std::vector<Period> merged;
    for (const Period& p : periods) {
        if (!merged.empty() && p.start <= merged.back().end)
            merged.back().end = std::max(merged.back().end, p.end);
        else
            merged.push_back(p);
    }
    return merged;
}

std::vector<Period> record_periods(const ComplianceRecords& records, int last_index) {
    std::vector<Period> periods;
    const int last = std::clamp(last_index, -1, table_upper);
    for (int i = 0; i <= last; ++i) {
        const ComplianceRecord& r = records[static_cast<std::size_t>(i)];
        if (r.start != 0 && r.end != 0 && r.start < r.end)
            periods.push_back({r.start, r.end});
    }
    return periods;
}

std::vector<qint64> use_per_day(const std::vector<Period>& merged, qint64 first_day, int days) {
    std::vector<qint64> seconds(static_cast<std::size_t>(std::max(days, 0)), 0);
    for (const Period& p : merged) {
        for (Stamp from = std::max(p.start, day_start(first_day)); from < p.end;) {
            const qint64 day = day_number(from) - first_day;
            if (day >= days)
                break;
            const Stamp to = std::min(p.end, day_start(first_day + day + 1));
            seconds[static_cast<std::size_t>(day)] += to - from;
            from = to;
        }
    }
    return seconds;
}

bool ends_with_running_period(const ComplianceState& state) {
    return state.from_device && !state.test_data && state.last_index == state.record_count;
}

DayRange counted_days(const std::vector<Period>& periods, Stamp running_end) {
    if (periods.empty())
        return {};
    Stamp first = std::numeric_limits<Stamp>::max();
    Stamp last = 0;
    for (const Period& p : periods) {
        first = std::min(first, p.start);
        last = std::max(last, p.end);
    }
    // The end itself is no use: a period ending at midnight leaves that day out.
    DayRange range{day_number(first), day_number(last - 1)};
    if (running_end != 0)
        range.last = std::min(range.last, day_number(running_end) - 1);
    return range;
}

DayRange counted_days(const ComplianceRecords& records, const ComplianceState& state) {
    Stamp running_end = 0;
    if (ends_with_running_period(state))
        running_end = records[static_cast<std::size_t>(state.last_index)].end;
    return counted_days(record_periods(records, state.last_index), running_end);
}

std::vector<DayRange> days_meeting(const std::vector<Period>& merged, double hours) {
    std::vector<DayRange> meeting;
    if (!(hours > 0))
        return meeting;
    // Whole seconds, so that 15 h means 54000 s and not a rounding error short of it.
    const qint64 needed = std::llround(hours * 3600.0);
    const auto add = [&](qint64 first, qint64 last) {
        if (!meeting.empty() && meeting.back().last + 1 >= first)
            meeting.back().last = std::max(meeting.back().last, last);
        else
            meeting.push_back({first, last});
    };
    // The periods come in order and apart, so the days they touch never go
    // back: a day partly used collects its seconds until the next day begins.
    qint64 open_day = std::numeric_limits<qint64>::min();
    qint64 open_seconds = 0;
    const auto close_day = [&] {
        if (open_day != std::numeric_limits<qint64>::min() && open_seconds >= needed)
            add(open_day, open_day);
        open_day = std::numeric_limits<qint64>::min();
        open_seconds = 0;
    };
    const auto use = [&](qint64 day, qint64 seconds) {
        if (day != open_day) {
            close_day();
            open_day = day;
        }
        open_seconds += seconds;
    };
    for (const Period& p : merged) {
        const qint64 first = day_number(p.start);
        const qint64 last = day_number(p.end - 1);
        if (first == last) {
            use(first, p.end - p.start);
            continue;
        }
        use(first, day_start(first + 1) - p.start);
        close_day();
        if (last > first + 1)
            add(first + 1, last - 1); // whole days: 24 h meet any prescription
        use(last, p.end - day_start(last));
    }
    close_day();
    return meeting;
}

qint64 meeting_in(const std::vector<DayRange>& meeting, const DayRange& range) {
    qint64 n = 0;
    for (const DayRange& m : meeting)
        n += m.within(range).count();
    return n;
}

namespace {

// Days of `meeting` up to and including `day`, from running totals.
struct MeetingCounter {
    explicit MeetingCounter(const std::vector<DayRange>& m) : meeting(m) {
        totals.reserve(m.size() + 1);
        totals.push_back(0);
        for (const DayRange& r : m)
            totals.push_back(totals.back() + r.count());
    }
    qint64 up_to(qint64 day) const {
        const auto after =
            std::upper_bound(meeting.begin(), meeting.end(), day,
                             [](qint64 d, const DayRange& r) { return d < r.first; });
        const auto k = static_cast<std::size_t>(after - meeting.begin());
        if (k == 0)
            return 0;
        const DayRange& r = meeting[k - 1];
        return totals[k] - std::max<qint64>(0, r.last - day);
    }
    qint64 in(qint64 first, qint64 last) const { return up_to(last) - up_to(first - 1); }

    const std::vector<DayRange>& meeting;
    std::vector<qint64> totals;
};

} // namespace

std::optional<AdherenceWindow> best_window(const ComplianceRecords& records,
                                           const ComplianceState& state, double hours,
                                           double share_percent) {
    return best_window(record_periods(records, state.last_index), counted_days(records, state),
                       hours, share_percent);
}

std::optional<AdherenceWindow> best_window(const std::vector<Period>& periods,
                                           const DayRange& counted, double hours,
                                           double share_percent) {
    if (!(hours > 0) || counted.count() <= 0)
        return std::nullopt;
    const std::vector<DayRange> meeting = days_meeting(merged_periods(periods), hours);
    const MeetingCounter counter(meeting);
    const qint64 length = std::min<qint64>(adherence_window_days, counted.count());
    const qint64 lowest = counted.first;
    const qint64 highest = counted.last - length + 1;
    // The count of a window moves by one day at a time and changes its pace
    // only where a window's first or last day crosses the edge of a range of
    // meeting days; its earliest maximum therefore lies at one of those
    // places or at either end.
    std::vector<qint64> starts{lowest, highest};
    for (const DayRange& r : meeting)
        for (const qint64 s : {r.first, r.last + 1, r.first - length, r.last + 1 - length})
            starts.push_back(std::clamp(s, lowest, highest));
    std::sort(starts.begin(), starts.end());
    AdherenceWindow best;
    best.meeting = -1;
    for (const qint64 s : starts) {
        const qint64 n = counter.in(s, s + length - 1);
        if (n > best.meeting) {
            best.meeting = static_cast<int>(n);
            best.days = {s, s + length - 1};
        }
    }
    best.met = best.meeting * 100.0 >= share_percent * static_cast<double>(length);
    return best;
}

QString adherence_line(const AdherenceWindow& window) {
    const QString iso = QStringLiteral("yyyy-MM-dd");
    return QStringLiteral("30d|") + date_of_day(window.days.first).toString(iso) +
           QLatin1Char('|') + date_of_day(window.days.last).toString(iso) + QLatin1Char('|') +
           QString::number(window.meeting) + QLatin1Char('|') +
           QString::number(window.days.count()) +
           (window.met ? QStringLiteral("|met") : QStringLiteral("|not met"));
}

QString adherence_text(const AdherenceWindow& window, double hours, double share_percent,
                       const config::LanguageTables& language, const QLocale& locale) {
    const QDate first = date_of_day(window.days.first);
    const QDate last = date_of_day(window.days.last);
    const QString first_form =
        language.text(first.year() == last.year() ? text_date_without_year : text_date);
    const auto decimals = [](double v) { return v == std::floor(v) ? 0 : 1; };
    return language.text(text_adherence)
        .arg(language.words.toString(first, first_form),
             language.words.toString(last, language.text(text_date)),
             device::format_value(window.meeting, 0, locale),
             device::format_value(static_cast<double>(window.days.count()), 0, locale),
             device::format_value(hours, decimals(hours), locale),
             language.text(window.met ? text_met : text_not_met),
             device::format_value(share_percent, decimals(share_percent), locale));
}

} // namespace veltrako::compliance
