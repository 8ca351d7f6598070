#include "protocol/poll_cycle.h"

#include "app_context.h"
#include "config/dates.h"
#include "config/text_file.h"
#include "firmware/firmware_update.h"
#include "link/connection_state.h"
#include "link/device_connection.h"
#include "protocol/commands.h"
#include "protocol/frames.h"
#include "protocol/response_interpreter.h"

#include <QDir>

#include <algorithm>
#include <cmath>
#include <optional>

namespace veltrako::protocol {

namespace {

const QString crlf = QStringLiteral("\r\n");

// Remainder that stays non-negative however far the counter has run.
int tick_mod(qint32 tick, int n) {
    return ((tick % n) + n) % n;
}

} // namespace

bool send_permitted(const AppContext& ctx, const QByteArray& head) {
    const QString v = version_code(ctx);
    const device::DeviceRecord& d = ctx.device;
    // Whole-payload comparisons: the gates apply to one-letter requests only.
    if (head == "T" && !d.clock_supported)
        return false;
    if (head == "S" && !d.remaining_supported)
        return false;
    if ((head == "U" || head == "O") && v < QLatin1String("51"))
        return false;
    if (head == "X" && v < QLatin1String("30"))
        return false;
    if (head == "!" && v < QLatin1String("53"))
        return false;
    return true;
}

qint64 answer_timeout_ms(const AppContext& ctx) {
    return std::max<qint64>(1, std::llround(ctx.config.TIMEOUT * 1000.0));
}

bool answer_overdue(const AppContext& ctx) {
    return since_midnight_difference(seconds_since_midnight(ctx.clock.now()),
                                     ctx.device.last_answer_time) > ctx.config.TIMEOUT;
}

void restart_answer_clock(AppContext& ctx) {
    ctx.device.last_answer_time = seconds_since_midnight(ctx.clock.now());
}

void give_up_outstanding(AppContext& ctx) {
    ProtocolState& p = ctx.protocol;
    p.waiting_reply = false;
    p.retry_count = 0;
    restart_answer_clock(ctx);
}

namespace {

// Clears the tick's re-entrancy guard on every way out.
struct BusyGuard {
    bool& busy;
    explicit BusyGuard(bool& b) : busy(b) { busy = true; }
    ~BusyGuard() { busy = false; }
    BusyGuard(const BusyGuard&) = delete;
    BusyGuard& operator=(const BusyGuard&) = delete;
};

constexpr int text_boot_loader = 8004; // "Gerät wartet im Bootloader"
constexpr int text_update_again = 106; // the device cannot be used until it is programmed

// A device that has not answered "?" since it was opened may wait in its
// boot loader, where a failed update left it: the loader answers its own
// sync request, which an application that runs drops as a stray byte. Found
// there, the device stays open and unpolled (the poll cycle's frames mean
// nothing to a loader) for the firmware update to program it.
bool found_in_boot_loader(AppContext& ctx) {
    if (!ctx.device.SW.isEmpty())
        return false;
    link::read_raw(ctx); // whatever the loader made of the frames sent so far
    const std::optional<QByteArray> greeting = firmware::sync_boot_loader(ctx, 1);
    if (!greeting)
        return false;
    ctx.link.boot_loader = true;
    ctx.link.loader_hardware = firmware::loader_hardware(*greeting);
    ctx.link.lost = false;
    reset_link_state(ctx);
    show_msg(ctx,
             ctx.language.text(text_boot_loader) + crlf + ctx.language.text(text_update_again));
    return true;
}

void handle_timeout(AppContext& ctx) {
    ProtocolState& p = ctx.protocol;
    const float now = seconds_since_midnight(ctx.clock.now());
    // Deliberately not looking at waiting_reply: a device that stays silent
    // longer than the time-out is asked again even with nothing outstanding.
    if (!answer_overdue(ctx))
        return;
    if (p.retry_count < 3) {
        p.retry_count += 1;
        p.paced_reads = true;
        ctx.device.last_answer_time = now;
        show_info(ctx, config::message_time_text(ctx.clock.now()) + QStringLiteral(" Timeout Nr ") +
                           QString::number(p.retry_count) + QStringLiteral(" Command:") +
                           QString::fromLatin1(p.last_command) + crlf);
        p.waiting_reply = true;
        send_frame(ctx, p.last_command);
        link::follow_connection(ctx);
        return;
    }
    if (found_in_boot_loader(ctx))
        return;
    // Deliberately one message per lost connection, not one per give-up:
    // a device that stays silent is given up again after every silent
    // reconnection, and the status bar says meanwhile that it does not answer.
    const bool newly_lost = !ctx.link.lost;
    ctx.link.lost = true;
    link::close_device(ctx);
    if (newly_lost)
        show_msg(ctx, ctx.language.text(4) + crlf + ctx.language.text(5));
    reset_link_state(ctx);
    // Deliberately the window stays on the page the technician is on (the
    // original turned to "Gerät"): a report half typed on "Protokoll" must
    // not be taken out of sight, the reconnection below runs from there too.
    // Back on, so the silent reconnection runs from the next tick.
    ctx.timer1.set_enabled(true);
}

// Bytes have arrived, or there is something else to look at: the link
// failed or was closed while we waited.
bool input_or_failure(AppContext& ctx) {
    if (ctx.link.device_handle == 0)
        return true;
    std::uint32_t rx = 0;
    return ctx.link.backend->get_queue_status(ctx.link.device_handle, rx) != link::FT_OK || rx > 0;
}

void receive(AppContext& ctx) {
    ProtocolState& p = ctx.protocol;
    // Set while a record request sent here waits for its answer.
    std::optional<qint64> answer_due_by;
    for (;;) {
        if (answer_due_by) {
            const qint64 left = *answer_due_by - ctx.clock.elapsed_ms();
            // Silent for the answer time-out: the tick's repetition takes over.
            if (left <= 0 || !ctx.clock.wait_for(static_cast<int>(left),
                                                 [&ctx] { return input_or_failure(ctx); }))
                return;
        }
        const QByteArray received = link::read_waiting(ctx);
        if (received.isEmpty())
            return;
        parse_frames(ctx, received);
        if (answer_due_by && p.waiting_reply)
            continue; // the rest of the answer is still on the wire
        answer_due_by.reset();
        // A run of compliance record reads goes on without waiting for the
        // next tick.
        if (p.queue_count >= 1 && p.send_queue[1].startsWith('k') && !p.waiting_reply) {
            send_next(ctx);
            if (p.paced_reads) {
                ctx.clock.wait_ms(20);
                continue;
            }
            // Deliberately faster than a fixed 20 ms wait per record, which
            // made a full memory of 4097 records take 80 s where the wire
            // needs 13: the next "k" leaves as soon as the answer to this one
            // has been handled. Requests, their order and their bytes stay
            // the same. A readout that met a repetition or a record number
            // other than the one asked for has shown a device or a line that
            // needs time; it sends and waits 20 ms for the rest (paced_reads).
            answer_due_by = ctx.clock.elapsed_ms() + answer_timeout_ms(ctx);
            continue;
        }
        return;
    }
}

// A periodic request is not queued again while the same request still waits
// in the queue: the one waiting asks the device the same thing. Queuing it
// every time, as the schedule alone would, fills the queue on a bad cable,
// where repeated time-outs hold it up, until "Outbuffer overflow" resets the
// link and leaves Timer1 off. Commands that a user or a readout queues do not
// come through here and are never dropped.
void queue_periodic_request(AppContext& ctx, const QByteArray& payload) {
    const ProtocolState& p = ctx.protocol;
    const auto waiting = p.send_queue.begin() + 1;
    if (std::find(waiting, waiting + p.queue_count, payload) != waiting + p.queue_count)
        return;
    queue_command(ctx, payload);
}

void queue_periodic(AppContext& ctx) {
    const qint32 t = ctx.protocol.tick_count;
    const QString v = version_code(ctx);
    if (tick_mod(t, 8) == 0 || tick_mod(t, 8) == 4)
        queue_periodic_request(ctx, cmd::live_status());
    if (tick_mod(t, 8) == 2)
        queue_periodic_request(ctx, cmd::read_clock());
    if (tick_mod(t, 400) == 11)
        queue_periodic_request(ctx, cmd::read_hours());
    if (tick_mod(t, 40) == 34)
        queue_periodic_request(ctx, cmd::read_remaining());
    if (v >= QLatin1String("52")) {
        if (tick_mod(t, 100) == 35)
            queue_periodic_request(ctx, cmd::information());
        const int slot = tick_mod(t, 400);
        if (slot >= 21 && slot <= 33 && slot % 2 == 1)
            queue_periodic_request(ctx, cmd::read_timing((slot - 21) / 2));
    }
    // Devices from "70" on keep their status memory saved automatically
    // once per connection when the configuration asks for it.
    device::DeviceRecord& d = ctx.device;
    if (v >= QLatin1String("70") &&
        config::text_to_number(ctx.config.AUTOSAVE).value_or(0) == 1.0 && !d.bulk_read_started) {
        d.bulk_read_started = true;
        ctx.ui.set_busy(true);
        d.bulk_texts.resize(41);
        ctx.status.restart();
        ctx.status.mark = status::ReadoutMark::pending;
        queue_command(ctx, cmd::read_status_record(1));
    }
}

} // namespace

bool queue_command(AppContext& ctx, const QByteArray& payload) {
    ProtocolState& p = ctx.protocol;
    if (p.queue_count >= send_queue_capacity) {
        show_msg(ctx, QStringLiteral("Outbuffer overflow"));
        reset_link_state(ctx);
        return true;
    }
    p.queue_count += 1;
    p.send_queue[static_cast<std::size_t>(p.queue_count)] = payload;
    return true;
}

void send_next(AppContext& ctx) {
    ProtocolState& p = ctx.protocol;
    if (p.queue_count < 1 || p.waiting_reply)
        return;
    const QByteArray head = p.send_queue[1];
    // A withheld command is dropped, not kept for later.
    std::move(p.send_queue.begin() + 2, p.send_queue.begin() + p.queue_count + 1,
              p.send_queue.begin() + 1);
    p.queue_count -= 1;
    if (!send_permitted(ctx, head))
        return;
    p.waiting_reply = true;
    p.last_command = head;
    send_frame(ctx, head);
}

void drop_queued(AppContext& ctx, char letter) {
    ProtocolState& p = ctx.protocol;
    const auto first = p.send_queue.begin() + 1;
    const auto kept = std::remove_if(first, first + p.queue_count, [letter](const QByteArray& c) {
        return c.startsWith(letter);
    });
    std::fill(kept, first + p.queue_count, QByteArray());
    p.queue_count = static_cast<int>(kept - first);
}

void timer1_tick(AppContext& ctx) {
    ProtocolState& p = ctx.protocol;
    if (p.timer_busy)
        return;
    const BusyGuard guard(p.timer_busy);
    p.tick_count = static_cast<qint32>(static_cast<quint32>(p.tick_count) + 1u);

    if (ctx.link.device_handle == 0) {
        // The silent reconnection runs on every page but the developer's,
        // where the device is opened and closed by hand and must stay as the
        // buttons left it. Deliberately wider than the original, which
        // waited for "Gerät" to be shown, while its message promises a
        // reconnection as soon as the device answers.
        if (ctx.ui.current_page() != Page::entwickler && link::open_device(ctx, true)) {
            if (ctx.hooks.device_found)
                ctx.hooks.device_found();
            connect_routine(ctx);
        }
        return;
    }

    // A job waiting for an answer looks first: it may give up its request
    // before the time-out below would give up the device.
    if (ctx.hooks.answer_watch)
        ctx.hooks.answer_watch();
    handle_timeout(ctx);
    receive(ctx);

    if (!ctx.device.live_valid) {
        send_next(ctx);
        return;
    }
    queue_periodic(ctx);
    send_next(ctx);
}

void reset_link_state(AppContext& ctx) {
    ProtocolState& p = ctx.protocol;
    p.rx_buffer.clear();
    p.queue_count = 0;
    p.waiting_reply = false;
    p.last_command.clear();
    p.retry_count = 0;
    device::clear_device_record(ctx.device);
    // The answer clock restarts now, so a fresh connection is not taken for a
    // silent one.
    ctx.device.last_answer_time = seconds_since_midnight(ctx.clock.now());
    ctx.live_history.clear();
    ctx.ui.device_record_changed();
    if (ctx.hooks.link_reset)
        ctx.hooks.link_reset();
    ctx.status.readout.reset(); // a readout in progress has ended with the link
    ctx.timer1.set_enabled(false);
    link::follow_connection(ctx);
}

void queue_initial_sequence(AppContext& ctx) {
    ctx.ui.set_busy(true);
    for (const QByteArray& payload : cmd::initial_sequence())
        queue_command(ctx, payload);
}

void connect_routine(AppContext& ctx) {
    // Whatever left the device in its boot loader, a connection starts afresh.
    ctx.link.boot_loader = false;
    ctx.link.loader_hardware.clear();
    {
        // The steps in between (reset, the device open, Timer1 not yet on)
        // are no state to tell anyone about.
        const link::QuietConnection quiet(ctx);
        reset_link_state(ctx);
        if (link::open_device(ctx, false))
            queue_initial_sequence(ctx);
        ctx.timer1.set_enabled(true);
    }
    link::follow_connection(ctx);
}

void resume_polling(AppContext& ctx) {
    if (ctx.link.device_handle != 0 && !ctx.link.boot_loader && !ctx.timer1.enabled())
        ctx.timer1.set_enabled(true);
}

void cmd_clear(AppContext& ctx) {
    ctx.ui.clear_out();
}

QString cmd_saveprotokoll(AppContext& ctx) {
    const QString path = ctx.user_dir + QStringLiteral("protokoll") +
                         ctx.clock.now().toString(QStringLiteral("yyyyMMddHHmmss")) +
                         QStringLiteral(".txt");
    // The log already holds its CR LF line ends; it goes out as one piece.
    if (!config::write_text_lines(path, {ctx.comm_log.comm_log})) {
        show_msg(ctx, ctx.language.text(6) + QLatin1Char(' ') + QDir::toNativeSeparators(path));
        return {};
    }
    return path;
}

void cmd_sendcommand(AppContext& ctx, const QByteArray& typed) {
    queue_command(ctx, typed);
}

} // namespace veltrako::protocol
