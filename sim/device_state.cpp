#include "device_state.h"

#include "device_time.h"
#include "scenario.h"

namespace veltrako::sim {

namespace {

constexpr std::int64_t ten_minutes_ms = 10 * 60 * 1000;

// Whole units of `unit` in `ms`, rounding towards minus infinity.
std::int64_t floor_div(std::int64_t ms, std::int64_t unit) {
    return ms >= 0 ? ms / unit : -((-ms + unit - 1) / unit);
}

} // namespace

DeviceState::DeviceState(const Scenario& s, const QDateTime& present)
    : sw(s.sw), sw_after_update(s.sw_after_update), info(s.info), family(device_family(s.sw)),
      zeiten(s.timings), flow_selector_u(s.flow_selector_u), flow_selector_o(s.flow_selector_o),
      acoustic_alarm(s.acoustic_alarm), remaining(s.remaining), live(s.live),
      compliance(s.compliance_ring_size),
      clock_seconds_at_set(device_seconds(s.power_on_clock(present))),
      session_start(static_cast<std::uint32_t>(clock_seconds_at_set)) {
    memory.put_text(addr::text_40, field::text_40, s.text_40);
    memory.put_text(addr::text_58, field::text_58, s.text_58);
    memory.put_text(addr::hardware_id, field::hardware_id, s.hardware_id);
    memory.put_text(addr::board, field::board, s.board);
    memory.put_text(addr::serial, field::serial, s.serial);
    memory.set_hours(s.hours);
    const QList<QByteArray> records = s.stored_status_records();
    for (int n = 0; n < records.size(); ++n)
        memory.write(addr::status_first + n * status_record_size, records.at(n));
    for (const ComplianceRecord& r : s.stored_compliance_records(s.power_on_clock(present)))
        compliance.append(r);
}

std::int64_t DeviceState::clock_seconds(std::int64_t now_ms) const {
    return clock_seconds_at_set + floor_div(now_ms - clock_set_ms, 1000);
}

void DeviceState::advance_hours(std::int64_t now_ms) {
    const std::int64_t tens = floor_div(now_ms - hours_counted_ms, ten_minutes_ms);
    if (tens <= 0)
        return;
    hours_counted_ms += tens * ten_minutes_ms;
    // A damaged block stands still, as on the device.
    if (const auto h = memory.hours())
        memory.set_hours(add_tens_of_minutes(*h, tens));
}

ComplianceRecord DeviceState::running_session(std::int64_t now_ms) const {
    return {session_start, static_cast<std::uint32_t>(clock_seconds(now_ms))};
}

void DeviceState::restart(std::int64_t now_ms, bool firmware_changed) {
    compliance.append(running_session(now_ms));
    session_start = static_cast<std::uint32_t>(clock_seconds(now_ms));
    power_on_ms = now_ms;
    live.ticks_at_power_on = 0;
    if (firmware_changed && sw_after_update) {
        sw = *sw_after_update;
        family = device_family(sw);
    }
}

} // namespace veltrako::sim
