#pragma once
// The compliance file: one usage period per line, "index|start-end", both
// times "dd.mm.yyyy hh:nn:ss", CR LF line ends, no header. Written only from
// data read from a device; read back for viewing and printing without one.

#include "compliance/compliance_memory.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <optional>

namespace veltrako {
class AppContext;
}

namespace veltrako::compliance {

// A stamp as "dd.mm.yyyy hh:nn:ss".
QString file_time_text(Stamp s);
// "dd.mm.yyyy hh:nn:ss" or "dd.mm.yyyy" with a real calendar date and time
// of day; anything else is no date.
std::optional<Stamp> parse_file_time(const QString& text);

// The line of record `index`.
QString compliance_file_line(int index, const ComplianceRecord& r, const QLocale& locale);
// Lines of every record 0..last_index whose start and end are both set.
QStringList compliance_file_lines(const ComplianceMemory& memory, const QLocale& locale);

struct LoadedLines {
    bool ok = false;
    QString bad_line;   // the first line that failed, as read
    int last_index = 0; // index of the last line read; 0 when there was none
};

// Checks the lines in order and stores each into `records`; stops at the
// first that fails, keeping what was stored before it.
LoadedLines read_compliance_lines(const QStringList& lines, ComplianceRecords& records,
                                  const QLocale& locale);

// "Compliance_" + serial number + "_" + yyyymmdd_hhnnss + ".txt".
QString default_file_name(const AppContext& ctx);
// The serial number in a name default_file_name made; empty for any other
// name. A loaded file carries no identity of its own, so its name has to do.
QString serial_from_file_name(const QString& name);

// Writes the records to `path`, whole or not at all.
bool write_compliance_file(const QString& path, const ComplianceMemory& memory,
                           const QLocale& locale);

// "Speichern": only data read from the connected device; asks for the file
// and whether to overwrite it. True when a file was written.
bool compliance_save(AppContext& ctx);
// "Laden": empties the table, asks for the file and reads it.
bool compliance_load(AppContext& ctx);
// Reads `path` into the emptied table and shows the latest month; a faulty
// line is reported with the line itself. True when the whole file was read.
bool load_compliance_file(AppContext& ctx, const QString& path);
// The same on the lines of a file already read.
bool load_compliance_lines(AppContext& ctx, const QStringList& lines);

} // namespace veltrako::compliance
