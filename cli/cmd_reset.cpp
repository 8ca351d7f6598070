// reset: put a counter of the device back to zero, as the "Gerät" page's
// reset button does, and print what the device reports after the read-back.

#include "app_context.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "console_ui.h"
#include "device/settings.h"
#include "setting_plan.h"

namespace veltrako::cli {

namespace {

constexpr int text_usage = 9382; // "usage: reset hours"

int run_reset(CommandEnv& env) {
    if (env.args != QStringList{QStringLiteral("hours")})
        return usage_error(env, text_usage);
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
    c.help = {{9380, 9381}}; // reset hours: set the operating hours to 000000:00 (--yes)
    c.run = run_reset;
    return c;
}

} // namespace veltrako::cli
