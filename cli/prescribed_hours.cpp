#include "prescribed_hours.h"

#include "app_context.h"
#include "cli_command.h"
#include "console_ui.h"

#include <QCommandLineParser>

namespace veltrako::cli {

namespace {
const QString option_name = QStringLiteral("prescribed-hours");
} // namespace

QCommandLineOption prescribed_hours_option() {
    return {option_name,
            QStringLiteral("compliance, visit: prescribed hours of use a day, 0 to 24 "
                           "(default: VERORDNUNG in veltrako2.ini)"),
            QStringLiteral("H")};
}

bool take_prescribed_hours(CommandEnv& env) {
    const bool given = env.parser.isSet(option_name);
    const QString text = given ? env.parser.value(option_name) : env.ctx.config.VERORDNUNG;
    const std::optional<double> hours = config::prescribed_hours(text);
    if (!hours) {
        print_error(given ? QStringLiteral("--prescribed-hours takes a number from 0 to 24, not "
                                           "\"%1\"")
                                .arg(text)
                          : QStringLiteral("VERORDNUNG in %1 is no number from 0 to 24: \"%2\"")
                                .arg(env.ctx.config_path, text));
        return false;
    }
    env.ctx.compliance.prescribed_hours = *hours;
    return true;
}

} // namespace veltrako::cli
