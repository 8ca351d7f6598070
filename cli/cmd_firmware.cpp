// firmware: programs a firmware file through the device's boot loader, with
// the same checks and question as the menu entry; --yes confirms.

#include "app_context.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "console_ui.h"
#include "firmware/firmware_update.h"

#include "device/device_view.h"

#include <QLocale>

namespace veltrako::cli {

namespace {

constexpr int text_one_file = 9312; // "firmware takes one argument: the .ae6 file"
constexpr int text_block = 9313;    // "block %1/%2, eta %3"

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
    const int code = env.session.connect_and_read_record();
    if (code != exit_ok)
        return code;
    // The file comes from the command line: it is the dialog's answer.
    env.ui.preset_file = env.args.first();
    StderrProgress progress(env.ctx.language);
    firmware::UpdateResult result = firmware::UpdateResult::left;
    // Served as in the window: after the update the program connects again
    // and waits for the device to say which software it now runs.
    env.session.serve_during([&] { result = firmware::firmware_update(env.ctx, progress); });
    if (env.ui.unanswered_question())
        return exit_usage;
    return result == firmware::UpdateResult::done ? exit_ok : exit_device;
}

} // namespace

CliCommand firmware_command() {
    CliCommand c;
    c.name = QStringLiteral("firmware");
    // firmware FILE: program an .ae6 firmware file (--yes confirms); progress on stderr
    c.help = {{9310, 9311}};
    c.run = run_firmware;
    return c;
}

} // namespace veltrako::cli
