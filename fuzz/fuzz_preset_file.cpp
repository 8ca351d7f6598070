// Valve timing preset files lie beside the program where anyone can edit
// them: any content must load or be refused, and a file that loads holds
// only timings the device can take.

#include "config/text_file.h"
#include "device/timing_presets.h"
#include "fuzz_support.h"

#include <cstdint>
#include <cstdlib>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    // The same decoding as a file's bytes get, without the file.
    const QStringList lines = config::decode_text_lines(fuzz::input_bytes(data, size));
    device::PresetRecord p;
    // Index 7 is never filled, whatever the file says.
    if (device::parse_preset_lines(lines, p) && p.preset_zeiten[device::preset_skipped_index] != 0)
        std::abort();
    return 0;
}
