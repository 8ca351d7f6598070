#pragma once
// The 47-byte answer to "I": what the device measures right now.

#include "device_family.h"
#include "valve_cycle.h"

#include <QByteArray>
#include <QList>

#include <cstdint>

namespace veltrako::sim {

// The operating point of the simulated device; measured values scatter
// around it when `noise` is on.
struct LiveSettings {
    int o2_percent = 93;
    double flow_setpoint_lpm = 2.0;
    double speed_of_sound = 343.2; // m/s
    double gas_temperature = 31.5;
    int compressor_temperature = 45;
    double supply_voltage = 24.0;
    int pressure_low_hpa = 800; // the pressure swings between these within each phase
    int pressure_high_hpa = 2200;
    bool noise = true;
    std::uint64_t seed = 1;
    std::uint16_t ticks_at_power_on = 0; // the tick counter's value at power-on

    std::uint8_t alarms = 0;
    std::uint8_t alarms2 = 0;
    std::uint8_t alarm_level = 0;

    // Bytes put over the computed answer, at a position counted from 1 (for
    // answers no healthy device sends, e.g. a 16-bit value of 32768 or more).
    struct Override {
        int position;
        QByteArray bytes;
    };
    QList<Override> overrides;
};

inline constexpr int live_status_size = 47;
inline constexpr double flow_unit_lpm = 0.0125;

// Device ticks (25 per second) since power-on.
inline std::int64_t ticks_since(std::int64_t ms) {
    return ms < 0 ? 0 : ms / 40;
}

// The raw supply-voltage reading: V = raw * 24 / 820.
int supply_voltage_raw(double volts);
// A flow in l/min in the device's unit of 0.0125 l/min.
int flow_raw(double lpm);

QByteArray live_status_answer(const LiveSettings& settings, const Timings& zeiten,
                              const DeviceFamily& family, std::int64_t ms_since_power_on);

} // namespace veltrako::sim
