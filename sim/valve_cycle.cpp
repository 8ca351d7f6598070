#include "valve_cycle.h"

namespace veltrako::sim {

namespace {

bool open_between(int t, int from, int to) {
    return t >= from && t < to;
}

} // namespace

int ValveState::bits(bool second_layout) const {
    if (second_layout) {
        return (outlet2 ? 2 : 0) | (inlet1 ? 4 : 0) | (inlet2 ? 8 : 0) | (outlet1 ? 16 : 0) |
               (rinse ? 32 : 0);
    }
    return (inlet2 ? 1 : 0) | (outlet1 ? 2 : 0) | (outlet2 ? 4 : 0);
}

ValveState valve_state(const Timings& z, std::int64_t ticks) {
    ValveState s;
    if (ticks < 0)
        ticks = 0;
    if (ticks < z[0]) {
        s.phase = 0;
        s.ticks_in_phase = static_cast<int>(ticks);
        s.phase_length = z[0];
        return s;
    }
    ticks -= z[0];
    const int cycle = z[1] + z[2];
    if (cycle == 0) { // no timings: stay in phase 1
        s.phase = 1;
        s.ticks_in_phase = static_cast<int>(ticks % 256);
        s.phase_length = 0;
        s.inlet1 = true;
        return s;
    }
    const int t = static_cast<int>(ticks % cycle);
    if (t < z[1]) {
        s.phase = 1;
        s.ticks_in_phase = t;
        s.phase_length = z[1];
        s.inlet1 = true;
        s.outlet1 = open_between(t, z[3], z[4]);
        s.rinse = open_between(t, z[8], z[9]);
    } else {
        s.phase = 2;
        s.ticks_in_phase = t - z[1];
        s.phase_length = z[2];
        s.inlet2 = true;
        s.outlet2 = open_between(s.ticks_in_phase, z[5], z[6]);
        s.rinse = open_between(s.ticks_in_phase, z[10], z[11]);
    }
    return s;
}

} // namespace veltrako::sim
