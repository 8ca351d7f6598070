#pragma once
// One event as the archive keeps it, made from a finished job's record or an
// imported file. Flat: each kind fills the fields it has.

#include "compliance/compliance_memory.h"
#include "job_records.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace veltrako::archive {

// The kinds, as the history names them.
inline constexpr auto kind_usage = "usage";
inline constexpr auto kind_status = "status";
inline constexpr auto kind_report = "report";
inline constexpr auto kind_visit = "visit";
inline constexpr auto kind_firmware = "firmware";
inline constexpr auto kind_write = "write";

// A status entry: the record's table line in a fixed form (C locale, single
// blanks), which a readout and a saved table give alike.
struct StatusEntry {
    QString entry;
    int block = 0;
    int duration = 0;
    QString record_hex; // the 22 bytes when read from the device; empty from a table
};

// What a report measured and how it was judged (the report_measurements
// row). Numbers not typed, and limits there were none to judge by, are
// empty; verdicts are "pass", "fail" or "" (not judged).
struct ReportMeasured {
    QString result;           // "pass", "fail", "incomplete"
    QString protection_class; // "I", "II" or ""
    std::optional<double> o2, o2_limit, o2_device;
    QString o2_verdict;
    bool o2_note = false;
    std::optional<double> flow, flow_set, flow_low, flow_high;
    QString flow_verdict;
    std::optional<double> earth, earth_limit;
    QString earth_verdict;
    std::optional<double> leakage, leakage_limit;
    QString leakage_verdict;
    QString instruments;
};

// The measurements of a report's file lines, judged by the limits the lines
// name; nothing for a report without a result line (an older program's).
std::optional<ReportMeasured> report_measured(const QStringList& report_lines);

struct ArchiveEvent {
    QString id; // UUID, without braces
    QString kind;
    QString sn;
    QString lp;
    qint64 at = 0; // PC time, seconds since 1970 UTC
    QString visit_id;
    QString written_by;

    // usage
    std::vector<compliance::ComplianceRecord> periods;
    compliance::Stamp running_start = 0;
    // usage: the readout's 30-day rule as "30d|first|last|N|D|met" (or
    // "|not met"); empty when it was judged against no prescription.
    QString adherence;
    // usage, status: where it came from ("device" or a file path)
    QString source;
    // status
    bool extended = false;
    QString sw;
    std::vector<StatusEntry> entries;
    // report: the file's lines; visit: the device's snapshot; KEY|VALUE each
    QStringList values;
    // report
    QString path;
    bool printed = false;
    QString inspector;
    std::optional<ReportMeasured> measured;
    // visit, firmware: "written"/"failed"/"cancelled", "ok"/"failed"
    QString folder;
    QString result;
    QString reason;
    // firmware (old and new version), write
    QString setting;
    QString old_value;
    QString new_value;
    QString pc_user;
};

// Device-clock stamps as the archive's columns hold them, and back.
qint64 archive_seconds(compliance::Stamp s);
compliance::Stamp stamp_from_archive(qint64 seconds);

// "user@host" of this PC: who wrote what this program archives.
QString this_writer();
QString this_user();

// A status record's entry: its table line in the C locale with single blanks;
// a saved table's line gives the same after entry_from_table_line.
StatusEntry status_entry(const QByteArray& record, bool extended);
// A line of a saved table (any locale's decimal comma) in the same form.
QString entry_from_table_line(const QString& line);

// Identities made from what an event holds, so that the same readout, report
// or visit archived twice (live, then imported from its files; or by two
// laptops) is one event.
QString usage_event_id(const QString& sn, const std::vector<compliance::ComplianceRecord>& periods);
QString status_event_id(const QString& sn, const std::vector<StatusEntry>& entries);
QString report_event_id(const QString& sn, const QStringList& lines);
// A visit: its device, its folder's name and the time it began.
QString visit_event_id(const QString& sn, const QString& folder_name, const QDateTime& began);
// Events that happen once and are never imported.
QString fresh_event_id();

// The 30-day rule over the readout's periods, as the readout itself judged
// it: "30d|…" or empty without a prescription.
QString readout_adherence(const jobs::UsageReadout& r);

// The events the finished jobs make; `writer` is this_writer() but for tests.
ArchiveEvent usage_event(const jobs::UsageReadout& r, const QString& writer);
ArchiveEvent status_event(const jobs::StatusReadout& r, const QString& writer);
ArchiveEvent report_event(const jobs::ReportFiled& r, const QString& writer);
ArchiveEvent visit_event(const jobs::VisitDone& r, const QString& writer);
ArchiveEvent firmware_event(const jobs::FirmwareUpdate& r, const QString& writer);
ArchiveEvent write_event(const jobs::DeviceWrite& r, const QString& writer);

// The inspector named in a report's lines ("t_Pruefer"), empty when none.
QString inspector_of(const QStringList& report_lines);

} // namespace veltrako::archive
