#pragma once
// What the firmware identity says about the device's answers. The device
// decides by the same rules as the program that talks to it, so that every
// family the program tells apart can be simulated.

#include <QByteArray>

namespace veltrako::sim {

struct DeviceFamily {
    // The identity text without its last character; "70" and "71" report as
    // "50" and "51".
    QByteArray code;
    // The alarm bits of the live status stand at position 47 instead of 24.
    bool alarm_at_47 = false;
    // The valve bits follow the second layout (one bit per valve, rinse valve included).
    bool valve_layout = false;
    // The O22 alarm comes from the second alarm byte, and the status records
    // are written in the extended layout.
    bool second_alarm_byte = false;
};

DeviceFamily device_family(const QByteArray& sw);

} // namespace veltrako::sim
