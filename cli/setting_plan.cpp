#include "setting_plan.h"

#include "app_context.h"
#include "cli_session.h"
#include "console_ui.h"

namespace veltrako::cli {

namespace {

// An outcome a person reads, in the chosen language.
constexpr int text_nothing_written = 8117;

} // namespace

int run_setting_plan(CommandEnv& env, const SettingPlan& plan) {
    const int code = env.session.connect_and_read_record();
    if (code != exit_ok)
        return code;
    if (plan.refuse) {
        if (const QString reason = plan.refuse(env.ctx.device); !reason.isEmpty()) {
            print_error(reason);
            return exit_usage;
        }
    }
    device::WriteOutcome outcome = device::WriteOutcome::not_written;
    env.session.serve_during([&] { outcome = plan.change(env.ctx); });
    if (env.ui.unanswered_question())
        return exit_usage;
    if (outcome == device::WriteOutcome::not_written) {
        print_error(env.ctx.language.text(text_nothing_written));
        return exit_ok;
    }
    if (env.ctx.link.device_handle == 0)
        return exit_device;
    for (const auto& [key, value] : plan.result(env.ctx))
        print_line(key + QLatin1Char('|') + value);
    return outcome == device::WriteOutcome::confirmed ? exit_ok : exit_device;
}

} // namespace veltrako::cli
