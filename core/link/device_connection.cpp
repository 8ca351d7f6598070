#include "link/device_connection.h"

#include "app_context.h"
#include "link/connection_state.h"

namespace veltrako::link {

namespace {

const QString crlf = QStringLiteral("\r\n");

// Steps 5 to 10 of opening, each with the language text that names it.
struct OpenStep {
    int text_number;
    FtStatus (*run)(DeviceLink&, FtHandle&);
};

const OpenStep open_steps[] = {
    {2300, [](DeviceLink& l, FtHandle& h) { return l.open(0, h); }},
    {2400, [](DeviceLink& l, FtHandle& h) { return l.set_baud_rate(h, 115200); }},
    // Two stop bits are what the device expects.
    {2500,
     [](DeviceLink& l, FtHandle& h) {
         return l.set_data_characteristics(h, FT_BITS_8, FT_STOP_BITS_2, FT_PARITY_NONE);
     }},
    {2600, [](DeviceLink& l, FtHandle& h) { return l.set_flow_control(h, FT_FLOW_NONE, 0, 0); }},
    {2700, [](DeviceLink& l, FtHandle& h) { return l.set_dtr(h); }},
    {2800, [](DeviceLink& l, FtHandle& h) { return l.set_timeouts(h, 100, 250); }},
};

void report_backend_detail(AppContext& ctx) {
    const QString detail = ctx.link.backend->last_error_text();
    if (!detail.isEmpty())
        show_info(ctx, detail + crlf);
}

} // namespace

bool open_device(AppContext& ctx, bool silent) {
    close_device(ctx);
    DeviceLink& backend = *ctx.link.backend;

    std::uint32_t count = 0;
    if (const FtStatus status = backend.list_device_count(count); status != FT_OK) {
        if (!silent) {
            report_backend_detail(ctx);
            show_msg(ctx, QStringLiteral("DLL-Error:") + QString::number(status));
        }
        return false;
    }
    if (count >= 2) {
        if (!silent)
            show_msg(ctx, ctx.language.text(2000) + QString::number(count));
        return false;
    }
    if (count == 0) {
        if (!silent)
            show_msg(ctx, ctx.language.text(2100) + crlf + ctx.language.text(2200));
        return false;
    }

    FtHandle handle = 0;
    for (const OpenStep& step : open_steps) {
        const FtStatus status = step.run(backend, handle);
        if (status == FT_OK)
            continue;
        if (!silent) {
            report_backend_detail(ctx);
            show_msg(ctx, ctx.language.text(step.text_number) + QStringLiteral(" DLL-Error:") +
                              QString::number(status));
        }
        ctx.link.device_handle = handle;
        close_device(ctx);
        return false;
    }
    ctx.link.device_handle = handle;
    show_info(ctx, QStringLiteral("Handle:") + QString::number(handle) + crlf);
    follow_connection(ctx);
    return true;
}

FtStatus close_device(AppContext& ctx) {
    FtStatus status = FT_OK;
    if (ctx.link.device_handle != 0) {
        status = ctx.link.backend->close(ctx.link.device_handle);
        if (status == FT_OK)
            show_info(ctx, QStringLiteral("Device Closed") + crlf);
        else
            show_info(ctx,
                      QStringLiteral("Error Device Closed: ") + QString::number(status) + crlf);
    }
    ctx.link.device_handle = 0;
    follow_connection(ctx);
    return status;
}

void write_raw(AppContext& ctx, const QByteArray& bytes) {
    if (ctx.link.device_handle == 0)
        return;
    std::uint32_t written = 0;
    ctx.link.backend->write(ctx.link.device_handle, bytes, written);
}

QByteArray read_waiting(AppContext& ctx) {
    if (ctx.link.device_handle == 0)
        return {};
    DeviceLink& backend = *ctx.link.backend;
    std::uint32_t rx = 0;
    backend.get_queue_status(ctx.link.device_handle, rx);
    if (rx == 0)
        return {};
    QByteArray buffer(static_cast<qsizetype>(rx), ' ');
    std::uint32_t returned = 0;
    const FtStatus status = backend.read(ctx.link.device_handle, buffer, rx, returned);
    if (returned != rx) {
        show_info(ctx, QString::number(status) + QStringLiteral("|RxBytes<>BytesReturned:") +
                           QString::number(rx) + QLatin1Char('/') + QString::number(returned) +
                           crlf);
    }
    return buffer;
}

QByteArray read_raw(AppContext& ctx) {
    return read_waiting(ctx);
}

} // namespace veltrako::link
