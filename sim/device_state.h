#pragma once
// Everything the simulated device remembers between commands. Times are the
// milliseconds the link passes in; the device was switched on at ms 0.

#include "compliance_ring.h"
#include "device_family.h"
#include "live_status.h"
#include "memory_image.h"
#include "valve_cycle.h"

#include <QByteArray>
#include <QDateTime>

#include <cstdint>
#include <optional>

namespace veltrako::sim {

struct Scenario;

struct DeviceState {
    // `present`: the PC's time at power-on, where the device clock starts
    // unless the scenario fixes it.
    DeviceState(const Scenario& scenario, const QDateTime& present);

    QByteArray sw;
    std::optional<QByteArray> sw_after_update;
    QByteArray info;
    DeviceFamily family;

    Timings zeiten{};
    std::uint8_t flow_selector_u = 0;
    std::uint8_t flow_selector_o = 0;
    std::uint8_t acoustic_alarm = 0;
    std::uint16_t remaining = 0;
    LiveSettings live;

    MemoryImage memory;
    ComplianceRing compliance;

    std::int64_t power_on_ms = 0;
    // The device clock read clock_seconds_at_set (seconds since 2000) at clock_set_ms.
    std::int64_t clock_seconds_at_set = 0;
    std::int64_t clock_set_ms = 0;
    // Operating time up to here is counted in the hours block.
    std::int64_t hours_counted_ms = 0;
    // Start of the usage period in progress, seconds since 2000.
    std::uint32_t session_start = 0;

    std::int64_t clock_seconds(std::int64_t now_ms) const;
    // Counts the whole tens of minutes run since hours_counted_ms into both hours blocks.
    void advance_hours(std::int64_t now_ms);
    // The usage period in progress, ending now.
    ComplianceRecord running_session(std::int64_t now_ms) const;
    // The application starts again (after a firmware update): ticks and valve
    // cycle from the beginning, a new usage period, and the new firmware's identity.
    void restart(std::int64_t now_ms, bool firmware_changed);
};

} // namespace veltrako::sim
