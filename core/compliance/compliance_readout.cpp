#include "compliance/compliance_readout.h"

#include "app_context.h"
#include "compliance/compliance_month.h"
#include "device/device_clock.h"
#include "device/device_view.h"
#include "link/connection_state.h"
#include "protocol/commands.h"
#include "protocol/payload_reader.h"
#include "protocol/poll_cycle.h"

#include <QLocale>
#include <QRandomGenerator>

#include <algorithm>
#include <cmath>

namespace veltrako::compliance {

namespace {

// Tag of l_recordnumber; its caption comes from the language file.
constexpr int record_label_tag = 11102;
// "... not read completely: no valid answer for record %1 (records 0 to %2)."
constexpr int text_record_missing = 8500;
// "... not read completely: no valid answer giving the number of records."
constexpr int text_count_missing = 8501;

void notify(ComplianceMemory& memory) {
    if (memory.page_changed)
        memory.page_changed();
}

// Indices at which a record equal to record 0 means the read went round the
// device's ring: the ring sizes the devices are built with.
bool is_ring_size(int index) {
    return index == 256 || index == 512 || index == 1024 || index == 2048 || index == 4096;
}

// Halves go to the even neighbour.
int round_half_even(double v) {
    const double f = std::floor(v);
    const double rest = v - f;
    if (rest > 0.5 || (rest == 0.5 && std::fmod(f, 2.0) != 0.0))
        return static_cast<int>(f) + 1;
    return static_cast<int>(f);
}

// The period still running ends at the device's present time when its clock
// has been read and is not before the period's start; otherwise at the PC's.
// Deliberately the device's: its periods are stamped by its own clock, and a
// device clock months behind the PC's would otherwise add those months as
// round-the-clock use that never happened.
Stamp running_period_end(const AppContext& ctx, Stamp start) {
    if (const auto device = device::device_present_time(ctx.device, ctx.clock.elapsed_ms())) {
        const Stamp end = to_stamp(*device);
        if (end >= start)
            return end;
    }
    return to_stamp(ctx.clock.now());
}

void finish_readout(AppContext& ctx) {
    ComplianceMemory& m = ctx.compliance;
    m.readout.finish(ctx.clock.elapsed_ms());
    m.page.record_visible = false;
    m.state.shown_month = 0;
    m.state.has_data = true;
    m.state.from_device = true;
    m.state.serial_number = ctx.device.SN.trimmed();
    m.state.lp_number = ctx.device.LP.trimmed();
    compliance_show(ctx);
    if (ctx.hooks.usage_read) {
        const ComplianceState& s = m.state;
        const auto last = static_cast<std::size_t>(std::clamp(s.last_index, 0, table_upper));
        jobs::UsageReadout done{s.serial_number, s.lp_number, ctx.clock.now(), {}, 0};
        done.periods.assign(m.records.begin(), m.records.begin() + static_cast<long>(last) + 1);
        // The record at the announced count is the period still running.
        if (s.last_index == s.record_count)
            done.running_start = m.records[last].start;
        done.prescribed_hours = m.prescribed_hours;
        done.adherence_share = m.adherence_share;
        ctx.hooks.usage_read(done);
    }
}

QByteArray request_for(int record) {
    return record == ReadoutWait::count
               ? protocol::cmd::compliance_count()
               : protocol::cmd::compliance_record(static_cast<std::uint16_t>(record));
}

// Asks for the count or a record for the first time. Its request and three
// repetitions get the answer time-out each; whatever mix of silence and
// unusable answers meets them, the record is given up one time-out later.
void ask_for(AppContext& ctx, int record) {
    ReadoutWait& w = ctx.compliance.wait;
    w.record = record;
    w.repetitions = 0;
    w.asked_ms = ctx.clock.elapsed_ms();
    w.give_up.arm(w.asked_ms, 5 * protocol::answer_timeout_ms(ctx));
    protocol::queue_command(ctx, request_for(record));
}

bool queued(const protocol::ProtocolState& p, const QByteArray& request) {
    const auto waiting = p.send_queue.begin() + 1;
    return std::find(waiting, waiting + p.queue_count, request) != waiting + p.queue_count;
}

void fail_readout(AppContext& ctx, bool on_the_wire) {
    ComplianceMemory& m = ctx.compliance;
    protocol::drop_queued(ctx, 'K');
    protocol::drop_queued(ctx, 'k');
    const QLocale locale;
    m.failure = m.wait.record == ReadoutWait::count
                    ? ctx.language.text(text_count_missing)
                    : ctx.language.text(text_record_missing)
                          .arg(device::format_value(m.wait.record, 0, locale),
                               device::format_value(std::min(m.state.record_count, table_upper), 0,
                                                    locale));
    m.wait.give_up.disarm();
    m.page.record_visible = false;
    m.readout.fail(ctx.clock.elapsed_ms());
    compliance_buttons(ctx, link_enabled(ctx));
    if (m.wait.tell_failure) {
        ctx.ui.show_msg(m.failure, MsgIcon::critical);
        // The time spent reading it is not the device's silence.
        protocol::restart_answer_clock(ctx);
    }
    // The record is given up, not the device: the poll cycle goes on, and
    // its own time-out still notices a device that has gone silent.
    if (on_the_wire)
        protocol::give_up_outstanding(ctx);
}

} // namespace

bool link_enabled(const AppContext& ctx) {
    // Like every control that sends to the device: a device is open, its
    // identity has been read, and it is not waiting in its boot loader.
    return link::device_controls_enabled(ctx);
}

void follow_link_state(AppContext& ctx) {
    const bool enable = link_enabled(ctx);
    if (ctx.compliance.page.read_enabled != enable)
        compliance_buttons(ctx, enable);
}

void install_compliance(AppContext& ctx) {
    ctx.hooks.compliance_answer = [&ctx](const QByteArray& payload) {
        compliance_answer(ctx, payload);
    };
    ctx.hooks.answer_watch = [&ctx] { watch_readout(ctx); };
    ctx.hooks.link_reset = [&ctx] {
        compliance_clear(ctx.compliance);
        compliance_buttons(ctx, link_enabled(ctx));
    };
}

void compliance_clear(ComplianceMemory& memory) {
    memory.records.fill(ComplianceRecord{});
    memory.state = ComplianceState{};
    memory.page.chart_shown = false;
    memory.page.summary_text.clear();
    memory.page.adherence_text.clear();
    memory.wait = ReadoutWait{};
    // Whatever ends the table's contents ends a readout too.
    memory.page.record_visible = false;
    memory.readout.reset();
}

void compliance_buttons(AppContext& ctx, bool enable) {
    ComplianceMemory& m = ctx.compliance;
    const ComplianceState& s = m.state;
    CompliancePage& p = m.page;
    // Deliberately off while a readout runs: a second click would start
    // over in the middle of the records and leave a wrong chart.
    // Nor may the table be erased, loaded or replaced by test data under a
    // readout that is still filling it.
    const bool running = m.readout.running();
    p.read_enabled = enable && !running;
    p.save_enabled = s.from_device && s.has_data;
    p.print_enabled = s.has_data;
    p.delete_enabled = enable && !running;
    p.replace_enabled = !running;
    p.prev_enabled = s.has_prev_month;
    p.next_enabled = s.has_next_month;
    p.dauer_text = s.has_data ? device::format_value(s.total_hours, 1, QLocale()) : QString();
    notify(m);
}

void compliance_show(AppContext& ctx) {
    ComplianceMemory& m = ctx.compliance;
    const Month month = compliance_month_pass(m.state, m.records, to_stamp(ctx.clock.now()));
    m.page.chart_shown = true;
    m.page.summary_text =
        month_summary_line(month, m.records, m.state, m.prescribed_hours, ctx.language, QLocale());
    const auto window = best_window(m.records, m.state, m.prescribed_hours, m.adherence_share);
    m.page.adherence_text = window ? adherence_text(*window, m.prescribed_hours, m.adherence_share,
                                                    ctx.language, QLocale())
                                   : QString();
    compliance_buttons(ctx, link_enabled(ctx));
}

void start_readout(AppContext& ctx, bool tell_failure) {
    if (ctx.link.device_handle == 0)
        return;
    protocol::resume_polling(ctx);
    ComplianceMemory& m = ctx.compliance;
    if (m.readout.running())
        return;
    compliance_clear(m);
    m.failure.clear();
    m.wait.tell_failure = tell_failure;
    ctx.protocol.paced_reads = false;
    m.readout.start(ctx.clock.elapsed_ms());
    compliance_buttons(ctx, link_enabled(ctx));
    m.page.record_caption = ctx.language.text(record_label_tag);
    m.page.record_visible = true;
    notify(m);
    // Record 0 is asked for once the count has come: a record before the
    // count could not be told from the running period.
    ask_for(ctx, ReadoutWait::count);
}

void cmd_complianceread_Click(AppContext& ctx) {
    start_readout(ctx, true);
}

void watch_readout(AppContext& ctx) {
    ComplianceMemory& m = ctx.compliance;
    if (!m.readout.running())
        return;
    ReadoutWait& w = m.wait;
    const protocol::ProtocolState& p = ctx.protocol;
    const QByteArray request = request_for(w.record);
    const qint64 now = ctx.clock.elapsed_ms();
    const bool on_the_wire = p.waiting_reply && p.last_command == request;
    // No answer at all: the poll cycle repeats the request three times and
    // then gives the device up. The readout gives the record up first, so
    // that the person learns which record is missing.
    const bool unanswered = on_the_wire && p.retry_count >= 3 && protocol::answer_overdue(ctx);
    if (w.give_up.expired(now) || unanswered) {
        fail_readout(ctx, on_the_wire);
        return;
    }
    if (on_the_wire || queued(p, request) || now - w.asked_ms < protocol::answer_timeout_ms(ctx))
        return;
    // Answered, but with nothing the readout could take (late, twice,
    // another record, refused by the interpreter): asked again, three times.
    if (w.repetitions >= 3) {
        fail_readout(ctx, false);
        return;
    }
    w.repetitions += 1;
    w.asked_ms = now;
    protocol::queue_command(ctx, request);
}

void compliance_cancel(AppContext& ctx) {
    ComplianceMemory& m = ctx.compliance;
    if (!m.readout.running())
        return;
    m.wait.give_up.disarm();
    // The request on the wire, if any, is answered and ignored.
    protocol::drop_queued(ctx, 'K');
    protocol::drop_queued(ctx, 'k');
    m.page.record_visible = false;
    m.readout.cancel(ctx.clock.elapsed_ms());
    compliance_buttons(ctx, link_enabled(ctx));
}

Stamp device_time(const QByteArray& payload, int position) {
    const protocol::PayloadReader r(payload);
    if (r.byte(position) > 127)
        return 0;
    return device_epoch + r.be32_signed(position);
}

void compliance_answer(AppContext& ctx, const QByteArray& payload) {
    ComplianceMemory& m = ctx.compliance;
    ComplianceState& s = m.state;
    const protocol::PayloadReader r(payload);
    if (payload.startsWith('K')) {
        const int count = r.be16_signed(2);
        if (!m.readout.running() || m.wait.record != ReadoutWait::count)
            return;
        s.record_count = count;
        // Records 0 to the count are asked for, as far as the table reaches.
        m.readout.set_total(std::min(s.record_count, table_upper) + 1, ctx.clock.elapsed_ms());
        s.read_index = 0;
        ask_for(ctx, 0);
        return;
    }
    const int number = r.be16_signed(2);
    const Stamp start = device_time(payload, 4);
    const Stamp end = device_time(payload, 8);
    // Deliberately stored at the index the answer's own number names, and
    // only while the readout waits for exactly that record. Storing every
    // answer at the index asked last, whatever number it carries, lets one
    // answer that comes after its repetition was sent shift every record
    // behind it by one: the last one is never asked for, the one before it
    // is stretched to "now", and months of use appear that never happened.
    const bool awaited =
        m.readout.running() && m.wait.record != ReadoutWait::count && number == m.wait.record;
    if (!awaited) {
        // Late, twice, another record, or after a cancel: the log notes the
        // record waited for and the one received, and nothing else changes.
        QString& log = ctx.comm_log.comm_log;
        log += QStringLiteral("\r\n") + QString::number(s.read_index) + QLatin1Char('/') +
               QString::number(number);
        if (log.size() > protocol::comm_log_limit)
            log.truncate(protocol::comm_log_kept);
        // A device that answers out of step is not read at full speed.
        if (m.readout.running())
            ctx.protocol.paced_reads = true;
        return;
    }
    ComplianceRecord& record = m.records[static_cast<std::size_t>(number)];
    record = {start, end};
    const QLocale locale;
    m.page.record_caption = ctx.language.text(record_label_tag) +
                            device::format_value(number, 0, locale) + QStringLiteral(" / ") +
                            device::format_value(s.record_count, 0, locale);
    // The device's ring holds a power of two of records; asked past its end
    // it answers with its first record again. That duplicate stays as the
    // last entry.
    const bool wrapped = is_ring_size(number) && record == m.records[0];
    s.last_index = number;
    // The running period is the record the count names, and only that one.
    if (number == s.record_count)
        record.end = running_period_end(ctx, record.start);
    notify(m);
    m.readout.advance(number + 1, ctx.clock.elapsed_ms());
    if (number < table_upper && !wrapped && number < s.record_count) {
        s.read_index = number + 1;
        ask_for(ctx, s.read_index);
        return;
    }
    m.wait.give_up.disarm();
    finish_readout(ctx);
}

void cmd_compliancedelete_Click(AppContext& ctx) {
    if (!ctx.ui.ask_ok_cancel(ctx.language.text(6011), QString()))
        return;
    protocol::resume_polling(ctx);
    protocol::queue_command(ctx, protocol::cmd::compliance_erase());
    compliance_clear(ctx.compliance);
    compliance_buttons(ctx, link_enabled(ctx));
}

void cmd_prevmonth_Click(AppContext& ctx) {
    ComplianceState& s = ctx.compliance.state;
    s.shown_month = add_months(s.shown_month, -1);
    compliance_show(ctx);
}

void cmd_nextmonth_Click(AppContext& ctx) {
    ComplianceState& s = ctx.compliance.state;
    s.shown_month = add_months(s.shown_month, 1);
    compliance_show(ctx);
}

void compliance_testdata(ComplianceMemory& memory, QRandomGenerator& random) {
    compliance_clear(memory);
    ComplianceRecords& r = memory.records;
    r[0] = {make_stamp(2006, 12, 12, 10, 0, 0), make_stamp(2006, 12, 13, 10, 0, 0)};
    r[1] = {make_stamp(2006, 12, 24, 11, 15, 0), make_stamp(2006, 12, 26, 12, 0, 0)};
    r[4] = {make_stamp(2006, 9, 14, 13, 25, 0), make_stamp(2006, 9, 14, 14, 14, 0)};
    for (int d = 1; d <= 30; ++d) {
        const double h1 = random.generateDouble();
        const double m1 = random.generateDouble();
        const Stamp start =
            make_stamp(2007, 1, d, round_half_even(h1 * 3 + 6), round_half_even(m1 * 59));
        const double h2 = random.generateDouble();
        const double m2 = random.generateDouble();
        const Stamp end =
            make_stamp(2007, 1, d, round_half_even(h2 * 4 + 19), round_half_even(m2 * 59));
        r[static_cast<std::size_t>(d + 4)] = {start, end};
    }
    ComplianceState& s = memory.state;
    s.last_index = s.record_count = s.read_index = 34;
    s.shown_month = 0;
    s.has_data = true;
    s.from_device = true;
    s.test_data = true;
}

void cmd_compliance_test_Click(AppContext& ctx, QRandomGenerator& random) {
    compliance_testdata(ctx.compliance, random);
    compliance_show(ctx);
}

} // namespace veltrako::compliance
