#pragma once
// The device's 1 KiB memory as "e" reads and "E" writes see it. Unused bytes
// read 0xFF, as erased memory does.

#include <QByteArray>

#include <cstdint>
#include <optional>

namespace veltrako::sim {

namespace addr {
inline constexpr int text_40 = 0x0040; // 22 bytes
inline constexpr int text_58 = 0x0058; // 8 bytes
inline constexpr int hours = 0x0080;   // 9-byte operating-hours block
inline constexpr int hours_copy = 0x0090;
inline constexpr int hardware_id = 0x00D0; // 4 bytes, listed by firmware files
inline constexpr int board = 0x00E0;       // 12 bytes; 5th byte "4"/"5": low-power capable
inline constexpr int low_power = 0x00E4;
inline constexpr int serial = 0x00F0; // 12 bytes
inline constexpr int status_first = 0x0100;
} // namespace addr

namespace field {
inline constexpr int text_40 = 22;
inline constexpr int text_58 = 8;
inline constexpr int hardware_id = 4;
inline constexpr int board = 12;
inline constexpr int serial = 12;
inline constexpr int hours_block = 9;
} // namespace field

inline constexpr int status_record_size = 22;
inline constexpr int status_record_max = 32;

// Operating hours as the device counts them: whole hours and tens of minutes.
struct OperatingHours {
    std::uint32_t hours = 0; // 0..999999
    int tens_of_minutes = 0; // 0..5
    friend bool operator==(const OperatingHours&, const OperatingHours&) = default;
};

// Six decimal digits least significant first, the tens of minutes, then the
// frame CRC over those 7 bytes, low byte first (the reverse of the frame's order).
QByteArray encode_hours_block(OperatingHours hours);
// nullopt unless every digit is 0..9, the tens of minutes 0..5 and the CRC matches.
std::optional<OperatingHours> decode_hours_block(const QByteArray& block);
// Whether `count` bytes from `address` reach into either hours block.
inline bool touches_hours(int address, int count) {
    const auto overlaps = [&](int block) {
        return address < block + field::hours_block && address + count > block;
    };
    return overlaps(addr::hours) || overlaps(addr::hours_copy);
}
// `hours` plus `tens` more tens of minutes, stopping at 999999:50.
OperatingHours add_tens_of_minutes(OperatingHours hours, std::int64_t tens);

class MemoryImage {
public:
    static constexpr int size = 1024;

    MemoryImage();

    // `count` bytes from `address`; bytes past the end of memory read 0xFF.
    QByteArray read(int address, int count) const;
    // Writes `data` at `address`, unless it would leave an operating-hours
    // block it touches invalid: the device refuses such a write whole. Bytes past the end
    // of memory are lost. Returns whether the write was taken.
    bool write(int address, const QByteArray& data);
    // Puts `text` into a field of `width` bytes, padded with blanks.
    void put_text(int address, int width, const QByteArray& text);

    std::optional<OperatingHours> hours() const;
    // Writes both hours blocks.
    void set_hours(OperatingHours hours);

    const QByteArray& bytes() const { return bytes_; }

private:
    QByteArray bytes_;
};

} // namespace veltrako::sim
