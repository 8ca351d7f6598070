// Scenario files are typed by hand: any text must give a scenario or an
// error naming the line, never a crash.

#include "sim/concentrator.h"
#include "sim/scenario.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    QString error;
    const auto scenario = veltrako::sim::parse_scenario(
        QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)), &error);
    if (scenario) {
        // A scenario that parses must also make a device that answers.
        veltrako::sim::Concentrator device(*scenario);
        device.receive(QByteArray("#1I\x14S", 5), 0);
        device.transmit(1000);
    } else if (!error.startsWith(QLatin1String("line "))) {
        __builtin_trap();
    }
    return 0;
}
