#pragma once
// The device's own clock as the program knows it: the time the last "T"
// answer gave, carried forward on the program's steady clock, and how far it
// is from the PC's clock in words a technician reads at a glance.

#include <QDateTime>
#include <QString>

#include <optional>

namespace veltrako {
class AppContext;
}

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::device {

struct DeviceRecord;

// A difference between the clocks beyond this is worth telling.
constexpr qint64 clock_note_threshold_s = 5 * 60;

// The device's present time: geraetezeit advanced by the milliseconds passed
// since it was read. nullopt while the clock has not been read from the
// device (or reads the zero date, which a device without a set clock gives).
std::optional<QDateTime> device_present_time(const DeviceRecord& record, qint64 elapsed_ms);

// The distance from `from` to `to` in the two largest calendar units that
// are not zero ("8 Monate 11 Tage", "2 Stunden 5 Minuten"), rounded down to
// whole minutes; the order of the two times does not matter.
QString clock_distance_text(const QDateTime& from, const QDateTime& to,
                            const config::LanguageTables& language);

// "Geräteuhr geht 8 Monate 11 Tage nach" when the device's clock is more than
// clock_note_threshold_s off the PC's; empty when it is closer or unknown.
QString clock_offset_note(const AppContext& ctx);

} // namespace veltrako::device
