#pragma once
// The limits an inspection's measured values are judged by. The
// configuration may set each one (a GRENZE_... line in veltrako2.ini); a
// report file keeps the limits it was judged by, so that the same file gives
// the same verdicts wherever it is opened or printed.

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

namespace veltrako::config {
struct Config;
}

namespace veltrako::report {

struct Limits {
    double o2_min = 82;          // %, at least
    double flow_percent = 10;    // at most this many percent from the set flow
    double earth_max = 0.3;      // ohm, protection class I
    double leakage_max_i = 0.5;  // mA, protection class I
    double leakage_max_ii = 0.1; // mA, protection class II
    bool operator==(const Limits&) const = default;
};
// The flow may always be this far from the set flow (l/min), however small
// the percentage makes it.
inline constexpr double flow_tolerance_floor = 0.2;
// The analyser and the device's own O2 reading may differ by this many
// percentage points before the note about the device's sensor appears.
inline constexpr double o2_sensor_points = 3;

// The keys of the limits, in the configuration and in the report file, in
// the order of Limits' fields: GRENZE_O2, GRENZE_FLOW, GRENZE_SCHUTZLEITER,
// GRENZE_ABLEITSTROM_I, GRENZE_ABLEITSTROM_II.
const QStringList& limit_keys();
// The limit of a key of limit_keys(); 0 for any other key, which set_limit
// ignores.
double limit_value(const Limits& limits, const QString& key);
void set_limit(Limits& limits, const QString& key, double value);
// A limit as a file holds it: a number of zero or more, with a decimal comma
// or point. Nothing for anything else.
std::optional<double> parse_limit(const QString& text);

// The configuration's limits; a limit it does not set, or sets to no number
// (see limit_problems), keeps its default.
Limits configured_limits(const config::Config& config);
// The limits the configuration sets to something that is no number of zero
// or more: key and the text it holds.
QList<std::pair<QString, QString>> limit_problems(const config::Config& config);

} // namespace veltrako::report
