#include "cli_session.h"

#include "app_context.h"
#include "console_ui.h"
#include "protocol/poll_cycle.h"

#include <QEventLoop>

#include <csignal>
#include <cstdio>

namespace veltrako::cli {

namespace {

volatile std::sig_atomic_t interrupt_seen = 0;

extern "C" void on_interrupt(int) {
    interrupt_seen = 1;
}

} // namespace

void print_line(const QString& line) {
    std::fprintf(stdout, "%s\n", qUtf8Printable(line));
    std::fflush(stdout);
}

void install_interrupt_handler() {
    std::signal(SIGINT, on_interrupt);
    std::signal(SIGTERM, on_interrupt);
}

bool CliSession::interrupted() {
    return interrupt_seen != 0;
}

bool CliSession::connect() {
    protocol::connect_routine(ctx_);
    // The desktop keeps looking for a device; a script wants to know now.
    return ctx_.link.device_handle != 0;
}

int CliSession::run_until(const std::function<bool()>& done) {
    // Nothing polls a device that is gone or waits in its boot loader: the
    // condition is all there is to look at.
    protocol::resume_polling(ctx_);
    if (!ctx_.timer1.enabled())
        return ctx_.link.device_handle != 0 && done() ? exit_ok : exit_device;
    QEventLoop loop;
    ctx_.timer1.on_tick = [&] {
        protocol::timer1_tick(ctx_);
        if (ctx_.link.device_handle == 0)
            loop.exit(exit_device);
        else if (interrupt_seen || done())
            loop.exit(exit_ok);
        else if (!ctx_.timer1.enabled()) // a device in its boot loader, an overflow
            loop.exit(exit_device);
    };
    const int code = loop.exec();
    // Timer1 stays as the ticks left it: on between the command's steps, as
    // in the window, only without anything to do. Off, it would read as a
    // poll cycle stopped for good.
    ctx_.timer1.on_tick = nullptr;
    return code;
}

int CliSession::connect_and_read_record() {
    if (!connect())
        return exit_device;
    const protocol::ProtocolState& p = ctx_.protocol;
    const int code =
        run_until([&] { return ctx_.device.live_valid && p.queue_count == 0 && !p.waiting_reply; });
    if (code != exit_ok || !ctx_.device.live_valid)
        return exit_device;
    return exit_ok;
}

void CliSession::serve_during(const std::function<void()>& action) {
    ctx_.timer1.on_tick = [this] { protocol::timer1_tick(ctx_); };
    protocol::resume_polling(ctx_);
    action();
    ctx_.timer1.on_tick = nullptr;
}

int CliSession::drain_queue() {
    const protocol::ProtocolState& p = ctx_.protocol;
    return run_until([&] { return p.queue_count == 0 && !p.waiting_reply; });
}

} // namespace veltrako::cli
