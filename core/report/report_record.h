#pragma once
// The safety inspection report: what the technician fills in on the
// "Protokoll" page, together with a snapshot of the device record taken when
// the page was opened. The page only copies values between this record and
// its controls; every rule lives here, so it is checked without widgets.

#include "config/language.h"
#include "device/device_record.h"
#include "report/report_limits.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <array>
#include <optional>
#include <vector>

namespace veltrako::report {

// Room for the report values, by the index of their key (1 upwards).
inline constexpr int report_value_count = 30;

// The report fields, index 1 upwards (index 0 is empty): the 18 of every
// report, then the measured values (report_measurements.h). Each key is also
// the name of the control showing it, matched without regard to case; the
// part before the first "_" gives the control kind ("ck" a check box,
// anything else a text).
const QStringList& report_keys();
// Index of the first measured value in report_keys(); the keys before it
// are those every report file has held.
inline constexpr int first_measurement_index = 19;
// Index of `key` in report_keys(), compared without regard to case; 0 when
// it is not a report key.
int report_key_index(const QString& key);

enum class FieldKind { text, check };
FieldKind field_kind(const QString& key);

struct ReportRecord {
    // The snapshot of the device; its live_valid is the report's valid flag:
    // only a report with valid device data can be saved.
    device::DeviceRecord report_device;
    std::array<QString, report_value_count + 1> report_values; // [0] unused
    // The limits the measured values are judged by: the configuration's when
    // the report was begun, or those of the file it was opened from.
    Limits limits;
    // Set by every edit of a report field; cleared by a snapshot and at the
    // end of showing the record.
    bool report_changed = false;

    bool device_valid() const { return report_device.live_valid; }
    // The value of a report key (empty for a key that is not one).
    QString value(const QString& key) const;
    void set_value(const QString& key, const QString& value);
};

// Copies the device record into the report when it holds live data, clears
// the report's device part otherwise. With `clear_fields` every report value
// is emptied. The report counts as unchanged afterwards.
void take_snapshot(ReportRecord& report, const device::DeviceRecord& device, bool clear_fields);

// The report's device part follows the device record after a connection
// change, when the record holds live data; without it the report keeps the
// device data of its last snapshot. Unlike take_snapshot it leaves what was
// typed, and whether it was changed, alone: a reconnection must not pass an
// unsaved report off as saved.
void refresh_report_device(ReportRecord& report, const device::DeviceRecord& device);

// When a report opened from a file names another serial number than the
// device connected now: the line that says so on the page. Empty while no
// device has been identified, and for a report of this device.
QString other_device_note(const ReportRecord& report, const device::DeviceRecord& connected,
                          const config::LanguageTables& language);

// Today's date and the present time into "t_Datum" and "t_Uhrzeit".
void set_report_defaults(ReportRecord& report, const QDateTime& now);

// What one control shows.
struct ShownField {
    QString key; // the report key; the control is found by it
    FieldKind kind = FieldKind::text;
    QString text; // text boxes
    // Check boxes: the state, or nothing when the value is not a number the
    // box can take (the box is then left as it is).
    std::optional<bool> checked;
};

// The controls of every report key, in key order.
std::vector<ShownField> report_view(const ReportRecord& report);

// The value a check box stores.
QString check_value(bool checked);
// A check-box value as a state: "0" and "1" (any number of that value, in
// either decimal form), and an empty value as not ticked, so that a fresh
// report starts with every box empty; nothing for anything else, which
// leaves the box as it is.
std::optional<bool> check_state(const QString& value);

// Reads every report control: `read` gives the text of a text box or the
// check_value of a check box for the key it is called with.
template <class Read> void collect_report(ReportRecord& report, Read&& read) {
    const QStringList& keys = report_keys();
    for (qsizetype i = 1; i < keys.size(); ++i)
        report.report_values[static_cast<std::size_t>(i)] = read(keys[i]);
}

} // namespace veltrako::report
