#pragma once
// How the D2XX-style arguments of the device link translate into libftdi's,
// and how libftdi's failures read for the technician. Kept apart from the
// backend so it can be checked without a chip attached; libftdi's own header
// (with its global NONE, ODD, ... enumerators) stays out of every header.

#include <QString>

#include <cstdint>
#include <optional>

namespace veltrako::link::ftdi {

// Values of libftdi's ftdi_bits_type, ftdi_stopbits_type and ftdi_parity_type.
struct LineProperty {
    int bits = 0;
    int stop_bits = 0;
    int parity = 0;
};

// std::nullopt for arguments the D2XX driver does not define either.
std::optional<LineProperty> line_property(std::uint8_t word_length, std::uint8_t stop_bits,
                                          std::uint8_t parity);

// libftdi's code and message as one sentence. `opening` marks failures of
// opening the chip, where a refused USB device node usually means the udev
// rule we ship is not installed; then the sentence says how to install it.
QString failure_text(int code, const char* libftdi_text, bool opening);

// File name of the udev rule shipped in dist/udev/.
inline constexpr const char* udev_rule_name = "99-veltrako2-ftdi.rules";

} // namespace veltrako::link::ftdi
