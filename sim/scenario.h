#pragma once
// Everything a simulated device is made of: identity, counters, settings,
// stored records and faults. Read from plain KEY=VALUE text; see
// sim/scenarios/default.scn for every key with a comment.

#include "faults.h"
#include "generators.h"
#include "live_status.h"
#include "memory_image.h"
#include "valve_cycle.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace veltrako::sim {

// A time a scenario names: a date-time, or a distance from the device clock
// at power-on ("now", "-60d"), so that records lie before whatever day the
// simulator starts on.
struct ScenarioTime {
    QDateTime fixed;               // when valid, this date-time
    qint64 seconds_from_start = 0; // otherwise this far from the power-on clock
    bool relative() const { return !fixed.isValid(); }
    QDateTime at(const QDateTime& power_on_clock) const {
        return relative() ? power_on_clock.addSecs(seconds_from_start) : fixed;
    }
};

struct Scenario {
    // Identity
    QByteArray sw = "5121";
    std::optional<QByteArray> sw_after_update; // "?" after a firmware update
    QByteArray info = "Veltrak O2";
    QByteArray serial = "VO2-0012345";
    QByteArray board = "LP1240010077"; // 5th character "4": low-power capable
    QByteArray hardware_id = "AE61";
    QByteArray text_40 = "Veltrak O2 Geraet";
    QByteArray text_58 = "V2.1";
    QByteArray boot_loader_greeting = "ae60000 BL1.3\r\n";
    // Powered on in its boot loader, as a failed update leaves a device: it
    // answers the loader's requests only, until a file is programmed and "R"
    // restarts it.
    bool boot_loader_at_power_on = false;

    // Counters and settings
    OperatingHours hours{1234, 5};
    // The device clock at power-on; unset, it starts at the PC's present time,
    // as a device in the field whose clock was set some time ago.
    std::optional<QDateTime> clock;
    std::uint16_t remaining = 500;
    Timings timings{100, 144, 144, 27, 134, 27, 134, 0, 0, 0, 0, 0, 0, 0};
    std::uint8_t flow_selector_u = 4;
    std::uint8_t flow_selector_o = 10;
    std::uint8_t acoustic_alarm = 1;
    // Milliseconds from the last byte of a request to the first of its
    // answer, on top of the wire time in both directions.
    int latency_ms = 1;

    LiveSettings live;

    // Status memory: explicit 22-byte records, or generated ones.
    std::optional<StatusLayout> status_layout; // unset: as the identity implies
    QList<QByteArray> status_records;
    int status_generate = 0;

    // Usage memory: explicit periods (ComplianceRecord{} is an erased slot), or
    // generated ones.
    int compliance_ring_size = ComplianceRing::default_size;
    QList<ComplianceRecord> compliance_records;
    int compliance_generate = 0;
    ScenarioTime compliance_from, compliance_to;

    Faults faults;

    // The layout the status records are written in.
    StatusLayout effective_status_layout() const;
    // The status records the memory holds, explicit or generated.
    QList<QByteArray> stored_status_records() const;
    // The device clock at power-on, when the PC's clock reads `present`.
    QDateTime power_on_clock(const QDateTime& present) const { return clock.value_or(present); }
    // The usage periods the ring holds, oldest first, for a device whose
    // clock read `power_on_clock` at power-on.
    QList<ComplianceRecord> stored_compliance_records(const QDateTime& power_on_clock) const;
};

// nullopt with `error` naming the line ("line 7: ...") on an unknown key or a
// bad value.
std::optional<Scenario> parse_scenario(const QByteArray& text, QString* error = nullptr);

// A bare name (letters, digits, "_" and "-" only) is one of the sample
// scenarios built into the program; anything else is a file path.
std::optional<Scenario> load_scenario(const QString& name_or_path, QString* error = nullptr);

QStringList sample_scenario_names();

} // namespace veltrako::sim
