// reset: put a counter of the device back to zero, as the "Gerät" page's
// reset button does, and print what the device reports after the read-back.

#include "app_context.h"
#include "cli_session.h"
#include "commands.h"
#include "console_ui.h"
#include "device/settings.h"
#include "setting_plan.h"

namespace veltrako::cli {

namespace {

int run_reset(CommandEnv& env) {
    if (env.args != QStringList{QStringLiteral("hours")}) {
        print_error(QStringLiteral("usage: reset hours"));
        return exit_usage;
    }
    SettingPlan plan;
    plan.change = [](AppContext& ctx) { return device::cmd_resetbstd_Click(ctx); };
    plan.result = [](const AppContext& ctx) {
        return Lines{{QStringLiteral("BSTD"), ctx.device.BSTD}};
    };
    return run_setting_plan(env, plan);
}

} // namespace

CliCommand reset_command() {
    CliCommand c;
    c.name = QStringLiteral("reset");
    c.help = QStringLiteral("reset hours          set the operating hours to 000000:00 (--yes)");
    c.run = run_reset;
    return c;
}

} // namespace veltrako::cli
