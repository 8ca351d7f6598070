#pragma once
// The device's answer to one command payload. The answer to each reading
// command carries its letter first, then the data at the positions the
// program reads.
//
// Writes ("t", "s", "E", "w", "u", "o", "x", "C", "Z") are answered with a
// frame carrying just their letter. The program sends its next command only
// once the last one was answered and repeats a command that stays unanswered,
// so a write needs an answer like everything else. The answer says that the
// command arrived, not that it was taken: a refused operating-hours block, a
// remaining time above 999 or a timing index above 13 is answered the same
// way, and the read-back that follows shows the old value.
//
// A command the device does not know, or one whose length does not fit its
// letter, is not answered.

#include <QByteArray>

#include <cstdint>

namespace veltrako::sim {

struct DeviceState;

struct Reply {
    enum Kind {
        none,              // nothing is sent
        answer,            // `payload` goes out as a frame
        enter_boot_loader, // "b": the boot loader takes over, nothing is sent
    };
    Kind kind = none;
    QByteArray payload;
};

Reply answer_command(DeviceState& device, const QByteArray& payload, std::int64_t now_ms);

// The most data an "e" answer can carry: 4 header bytes and the data fit in
// the 100 payload bytes a frame can hold.
inline constexpr int max_memory_read = 96;

// The largest remaining time the device takes with "s".
inline constexpr std::uint32_t max_remaining = 999;

} // namespace veltrako::sim
