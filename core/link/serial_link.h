#pragma once
// The device link over a serial port by path: /dev/ttyUSB0 through the
// kernel's driver for the FTDI chip, a COM port on Windows, or the
// pseudo-terminal the stand-alone simulator serves. "Device count" is 1 while
// the path exists, so unplugging an adapter reads as "no device".

#include "link/device_link.h"

#include <memory>

class QSerialPort;

namespace veltrako::link {

class SerialLink final : public DeviceLink {
public:
    explicit SerialLink(QString path);
    ~SerialLink() override;
    SerialLink(const SerialLink&) = delete;
    SerialLink& operator=(const SerialLink&) = delete;

    FtStatus list_device_count(std::uint32_t& count) override;
    FtStatus open(int index, FtHandle& handle) override;
    FtStatus set_baud_rate(FtHandle handle, std::uint32_t baud) override;
    FtStatus set_data_characteristics(FtHandle handle, std::uint8_t word_length,
                                      std::uint8_t stop_bits, std::uint8_t parity) override;
    // Only "no flow control" is offered: the concentrator's cable has no handshake lines.
    FtStatus set_flow_control(FtHandle handle, std::uint16_t flow, std::uint8_t xon,
                              std::uint8_t xoff) override;
    // A pseudo-terminal has no modem lines; there the refusal to set DTR is no failure.
    FtStatus set_dtr(FtHandle handle) override;
    // Only the write time-out bounds anything: reads never wait.
    FtStatus set_timeouts(FtHandle handle, std::uint32_t read_ms, std::uint32_t write_ms) override;
    // Takes in what the system holds for the port first, without waiting.
    FtStatus get_queue_status(FtHandle handle, std::uint32_t& rx_bytes) override;
    // Hands out what has arrived, up to `wanted`, without waiting for more.
    FtStatus read(FtHandle handle, QByteArray& buffer, std::uint32_t wanted,
                  std::uint32_t& returned) override;
    // Returns once every byte is with the system, or fails at the write time-out.
    FtStatus write(FtHandle handle, const QByteArray& bytes, std::uint32_t& written) override;
    FtStatus close(FtHandle handle) override;
    QString last_error_text() const override { return last_error_; }
    QString route_name() const override { return path_; }

    // True when `path` leads (perhaps through symbolic links) to a pseudo-terminal.
    static bool is_pseudo_terminal(const QString& path);

private:
    FtStatus check(FtHandle handle);
    // Records the port's own error message and returns `status`.
    FtStatus fail(FtStatus status);
    FtStatus report_gone();
    // Reads what the system holds into the port's buffer.
    FtStatus take_in();

    QString path_;
    std::unique_ptr<QSerialPort> port_;
    bool pseudo_terminal_ = false;
    // Set when a read fails or the port vanishes: every call fails until closed.
    bool gone_ = false;
    int write_timeout_ms_ = 250;
    QString last_error_;
};

} // namespace veltrako::link
