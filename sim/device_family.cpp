#include "device_family.h"

namespace veltrako::sim {

namespace {

bool in_range(const QByteArray& code, const char* low, const char* high) {
    return code >= low && code <= high;
}

} // namespace

DeviceFamily device_family(const QByteArray& sw) {
    DeviceFamily f;
    f.code = sw.left(sw.size() - 1);
    if (f.code == "70")
        f.code = "50";
    else if (f.code == "71")
        f.code = "51";
    // Text order, byte by byte: "7E1" lies between "7C" and "7F".
    f.alarm_at_47 = f.code == "AA" || in_range(f.code, "A8", "A9") ||
                    in_range(f.code, "7C", "7F") || in_range(f.code, "8C", "8F");
    f.valve_layout =
        f.code == "AA" || f.code == "A9" || f.code == "A8" || f.code == "7F" || f.code == "7E";
    f.second_alarm_byte = f.code >= "70" || f.code == "66" || f.code == "56";
    return f;
}

} // namespace veltrako::sim
