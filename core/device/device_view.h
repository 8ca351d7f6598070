#pragma once
// What the "Gerät" page shows for a device record, worked out without any
// widget: the text of every value box, the colour of every valve, alarm and
// alarm-level label and of the acoustic-alarm pictures, the low-power button,
// the selector positions and which model-dependent controls are shown.
// The window only copies this onto its controls, so every rule of the live
// display can be checked headless.

#include "device/device_record.h"

#include <QLocale>
#include <QString>

#include <array>
#include <vector>

namespace veltrako::device {

// Colour of a label or picture. `unchanged` is a real outcome: some labels
// are left as they are by one valve layout or alarm source.
enum class Shade { unchanged, white, red, green };

struct TextRow {
    QString control;
    QString text;
};

struct ShadeRow {
    QString control;
    Shade shade = Shade::unchanged;
};

// Controls that only some device families use. A control is shown when its
// flag is true.
struct ModelControls {
    bool valve_sp = true;       // lbl_VentilSP: driven by the second valve layout only
    bool alarm_rest = true;     // lbl_AlarmRest: driven only when O22 comes from alarme2
    bool alarm_low = true;      // lbl_Alarmlow: that alarm source has two levels only
    bool acoustic = true;       // pic_akust*: the "x"/"X" commands need version "30" or later
    bool acoustic_o22 = true;   // pic_akustO22: not driven when O22 comes from alarme2
    bool flow_selectors = true; // cb_vs and its labels: "U"/"O" need version "51" or later
    bool extra_timings = true;  // cb_t 7..13: family "30" and later keep only 0..6
};

inline constexpr int timing_count = 14;       // cb_t 0..13
inline constexpr int flow_selector_count = 2; // cb_vs 0 ("U"), 1 ("O")

struct DeviceTabView {
    // No live status since the record was cleared: the page is blanked.
    // Besides the rows below, the window then empties every control whose
    // name begins with "t_", locks the selectors at their first entry, hides
    // cmd_setsn and empties sysstatout; nothing else changes.
    bool blank = true;

    // The value boxes of the page (and lbl_Phase when not blank), in the
    // order they are written.
    std::vector<TextRow> texts;
    // Every valve, alarm and alarm-level label and acoustic picture.
    std::vector<ShadeRow> shades;

    // The following are only meaningful when not blank.
    bool togglelp_enabled = false;
    std::array<int, timing_count> timing_positions{};      // cb_t(i) list position
    std::array<int, flow_selector_count> flow_positions{}; // cb_vs(i) list position
    // Whether the alarm beside pic_akustO21, pic_akustO22, pic_akustvollo
    // sounds (its bit of wert_x is set).
    std::array<bool, 3> acoustic_on{};
    ModelControls model;

    // The row of a control; an empty text / `unchanged` when there is none.
    QString text(const QString& control) const;
    Shade shade(const QString& control) const;
    bool has_text(const QString& control) const;
};

// The controls of the live page, for callers that walk them.
const std::vector<QString>& value_box_names();
const std::vector<QString>& shaded_control_names();

// The text a value box of the page shows for `record` ("t_o2", "t_c", ...);
// empty for a name that is not a value box. Numbers are written in
// `numbers` (the user's locale), the device clock in `words` (the program's
// language).
QString value_text(const DeviceRecord& record, const QString& control, const QLocale& numbers,
                   const QLocale& words);

DeviceTabView make_device_tab_view(const DeviceRecord& record, const QLocale& numbers,
                                   const QLocale& words);

ModelControls model_controls(const DeviceRecord& record);

// A number rounded half away from zero to `decimals` places and written in
// the locale without group separators: 1013 hPa stays "1013", not "1.013".
QString format_value(double value, int decimals, const QLocale& locale);

// The device clock as date and time in `locale`'s short date form with a
// four-digit year ("02.03.2026 09:32:42" in German); empty for the zero date.
QString format_device_time(const QDateTime& t, const QLocale& locale);

} // namespace veltrako::device
