#include "memory_image.h"

#include "protocol/crc.h"

#include <algorithm>

namespace veltrako::sim {

QByteArray encode_hours_block(OperatingHours h) {
    QByteArray block;
    std::uint32_t rest = h.hours;
    for (int i = 0; i < 6; ++i) {
        block += static_cast<char>(rest % 10);
        rest /= 10;
    }
    block += static_cast<char>(h.tens_of_minutes);
    const std::uint16_t crc = protocol::calc_crc(block);
    block += static_cast<char>(crc & 0xFF);
    block += static_cast<char>(crc >> 8);
    return block;
}

std::optional<OperatingHours> decode_hours_block(const QByteArray& block) {
    if (block.size() != field::hours_block)
        return std::nullopt;
    const auto* b = reinterpret_cast<const unsigned char*>(block.constData());
    OperatingHours h;
    std::uint32_t scale = 1;
    for (int i = 0; i < 6; ++i) {
        if (b[i] > 9)
            return std::nullopt;
        h.hours += b[i] * scale;
        scale *= 10;
    }
    if (b[6] > 5)
        return std::nullopt;
    h.tens_of_minutes = b[6];
    const std::uint16_t crc = protocol::calc_crc(block.constData(), 7);
    if (b[7] != (crc & 0xFF) || b[8] != (crc >> 8))
        return std::nullopt;
    return h;
}

OperatingHours add_tens_of_minutes(OperatingHours h, std::int64_t tens) {
    constexpr std::int64_t max_tens = 999999LL * 6 + 5;
    const std::int64_t total =
        std::min(max_tens, static_cast<std::int64_t>(h.hours) * 6 + h.tens_of_minutes + tens);
    return {static_cast<std::uint32_t>(total / 6), static_cast<int>(total % 6)};
}

MemoryImage::MemoryImage() : bytes_(size, static_cast<char>(0xFF)) {}

QByteArray MemoryImage::read(int address, int count) const {
    QByteArray out(count, static_cast<char>(0xFF));
    for (int i = 0; i < count; ++i) {
        const int a = address + i;
        if (a >= 0 && a < size)
            out[i] = bytes_.at(a);
    }
    return out;
}

bool MemoryImage::write(int address, const QByteArray& data) {
    QByteArray after = bytes_;
    bool touched[2] = {false, false};
    const int blocks[2] = {addr::hours, addr::hours_copy};
    for (int i = 0; i < data.size(); ++i) {
        const int a = address + i;
        if (a < 0 || a >= size)
            continue;
        after[a] = data.at(i);
        for (int b = 0; b < 2; ++b)
            touched[b] |= a >= blocks[b] && a < blocks[b] + field::hours_block;
    }
    // Each hours block carries its own CRC: a write that leaves a block it
    // touched invalid is refused whole.
    for (int b = 0; b < 2; ++b)
        if (touched[b] && !decode_hours_block(after.mid(blocks[b], field::hours_block)))
            return false;
    bytes_ = after;
    return true;
}

void MemoryImage::put_text(int address, int width, const QByteArray& text) {
    QByteArray padded = text.left(width);
    padded += QByteArray(width - padded.size(), ' ');
    bytes_.replace(address, width, padded);
}

std::optional<OperatingHours> MemoryImage::hours() const {
    return decode_hours_block(bytes_.mid(addr::hours, field::hours_block));
}

void MemoryImage::set_hours(OperatingHours h) {
    const QByteArray block = encode_hours_block(h);
    bytes_.replace(addr::hours, field::hours_block, block);
    bytes_.replace(addr::hours_copy, field::hours_block, block);
}

} // namespace veltrako::sim
