#include "device/settings.h"

#include "app_context.h"
#include "config/wait.h"
#include "device/device_view.h"
#include "device/read_back.h"
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
// The device clock runs on between the write and the answer to its read-back.
constexpr qint64 clock_tolerance_s = 5;

// Names of the settings in outcome notes and messages.
QString name_serial(const AppContext& ctx) {
    return ctx.language.text(8020);
}
QString name_hours(const AppContext& ctx) {
    return ctx.language.text(8021);
}

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

QString stored_serial(const QString& text) {
    return (text + QString(cmd::serial_length, QLatin1Char(' '))).left(cmd::serial_length);
}

WriteOutcome cmd_setsn_Click(AppContext& ctx, const QString& text) {
    const QString stored = stored_serial(text);
    const QString before = ctx.device.SN.trimmed();
    if (!confirm_change(ctx, ctx.language.text(8032), before, stored.trimmed()))
        return WriteOutcome::not_written;
    ctx.device.SN = text;
    ReadBackWatch watch(ctx);
    const QByteArray write = cmd::write_serial(text.toLatin1());
    queue(ctx, write);
    wait_ms(ctx, serial_wait_ms);
    queue(ctx, cmd::read_serial());
    const bool answered = watch.await(write, cmd::read_serial());
    return tell_outcome(ctx,
                        {name_serial(ctx), stored.trimmed(), ctx.device.SN.trimmed(), answered,
                         ctx.device.SN == stored, before},
                        Telling::note);
}

// --- Operating hours -----------------------------------------------------

std::optional<HoursEntry> parse_hours_entry(const QString& text) {
    // As typed ("001234:5") or as the page shows it ("001234:50"): the
    // device keeps tens of minutes, so a shown value ends in 0.
    const bool shown_form = text.size() == 9 && text.at(8) == QLatin1Char('0');
    if ((text.size() != 8 && !shown_form) || text.at(6) != QLatin1Char(':'))
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

QString hours_text(const HoursEntry& e) {
    QString text;
    for (const std::uint8_t d : e.hour_digits)
        text += QChar('0' + d);
    return text + QLatin1Char(':') + QChar('0' + e.tens_of_minutes) + QLatin1Char('0');
}

WriteOutcome cmd_resetbstd_Click(AppContext& ctx) {
    const QString zero = QStringLiteral("000000:00");
    const QString before = ctx.device.BSTD;
    if (!confirm_change(ctx, ctx.language.text(8034), before, zero))
        return WriteOutcome::not_written;
    ctx.device.BSTD = zero;
    ReadBackWatch watch(ctx);
    queue(ctx, cmd::reset_hours());
    wait_ms(ctx, hours_reset_wait_ms);
    queue(ctx, cmd::read_hours());
    const bool answered = watch.await(cmd::reset_hours(), cmd::read_hours());
    return tell_outcome(
        ctx, {name_hours(ctx), zero, ctx.device.BSTD, answered, ctx.device.BSTD == zero, before},
        Telling::note);
}

WriteOutcome cmd_setbstd_Click(AppContext& ctx) {
    if (!ctx.device.live_valid)
        return WriteOutcome::not_written;
    const std::optional<HoursEntry> entry =
        ask_until_valid(ctx, ctx.language.text(110), ctx.language.text(115), ctx.language.text(111),
                        parse_hours_entry);
    if (!entry)
        return WriteOutcome::not_written;
    const QString wanted = hours_text(*entry);
    const QString before = ctx.device.BSTD;
    if (!confirm_change(ctx, ctx.language.text(8033), before, wanted))
        return WriteOutcome::not_written;
    ctx.device.BSTD.clear();
    const QByteArray block = hours_block(*entry);
    ReadBackWatch watch(ctx);
    // The device keeps a copy of the block; both must agree.
    const QByteArray copy = cmd::write_hours_block(cmd::addr_hours_copy, block);
    queue(ctx, cmd::write_hours_block(cmd::addr_hours, block));
    queue(ctx, copy);
    wait_ms(ctx, hours_write_wait_ms);
    // Deliberately read back at once instead of leaving it to the poll's
    // next read of the block, up to 20 s later: the field shows the device's
    // value as soon as it answers, and the message says what it took.
    queue(ctx, cmd::read_hours());
    const bool answered = watch.await(copy, cmd::read_hours());
    return tell_outcome(
        ctx,
        {name_hours(ctx), wanted, ctx.device.BSTD, answered, ctx.device.BSTD == wanted, before},
        Telling::message, ctx.language.text(112));
}

// --- Device clock --------------------------------------------------------

WriteOutcome cmd_setdatetime_Click(AppContext& ctx) {
    const QDateTime now = ctx.clock.now();
    const QString before = format_device_time(ctx.device.geraetezeit, ctx.language.words);
    ctx.device.geraetezeit = now;
    // What the field shows now is the PC's time, not a reading of the device:
    // the device's clock counts as unknown until it is read back.
    ctx.device.geraetezeit_ms.reset();
    ReadBackWatch watch(ctx);
    const QByteArray write = cmd::set_clock(now);
    queue(ctx, write);
    wait_ms(ctx, clock_wait_ms);
    queue(ctx, cmd::read_clock());
    const bool answered = watch.await(write, cmd::read_clock());
    const QDateTime whole = QDateTime::fromSecsSinceEpoch(now.toSecsSinceEpoch(), Qt::UTC);
    const qint64 ahead = whole.secsTo(ctx.device.geraetezeit);
    // The same form as the date box: in the program's language, not the PC's.
    const QLocale& locale = ctx.language.words;
    return tell_outcome(ctx,
                        {ctx.language.text(8023), format_device_time(whole, locale),
                         format_device_time(ctx.device.geraetezeit, locale), answered,
                         ahead >= 0 && ahead <= clock_tolerance_s, before},
                        Telling::note);
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

WriteOutcome cmd_togglelp_Click(AppContext& ctx) {
    if (!ctx.device.live_valid)
        return WriteOutcome::not_written;
    const std::optional<char> value = toggled_low_power(ctx.device);
    if (!value)
        return WriteOutcome::not_written;
    const QString before = ctx.device.LP;
    QString expected = ctx.device.LP;
    expected[4] = QLatin1Char(*value);
    ReadBackWatch watch(ctx);
    const QByteArray write = cmd::write_low_power(*value);
    queue(ctx, write);
    wait_ms(ctx, low_power_wait_ms);
    queue(ctx, cmd::read_board());
    const bool answered = watch.await(write, cmd::read_board());
    const QString& lp = ctx.device.LP;
    return tell_outcome(ctx,
                        {ctx.language.text(8024), expected, lp, answered,
                         lp.size() >= 5 && lp.at(4) == QLatin1Char(*value), before},
                        Telling::note);
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

WriteOutcome cmd_Restzeit_Click(AppContext& ctx) {
    // No message of its own for a bad entry: the question simply comes again.
    const std::optional<std::uint16_t> value = ask_until_valid(
        ctx, ctx.language.text(113), ctx.language.text(117), QString(), parse_remaining_entry);
    if (!value)
        return WriteOutcome::not_written;
    const QString before = ctx.device.rest_text;
    ctx.device.rest_text.clear();
    ReadBackWatch watch(ctx);
    const QByteArray write = cmd::set_remaining(*value);
    queue(ctx, write);
    wait_ms(ctx, remaining_wait_ms);
    queue(ctx, cmd::read_remaining());
    // Deliberately not the fixed message after the wait: "written" is said
    // only when the device reports the value written.
    const bool answered = watch.await(write, cmd::read_remaining());
    const QString written = QString::number(*value);
    return tell_outcome(ctx,
                        {ctx.language.text(8022), written, ctx.device.rest_text, answered,
                         ctx.device.rest_text == written, before},
                        Telling::message, ctx.language.text(114));
}

// --- Flow selectors ------------------------------------------------------

QStringList flow_selector_entries() {
    QStringList entries;
    for (int k = 0; k <= 255; ++k)
        entries << QString::number(k);
    return entries;
}

WriteOutcome cb_vs_Click(AppContext& ctx, int selector, int position, bool locked) {
    if (locked || selector < 0 || selector > 1 || position < 0 || position > 255)
        return WriteOutcome::not_written;
    const QString before = QString::number(selector == 0 ? ctx.device.wert_u : ctx.device.wert_o);
    ReadBackWatch watch(ctx);
    const QByteArray write =
        cmd::write_flow_selector(selector, static_cast<std::uint8_t>(position));
    queue(ctx, write);
    wait_ms(ctx, selector_wait_ms);
    queue(ctx, cmd::read_flow_selector(selector));
    const bool answered = watch.await(write, cmd::read_flow_selector(selector));
    const int got = selector == 0 ? ctx.device.wert_u : ctx.device.wert_o;
    return tell_outcome(ctx,
                        {ctx.language.text(selector == 0 ? 8025 : 8026), QString::number(position),
                         QString::number(got), answered, got == position, before},
                        Telling::note);
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

WriteOutcome pic_akust_Click(AppContext& ctx, AcousticAlarm alarm) {
    if (!ctx.device.live_valid)
        return WriteOutcome::not_written;
    const auto value = static_cast<std::uint8_t>(ctx.device.wert_x ^ acoustic_bit(alarm));
    const QString before = QString::number(ctx.device.wert_x);
    ReadBackWatch watch(ctx);
    const QByteArray write = cmd::write_acoustic_alarm(value);
    queue(ctx, write);
    wait_ms(ctx, selector_wait_ms);
    queue(ctx, cmd::read_acoustic_alarm());
    const bool answered = watch.await(write, cmd::read_acoustic_alarm());
    return tell_outcome(ctx,
                        {ctx.language.text(8029), QString::number(value),
                         QString::number(ctx.device.wert_x), answered, ctx.device.wert_x == value,
                         before},
                        Telling::note);
}

} // namespace veltrako::device
