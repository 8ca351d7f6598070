#pragma once
// Builders of every command payload the program sends. A payload is the
// command letter followed by its argument bytes; 16-bit and 32-bit numbers go
// high byte first. The builders do not check their arguments: what a device
// version may receive is decided by the send queue.

#include <QByteArray>
#include <QDateTime>

#include <cstdint>

namespace veltrako::protocol::cmd {

// Memory addresses the program reads and writes.
inline constexpr std::uint16_t addr_text_40 = 0x0040;
inline constexpr std::uint16_t addr_text_58 = 0x0058;
inline constexpr std::uint16_t addr_hours = 0x0080;
inline constexpr std::uint16_t addr_hours_copy = 0x0090;
inline constexpr std::uint16_t addr_text_d0 = 0x00D0;
inline constexpr std::uint16_t addr_board = 0x00E0;
inline constexpr std::uint16_t addr_low_power = 0x00E4;
inline constexpr std::uint16_t addr_serial = 0x00F0;
inline constexpr std::uint16_t addr_status_first = 0x0100;
inline constexpr int status_record_size = 22;
inline constexpr int status_record_max = 32;
inline constexpr int serial_length = 12;

QByteArray live_status();                         // "I"
QByteArray read_clock();                          // "T"
QByteArray set_clock(const QDateTime& local_now); // "t" + seconds since 2000-01-01, 4 bytes
QByteArray set_clock_seconds(std::uint32_t seconds_since_2000);
QByteArray read_remaining();                   // "S"
QByteArray set_remaining(std::uint16_t value); // "s" + 2 bytes
QByteArray identity();                         // "?"
QByteArray information();                      // "!"
QByteArray reset_hours();                      // "C"

QByteArray read_memory(std::uint16_t address, std::uint8_t count);      // "e"
QByteArray write_memory(std::uint16_t address, const QByteArray& data); // "E"

// The reads of the memory table, by what they fetch.
QByteArray read_hours();   // 0x0080 / 7
QByteArray read_board();   // 0x00E0 / 12
QByteArray read_text_d0(); // 0x00D0 / 4
QByteArray read_serial();  // 0x00F0 / 12
QByteArray read_text_40(); // 0x0040 / 22
QByteArray read_text_58(); // 0x0058 / 8
// Status record n (1-based): address 0x0100 + (n - 1) * 22, 22 bytes.
QByteArray read_status_record(int n);

// The serial number padded with blanks and cut to 12 bytes, written at 0x00F0.
QByteArray write_serial(const QByteArray& serial);
// The low-power byte at 0x00E4.
QByteArray write_low_power(char value);
// The 9-byte operating-hours block at 0x0080 or at its copy at 0x0090.
QByteArray write_hours_block(std::uint16_t address, const QByteArray& block9);

QByteArray read_timing(int index);                      // "r" + ("0" + index)
QByteArray write_timing(int index, std::uint8_t value); // "w" + ("0" + index) + value

// Flow selector 0 is "U"/"u", selector 1 is "O"/"o".
QByteArray read_flow_selector(int selector);
QByteArray write_flow_selector(int selector, std::uint8_t value);

QByteArray read_acoustic_alarm();                // "X"
QByteArray write_acoustic_alarm(std::uint8_t v); // "x" + value

QByteArray compliance_count();                 // "K"
QByteArray compliance_record(std::uint16_t n); // "k" + 2 bytes
QByteArray compliance_erase();                 // "Z"

QByteArray boot_loader(); // "b"

// Seconds from 2000-01-01 00:00:00 to `t` (negative before it).
qint64 seconds_since_2000(const QDateTime& t);

} // namespace veltrako::protocol::cmd

#include <QList>

namespace veltrako::protocol::cmd {

// The 29 requests sent after a device has been opened, in order.
QList<QByteArray> initial_sequence();

} // namespace veltrako::protocol::cmd
