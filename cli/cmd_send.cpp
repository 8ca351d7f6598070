// send: raw payloads to the device, each answer printed as a hex dump.

#include "app_context.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "console_ui.h"
#include "link/device_connection.h"
#include "payload_text.h"
#include "protocol/commands.h"
#include "protocol/hex.h"
#include "protocol/poll_cycle.h"
#include "protocol/response_interpreter.h"

namespace veltrako::cli {

namespace {

// An outcome a person reads, in the chosen language: %1 the device's
// version, %2 the payload.
constexpr int text_not_sent = 8116;
constexpr int text_not_a_payload = 9273; // "not a payload: \"%1\""
constexpr int text_no_payload = 9274;    // "send: no payload given"

int run_send(CommandEnv& env) {
    QList<QByteArray> payloads;
    for (const QString& arg : env.args) {
        const auto payload = parse_payload_argument(arg);
        if (!payload)
            return usage_error(env, text_not_a_payload, {arg});
        payloads << *payload;
    }
    if (payloads.isEmpty())
        return usage_error(env, text_no_payload);

    AppContext& ctx = env.ctx;
    // Only the identity goes out first: who the device is decides which
    // commands it may receive. The rest of the initial requests would only
    // mix their answers into the ones asked for.
    protocol::reset_link_state(ctx);
    if (!link::open_device(ctx, false))
        return exit_device;
    protocol::queue_command(ctx, protocol::cmd::identity());
    const protocol::ProtocolState& p = ctx.protocol;
    int code = env.session.run_until([&] { return !ctx.device.SW.isEmpty() && !p.waiting_reply; });
    if (code != exit_ok)
        return code;

    int queued = 0;
    int answered = 0;
    ctx.payload_handler = [&](const QByteArray& payload) {
        if (answered++ < queued)
            print_line(protocol::hex_dump(payload).trimmed());
        protocol::dispatch_response(ctx, payload);
    };
    for (const QByteArray& payload : payloads) {
        if (!protocol::send_permitted(ctx, payload)) {
            print_error(ctx.language.text(text_not_sent)
                            .arg(protocol::version_code(ctx), QString::fromLatin1(payload)));
            continue;
        }
        protocol::queue_command(ctx, payload);
        ++queued;
    }
    code = env.session.run_until([&] { return answered >= queued && !p.waiting_reply; });
    ctx.payload_handler = [&ctx](const QByteArray& payload) {
        protocol::dispatch_response(ctx, payload);
    };
    if (code != exit_ok)
        return code;
    return queued == payloads.size() ? exit_ok : exit_device;
}

} // namespace

CliCommand send_command() {
    CliCommand c;
    c.name = QStringLiteral("send");
    // send PAYLOAD...: send payloads (hex bytes "65 00 80 07" or text "I";
    // "hex:"/"text:" in front decides) and print each answer
    c.help = {{9270, 9271}, {0, 9272}};
    c.run = run_send;
    return c;
}

} // namespace veltrako::cli
