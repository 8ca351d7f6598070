#include "prescribed_hours.h"

#include "app_context.h"
#include "cli_command.h"
#include "cli_texts.h"
#include "console_ui.h"

#include <QCommandLineParser>

namespace veltrako::cli {

namespace {
const QString option_name = QStringLiteral("prescribed-hours");
constexpr int text_bad_option =
    9436; // "--prescribed-hours takes a number from 0 to 24, not \"%1\""
constexpr int text_bad_setting = 9437; // "VERORDNUNG in %1 is no number from 0 to 24: \"%2\""
} // namespace

CliOption prescribed_hours_option() {
    // H: compliance, visit: prescribed hours of use a day, 0 to 24 (default: VERORDNUNG ...)
    return {option_name, 9238, 9435};
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
    return true;
}

} // namespace veltrako::cli
