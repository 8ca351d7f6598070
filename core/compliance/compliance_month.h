#pragma once
// One calendar month of the usage records: which month the chart shows,
// each record clipped to that month, the month's usage in hours, whether
// there is use before or after it, and the summary a home-care provider
// asks for first (days with use, mean hours on those days, longest pause).
// Every sum counts each moment of use once (compliance_days.h).

#include "compliance/compliance_days.h"
#include "compliance/compliance_memory.h"

#include <QDateTime>
#include <QLocale>

#include <optional>
#include <vector>

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::compliance {

// A calendar value (held with Qt::UTC) as a stamp, milliseconds dropped;
// the null date-time gives 0.
Stamp to_stamp(const QDateTime& t);
// The stamp as a calendar value; 0 gives the null date-time.
QDateTime from_stamp(Stamp s);
Stamp make_stamp(int year, int month, int day, int hour = 0, int minute = 0, int second = 0);

// 00:00 on the first day of the month `s` lies in.
Stamp month_start_of(Stamp s);
// `s` moved by `months` calendar months (the day held to the month's end).
Stamp add_months(Stamp s, int months);

// The part of `r` inside [month_start, month_end). Nothing for a record with
// an empty time, one that starts after it ends, or one wholly outside.
std::optional<Period> clip_to_month(const ComplianceRecord& r, Stamp month_start, Stamp month_end);

struct Month {
    Stamp start = 0; // 00:00 on the 1st
    Stamp end = 0;   // 00:00 on the 1st of the next month
    int days = 0;    // 28 to 31
    // Clipped to the month, in table order (the chart draws each of them).
    std::vector<Period> periods;
};

// The month that begins at `month_start` with every record of 0..last_index
// clipped to it, in table order.
Month month_periods(const ComplianceRecords& records, int last_index, Stamp month_start);

// The chart's pass over the records: chooses the month when shown_month is 0
// (the month of the latest end; `now` when there is none), sets shown_month
// to its first day, has_prev_month, has_next_month and total_hours, and
// returns the month with its clipped periods.
Month compliance_month_pass(ComplianceState& state, const ComplianceRecords& records, Stamp now);

struct MonthSummary {
    double total_hours = 0;
    int days_used = 0; // days on which some use lies
    double mean_hours_per_day_used = 0;
    // The longest time without use between two stretches of use inside the
    // month; empty when there are fewer than two.
    std::optional<double> longest_gap_hours;
};

MonthSummary summarise(const Month& month);

// The summary as one line in the user's language and locale.
QString summary_text(const MonthSummary& s, const config::LanguageTables& language,
                     const QLocale& locale);

// Measured against a prescription of `hours` a day: the days of the month on
// which the use reached it (exactly `hours` counts), of the month's days that
// count (counted_days: none before the patient's first record, none that
// has not come yet, not the day of the readout while it runs).
struct PrescriptionDays {
    int meeting = 0;
    int counted = 0;
};

PrescriptionDays prescription_days(const ComplianceRecords& records, const ComplianceState& state,
                                   Stamp month, double hours);

// "Tage ≥ H h: N von D (P %)" in the user's language and locale.
QString prescription_text(const PrescriptionDays& days, double hours,
                          const config::LanguageTables& language, const QLocale& locale);

// The month's summary line of the page and the printout: summary_text, and
// the prescription's days when one is set (`hours` above 0).
QString month_summary_line(const Month& month, const ComplianceRecords& records,
                           const ComplianceState& state, double hours,
                           const config::LanguageTables& language, const QLocale& locale);

// One month as scripts and the visit's file read it:
// "yyyy-mm|hours|days used|mean hours per day used", and with a prescription
// (`hours` above 0) "|days meeting it|days counted". Numbers in `locale`'s
// form.
QString month_usage_line(const ComplianceRecords& records, const ComplianceState& state,
                         Stamp month, double hours, const QLocale& locale);

// First days of every month with use, ascending.
std::vector<Stamp> months_with_use(const ComplianceRecords& records, int last_index);

} // namespace veltrako::compliance
