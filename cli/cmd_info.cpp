// info: the device record as KEY|VALUE lines.

#include "app_context.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "console_ui.h"
#include "device/parameter_values.h"

namespace veltrako::cli {

namespace {

constexpr int text_no_arguments = 9240; // "%1 takes no arguments"

int run_info(CommandEnv& env) {
    if (!env.args.isEmpty())
        return usage_error(env, text_no_arguments, {QStringLiteral("info")});
    const int code = env.session.connect_and_read_record();
    if (code != exit_ok)
        return code;
    const QLocale c = QLocale::c();
    const QStringList& keys = device::parameter_keys();
    for (qsizetype i = 1; i < keys.size(); ++i)
        print_line(keys[i] + QLatin1Char('|') +
                   device::parameter_value(env.ctx.device, keys[i], c));
    for (const auto& [name, value] : device::live_fields(env.ctx.device, c))
        print_line(name + QLatin1Char('|') + value);
    return exit_ok;
}

} // namespace

CliCommand info_command() {
    CliCommand c;
    c.name = QStringLiteral("info");
    c.help = {{9250, 9251}}; // info: connect, read the device, print KEY|VALUE lines
    c.run = run_info;
    return c;
}

} // namespace veltrako::cli
