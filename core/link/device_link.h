#pragma once
// One device link, shaped after the D2XX calls the program uses. Each call
// returns a D2XX-style status (0 = OK). A backend serves at most one open
// handle at a time; handles are small non-zero numbers.

#include "link/ft_status.h"

#include <QByteArray>
#include <QString>

namespace veltrako::link {

using FtHandle = std::uint32_t;

class DeviceLink {
public:
    virtual ~DeviceLink() = default;

    // Number of attached devices (FT_ListDevices with FT_LIST_NUMBER_ONLY).
    virtual FtStatus list_device_count(std::uint32_t& count) = 0;
    virtual FtStatus open(int index, FtHandle& handle) = 0;
    virtual FtStatus set_baud_rate(FtHandle handle, std::uint32_t baud) = 0;
    virtual FtStatus set_data_characteristics(FtHandle handle, std::uint8_t word_length,
                                              std::uint8_t stop_bits, std::uint8_t parity) = 0;
    virtual FtStatus set_flow_control(FtHandle handle, std::uint16_t flow, std::uint8_t xon,
                                      std::uint8_t xoff) = 0;
    virtual FtStatus set_dtr(FtHandle handle) = 0;
    virtual FtStatus set_timeouts(FtHandle handle, std::uint32_t read_ms,
                                  std::uint32_t write_ms) = 0;
    // Number of received bytes waiting to be read.
    virtual FtStatus get_queue_status(FtHandle handle, std::uint32_t& rx_bytes) = 0;
    // Reads up to `wanted` bytes into `buffer` (resized to `wanted`); `returned`
    // tells how many of them are fresh.
    virtual FtStatus read(FtHandle handle, QByteArray& buffer, std::uint32_t wanted,
                          std::uint32_t& returned) = 0;
    virtual FtStatus write(FtHandle handle, const QByteArray& bytes, std::uint32_t& written) = 0;
    virtual FtStatus close(FtHandle handle) = 0;

    // A sentence on the last failure in the backend's own words (for the
    // developer page), empty when there is nothing to add to the status.
    virtual QString last_error_text() const { return {}; }
    // Which way the device is reached, as the status bar names it ("sim",
    // "/dev/ttyUSB0"); empty when there is nothing to add.
    virtual QString route_name() const { return {}; }
};

} // namespace veltrako::link
