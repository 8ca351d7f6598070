#include "protocol/response_interpreter.h"

#include "app_context.h"
#include "device/timing_presets.h"
#include "link/connection_state.h"
#include "protocol/commands.h"
#include "protocol/payload_reader.h"
#include "protocol/poll_cycle.h"

#include <QLoggingCategory>

#include <cmath>

Q_LOGGING_CATEGORY(lc_interpreter, "veltrako.protocol.interpreter", QtWarningMsg)

namespace veltrako::protocol {

namespace {

using device::DeviceRecord;

// A byte turned into a digit character (code byte + 48), which must stay a
// character.
QChar digit_char(int byte) {
    if (byte + 48 > 255)
        throw InterpretError("character code out of range");
    return QChar(byte + 48);
}

void identity(DeviceRecord& d, const PayloadReader& r) {
    d.SW = r.text_from(2);
    if (d.SW.isEmpty())
        throw InterpretError("empty identity");
    d.sw_num = d.SW.left(d.SW.size() - 1);
    d.family_code = map_family_code(d.sw_num);
    device::detect_device_type(d);
}

void information(DeviceRecord& d, const PayloadReader& r) {
    d.info_text = r.text_from(2);
    d.info_valid = !d.info_text.isEmpty() && d.info_text.at(0) != QLatin1Char('-');
}

void timing(DeviceRecord& d, const PayloadReader& r) {
    const int index = r.byte(2) - 48;
    // Devices from family "30" on deliver only ZEITEN0..6 through this answer.
    if (index <= 6 || d.family_code < QLatin1String("30")) {
        if (index < 0 || index > 13)
            throw InterpretError("timing index out of range");
        d.zeiten[static_cast<std::size_t>(index)] = static_cast<std::uint8_t>(r.byte(3));
    }
}

void operating_hours(DeviceRecord& d, const PayloadReader& r) {
    d.BSTD.clear();
    for (int pos = 5; pos <= 10; ++pos)
        d.BSTD.prepend(digit_char(r.byte(pos)));
    d.BSTD += QLatin1Char(':');
    d.BSTD += digit_char(r.byte(11));
    d.BSTD += QLatin1Char('0');
}

void status_record(AppContext& ctx, const PayloadReader& r, int address) {
    const int n = (address - cmd::addr_status_first) / cmd::status_record_size + 1;
    if (r.byte(6) != 255) {
        auto& records = ctx.status.records;
        if (static_cast<int>(records.size()) < n + 1)
            records.resize(static_cast<std::size_t>(n + 1));
        records[static_cast<std::size_t>(n)] = r.bytes(5, cmd::status_record_size);
        ctx.status.readout.advance(n, ctx.clock.elapsed_ms());
        if (n < cmd::status_record_max) {
            queue_command(ctx, cmd::read_status_record(n + 1));
            return;
        }
    }
    // An erased record or the last slot ends the readout.
    ctx.ui.set_busy(false);
    ctx.status.readout.finish(ctx.clock.elapsed_ms());
    if (ctx.hooks.status_readout_complete)
        ctx.hooks.status_readout_complete();
    if (ctx.status.mark == status::ReadoutMark::pending)
        ctx.status.mark = status::ReadoutMark::due;
}

void memory(AppContext& ctx, const PayloadReader& r) {
    DeviceRecord& d = ctx.device;
    const int address = r.be16(2);
    switch (address - 0x40) {
    case 0x00:
        d.text_40 = r.text_from(5);
        return;
    case 0x18:
        d.text_58 = r.text_from(5);
        return;
    case 0x40:
        operating_hours(d, r);
        return;
    case 0x90:
        d.text_d0 = r.text_from(5);
        return;
    case 0xA0:
        d.LP = r.text_from(5);
        return;
    case 0xB0:
        d.SN = r.text_from(5);
        return;
    default:
        break;
    }
    if (address >= 0x100 && address <= 0x3C0)
        status_record(ctx, r, address);
}

void device_clock(DeviceRecord& d, const PayloadReader& r, qint64 elapsed_ms) {
    const qint32 seconds = r.byte(2) < 127 ? r.be32_signed(2) : 0;
    d.geraetezeit = QDateTime(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC).addSecs(seconds);
    d.geraetezeit_ms = elapsed_ms;
}

double scaled16(const PayloadReader& r, int pos, double factor) {
    return r.be16_signed(pos) * factor;
}

std::uint8_t round_to_byte(double v) {
    // Halves go to the even neighbour, as the device tools always rounded.
    return static_cast<std::uint8_t>(std::nearbyint(v));
}

void live_status(AppContext& ctx, const PayloadReader& r) {
    DeviceRecord& d = ctx.device;
    d.device_ticks = r.be16(2);
    d.schall = bytes_to_single(r.bytes(4, 4));
    d.O2 = min_of(r.byte(8), 95);
    d.VOLUMENSTROM = scaled16(r, 10, 0.0125);
    d.druck = r.be16(12);
    d.GASTEMP = bytes_to_single(r.bytes(14, 4));
    d.KOMPRESSORTEMP = r.be16(18);
    d.spannung = r.be16_signed(20) * 24.0 / 820.0;
    d.ventile = static_cast<std::uint8_t>(r.byte(22));
    d.alarmstufe = static_cast<std::uint8_t>(r.byte(23));
    if (!d.alarm_at_47)
        d.alarme = static_cast<std::uint8_t>(r.byte(24));
    d.phase = static_cast<std::uint8_t>(r.byte(25));
    d.wert26 = round_to_byte(r.byte(26) * 0.04);
    d.ventiloeffnung = r.byte(27) / 2.55;
    d.sensor1 = r.byte(28) / 2.24;
    d.sensor2 = r.byte(29) / 2.24;
    d.alarme2 = static_cast<std::uint8_t>(r.byte(35));
    d.SOLL_VOLUMENSTROM = scaled16(r, 36, 0.0125);
    if (d.alarm_at_47)
        d.alarme = static_cast<std::uint8_t>(r.byte(47));

    // The time axis: the device counter wraps at 65536 and restarts at 0
    // after every clearing of the record.
    qint64 offset = d.tick_offset;
    if (d.device_ticks < d.tick_prev)
        offset += 65536;
    if (offset > std::numeric_limits<qint32>::max())
        throw InterpretError("time axis overflow");
    d.tick_offset = static_cast<qint32>(offset);
    d.tick_prev = d.device_ticks;
    if (!d.live_valid || d.restart_time) {
        d.tick_offset = -d.device_ticks;
        d.restart_time = false;
    }
    d.live_time = (static_cast<qint64>(d.tick_offset) + d.device_ticks) * 0.04;
    if (!d.live_valid)
        ctx.ui.set_busy(false); // the connection is up: the hourglass of the start goes
    d.live_valid = true;
    ctx.live_history.add({d.live_time, d.O2, d.VOLUMENSTROM, d.SOLL_VOLUMENSTROM, d.druck});
}

void interpret(AppContext& ctx, const QByteArray& payload) {
    const PayloadReader r(payload);
    DeviceRecord& d = ctx.device;
    const char letter = payload.isEmpty() ? '\0' : payload.at(0);
    switch (letter) {
    case '?':
        identity(d, r);
        // The family is known now: it decides whether the preset buttons are offered.
        device::setup_presets(ctx.presets, ctx.program_dir, device::presets_wanted(d));
        break;
    case '!':
        information(d, r);
        break;
    case 'r':
        timing(d, r);
        break;
    case 'O':
        d.wert_o = static_cast<std::uint8_t>(r.byte(2));
        break;
    case 'U':
        d.wert_u = static_cast<std::uint8_t>(r.byte(2));
        break;
    case 'S':
        d.rest_text = QString::number(r.be16(2));
        break;
    case 'e':
        memory(ctx, r);
        break;
    case 'X':
        d.wert_x = static_cast<std::uint8_t>(r.byte(2));
        break;
    case 'T':
        device_clock(d, r, ctx.clock.elapsed_ms());
        break;
    case 'K':
    case 'k':
        if (ctx.hooks.compliance_answer)
            ctx.hooks.compliance_answer(payload);
        break;
    case 'I':
        live_status(ctx, r);
        break;
    default:
        break; // unknown letters change nothing but still end as usual
    }
}

} // namespace

double bytes_to_single(const QByteArray& four) {
    const auto b = [&](int i) { return static_cast<unsigned char>(four.at(i)); };
    const double sign = (b(3) & 0x80) ? -1.0 : 1.0;
    const int exponent = (b(3) & 0x7F) * 2 + (b(2) >> 7);
    const double mantissa = (b(2) & 0x7F) * 65536.0 + b(1) * 256.0 + b(0);
    return sign * (1.0 + mantissa / 8388608.0) * std::exp((exponent - 127) * std::log(2.0));
}

QString map_family_code(const QString& code) {
    if (code == QLatin1String("70"))
        return QStringLiteral("50");
    if (code == QLatin1String("71"))
        return QStringLiteral("51");
    return code;
}

QString version_code(const AppContext& ctx) {
    return ctx.device.family_code;
}

void dispatch_response(AppContext& ctx, const QByteArray& payload) {
    ctx.protocol.retry_count = 0;
    try {
        interpret(ctx, payload);
    } catch (const InterpretError& e) {
        // A malformed answer is not the user's business: it is logged for
        // the developer and the rest of this answer is ignored.
        qCDebug(lc_interpreter) << "answer" << payload.toHex(' ') << "not interpreted:" << e.what();
        return;
    }
    ctx.device.last_answer_time = seconds_since_midnight(ctx.clock.now());
    if (ctx.status.mark == status::ReadoutMark::due) {
        ctx.status.mark = status::ReadoutMark::idle;
        if (ctx.hooks.status_save_due)
            ctx.hooks.status_save_due();
    }
    ctx.ui.device_record_changed();
    link::follow_connection(ctx);
}

} // namespace veltrako::protocol
