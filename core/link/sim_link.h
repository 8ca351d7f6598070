#pragma once
// The in-process link: a device link whose far end is a SimPeer (normally the
// simulated concentrator). With wire timing on, bytes take as long as they
// would at 115200 baud with 11 bits a byte, in each direction, so that time
// measurements over this link are realistic.

#include "link/device_link.h"
#include "link/sim_peer.h"

#include <deque>
#include <memory>

namespace veltrako {
class Clock;
}

namespace veltrako::link {

class SimLink final : public DeviceLink {
public:
    enum class WireTiming { instant, realistic };

    SimLink(Clock& clock, std::shared_ptr<SimPeer> peer, WireTiming timing = WireTiming::instant);

    FtStatus list_device_count(std::uint32_t& count) override;
    FtStatus open(int index, FtHandle& handle) override;
    FtStatus set_baud_rate(FtHandle handle, std::uint32_t baud) override;
    FtStatus set_data_characteristics(FtHandle handle, std::uint8_t word_length,
                                      std::uint8_t stop_bits, std::uint8_t parity) override;
    FtStatus set_flow_control(FtHandle handle, std::uint16_t flow, std::uint8_t xon,
                              std::uint8_t xoff) override;
    FtStatus set_dtr(FtHandle handle) override;
    FtStatus set_timeouts(FtHandle handle, std::uint32_t read_ms, std::uint32_t write_ms) override;
    FtStatus get_queue_status(FtHandle handle, std::uint32_t& rx_bytes) override;
    FtStatus read(FtHandle handle, QByteArray& buffer, std::uint32_t wanted,
                  std::uint32_t& returned) override;
    FtStatus write(FtHandle handle, const QByteArray& bytes, std::uint32_t& written) override;
    FtStatus close(FtHandle handle) override;
    QString last_error_text() const override { return last_error_; }
    QString route_name() const override { return QStringLiteral("sim"); }

    SimPeer& peer() { return *peer_; }

    // Milliseconds one byte takes on the wire at 115200 baud, 11 bits a byte.
    static constexpr double byte_ms = 11.0 * 1000.0 / 115200.0;

private:
    struct InFlight {
        QByteArray bytes;
        double start_ms; // when the first bit left the sender
    };

    FtStatus check(FtHandle handle);
    double now_ms() const;
    // Moves bytes whose time has come across the wire in both directions.
    void pump();
    bool line_settings_match() const;

    Clock& clock_;
    std::shared_ptr<SimPeer> peer_;
    WireTiming timing_;
    bool open_ = false;
    std::uint32_t baud_ = 0;
    std::uint8_t word_length_ = 0, stop_bits_ = 0, parity_ = 0;
    std::deque<InFlight> to_device_;
    std::deque<InFlight> to_host_;
    double host_line_free_ms_ = 0;
    double device_line_free_ms_ = 0;
    QByteArray rx_queue_;
    QString last_error_;
};

} // namespace veltrako::link
