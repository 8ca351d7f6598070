#include "device/settings.h"

#include "app_context.h"
#include "config/wait.h"
#include "protocol/commands.h"
#include "protocol/crc.h"
#include "protocol/poll_cycle.h"

namespace veltrako::device {

namespace {

namespace cmd = protocol::cmd;

// Waits between a write and its read-back, long enough for the device to
// have stored the value before it is asked for it.
constexpr int serial_wait_ms = 800;
constexpr int hours_reset_wait_ms = 400;
constexpr int hours_write_wait_ms = 1000;
constexpr int clock_wait_ms = 400;
constexpr int low_power_wait_ms = 800;
constexpr int remaining_wait_ms = 400;
constexpr int selector_wait_ms = 200;

void queue(AppContext& ctx, const QByteArray& payload) {
    protocol::queue_command(ctx, payload);
}

bool ascii_digit(QChar c) {
    return c >= QLatin1Char('0') && c <= QLatin1Char('9');
}

// Asks with `prompt` until `parse` accepts the entry or the user gives none.
template <typename Parse>
auto ask_until_valid(AppContext& ctx, const QString& prompt, const QString& title,
                     const QString& invalid, Parse parse) -> decltype(parse(QString())) {
    for (;;) {
        const std::optional<QString> entry = ctx.ui.input_box(prompt, title);
        if (!entry || entry->isEmpty())
            return std::nullopt;
        if (auto value = parse(*entry))
            return value;
        if (!invalid.isEmpty())
            ctx.ui.show_msg(invalid, MsgIcon::exclamation);
    }
}

} // namespace

// --- Serial number -------------------------------------------------------

bool setsn_shown_after_change(const DeviceRecord& r, const QString& text) {
    return r.live_valid && text != r.SN;
}

bool setsn_hidden_after_focus_loss(const DeviceRecord& r, const QString& text) {
    return text == r.SN;
}

bool serial_text_storable(const QString& text) {
    for (const QChar c : text) {
        if (c.unicode() > 0xFF)
            return false;
    }
    return true;
}

void cmd_setsn_Click(AppContext& ctx, const QString& text) {
    ctx.device.SN = text;
    queue(ctx, cmd::write_serial(text.toLatin1()));
    wait_ms(ctx, serial_wait_ms);
    queue(ctx, cmd::read_serial());
}

// --- Operating hours -----------------------------------------------------

std::optional<HoursEntry> parse_hours_entry(const QString& text) {
    if (text.size() != 8 || text.at(6) != QLatin1Char(':'))
        return std::nullopt;
    HoursEntry e;
    for (int i = 0; i < 6; ++i) {
        if (!ascii_digit(text.at(i)))
            return std::nullopt;
        e.hour_digits[static_cast<std::size_t>(i)] =
            static_cast<std::uint8_t>(text.at(i).unicode() - '0');
    }
    const QChar tens = text.at(7);
    if (!ascii_digit(tens) || tens > QLatin1Char('5'))
        return std::nullopt;
    e.tens_of_minutes = static_cast<std::uint8_t>(tens.unicode() - '0');
    return e;
}

QByteArray hours_block(const HoursEntry& e) {
    QByteArray block;
    for (int i = 5; i >= 0; --i)
        block += static_cast<char>(e.hour_digits[static_cast<std::size_t>(i)]);
    block += static_cast<char>(e.tens_of_minutes);
    const std::uint16_t crc = protocol::calc_crc(block);
    block += static_cast<char>(crc & 0xFF);
    block += static_cast<char>(crc >> 8);
    return block;
}

void cmd_resetbstd_Click(AppContext& ctx) {
    ctx.device.BSTD = QStringLiteral("000000:00");
    queue(ctx, cmd::reset_hours());
    wait_ms(ctx, hours_reset_wait_ms);
    queue(ctx, cmd::read_hours());
}

bool cmd_setbstd_Click(AppContext& ctx) {
    if (!ctx.device.live_valid)
        return false;
    const std::optional<HoursEntry> entry =
        ask_until_valid(ctx, ctx.language.text(110), ctx.language.text(115), ctx.language.text(111),
                        parse_hours_entry);
    if (!entry)
        return false;
    ctx.device.BSTD.clear();
    const QByteArray block = hours_block(*entry);
    // The device keeps a copy of the block; both must agree.
    queue(ctx, cmd::write_hours_block(cmd::addr_hours, block));
    queue(ctx, cmd::write_hours_block(cmd::addr_hours_copy, block));
    wait_ms(ctx, hours_write_wait_ms);
    ctx.ui.show_msg(ctx.language.text(112), MsgIcon::information);
    return true;
}

// --- Device clock --------------------------------------------------------

void cmd_setdatetime_Click(AppContext& ctx) {
    const QDateTime now = ctx.clock.now();
    ctx.device.geraetezeit = now;
    queue(ctx, cmd::set_clock(now));
    wait_ms(ctx, clock_wait_ms);
    queue(ctx, cmd::read_clock());
}

// --- Low-power mode ------------------------------------------------------

std::optional<char> toggled_low_power(const DeviceRecord& r) {
    if (r.LP.size() < 5)
        return std::nullopt;
    const QChar c = r.LP.at(4);
    if (c == QLatin1Char('4'))
        return '5';
    if (c == QLatin1Char('5'))
        return '4';
    return std::nullopt;
}

bool cmd_togglelp_Click(AppContext& ctx) {
    if (!ctx.device.live_valid)
        return false;
    const std::optional<char> value = toggled_low_power(ctx.device);
    if (!value)
        return false;
    queue(ctx, cmd::write_low_power(*value));
    wait_ms(ctx, low_power_wait_ms);
    queue(ctx, cmd::read_board());
    return true;
}

// --- Remaining time ------------------------------------------------------

std::optional<std::uint16_t> parse_remaining_entry(const QString& text) {
    const QString t = text.trimmed();
    if (t.isEmpty() || t.size() > 3)
        return std::nullopt;
    for (const QChar c : t) {
        if (!ascii_digit(c))
            return std::nullopt;
    }
    return static_cast<std::uint16_t>(t.toInt()); // at most 999
}

bool cmd_Restzeit_Click(AppContext& ctx) {
    // No message of its own for a bad entry: the question simply comes again.
    const std::optional<std::uint16_t> value = ask_until_valid(
        ctx, ctx.language.text(113), ctx.language.text(117), QString(), parse_remaining_entry);
    if (!value)
        return false;
    ctx.device.rest_text.clear();
    queue(ctx, cmd::set_remaining(*value));
    wait_ms(ctx, remaining_wait_ms);
    queue(ctx, cmd::read_remaining());
    ctx.ui.show_msg(ctx.language.text(114), MsgIcon::information);
    return true;
}

// --- Flow selectors ------------------------------------------------------

QStringList flow_selector_entries() {
    QStringList entries;
    for (int k = 0; k <= 255; ++k)
        entries << QString::number(k);
    return entries;
}

bool cb_vs_Click(AppContext& ctx, int selector, int position, bool locked) {
    if (locked || selector < 0 || selector > 1 || position < 0 || position > 255)
        return false;
    queue(ctx, cmd::write_flow_selector(selector, static_cast<std::uint8_t>(position)));
    wait_ms(ctx, selector_wait_ms);
    queue(ctx, cmd::read_flow_selector(selector));
    return true;
}

// --- Acoustic alarms -----------------------------------------------------

std::uint8_t acoustic_bit(AcousticAlarm alarm) {
    switch (alarm) {
    case AcousticAlarm::o21:
        return 2;
    case AcousticAlarm::o22:
        return 4;
    case AcousticAlarm::vollo:
        return 8;
    }
    return 0;
}

std::optional<AcousticAlarm> acoustic_alarm_named(const QString& name) {
    if (name == QLatin1String("o21"))
        return AcousticAlarm::o21;
    if (name == QLatin1String("o22"))
        return AcousticAlarm::o22;
    if (name == QLatin1String("vollo"))
        return AcousticAlarm::vollo;
    return std::nullopt;
}

bool pic_akust_Click(AppContext& ctx, AcousticAlarm alarm) {
    if (!ctx.device.live_valid)
        return false;
    const auto value = static_cast<std::uint8_t>(ctx.device.wert_x ^ acoustic_bit(alarm));
    queue(ctx, cmd::write_acoustic_alarm(value));
    wait_ms(ctx, selector_wait_ms);
    queue(ctx, cmd::read_acoustic_alarm());
    return true;
}

} // namespace veltrako::device
