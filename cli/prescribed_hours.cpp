#include "prescribed_hours.h"

#include "app_context.h"
#include "cli_command.h"
#include "cli_texts.h"
#include "console_ui.h"

#include <QCommandLineParser>

namespace veltrako::cli {

namespace {
const QString option_name = QStringLiteral("prescribed-hours");
const QString share_option = QStringLiteral("adherence-share");
// "--prescribed-hours takes a number from 0 to 24, not "%1""
constexpr int text_bad_option = 9436;
// "VERORDNUNG in %1 is no number from 0 to 24: "%2""
constexpr int text_bad_setting = 9437;
// "--adherence-share takes a percentage from 0 to 100, not "%1""
constexpr int text_share_option = 8520;
// "ADHERENZ_ANTEIL in %1 is no percentage from 0 to 100: "%2""
constexpr int text_share_ini = 8521;
} // namespace

CliOption prescribed_hours_option() {
    // H: compliance, visit: prescribed hours of use a day, 0 to 24 (default: VERORDNUNG ...)
    return {option_name, 9238, 9435};
}

CliOption adherence_share_option() {
    // P: compliance, visit: share of days in percent the best 30 days must meet ...
    return {share_option, 9439, 9438};
}

bool take_prescribed_hours(CommandEnv& env) {
    const bool given = env.parser.isSet(option_name);
    const QString text = given ? env.parser.value(option_name) : env.ctx.config.VERORDNUNG;
    const std::optional<double> hours = config::prescribed_hours(text);
    if (!hours) {
        print_error(given ? cli_text(env, text_bad_option, {text})
                          : cli_text(env, text_bad_setting, {env.ctx.config_path, text}));
        return false;
    }
    env.ctx.compliance.prescribed_hours = *hours;
    const bool share_given = env.parser.isSet(share_option);
    const QString share_text =
        share_given ? env.parser.value(share_option) : env.ctx.config.ADHERENZ_ANTEIL;
    const std::optional<double> share = config::adherence_share(share_text);
    if (!share) {
        print_error(share_given ? cli_text(env, text_share_option, {share_text})
                                : cli_text(env, text_share_ini, {env.ctx.config_path, share_text}));
        return false;
    }
    env.ctx.compliance.adherence_share = *share;
    return true;
}

} // namespace veltrako::cli
