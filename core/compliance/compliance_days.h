#pragma once
// Use counted day by day, each moment once. Periods that overlap (the
// ring-wrap duplicate a readout keeps, a device clock set back) are merged
// before anything is added up; the days that count towards a prescription
// run from the patient's first record to the last day that is over; and of
// those days, the 30 in a row that meet the prescription most often are what
// an insurer judges adherence by.

#include "compliance/compliance_memory.h"

#include <QLocale>
#include <QString>

#include <optional>
#include <vector>

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::compliance {

// A stretch of use.
struct Period {
    Stamp start = 0;
    Stamp end = 0;
    friend bool operator==(const Period&, const Period&) = default;
};

// Days counted from the origin of the stamps, 30 December 1899 = day 0.
qint64 day_number(Stamp s);
// 00:00 of day `day`.
inline Stamp day_start(qint64 day) {
    return day * seconds_per_day;
}

// The periods with some length, ascending, those that overlap or touch
// merged into one: every moment of use once.
std::vector<Period> merged_periods(std::vector<Period> periods);
// Records 0..last_index that hold a period (both times set, start before
// end), as they stand.
std::vector<Period> record_periods(const ComplianceRecords& records, int last_index);

// Seconds of use on each of `days` days from `first_day` on, from merged
// periods.
std::vector<qint64> use_per_day(const std::vector<Period>& merged, qint64 first_day, int days);

// Days numbered first..last, both counted; empty when last < first.
struct DayRange {
    qint64 first = 0;
    qint64 last = -1;
    qint64 count() const { return last >= first ? last - first + 1 : 0; }
    DayRange within(const DayRange& other) const {
        return {std::max(first, other.first), std::min(last, other.last)};
    }
    friend bool operator==(const DayRange&, const DayRange&) = default;
};

// Whether the table's last record is the period that was still running when
// the device was read: read from a device (not a file, not "Testdaten") up
// to the record the count announced.
bool ends_with_running_period(const ComplianceState& state);

// The days that count: from the day of the earliest start to the day of the
// latest end (an end at midnight leaves that day out). When the last record
// is the running period, the day of the readout is not over and is left out.
DayRange counted_days(const ComplianceRecords& records, const ComplianceState& state);
// The same for periods as they stand; `running_end`, when not 0, is the end
// of the period still running at the readout (the readout's day).
DayRange counted_days(const std::vector<Period>& periods, Stamp running_end);

// The days whose use reached `hours` (exactly `hours` counts), as ascending
// ranges that neither overlap nor touch. Whole days of use reach any
// prescription up to 24 h, so a long period costs one range, not one entry
// per day.
std::vector<DayRange> days_meeting(const std::vector<Period>& merged, double hours);
// How many days of `meeting` lie in `range`.
qint64 meeting_in(const std::vector<DayRange>& meeting, const DayRange& range);

// The 30-day rule: of the counted days, the 30 in a row with the most days
// meeting the prescription (the earliest on a tie; all of them when fewer
// than 30 count), judged against a share of `share_percent` of its days.
struct AdherenceWindow {
    DayRange days;
    int meeting = 0;
    bool met = false;
};
inline constexpr int adherence_window_days = 30;

// Nothing without a prescription or without a day that counts.
std::optional<AdherenceWindow> best_window(const ComplianceRecords& records,
                                           const ComplianceState& state, double hours,
                                           double share_percent);
// The same over periods as they stand (more than one memory holds), within
// `counted`.
std::optional<AdherenceWindow> best_window(const std::vector<Period>& periods,
                                           const DayRange& counted, double hours,
                                           double share_percent);

// "30d|yyyy-mm-dd|yyyy-mm-dd|N|D|met" (or "|not met"), for scripts and
// Besuch.txt.
QString adherence_line(const AdherenceWindow& window);
// "Beste 30 Tage: 05.03.–03.04.2021: 30 von 30 Tagen ≥ 6 h – erfüllt (≥ 70 %)"
// in the program's language; numbers in `locale`.
QString adherence_text(const AdherenceWindow& window, double hours, double share_percent,
                       const config::LanguageTables& language, const QLocale& locale);

} // namespace veltrako::compliance
