// A device as a connection leaves it, for the report's file and printout.

#pragma once

#include "device/device_record.h"

namespace veltrako::testing {

// Identity, hours, live values and timings; the family decides which
// settings the device has.
inline device::DeviceRecord inspected_device(const QString& family = QStringLiteral("52")) {
    device::DeviceRecord d;
    d.live_valid = true;
    d.SN = QStringLiteral("VO2-7E00042 ");
    d.LP = QStringLiteral("12344");
    d.sw_num = d.family_code = family;
    d.SW = family + QLatin1Char('A');
    d.BSTD = QStringLiteral("012345:30");
    d.rest_text = QStringLiteral("731");
    d.O2 = 94.6;
    d.VOLUMENSTROM = 2.0125;
    d.SOLL_VOLUMENSTROM = 2.0;
    d.GASTEMP = 36.75;
    d.KOMPRESSORTEMP = 51;
    d.wert_u = 7;
    d.wert_o = 42;
    d.wert_x = 3;
    for (std::size_t i = 0; i < d.zeiten.size(); ++i)
        d.zeiten[i] = static_cast<std::uint8_t>(10 + i);
    return d;
}

} // namespace veltrako::testing
