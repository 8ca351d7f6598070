#pragma once
// The report file: one "key|value" line per report field, then the device
// values of the snapshot, CR LF, written whole or not at all; and the dialogs
// around saving and opening it, and the question before the program ends.

#include "report/report_record.h"

#include <QLocale>
#include <QStringList>

#include <functional>

namespace veltrako {
class AppContext;
}

namespace veltrako::report {

// Key of the remaining time, written after the parameter keys.
inline constexpr auto remaining_time_key = "REST";

// The lines of the file: the 18 report keys of every report, the 31
// parameter keys of the device, "REST", then the measured values, the limits
// they are judged by (GRENZE_...) and the result (ERGEBNIS|pass, fail or
// incomplete); numbers in `locale`'s form, as the "Gerät" page shows them.
QStringList report_file_lines(const ReportRecord& report, const QLocale& locale);

// Reads file lines into `report` over what it holds. A line that is not
// exactly one key "|" one value is skipped, as is a key nobody knows. Report
// values get their line breaks back; device values go into the snapshot;
// limits that are numbers replace the report's. The valid flag is left alone.
void read_report_lines(ReportRecord& report, const QStringList& lines);

// The name a save dialog offers: serial number, "_", date and time.
QString default_report_name(const ReportRecord& report, const QDateTime& now);
// The PDF name the print dialog offers: "Pruefprotokoll_<SN>_<yyyymmdd>.pdf",
// the day of the inspection as the form gives it (t_Datum), or `now`'s when
// that is no date.
QString report_pdf_name(const ReportRecord& report, const QDateTime& now);

// Hands a report that was written or printed on to the device's history
// (FeatureHooks::report_filed): `lines` as the file holds them, `path` the
// file or PDF, empty for a printer.
void hand_on_report(AppContext& ctx, const QString& sn, const QStringList& lines,
                    const QString& path, bool printed);
// The same for a report record, with the lines it is saved with.
void hand_on_report(AppContext& ctx, const ReportRecord& report, const QString& path, bool printed);

// Empties the record, reads the file into it and marks its device data valid,
// as opening a report does; the limits the file does not name are `limits`
// (the configuration's). False when the file cannot be read; the record then
// holds nothing valid.
bool load_report_file(ReportRecord& report, const QString& path, const Limits& limits);

// cmd_save, after the page has collected its controls: only with valid device
// data (else it says why not), asks for the file (overwrite question),
// remembers its folder, writes it and says so. True when a file was written;
// the report then counts as saved and its draft is removed.
bool save_report(AppContext& ctx);

// cmd_open: asks for a file, reads it into a fresh record, marks the device
// data valid and shows it (`show` puts the record on the page). Cancelling,
// or a file that cannot be read, leaves the report as it was. True when a
// file was read.
bool open_report(AppContext& ctx, const std::function<void()>& show);

// Before the program ends: when the report has unsaved changes, asks Save,
// Discard or Cancel. Save runs `save_click` (the cmd_save action, true when a
// file was written). True when the program may end: nothing to save, saved,
// or discarded (the draft goes with it); Cancel, or a save that wrote
// nothing, keeps it running with the report as it is.
bool checksaved(AppContext& ctx, const std::function<bool()>& save_click);

} // namespace veltrako::report
