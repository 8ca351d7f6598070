#pragma once
// What the history shows of the archive, on the command line and in the
// window: one line per device, one per event, the month lines of the usage
// over every archived period, the periods as CSV, and for each visit what
// changed since the one before. Pure functions over what the store read.
//
// The month figures are those of the "Compliance" page, computed by the
// same code: each month is handed to it with the periods that touch it.

#include "archive/archive_store.h"
#include "compliance/compliance_month.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::archive {

using Periods = std::vector<compliance::ComplianceRecord>;

// "SN|LP|last visit yyyy-mm-dd|BSTD at it|periods|first period yyyy-mm-dd|last
// period yyyy-mm-dd"; unknown fields empty.
QString device_line(const DeviceRow& d);

// "yyyy-mm-dd hh:mm:ss|kind|summary", the PC's local time.
QString event_line(const EventRow& e, const config::LanguageTables& language,
                   const QLocale& locale);
// A report's summary ends with its result (pass, fail, incomplete) and the
// O2 it measured beside the device's own reading, numbers in `locale`'s form.
QString event_summary(const EventRow& e, const config::LanguageTables& language,
                      const QLocale& locale);

// "start,end,hours" and one line per period, oldest first, ISO 8601 times of
// the device's clock, hours with a point and two decimals.
QStringList csv_lines(const Periods& periods);

// One month of an archive's periods as the compliance code takes them: the
// periods that touch the month, and the device's first and last period, so
// that the days counted against a prescription begin and end where the
// records do.
struct MonthTable {
    std::unique_ptr<compliance::ComplianceRecords> records =
        std::make_unique<compliance::ComplianceRecords>();
    int last_index = -1;
};
// `periods` sorted by start.
MonthTable month_table(const Periods& periods, compliance::Stamp month);

// First days of the months with use, ascending.
std::vector<compliance::Stamp> archive_months(const Periods& periods);
// The "compliance" lines over every period: the month lines and, with a
// prescription, the best 30 days. `running_end`: the end of the period still
// running at the last readout (0: none), whose day is not counted, as in the
// readout's own lines.
QStringList usage_lines(const Periods& periods, double prescribed_hours, double adherence_share,
                        const QLocale& locale, compliance::Stamp running_end = 0);

// A month for the chart: the compliance state as the chart and its month
// buttons need it, and the table it draws. shown_month 0 chooses the month
// of the last period.
struct ChartMonth {
    compliance::ComplianceState state;
    MonthTable table;
};
ChartMonth chart_month(const Periods& periods, compliance::Stamp shown_month,
                       compliance::Stamp now);

// Operating hours "HHHHHH:MM" as hours; nothing for any other text.
std::optional<double> operating_hours(const QString& bstd);

// A visit or report and what changed since the one before it.
struct VisitChange {
    VisitRow visit;
    bool has_previous = false;
    std::optional<double> hours_run;     // operating hours since the one before
    std::optional<double> hours_per_day; // of those, per calendar day between the two
    int new_status_entries = 0;          // first archived after the one before, up to this
    QStringList settings_changed;        // "KEY: old → new"
    QString firmware_changed;            // "old → new", empty when the same
};

// Oldest first, as the visits come.
std::vector<VisitChange> compare_visits(const std::vector<VisitRow>& visits,
                                        const std::vector<qint64>& status_first_seen);

} // namespace veltrako::archive
