// Valve timing preset files lie beside the program where anyone can edit
// them: any content must load or be refused, and a file that loads holds
// only timings the device can take.

#include "device/timing_presets.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstdint>
#include <cstdlib>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static QTemporaryDir dir;
    const QString folder = dir.path() + QLatin1Char('/');
    QFile file(folder + device::preset_file_name(1));
    if (!file.open(QIODevice::WriteOnly))
        return 0;
    file.write(reinterpret_cast<const char*>(data), static_cast<qint64>(size));
    file.close();
    device::PresetTable table;
    device::setup_presets(table, folder, true);
    const device::PresetRecord& p = table.preset(1);
    // Index 7 is never filled, whatever the file says.
    if (p.loaded && p.preset_zeiten[device::preset_skipped_index] != 0)
        std::abort();
    return 0;
}
