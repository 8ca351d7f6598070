#pragma once
// Status numbers of the device link, with the meanings the FTDI D2XX driver
// gives them. Every backend reports in these numbers so that the messages the
// technician sees ("... DLL-Error:3") read the same whichever route is used.

#include <cstdint>

namespace veltrako::link {

using FtStatus = std::uint32_t;

enum : FtStatus {
    FT_OK = 0,
    FT_INVALID_HANDLE = 1,
    FT_DEVICE_NOT_FOUND = 2,
    FT_DEVICE_NOT_OPENED = 3,
    FT_IO_ERROR = 4,
    FT_INSUFFICIENT_RESOURCES = 5,
    FT_INVALID_PARAMETER = 6,
    FT_INVALID_BAUD_RATE = 7,
    FT_NOT_SUPPORTED = 17,
    FT_OTHER_ERROR = 18,
};

// Arguments of the calls, in the driver's numbering.
inline constexpr std::uint8_t FT_BITS_8 = 8;
inline constexpr std::uint8_t FT_STOP_BITS_1 = 0;
inline constexpr std::uint8_t FT_STOP_BITS_2 = 2;
inline constexpr std::uint8_t FT_PARITY_NONE = 0;
inline constexpr std::uint16_t FT_FLOW_NONE = 0x0000;
inline constexpr std::uint32_t FT_LIST_NUMBER_ONLY = 0x80000000u;

} // namespace veltrako::link
