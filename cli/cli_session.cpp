#include "cli_session.h"

#include "app_context.h"
#include "console_ui.h"
#include "device/parameter_values.h"
#include "link/device_connection.h"
#include "protocol/commands.h"
#include "protocol/hex.h"
#include "protocol/poll_cycle.h"
#include "protocol/response_interpreter.h"

#include <QEventLoop>
#include <QTimer>

#include <csignal>
#include <cstdio>

namespace veltrako::cli {

namespace {

volatile std::sig_atomic_t interrupted = 0;

extern "C" void on_interrupt(int) {
    interrupted = 1;
}

void print_line(const QString& line) {
    std::fprintf(stdout, "%s\n", qUtf8Printable(line));
    std::fflush(stdout);
}

QString fixed(double v, int decimals) {
    return QString::number(v, 'f', decimals);
}

} // namespace

void install_interrupt_handler() {
    std::signal(SIGINT, on_interrupt);
    std::signal(SIGTERM, on_interrupt);
}

bool CliSession::connect() {
    protocol::connect_routine(ctx_);
    // The desktop keeps looking for a device; a script wants to know now.
    return ctx_.link.device_handle != 0;
}

template <typename Done> int CliSession::run_until(Done done) {
    QEventLoop loop;
    ctx_.timer1.on_tick = [&] {
        protocol::timer1_tick(ctx_);
        if (ctx_.link.device_handle == 0)
            loop.exit(exit_device);
        else if (interrupted || done())
            loop.exit(exit_ok);
    };
    ctx_.timer1.set_enabled(true);
    const int code = loop.exec();
    ctx_.timer1.set_enabled(false);
    ctx_.timer1.on_tick = nullptr;
    return code;
}

int CliSession::info() {
    if (!connect())
        return exit_device;
    const protocol::ProtocolState& p = ctx_.protocol;
    const int code =
        run_until([&] { return ctx_.device.live_valid && p.queue_count == 0 && !p.waiting_reply; });
    if (code != exit_ok || !ctx_.device.live_valid)
        return exit_device;
    const QLocale c = QLocale::c();
    const QStringList& keys = device::parameter_keys();
    for (qsizetype i = 1; i < keys.size(); ++i)
        print_line(keys[i] + QLatin1Char('|') + device::parameter_value(ctx_.device, keys[i], c));
    for (const auto& [name, value] : device::live_fields(ctx_.device, c))
        print_line(name + QLatin1Char('|') + value);
    return exit_ok;
}

int CliSession::watch(int seconds) {
    ctx_.payload_handler = [this](const QByteArray& payload) {
        protocol::dispatch_response(ctx_, payload);
        const device::DeviceRecord& d = ctx_.device;
        if (payload.startsWith('I') && d.live_valid) {
            print_line(
                QStringLiteral("t=%1 O2=%2 flow=%3 set=%4 p=%5 gas=%6 comp=%7 V=%8 "
                               "valves=%9 phase=%10 alarms=%11 alarms2=%12 level=%13")
                    .arg(fixed(d.live_time, 2), fixed(d.O2, 0), fixed(d.VOLUMENSTROM, 2),
                         fixed(d.SOLL_VOLUMENSTROM, 2), fixed(d.druck, 0), fixed(d.GASTEMP, 1),
                         fixed(d.KOMPRESSORTEMP, 0), fixed(d.spannung, 1),
                         protocol::hex_digits(d.ventile, 2))
                    .arg(d.phase)
                    .arg(protocol::hex_digits(d.alarme, 2), protocol::hex_digits(d.alarme2, 2))
                    .arg(d.alarmstufe));
        }
    };
    if (!connect())
        return exit_device;
    QTimer stop;
    bool time_up = false;
    if (seconds >= 0) {
        stop.setSingleShot(true);
        QObject::connect(&stop, &QTimer::timeout, [&] { time_up = true; });
        stop.start(seconds * 1000);
    }
    return run_until([&] { return time_up; });
}

int CliSession::send(const QList<QByteArray>& payloads) {
    // Only the identity goes out first: who the device is decides which
    // commands it may receive. The rest of the initial requests would only
    // mix their answers into the ones asked for.
    protocol::reset_link_state(ctx_);
    if (!link::open_device(ctx_, false))
        return exit_device;
    protocol::queue_command(ctx_, protocol::cmd::identity());
    const protocol::ProtocolState& p = ctx_.protocol;
    int code = run_until([&] { return !ctx_.device.SW.isEmpty() && !p.waiting_reply; });
    if (code != exit_ok)
        return code;

    int queued = 0;
    int answered = 0;
    ctx_.payload_handler = [&](const QByteArray& payload) {
        if (answered++ < queued)
            print_line(protocol::hex_dump(payload).trimmed());
        protocol::dispatch_response(ctx_, payload);
    };
    for (const QByteArray& payload : payloads) {
        if (!protocol::send_permitted(ctx_, payload)) {
            print_error(QStringLiteral("not sent: device version %1 does not take \"%2\"")
                            .arg(protocol::version_code(ctx_), QString::fromLatin1(payload)));
            continue;
        }
        protocol::queue_command(ctx_, payload);
        ++queued;
    }
    code = run_until([&] { return answered >= queued && !p.waiting_reply; });
    ctx_.payload_handler = [this](const QByteArray& payload) {
        protocol::dispatch_response(ctx_, payload);
    };
    if (code != exit_ok)
        return code;
    return queued == payloads.size() ? exit_ok : exit_device;
}

} // namespace veltrako::cli
