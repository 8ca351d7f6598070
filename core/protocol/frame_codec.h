#pragma once
// The frame on the wire: "#", a length character 0x30 + n, n payload bytes,
// and the CRC of the length character and payload, high byte first.
// Shared by the program and the simulated device; it reports nothing itself.

#include <QByteArray>

#include <cstdint>

namespace veltrako::protocol {

inline constexpr char frame_start = '#';
inline constexpr int length_base = 0x30;
inline constexpr int max_payload = 100;
// The receiver looks at a frame only once this many bytes are buffered, so an
// empty-payload frame (4 bytes) is taken only when something follows it.
inline constexpr int min_frame_examined = 5;

QByteArray build_frame(const QByteArray& payload);

// One step of scanning a receive buffer that starts with "#".
struct FrameStep {
    enum Kind {
        need_more,  // wait for further bytes; the buffer is left as it is
        bad_length, // length outside 0..100: the caller drops one byte
        bad_crc,    // checksum mismatch: the caller drops one byte
        frame,      // a valid frame of `frame_size` bytes at the front
    };
    Kind kind = need_more;
    int length = 0; // payload length from the length character (may be negative)
    int frame_size = 0;
    std::uint16_t received_crc = 0;
    std::uint16_t computed_crc = 0;
};

// Drops leading bytes other than "#" from `buffer`, then classifies what
// stands at its front.
FrameStep scan_frame(QByteArray& buffer);

// Payload of a frame that scan_frame() reported as valid.
inline QByteArray frame_payload(const QByteArray& buffer, const FrameStep& step) {
    return buffer.mid(2, step.length);
}

} // namespace veltrako::protocol
