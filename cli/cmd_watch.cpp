// watch: one line of live values per live status, until time is up or the
// process is interrupted.

#include "app_context.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "console_ui.h"
#include "protocol/hex.h"
#include "protocol/response_interpreter.h"

#include <QCommandLineParser>
#include <QTimer>

namespace veltrako::cli {

namespace {

constexpr int text_no_arguments = 9240; // "%1 takes no arguments"
constexpr int text_bad_seconds = 9258;  // "--seconds takes a whole number of seconds"

QString fixed(double v, int decimals) {
    return QString::number(v, 'f', decimals);
}

int run_watch(CommandEnv& env) {
    if (!env.args.isEmpty())
        return usage_error(env, text_no_arguments, {QStringLiteral("watch")});
    int seconds = -1;
    if (env.parser.isSet(QStringLiteral("seconds"))) {
        bool ok = false;
        seconds = env.parser.value(QStringLiteral("seconds")).toInt(&ok);
        if (!ok || seconds < 0)
            return usage_error(env, text_bad_seconds);
    }
    AppContext& ctx = env.ctx;
    ctx.payload_handler = [&ctx](const QByteArray& payload) {
        protocol::dispatch_response(ctx, payload);
        const device::DeviceRecord& d = ctx.device;
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
    if (!env.session.connect())
        return exit_device;
    QTimer stop;
    bool time_up = false;
    if (seconds >= 0) {
        stop.setSingleShot(true);
        QObject::connect(&stop, &QTimer::timeout, [&] { time_up = true; });
        stop.start(seconds * 1000);
    }
    return env.session.run_until([&] { return time_up; });
}

} // namespace

CliCommand watch_command() {
    CliCommand c;
    c.name = QStringLiteral("watch");
    c.help = {{9255, 9256}}; // watch [--seconds N]: one line of live values per live status
    c.options = {{QStringLiteral("seconds"), 9208, 9257}}; // N: watch: stop after N seconds
    c.run = run_watch;
    return c;
}

} // namespace veltrako::cli
