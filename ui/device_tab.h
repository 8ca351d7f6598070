#pragma once
// refresh_device_tab: puts a worked-out view of the device record onto the
// controls of the "Gerät" page, by object name, every row on every call.

#include <QColor>

namespace veltrako::device {
struct DeviceTabView;
struct PresetTable;
enum class Shade;
} // namespace veltrako::device

namespace veltrako::ui {

class FrmMain;

// Red (255,0,0), green (0,255,0) or white; `unchanged` has no colour.
QColor shade_colour(device::Shade shade);

void refresh_device_tab(FrmMain& form, const device::DeviceTabView& view);

// The three preset buttons as setup_presets left them.
void apply_preset_buttons(FrmMain& form, const device::PresetTable& table);

} // namespace veltrako::ui
