// firmware: programs a firmware file through the device's boot loader, with
// the same checks and question as the menu entry; --yes confirms. A device
// found waiting in its boot loader is programmed too; when its loader does
// not say which hardware it runs on, only with --force-hardware, and with a
// warning.

#include "app_context.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "console_ui.h"
#include "firmware/firmware_update.h"
#include "protocol/protocol_state.h"

#include "device/device_view.h"

#include <QCommandLineParser>
#include <QLocale>

namespace veltrako::cli {

namespace {

constexpr int text_one_file = 9312; // "firmware takes one argument: the .ae6 file"
constexpr int text_block = 9313;    // "block %1/%2, eta %3"
// "nothing sent: --force-hardware programs the file without this check"
constexpr int text_force_hardware = 9315;

const QString force_option = QStringLiteral("force-hardware");

// "block i/n, eta m:ss" on stderr: the first and the last block, and one
// line a second in between, so that a log stays readable.
class StderrProgress final : public firmware::UpdateProgress {
public:
    explicit StderrProgress(const config::LanguageTables& language) : language_(language) {}
    void begin(int) override { printed_ms_ = -1; }
    void block(const firmware::ProgressStep& step) override {
        const bool due =
            printed_ms_ < 0 || step.block == step.blocks || step.elapsed_ms - printed_ms_ >= 1000;
        if (!due)
            return;
        printed_ms_ = step.elapsed_ms;
        const QLocale locale;
        print_error(cli_text(language_, text_block,
                             {device::format_value(step.block, 0, locale),
                              device::format_value(step.blocks, 0, locale),
                              firmware::minutes_seconds(step.remaining_ms)}));
    }
    void end() override {}

private:
    const config::LanguageTables& language_;
    qint64 printed_ms_ = -1;
};

int run_firmware(CommandEnv& env) {
    if (env.args.size() != 1)
        return usage_error(env, text_one_file);
    AppContext& ctx = env.ctx;
    if (!env.session.connect())
        return exit_device;
    // The record complete, or the device found waiting in its boot loader:
    // that one has no identity to read and is programmed all the same.
    const protocol::ProtocolState& p = ctx.protocol;
    const int code = env.session.run_until([&] {
        return ctx.link.boot_loader ||
               (ctx.device.live_valid && p.queue_count == 0 && !p.waiting_reply);
    });
    if (code != exit_ok)
        return code;
    // The file comes from the command line: it is the dialog's answer.
    env.ui.preset_file = env.args.first();
    firmware::UpdateOptions options;
    options.unknown_hardware = env.parser.isSet(force_option) ? firmware::UnknownHardware::program
                                                              : firmware::UnknownHardware::refuse;
    StderrProgress progress(ctx.language);
    firmware::UpdateResult result = firmware::UpdateResult::left;
    // Served as in the window: after the update the program connects again
    // and waits for the device to say which software it now runs.
    env.session.serve_during([&] { result = firmware::firmware_update(ctx, progress, options); });
    if (result == firmware::UpdateResult::hardware_unknown)
        return usage_error(env, text_force_hardware);
    if (env.ui.unanswered_question())
        return exit_usage;
    return result == firmware::UpdateResult::done ? exit_ok : exit_device;
}

} // namespace

CliCommand firmware_command() {
    CliCommand c;
    c.name = QStringLiteral("firmware");
    c.help = {
        {9310, 9311}, // firmware FILE [--force-hardware]: program an .ae6 firmware file ...
        {0, 9316},    // also a device waiting in its boot loader; --force-hardware when
        {0, 9317},    // its loader does not say which hardware it runs on
    };
    // firmware: program a device whose boot loader does not say which hardware it runs on
    c.options = {{force_option, 0, 9314}};
    c.run = run_firmware;
    return c;
}

} // namespace veltrako::cli
