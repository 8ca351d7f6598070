#pragma once
// The status memory as the fixed-width table a technician reads on the
// "System Status" page and files away: four heading lines, the column
// headings of the record layout, and one line of 6-wide columns per record.

#include "status/status_memory.h"

#include <QByteArray>
#include <QDateTime>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <cstdint>

namespace veltrako {
class AppContext;
}
namespace veltrako::config {
struct LanguageTables;
}
namespace veltrako::device {
struct DeviceRecord;
}

namespace veltrako::status {

// Seconds an alarm was active, from its one-byte code. The code spreads the
// byte over a wider span with falling resolution: k = (code - 1) / 16 rounded
// to the nearest whole number, halves to even; seconds = (code - 8k)(k + 1).
int alarm_seconds(std::uint8_t code);

// One table line (without its line end) for a 22-byte record as the device
// sent it; `extended` picks the second record layout.
QString format_status_line(const QByteArray& record, bool extended, const QLocale& locale);

// The whole table as lines without their ends.
QStringList format_status_lines(const StatusMemory& memory, const device::DeviceRecord& device,
                                const config::LanguageTables& language, const QDateTime& now,
                                const QLocale& locale);
// The whole table, every line ended by CR LF. The device record gives the
// identity in the heading and the layout; `now` is the time the heading shows.
QString format_status(const StatusMemory& memory, const device::DeviceRecord& device,
                      const config::LanguageTables& language, const QDateTime& now,
                      const QLocale& locale);
// The same for the program's state, at the present time in the user's locale.
QString format_status(const AppContext& ctx);

// Writes a table as format_status gives it, line by line with CR LF, whole
// or not at all.
bool write_status_table(const QString& path, const QString& table);

} // namespace veltrako::status
