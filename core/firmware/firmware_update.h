#pragma once
// Programming new firmware through the device's boot loader: the file is
// checked against the connected board, the device is switched into its
// loader with the framed "b", and the data lines go out raw, one at a time,
// each acknowledged by ">". Normal traffic stays off from the start; it
// resumes when nothing was sent, else the connect routine brings it back.

#include "firmware/firmware_file.h"
#include "firmware/update_progress.h"

#include <QByteArray>
#include <QString>

#include <optional>

namespace veltrako {
class AppContext;
}

namespace veltrako::firmware {

// The loader's pace.
namespace loader {
inline constexpr int enter_ms = 500; // after "b", before the first sync request
inline constexpr int sync_tries = 3; // "I" requests
inline constexpr int sync_wait_ms = 250;
inline constexpr int line_tries = 3;  // writes of one data line
inline constexpr int quick_polls = 9; // first polls for the acknowledgement ...
inline constexpr int quick_poll_ms = 40;
inline constexpr int slow_polls = 21; // ... then these while nothing came
inline constexpr int slow_poll_ms = 50;
inline constexpr int restart_ms = 1000; // after "R"
inline constexpr char greeting[] = "ae60000";
} // namespace loader

enum class UpdateResult {
    left, // not connected, cancelled or refused: nothing was sent
    // The device waits in its loader, which does not say which hardware it
    // runs on, and the caller did not allow programming without that check:
    // nothing was sent.
    hardware_unknown,
    no_sync,       // the loader did not answer its sync request
    block_refused, // a data line was never acknowledged
    done,
};

// The device's hardware identifier (memory 0x00D0, trimmed) is one the file lists.
bool hardware_fits(const FirmwareImage& image, const QString& device_hardware);

// The loader's greeting is "ae60000", its version and, from a loader that
// knows it, the board's hardware identifier: the third word, or empty.
QString loader_hardware(const QByteArray& greeting);

// Sends the loader's sync request up to `tries` times, `loader::sync_wait_ms`
// apart; the first answer that is its greeting, or nothing.
std::optional<QByteArray> sync_boot_loader(AppContext& ctx, int tries);

// What an update of a device waiting in its loader does when neither the
// loader nor the device record says which hardware it is, so that the file
// cannot be checked against it.
enum class UnknownHardware {
    ask,     // the warning goes into the question before programming (the window)
    refuse,  // the warning is shown and nothing is sent (a script that did not allow it)
    program, // the warning is shown as a note and the file is programmed
};

struct UpdateOptions {
    UnknownHardware unknown_hardware = UnknownHardware::ask;
};

// men_Softwareupdate_Click: asks for the file and the confirmation (current
// and new version, No the default), then programs the device. A device that
// waits in its boot loader (a failed update, or found so when connecting) is
// programmed too: the file is checked against the hardware its loader names,
// else against the device record, else as `options` say. After success it
// connects again and notes the software the device now reports; after a
// failure the device waits in its boot loader and the update can be run
// again. Every outcome has been shown to the user on return.
UpdateResult firmware_update(AppContext& ctx, UpdateProgress& progress,
                             const UpdateOptions& options = {});

// The part after the confirmation: "b" (unless the device already waits in
// its loader), synchronisation, the data lines and "R". `image` has passed
// load_firmware_file.
UpdateResult program_firmware(AppContext& ctx, const FirmwareImage& image,
                              UpdateProgress& progress);

} // namespace veltrako::firmware
