// firmware: programs a firmware file through the device's boot loader, with
// the same checks and question as the menu entry; --yes confirms.

#include "app_context.h"
#include "cli_session.h"
#include "commands.h"
#include "console_ui.h"
#include "firmware/firmware_update.h"

#include "device/device_view.h"

#include <QFileInfo>
#include <QLocale>

namespace veltrako::cli {

namespace {

// "block i/n, eta m:ss" on stderr: the first and the last block, and one
// line a second in between, so that a log stays readable.
class StderrProgress final : public firmware::UpdateProgress {
public:
    void begin(int) override { printed_ms_ = -1; }
    void block(const firmware::ProgressStep& step) override {
        const bool due =
            printed_ms_ < 0 || step.block == step.blocks || step.elapsed_ms - printed_ms_ >= 1000;
        if (!due)
            return;
        printed_ms_ = step.elapsed_ms;
        const QLocale locale;
        print_error(QStringLiteral("block %1/%2, eta %3")
                        .arg(device::format_value(step.block, 0, locale),
                             device::format_value(step.blocks, 0, locale),
                             firmware::minutes_seconds(step.remaining_ms)));
    }
    void end() override {}

private:
    qint64 printed_ms_ = -1;
};

int run_firmware(CommandEnv& env) {
    if (env.args.size() != 1) {
        print_error(QStringLiteral("firmware takes one argument: the .ae6 file"));
        return exit_usage;
    }
    const int code = env.session.connect_and_read_record();
    if (code != exit_ok)
        return code;
    // The file comes from the command line: there is no dialog folder to
    // remember, and the configuration beside the program stays as it is.
    const QString path = env.args.first();
    env.ui.preset_file = path;
    env.ctx.config.INITDIR = QFileInfo(path).absolutePath() + QLatin1Char('/');
    StderrProgress progress;
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
    c.help = QStringLiteral(
        "firmware FILE        program an .ae6 firmware file (--yes confirms); progress on stderr");
    c.run = run_firmware;
    return c;
}

} // namespace veltrako::cli
