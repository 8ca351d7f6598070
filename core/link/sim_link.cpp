#include "link/sim_link.h"

#include "clock.h"

#include <algorithm>
#include <cmath>

namespace veltrako::link {

namespace {
constexpr FtHandle sim_handle = 1;
}

double SimLink::now_ms() const {
    return static_cast<double>(clock_.elapsed_us()) / 1000.0;
}

SimLink::SimLink(Clock& clock, std::shared_ptr<SimPeer> peer, WireTiming timing)
    : clock_(clock), peer_(std::move(peer)), timing_(timing) {}

FtStatus SimLink::list_device_count(std::uint32_t& count) {
    count = peer_->plugged_in() ? 1 : 0;
    return FT_OK;
}

FtStatus SimLink::open(int index, FtHandle& handle) {
    if (index != 0 || !peer_->plugged_in()) {
        last_error_ = QStringLiteral("simulated device: not plugged in");
        return FT_DEVICE_NOT_FOUND;
    }
    open_ = true;
    peer_->transmit(SimPeer::nothing_pending); // whatever was on the line before is gone
    baud_ = 0;
    word_length_ = stop_bits_ = parity_ = 0;
    to_device_.clear();
    to_host_.clear();
    rx_queue_.clear();
    host_line_free_ms_ = device_line_free_ms_ = now_ms();
    handle = sim_handle;
    return FT_OK;
}

FtStatus SimLink::check(FtHandle handle) {
    if (!open_ || handle != sim_handle)
        return FT_INVALID_HANDLE;
    if (!peer_->plugged_in()) {
        last_error_ = QStringLiteral("simulated device: cable pulled");
        return FT_IO_ERROR;
    }
    return FT_OK;
}

FtStatus SimLink::set_baud_rate(FtHandle handle, std::uint32_t baud) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    baud_ = baud;
    return FT_OK;
}

FtStatus SimLink::set_data_characteristics(FtHandle handle, std::uint8_t word_length,
                                           std::uint8_t stop_bits, std::uint8_t parity) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    word_length_ = word_length;
    stop_bits_ = stop_bits;
    parity_ = parity;
    return FT_OK;
}

FtStatus SimLink::set_flow_control(FtHandle handle, std::uint16_t, std::uint8_t, std::uint8_t) {
    return check(handle);
}

FtStatus SimLink::set_dtr(FtHandle handle) {
    return check(handle);
}

FtStatus SimLink::set_timeouts(FtHandle handle, std::uint32_t, std::uint32_t) {
    return check(handle);
}

bool SimLink::line_settings_match() const {
    // The concentrator listens at 115200 baud, 8 data bits, 2 stop bits, no
    // parity; bytes sent with other settings arrive as noise and are lost.
    return baud_ == 115200 && word_length_ == FT_BITS_8 && stop_bits_ == FT_STOP_BITS_2 &&
           parity_ == FT_PARITY_NONE;
}

void SimLink::pump() {
    const double now = now_ms();
    if (timing_ == WireTiming::instant) {
        for (const InFlight& chunk : to_device_)
            if (line_settings_match())
                peer_->receive(chunk.bytes, now);
        to_device_.clear();
        if (peer_->next_transmit_ms() <= now)
            rx_queue_ += peer_->transmit(now);
        return;
    }

    // Walk the events of both directions in time order up to now, so the
    // device answers at the moment the command arrived, not when we looked.
    for (;;) {
        const double host_done = to_device_.empty() ? std::numeric_limits<double>::infinity()
                                                    : to_device_.front().start_ms +
                                                          to_device_.front().bytes.size() * byte_ms;
        const double device_at = peer_->next_transmit_ms();
        const double t = std::min(host_done, device_at);
        if (t > now)
            break;
        if (host_done <= device_at) {
            if (line_settings_match())
                peer_->receive(to_device_.front().bytes, host_done);
            to_device_.pop_front();
        } else {
            const QByteArray out = peer_->transmit(device_at);
            if (!out.isEmpty()) {
                const double start = std::max(device_at, device_line_free_ms_);
                device_line_free_ms_ = start + out.size() * byte_ms;
                to_host_.push_back({out, start});
            }
        }
    }
    while (!to_host_.empty()) {
        InFlight& chunk = to_host_.front();
        const auto arrived = static_cast<qsizetype>(std::floor((now - chunk.start_ms) / byte_ms));
        if (arrived <= 0)
            break;
        if (arrived >= chunk.bytes.size()) {
            rx_queue_ += chunk.bytes;
            to_host_.pop_front();
            continue;
        }
        rx_queue_ += chunk.bytes.left(arrived);
        chunk.bytes.remove(0, arrived);
        chunk.start_ms += arrived * byte_ms;
        break;
    }
}

FtStatus SimLink::get_queue_status(FtHandle handle, std::uint32_t& rx_bytes) {
    rx_bytes = 0;
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    pump();
    rx_bytes = static_cast<std::uint32_t>(rx_queue_.size());
    return FT_OK;
}

FtStatus SimLink::read(FtHandle handle, QByteArray& buffer, std::uint32_t wanted,
                       std::uint32_t& returned) {
    returned = 0;
    buffer.resize(wanted);
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    pump();
    const auto n = std::min<qsizetype>(wanted, rx_queue_.size());
    std::copy_n(rx_queue_.constData(), n, buffer.data());
    rx_queue_.remove(0, n);
    returned = static_cast<std::uint32_t>(n);
    return FT_OK;
}

FtStatus SimLink::write(FtHandle handle, const QByteArray& bytes, std::uint32_t& written) {
    written = 0;
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    const double now = now_ms();
    const double start = std::max(now, host_line_free_ms_);
    host_line_free_ms_ = start + bytes.size() * byte_ms;
    to_device_.push_back({bytes, start});
    if (timing_ == WireTiming::instant)
        pump();
    written = static_cast<std::uint32_t>(bytes.size());
    return FT_OK;
}

FtStatus SimLink::close(FtHandle handle) {
    if (!open_ || handle != sim_handle)
        return FT_INVALID_HANDLE;
    // What is fully on the wire by now still reaches the device, as it would
    // on a cable: the restart command that ends a firmware update is the
    // last thing written before the link is closed and opened again.
    pump();
    open_ = false;
    peer_->transmit(SimPeer::nothing_pending);
    to_device_.clear();
    to_host_.clear();
    rx_queue_.clear();
    return FT_OK;
}

} // namespace veltrako::link
