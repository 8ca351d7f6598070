#pragma once
// The stored settings a technician changes on the "Gerät" page: serial
// number, operating hours, device clock, low-power mode, remaining time, the
// two flow selectors and the acoustic alarms. Every change follows one
// pattern: the write goes on the send queue, a short wait lets it reach the
// device, and the matching read goes on the queue, so that what the page then
// shows is the device's own answer. What the technician is told comes from
// that answer too (device/read_back.h), and a change that cannot be undone is
// asked for first. The window and the command line both call these
// procedures; questions and messages go through the UserInterface.

#include "device/device_record.h"
#include "device/read_back.h"

#include <QByteArray>
#include <QLocale>
#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>
#include <optional>

namespace veltrako {
class AppContext;
}

namespace veltrako::device {

// --- Serial number -------------------------------------------------------

// t_sn_Change: the set button appears once the text differs from the
// device's serial number, but only while live data is coming in.
bool setsn_shown_after_change(const DeviceRecord& record, const QString& text);
// t_sn_LostFocus: the set button goes away when the text is the device's
// serial number again.
bool setsn_hidden_after_focus_loss(const DeviceRecord& record, const QString& text);
// The device keeps one byte per character: a character beyond Latin-1
// cannot be stored.
bool serial_text_storable(const QString& text);
// The serial number as the device stores it: 12 characters, padded with blanks.
QString stored_serial(const QString& text);
// cmd_setsn: asks (old and new number), then record, write at 0x00F0,
// 800 ms, read back; the outcome is a note. The caller hides the button.
WriteOutcome cmd_setsn_Click(AppContext& ctx, const QString& text);

// --- Operating hours -----------------------------------------------------

// An entry of the hours input box: six hour digits, ":", the tens of
// minutes 0..5 ("001234:5"), or the same with the minutes' last digit as the
// page shows it ("001234:50").
struct HoursEntry {
    std::array<std::uint8_t, 6> hour_digits{}; // as typed, most significant first
    std::uint8_t tens_of_minutes = 0;
};
std::optional<HoursEntry> parse_hours_entry(const QString& text);
// The 9-byte block the device stores twice: the six hour digits as values
// 0..9, least significant first, the tens of minutes, then the frame CRC over
// those 7 bytes with its LOW byte first (frames carry theirs high byte first).
QByteArray hours_block(const HoursEntry& entry);
// The entry as the page shows operating hours: "001234:50".
QString hours_text(const HoursEntry& entry);

// cmd_resetbstd: asks, then "C", 400 ms, read of 0x0080; a note.
WriteOutcome cmd_resetbstd_Click(AppContext& ctx);
// cmd_setbstd: asks (text 110) until the entry is valid (text 111 on a bad
// one) or empty, then whether to overwrite the old value; writes the block
// at 0x0080 and at 0x0090, waits 1000 ms and reads 0x0080 back; text 112
// only when the device reports the value written. Does nothing without live
// data.
WriteOutcome cmd_setbstd_Click(AppContext& ctx);

// --- Device clock --------------------------------------------------------

// cmd_setdatetime: the PC's present time, 400 ms, "T"; a note.
WriteOutcome cmd_setdatetime_Click(AppContext& ctx);

// --- Low-power mode ------------------------------------------------------

// The fifth byte of the board block switched "4" <-> "5"; nullopt for a
// board without the low-power mode.
std::optional<char> toggled_low_power(const DeviceRecord& record);
// cmd_togglelp: the byte at 0x00E4, 800 ms, read of 0x00E0; a note. Sends
// nothing without live data or on a board without the mode. The caller
// disables the button first; the next refresh enables it again.
WriteOutcome cmd_togglelp_Click(AppContext& ctx);

// --- Remaining time ------------------------------------------------------

inline constexpr int remaining_max = 999;
// A whole number 0..999 (blanks around it allowed).
std::optional<std::uint16_t> parse_remaining_entry(const QString& text);
// cmd_Restzeit: asks until valid or empty, writes "s", waits, reads "S"
// back; text 114 only when the device reports the value written.
WriteOutcome cmd_Restzeit_Click(AppContext& ctx);

// --- Flow selectors ------------------------------------------------------

// The entries of a cb_vs list: entry k stands for the byte value k and shows
// it as the plain number. The device's unit for these values is not known to
// the program, so it shows exactly what the device stores rather than a
// converted guess; both selectors offer the full byte range 0..255.
QStringList flow_selector_entries();
// cb_vs_Click: only a choice the user makes (the selector is unlocked while
// it has the focus) writes "u"/"o", waits 200 ms and reads "U"/"O" back; a
// note.
WriteOutcome cb_vs_Click(AppContext& ctx, int selector, int position, bool locked);

// --- Acoustic alarms -----------------------------------------------------

// The pictures beside three alarm lamps switch whether that alarm sounds.
// The "x" value is a mask with the same bit values as the alarm byte of the
// live status: each picture toggles the bit of the alarm whose lamp it
// stands beside and whose colour it takes. pic_akustO21 bit value 2 (O2
// alarm 1), pic_akustO22 bit value 4 (O2 alarm 2), pic_akustvollo bit value
// 8 (flow too low). Bits without a picture (the temperature alarm's 1, for
// one) are written back as the device reported them.
enum class AcousticAlarm { o21, o22, vollo };
std::uint8_t acoustic_bit(AcousticAlarm alarm);
// Name as the command line takes it ("o21", "o22", "vollo").
std::optional<AcousticAlarm> acoustic_alarm_named(const QString& name);
// The picture's click: "x" with the alarm's bit of wert_x toggled, then "X".
// Nothing is sent without live data. A note tells the outcome.
WriteOutcome pic_akust_Click(AppContext& ctx, AcousticAlarm alarm);

} // namespace veltrako::device
