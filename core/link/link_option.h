#pragma once
// The --link option: which route leads to the device.
//   ftdi            an FTDI chip through libftdi1 (the default)
//   serial:PATH     a serial device by path (/dev/ttyUSB0, COM3, a pseudo-terminal)
//   sim[:SCENARIO]  the simulated concentrator in this process

#include <QString>

#include <optional>

namespace veltrako::link {

struct LinkOption {
    enum class Kind { ftdi, serial, sim };
    Kind kind = Kind::ftdi;
    QString path;     // serial: the device path
    QString scenario; // sim: a sample scenario name or a scenario file; empty = default
};

// std::nullopt with `error` set when the text names no known link.
std::optional<LinkOption> parse_link_option(const QString& text, QString* error = nullptr);

} // namespace veltrako::link
