#pragma once
// Programming new firmware through the device's boot loader: the file is
// checked against the connected board, the device is switched into its
// loader with the framed "b", and the data lines go out raw, one at a time,
// each acknowledged by ">". Normal traffic stays off from the start; it
// resumes when nothing was sent, else the connect routine brings it back.

#include "firmware/firmware_file.h"
#include "firmware/update_progress.h"

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
    left,          // not connected, cancelled or refused: nothing was sent
    no_sync,       // the loader did not answer its sync request
    block_refused, // a data line was never acknowledged
    done,
};

// The device's hardware identifier (memory 0x00D0, trimmed) is one the file lists.
bool hardware_fits(const FirmwareImage& image, const QString& device_hardware);

// men_Softwareupdate_Click: asks for the file and the confirmation (current
// and new version, No the default), then programs the device. After success
// it connects again and notes the software the device now reports; after a
// failure the device waits in its boot loader and the update can be run
// again. Every outcome has been shown to the user on return.
UpdateResult firmware_update(AppContext& ctx, UpdateProgress& progress);

// The part after the confirmation: "b", synchronisation, the data lines and
// "R". `image` has passed load_firmware_file.
UpdateResult program_firmware(AppContext& ctx, const FirmwareImage& image,
                              UpdateProgress& progress);

} // namespace veltrako::firmware
