// info: the device record as KEY|VALUE lines.

#include "app_context.h"
#include "cli_session.h"
#include "commands.h"
#include "console_ui.h"
#include "device/parameter_values.h"

namespace veltrako::cli {

namespace {

int run_info(CommandEnv& env) {
    if (!env.args.isEmpty()) {
        print_error(QStringLiteral("info takes no arguments"));
        return exit_usage;
    }
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
    c.help = QStringLiteral("info                 connect, read the device, print KEY|VALUE lines");
    c.run = run_info;
    return c;
}

} // namespace veltrako::cli
