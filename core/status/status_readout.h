#pragma once
// The "System Status" page's work: reading the device's status records one
// after the other, showing the table when the chain ends, and saving it on
// request or, after a readout the poll cycle started, without asking.

#include <QDateTime>
#include <QString>

namespace veltrako {
class AppContext;
}
namespace veltrako::device {
struct DeviceRecord;
}

namespace veltrako::status {

// Lets the protocol core hand the end of a readout to this module: the
// table goes to the page, and a readout started for saving is saved.
void install_status_memory(AppContext& ctx);

// cmd_sysstatread: with a device connected and no readout running, shows the
// hourglass, empties the record list and asks for record 1; the answers
// carry the chain on.
void cmd_sysstatread_Click(AppContext& ctx);
// cmd_sysstatsave: saves the table, asking where.
void cmd_sysstatsave_Click(AppContext& ctx);

enum class SaveMode { manual, automatic };

// Writes a fresh table to a file. Manual: asks for the file name (starting in
// INITDIR, which follows the folder chosen). Automatic: into AUTOSAVEDIR,
// once per device key per run, replacing the board's file of an older
// software version. True when a file was written.
bool save_status(AppContext& ctx, SaveMode mode);

// The name a saved table gets, without ".txt": "Status_", the device key,
// "_" and `now` as yyyymmdd_hhnnss.
QString status_file_base(const device::DeviceRecord& device, const QDateTime& now);

// Serial number (trimmed), board number and software version joined by "_":
// what tells one device and firmware from another in file names.
QString status_device_key(const device::DeviceRecord& device);

} // namespace veltrako::status
