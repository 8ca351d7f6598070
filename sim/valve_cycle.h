#pragma once
// The pressure-swing cycle the valve timings drive. Timings count device
// ticks (25 per second). After power-on the device runs a lead-in of
// zeiten[0] ticks (phase 0); then phase 1 (zeiten[1] ticks, inlet 1 open) and
// phase 2 (zeiten[2] ticks, inlet 2 open) alternate. Outlet 1 is open from
// zeiten[3] to zeiten[4] ticks into phase 1, outlet 2 from zeiten[5] to
// zeiten[6] into phase 2; the rinse valve from zeiten[8] to zeiten[9] into
// phase 1 and from zeiten[10] to zeiten[11] into phase 2.

#include <array>
#include <cstdint>

namespace veltrako::sim {

using Timings = std::array<std::uint8_t, 14>;

struct ValveState {
    int phase = 0;          // 0 lead-in, 1, 2
    int ticks_in_phase = 0; // ticks since the phase began
    int phase_length = 0;   // ticks the phase lasts
    bool inlet1 = false, inlet2 = false, outlet1 = false, outlet2 = false, rinse = false;

    // The valve byte of the live status. First layout: bit 1 set while inlet 2
    // is open instead of inlet 1, bit 2 outlet 1, bit 4 outlet 2. Second
    // layout: bit 2 outlet 2, 4 inlet 1, 8 inlet 2, 16 outlet 1, 32 rinse.
    int bits(bool second_layout) const;
};

ValveState valve_state(const Timings& zeiten, std::int64_t ticks_since_power_on);

} // namespace veltrako::sim
