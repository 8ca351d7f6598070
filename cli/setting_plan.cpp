#include "setting_plan.h"

#include "app_context.h"
#include "cli_session.h"
#include "console_ui.h"

namespace veltrako::cli {

namespace {

// An outcome a person reads, in the chosen language.
constexpr int text_not_taken = 8117;

} // namespace

int run_setting_plan(CommandEnv& env, const SettingPlan& plan) {
    int code = env.session.connect_and_read_record();
    if (code != exit_ok)
        return code;
    if (plan.refuse) {
        if (const QString reason = plan.refuse(env.ctx.device); !reason.isEmpty()) {
            print_error(reason);
            return exit_usage;
        }
    }
    plan.change(env.ctx);
    code = env.session.drain_queue();
    if (code != exit_ok)
        return code;
    const auto [lines, taken] = plan.result(env.ctx);
    for (const auto& [key, value] : lines)
        print_line(key + QLatin1Char('|') + value);
    if (!taken) {
        print_error(env.ctx.language.text(text_not_taken));
        return exit_device;
    }
    return exit_ok;
}

} // namespace veltrako::cli
