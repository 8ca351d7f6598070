#include "link/ftdi_link.h"

#include "link/ftdi_mapping.h"

#include <ftdi.h>

#include <algorithm>
#include <array>
#include <climits>

namespace veltrako::link {

namespace {

constexpr FtHandle ftdi_handle = 1;
// The chip sends what it holds after this many milliseconds of quiet; the
// default of 16 ms would be added to every answer of the device.
constexpr unsigned char latency_ms = 2;
// Bounds one filling of the receive buffer, so a chip that never stops
// talking cannot hold the caller.
constexpr int max_reads_per_fill = 16;

// Frees the device list however the call that made it ended.
struct DeviceList {
    ftdi_device_list* head = nullptr;
    ~DeviceList() { ftdi_list_free(&head); }
};

int clamp_to_int(std::uint32_t value) {
    return static_cast<int>(std::min<std::uint32_t>(value, INT_MAX));
}

} // namespace

void FtdiLink::ContextDeleter::operator()(ftdi_context* context) const {
    ftdi_free(context);
}

FtdiLink::FtdiLink() = default;

FtdiLink::~FtdiLink() {
    if (open_)
        ftdi_usb_close(context_.get());
}

ftdi_context* FtdiLink::context() {
    if (!context_)
        context_.reset(ftdi_new());
    return context_.get();
}

FtStatus FtdiLink::fail(FtStatus status, int code, bool opening) {
    last_error_ = ftdi::failure_text(code, ftdi_get_error_string(context_.get()), opening);
    return status;
}

FtStatus FtdiLink::check(FtHandle handle) {
    if (!open_ || handle != ftdi_handle)
        return FT_INVALID_HANDLE;
    return FT_OK;
}

FtStatus FtdiLink::list_device_count(std::uint32_t& count) {
    count = 0;
    ftdi_context* ctx = context();
    if (!ctx) {
        last_error_ = QStringLiteral("libftdi: the USB library could not be started");
        return FT_OTHER_ERROR;
    }
    DeviceList list;
    const int found = ftdi_usb_find_all(ctx, &list.head, 0, 0);
    if (found < 0)
        return fail(found == -3 ? FT_INSUFFICIENT_RESOURCES : FT_IO_ERROR, found);
    count = static_cast<std::uint32_t>(found);
    return FT_OK;
}

FtStatus FtdiLink::open(int index, FtHandle& handle) {
    if (open_) {
        last_error_ = QStringLiteral("libftdi: the device is already open");
        return FT_DEVICE_NOT_OPENED;
    }
    ftdi_context* ctx = context();
    if (!ctx) {
        last_error_ = QStringLiteral("libftdi: the USB library could not be started");
        return FT_OTHER_ERROR;
    }
    DeviceList list;
    const int found = ftdi_usb_find_all(ctx, &list.head, 0, 0);
    if (found < 0)
        return fail(FT_IO_ERROR, found);
    ftdi_device_list* node = list.head;
    for (int i = 0; node && i < index; ++i)
        node = node->next;
    if (index < 0 || !node) {
        last_error_ = QStringLiteral("libftdi: no FTDI device at index %1").arg(index);
        return FT_DEVICE_NOT_FOUND;
    }

    // Re-attach the kernel's serial driver on close, so /dev/ttyUSB* comes back.
    // libftdi 1.5 has no setter for this; the field is its public interface.
    ctx->module_detach_mode = AUTO_DETACH_REATACH_SIO_MODULE;
    if (const int r = ftdi_usb_open_dev(ctx, node->dev); r < 0)
        return fail(FT_DEVICE_NOT_OPENED, r, true);
    int r = ftdi_set_latency_timer(ctx, latency_ms);
    if (r >= 0)
        r = ftdi_tcioflush(ctx); // bytes from before this session mean nothing now
    if (r < 0) {
        const FtStatus status = fail(FT_IO_ERROR, r);
        ftdi_usb_close(ctx);
        return status;
    }
    open_ = true;
    received_.clear();
    handle = ftdi_handle;
    return FT_OK;
}

FtStatus FtdiLink::set_baud_rate(FtHandle handle, std::uint32_t baud) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    if (const int r = ftdi_set_baudrate(context_.get(), clamp_to_int(baud)); r < 0)
        return fail(r == -1 ? FT_INVALID_BAUD_RATE : FT_IO_ERROR, r);
    return FT_OK;
}

FtStatus FtdiLink::set_data_characteristics(FtHandle handle, std::uint8_t word_length,
                                            std::uint8_t stop_bits, std::uint8_t parity) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    const std::optional<ftdi::LineProperty> p = ftdi::line_property(word_length, stop_bits, parity);
    if (!p) {
        last_error_ = QStringLiteral("libftdi: no such line setting: %1 data bits, stop bits "
                                     "value %2, parity value %3")
                          .arg(word_length)
                          .arg(stop_bits)
                          .arg(parity);
        return FT_INVALID_PARAMETER;
    }
    const int r = ftdi_set_line_property(context_.get(), static_cast<ftdi_bits_type>(p->bits),
                                         static_cast<ftdi_stopbits_type>(p->stop_bits),
                                         static_cast<ftdi_parity_type>(p->parity));
    return r < 0 ? fail(FT_IO_ERROR, r) : FT_OK;
}

FtStatus FtdiLink::set_flow_control(FtHandle handle, std::uint16_t flow, std::uint8_t,
                                    std::uint8_t) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    if (flow != FT_FLOW_NONE) {
        last_error_ = QStringLiteral("libftdi: only \"no flow control\" is supported");
        return FT_NOT_SUPPORTED;
    }
    const int r = ftdi_setflowctrl(context_.get(), SIO_DISABLE_FLOW_CTRL);
    return r < 0 ? fail(FT_IO_ERROR, r) : FT_OK;
}

FtStatus FtdiLink::set_dtr(FtHandle handle) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    const int r = ftdi_setdtr(context_.get(), 1);
    return r < 0 ? fail(FT_IO_ERROR, r) : FT_OK;
}

FtStatus FtdiLink::set_timeouts(FtHandle handle, std::uint32_t read_ms, std::uint32_t write_ms) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    // libusb takes 0 as "wait for ever"; a D2XX time-out of 0 is the shortest wait instead.
    context_->usb_read_timeout = std::max(1, clamp_to_int(read_ms));
    context_->usb_write_timeout = std::max(1, clamp_to_int(write_ms));
    return FT_OK;
}

FtStatus FtdiLink::fill_receive_buffer() {
    // ftdi_read_data strips the chip's two modem-status bytes and returns when
    // a packet carries no data, so this takes what is there and no more.
    std::array<unsigned char, 4096> chunk{};
    for (int i = 0; i < max_reads_per_fill; ++i) {
        const int n = ftdi_read_data(context_.get(), chunk.data(), static_cast<int>(chunk.size()));
        if (n < 0) // -666 or a libusb error: the chip is gone or the bus failed
            return fail(FT_IO_ERROR, n);
        received_.append(reinterpret_cast<const char*>(chunk.data()), n);
        if (n < static_cast<int>(chunk.size()))
            break;
    }
    return FT_OK;
}

FtStatus FtdiLink::get_queue_status(FtHandle handle, std::uint32_t& rx_bytes) {
    rx_bytes = 0;
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    if (const FtStatus s = fill_receive_buffer(); s != FT_OK)
        return s;
    rx_bytes = static_cast<std::uint32_t>(received_.size());
    return FT_OK;
}

FtStatus FtdiLink::read(FtHandle handle, QByteArray& buffer, std::uint32_t wanted,
                        std::uint32_t& returned) {
    returned = 0;
    buffer.resize(static_cast<qsizetype>(wanted));
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    FtStatus status = FT_OK;
    if (received_.size() < static_cast<qsizetype>(wanted))
        status = fill_receive_buffer();
    const qsizetype n = std::min<qsizetype>(wanted, received_.size());
    std::copy_n(received_.constData(), n, buffer.data());
    received_.remove(0, n);
    returned = static_cast<std::uint32_t>(n);
    return status;
}

FtStatus FtdiLink::write(FtHandle handle, const QByteArray& bytes, std::uint32_t& written) {
    written = 0;
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    if (bytes.size() > INT_MAX)
        return FT_INVALID_PARAMETER;
    const int n =
        ftdi_write_data(context_.get(), reinterpret_cast<const unsigned char*>(bytes.constData()),
                        static_cast<int>(bytes.size()));
    if (n < 0)
        return fail(FT_IO_ERROR, n);
    written = static_cast<std::uint32_t>(n);
    if (n < bytes.size()) {
        last_error_ = QStringLiteral("libftdi: %1 of %2 bytes written").arg(n).arg(bytes.size());
        return FT_IO_ERROR;
    }
    return FT_OK;
}

FtStatus FtdiLink::close(FtHandle handle) {
    if (const FtStatus s = check(handle); s != FT_OK)
        return s;
    open_ = false;
    received_.clear();
    // The handle is gone whatever libftdi says; a failure is still reported.
    // libftdi leaves its message alone when releasing the interface fails.
    if (const int r = ftdi_usb_close(context_.get()); r < 0) {
        last_error_ =
            QStringLiteral("libftdi: the USB interface could not be released (%1)").arg(r);
        return FT_IO_ERROR;
    }
    return FT_OK;
}

} // namespace veltrako::link
