#include "live_status.h"

#include "bytes.h"
#include "noise.h"

#include <algorithm>
#include <bit>
#include <cmath>

namespace veltrako::sim {

namespace {

// Quantities that scatter independently.
enum Stream { o2_stream = 1, flow_stream, speed_stream, gas_stream, opening_stream, sensor_stream };

// Values the program reads as signed 16-bit stay below 32768.
int clamp16(long value) {
    return static_cast<int>(std::clamp(value, 0L, 32767L));
}

// IEEE-754 single precision, least significant byte first.
void put_single_lsb_first(QByteArray& payload, int position, double value) {
    const auto bits = std::bit_cast<std::uint32_t>(static_cast<float>(value));
    for (int i = 0; i < 4; ++i)
        put_byte(payload, position + i, static_cast<int>(bits >> (8 * i)));
}

} // namespace

int supply_voltage_raw(double volts) {
    return clamp16(std::lround(volts * 820.0 / 24.0));
}

int flow_raw(double lpm) {
    return clamp16(std::lround(lpm / flow_unit_lpm));
}

QByteArray live_status_answer(const LiveSettings& s, const Timings& zeiten,
                              const DeviceFamily& family, std::int64_t ms_since_power_on) {
    const std::int64_t ticks = ticks_since(ms_since_power_on);
    const auto scatter = [&](Stream stream, double amplitude) {
        return s.noise ? amplitude * noise(s.seed, stream, ticks) : 0.0;
    };
    const ValveState valves = valve_state(zeiten, ticks);

    QByteArray p(live_status_size, '\0');
    put_byte(p, 1, 'I');
    put_be16(p, 2, static_cast<std::uint32_t>((s.ticks_at_power_on + ticks) & 0xFFFF));
    put_single_lsb_first(p, 4, s.speed_of_sound + scatter(speed_stream, 0.3));
    put_byte(
        p, 8,
        std::clamp(static_cast<int>(std::lround(s.o2_percent + scatter(o2_stream, 1.5))), 0, 255));
    put_be16(p, 10,
             static_cast<std::uint32_t>(
                 flow_raw(s.flow_setpoint_lpm * (1.0 + scatter(flow_stream, 0.02)))));

    // Pressure builds up over each phase and falls when the inlets switch.
    int pressure = 0;
    if (valves.phase_length > 0) {
        const double rise = static_cast<double>(valves.ticks_in_phase) / valves.phase_length;
        pressure =
            valves.phase == 0
                ? static_cast<int>(std::lround(s.pressure_low_hpa * rise))
                : static_cast<int>(std::lround(s.pressure_low_hpa +
                                               (s.pressure_high_hpa - s.pressure_low_hpa) * rise));
    } else {
        pressure = s.pressure_low_hpa;
    }
    put_be16(p, 12, static_cast<std::uint32_t>(clamp16(pressure)));
    put_single_lsb_first(p, 14, s.gas_temperature + scatter(gas_stream, 0.2));
    put_be16(p, 18, static_cast<std::uint32_t>(clamp16(s.compressor_temperature)));
    put_be16(p, 20, static_cast<std::uint32_t>(supply_voltage_raw(s.supply_voltage)));
    put_byte(p, 22, valves.bits(family.valve_layout));
    put_byte(p, 23, s.alarm_level);
    put_byte(p, 24, family.alarm_at_47 ? 0 : s.alarms);
    put_byte(p, 25, valves.phase);
    put_byte(p, 26, std::min(valves.ticks_in_phase, 255)); // seconds = byte * 0.04
    // The proportional valve opens with the flow asked for: 5 l/min is fully open.
    const double opening = s.flow_setpoint_lpm / 5.0 * 255.0 + scatter(opening_stream, 2.0);
    put_byte(p, 27, std::clamp(static_cast<int>(std::lround(opening)), 0, 255));
    put_byte(p, 28,
             std::clamp(static_cast<int>(std::lround(112 + scatter(sensor_stream, 3.0))), 0, 255));
    put_byte(p, 29, 100);
    put_byte(p, 35, s.alarms2);
    put_be16(p, 36, static_cast<std::uint32_t>(flow_raw(s.flow_setpoint_lpm)));
    put_byte(p, 47, family.alarm_at_47 ? s.alarms : 0);

    for (const LiveSettings::Override& o : s.overrides)
        for (int i = 0; i < o.bytes.size() && o.position + i <= live_status_size; ++i)
            put_byte(p, o.position + i, static_cast<unsigned char>(o.bytes.at(i)));
    return p;
}

} // namespace veltrako::sim
