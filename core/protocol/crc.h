#pragma once
// The frame checksum: CRC-16, polynomial 0x1021, most significant bit first,
// no reflection, no final XOR. The device insists on the start value 0x5555.

#include <QByteArray>

#include <array>
#include <cstdint>

namespace veltrako::protocol {

inline constexpr std::uint16_t crc_start = 0x5555;

// crc_table[i] is the CRC register after shifting i, placed in the high byte,
// through eight steps of the polynomial.
extern const std::array<std::uint16_t, 256> crc_table;

std::uint16_t calc_crc(const QByteArray& data, std::uint16_t start = crc_start);
std::uint16_t calc_crc(const char* data, qsizetype size, std::uint16_t start = crc_start);

} // namespace veltrako::protocol
