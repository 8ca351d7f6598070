#pragma once
// The device link over an FTDI chip through libftdi1, the route on Linux
// without the kernel's serial driver in the way. Every libftdi call stays in
// this class, so a backend over the D2XX library is one sibling file.
//
// libftdi has no receive-queue call: the link keeps its own receive buffer,
// filled by reads that return whatever the chip holds, so asking for the
// queue costs one latency period (set to 2 ms) and never waits for data.

#include "link/device_link.h"

#include <memory>

struct ftdi_context;

namespace veltrako::link {

class FtdiLink final : public DeviceLink {
public:
    FtdiLink();
    ~FtdiLink() override;
    FtdiLink(const FtdiLink&) = delete;
    FtdiLink& operator=(const FtdiLink&) = delete;

    // Counts chips with FTDI's default product ids.
    FtStatus list_device_count(std::uint32_t& count) override;
    FtStatus open(int index, FtHandle& handle) override;
    FtStatus set_baud_rate(FtHandle handle, std::uint32_t baud) override;
    FtStatus set_data_characteristics(FtHandle handle, std::uint8_t word_length,
                                      std::uint8_t stop_bits, std::uint8_t parity) override;
    // Only "no flow control" is offered: the concentrator's cable has no handshake lines.
    FtStatus set_flow_control(FtHandle handle, std::uint16_t flow, std::uint8_t xon,
                              std::uint8_t xoff) override;
    FtStatus set_dtr(FtHandle handle) override;
    FtStatus set_timeouts(FtHandle handle, std::uint32_t read_ms, std::uint32_t write_ms) override;
    FtStatus get_queue_status(FtHandle handle, std::uint32_t& rx_bytes) override;
    // Hands out what has arrived, up to `wanted`, without waiting for more.
    FtStatus read(FtHandle handle, QByteArray& buffer, std::uint32_t wanted,
                  std::uint32_t& returned) override;
    FtStatus write(FtHandle handle, const QByteArray& bytes, std::uint32_t& written) override;
    FtStatus close(FtHandle handle) override;
    QString last_error_text() const override { return last_error_; }
    QString route_name() const override { return QStringLiteral("ftdi"); }

private:
    struct ContextDeleter {
        void operator()(ftdi_context* context) const;
    };

    // The libftdi context, made on first use; null when libusb cannot start.
    ftdi_context* context();
    FtStatus check(FtHandle handle);
    // Records libftdi's message for `code` and returns `status`.
    FtStatus fail(FtStatus status, int code, bool opening = false);
    FtStatus fill_receive_buffer();

    std::unique_ptr<ftdi_context, ContextDeleter> context_;
    bool open_ = false;
    QByteArray received_;
    QString last_error_;
};

} // namespace veltrako::link
