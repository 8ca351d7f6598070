#pragma once
// Byte helpers for the device's answers. Positions count from 1 with the
// answer letter at position 1, as the protocol tables count them, so that
// "position 36" here is position 36 there.

#include <QByteArray>

#include <cstdint>

namespace veltrako::sim {

inline void put_byte(QByteArray& payload, int position, int value) {
    payload[position - 1] = static_cast<char>(value & 0xFF);
}

// Most significant byte first.
inline void put_be16(QByteArray& payload, int position, std::uint32_t value) {
    put_byte(payload, position, static_cast<int>(value >> 8));
    put_byte(payload, position + 1, static_cast<int>(value));
}

inline void put_be32(QByteArray& payload, int position, std::uint32_t value) {
    put_be16(payload, position, value >> 16);
    put_be16(payload, position + 2, value & 0xFFFF);
}

inline void append_be16(QByteArray& out, std::uint32_t value) {
    out += static_cast<char>((value >> 8) & 0xFF);
    out += static_cast<char>(value & 0xFF);
}

inline void append_be32(QByteArray& out, std::uint32_t value) {
    append_be16(out, value >> 16);
    append_be16(out, value & 0xFFFF);
}

inline int byte_at(const QByteArray& payload, int position) {
    return static_cast<unsigned char>(payload.at(position - 1));
}

inline std::uint32_t be16_at(const QByteArray& payload, int position) {
    return static_cast<std::uint32_t>(byte_at(payload, position) << 8 |
                                      byte_at(payload, position + 1));
}

inline std::uint32_t be32_at(const QByteArray& payload, int position) {
    return be16_at(payload, position) << 16 | be16_at(payload, position + 2);
}

} // namespace veltrako::sim
