#include "protocol/frames.h"

#include "app_context.h"
#include "config/dates.h"
#include "protocol/frame_codec.h"
#include "protocol/hex.h"

namespace veltrako::protocol {

link::FtStatus send_frame(AppContext& ctx, const QByteArray& payload) {
    log_comm(ctx, QStringLiteral("OUT"), hex_dump(payload));
    if (ctx.link.device_handle == 0)
        return send_no_device;
    std::uint32_t written = 0;
    return ctx.link.backend->write(ctx.link.device_handle, build_frame(payload), written);
}

void parse_frames(AppContext& ctx, const QByteArray& received) {
    log_comm(ctx, QStringLiteral("IN"), hex_dump(received));
    QByteArray& buffer = ctx.protocol.rx_buffer;
    buffer += received;
    for (;;) {
        const FrameStep step = scan_frame(buffer);
        switch (step.kind) {
        case FrameStep::need_more:
            return;
        case FrameStep::bad_length: {
            const QString stamp = config::message_time_text(ctx.clock.now());
            show_info(ctx, stamp + QStringLiteral(":Invalid clen") + QString::number(step.length) +
                               QStringLiteral("\r\n"));
            buffer.remove(0, 1);
            break;
        }
        case FrameStep::bad_crc:
            // No line break at the end, as the device tools always wrote it.
            show_info(ctx, QStringLiteral("Invalid CRC") + hex_digits(step.received_crc, 4) +
                               QLatin1Char('/') + hex_digits(step.computed_crc, 4));
            buffer.remove(0, 1);
            break;
        case FrameStep::frame: {
            // Taken apart first: the handler may reset the link and empty the buffer.
            const QByteArray frame = buffer.left(step.frame_size);
            if (ctx.payload_handler)
                ctx.payload_handler(frame_payload(frame, step));
            ctx.protocol.waiting_reply = false;
            ctx.ui.set_info_caption(hex_dump(frame));
            buffer.remove(0, step.frame_size);
            break;
        }
        }
    }
}

} // namespace veltrako::protocol
