#pragma once
// The valve timings of the "Gerät" page: one selector per timing index
// (entry k is the byte k, shown as the seconds the device means), the
// factory reset of the seven main timings, and three preset buttons that
// write a whole set of timings from the files "Zeiten_1.txt" ...
// "Zeiten_3.txt" beside the program.

#include "device/device_record.h"
#include "device/read_back.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>

namespace veltrako {
class AppContext;
}

namespace veltrako::device {

// The device counts valve times in ticks of 1/25 s.
inline constexpr double timing_tick_seconds = 0.04;
// A timing byte as seconds, two decimals in the user's locale ("5,76").
QString timing_text(int byte_value, const QLocale& locale);
// The 256 entries of a cb_t list; entry k stands for the byte value k.
QStringList timing_entries(const QLocale& locale);

// The factory values of indexes 0..6; indexes 7..13 have none.
inline constexpr std::array<std::uint8_t, 7> factory_timings{100, 144, 144, 27, 134, 27, 134};

inline constexpr int preset_count = 3;
inline constexpr int preset_timing_count = 12; // device indexes 0..11
// The one index inside 0..11 a preset never writes nor reads back.
inline constexpr int preset_skipped_index = 7;

struct PresetRecord {
    QString titel1;
    QString titel2;
    std::array<std::uint8_t, preset_timing_count> preset_zeiten{};
    bool tried = false;  // the file has been looked for
    bool loaded = false; // the file was read to its end
};

// How the three preset buttons look.
struct PresetButton {
    bool enabled = false;
    QString caption = QStringLiteral("---");
};

struct PresetTable {
    std::array<PresetRecord, preset_count> presets; // preset n at [n - 1]
    bool shown = false;                             // the buttons are visible
    std::array<PresetButton, preset_count> buttons;

    const PresetRecord& preset(int n) const { return presets[static_cast<std::size_t>(n - 1)]; }
    PresetRecord& preset(int n) { return presets[static_cast<std::size_t>(n - 1)]; }
};

// "Zeiten_" + n + ".txt".
QString preset_file_name(int n);

// Fills `preset` from the lines of a preset file: key "=" value, empty
// lines skipped, keys trimmed, unknown keys ignored. Returns false at the
// first timing value that is not a whole number 0..255; what was read up to
// there stays in `preset`. Titles and timings are reset first.
bool parse_preset_lines(const QStringList& lines, PresetRecord& preset);

// Reads preset n (1..3) from `folder` the first time it is asked for, and
// from then on answers from what that attempt found: a file changed while
// the program runs is not read again. True when the preset is loaded.
bool load_preset(PresetTable& table, int n, const QString& folder);

// Which devices get the preset buttons: the models with the rinse valve
// (the second valve layout). A preset is built around that valve: four of
// its eleven values (indexes 8..11) are the rinse valve's on and off times in
// each phase, and the pair "<2l" / ">=2l" tunes the rinse to the flow. On a
// model without the rinse valve those indexes are not rinse times, so a
// preset written there would put rinse times into settings that mean
// something else.
bool presets_wanted(const DeviceRecord& record);

// setup_presets: hidden when `show` is false; otherwise each button enabled
// with its two title lines when its preset loads, disabled with "---" when
// it does not.
void setup_presets(PresetTable& table, const QString& folder, bool show);

// cb_t_Click: a choice the user makes, with live data coming in, writes the
// timing, waits 200 ms and reads it back; a note tells the outcome.
WriteOutcome cb_t_Click(AppContext& ctx, int index, int position, bool locked);

// cmd_t_reset: asks (old and factory values), then "w" with the factory
// value for indexes 0..6, 200 ms, "r" for each; a note tells the outcome.
WriteOutcome cmd_t_reset_Click(AppContext& ctx);

// cmdPresetZeiten(n): with live data and a loaded preset n, asks (old and
// new values), then "w" for indexes 0..11 except 7, 500 ms, "r" for the
// same; text 116 once the device reports every value written.
WriteOutcome cmdPresetZeiten_Click(AppContext& ctx, int n);

} // namespace veltrako::device
