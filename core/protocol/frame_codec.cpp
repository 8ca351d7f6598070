#include "protocol/frame_codec.h"

#include "protocol/crc.h"

namespace veltrako::protocol {

QByteArray build_frame(const QByteArray& payload) {
    QByteArray frame;
    frame.reserve(payload.size() + 4);
    frame += frame_start;
    frame += static_cast<char>(length_base + payload.size());
    frame += payload;
    const std::uint16_t crc = calc_crc(frame.constData() + 1, frame.size() - 1);
    frame += static_cast<char>(crc >> 8);
    frame += static_cast<char>(crc & 0xFF);
    return frame;
}

FrameStep scan_frame(QByteArray& buffer) {
    qsizetype skip = 0;
    while (skip < buffer.size() && buffer.at(skip) != frame_start)
        ++skip;
    if (skip > 0)
        buffer.remove(0, skip);

    FrameStep step;
    if (buffer.size() < min_frame_examined)
        return step;
    // The length character is read as a signed 16-bit number minus 0x30.
    step.length = static_cast<int>(static_cast<unsigned char>(buffer.at(1))) - length_base;
    if (step.length < 0 || step.length > max_payload) {
        step.kind = FrameStep::bad_length;
        return step;
    }
    step.frame_size = step.length + 4;
    if (buffer.size() < step.frame_size)
        return step;
    const auto* bytes = reinterpret_cast<const unsigned char*>(buffer.constData());
    step.received_crc =
        static_cast<std::uint16_t>(bytes[2 + step.length] << 8 | bytes[3 + step.length]);
    step.computed_crc = calc_crc(buffer.constData() + 1, step.length + 1);
    step.kind = step.received_crc == step.computed_crc ? FrameStep::frame : FrameStep::bad_crc;
    return step;
}

} // namespace veltrako::protocol
