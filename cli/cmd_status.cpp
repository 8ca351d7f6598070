// status: read the device's status memory and print the table; --out FILE
// also writes it there, as the page's save button would.

#include "app_context.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "console_ui.h"
#include "progress_line.h"
#include "status/status_readout.h"
#include "status/status_table.h"

#include <QCommandLineParser>
#include <QDir>

namespace veltrako::cli {

namespace {

// Outcomes a person reads, in the chosen language.
constexpr int text_not_finished = 8111;
constexpr int text_not_written = 8114;
constexpr int text_no_arguments = 9240; // "%1 takes no arguments"
constexpr int text_no_file_name = 9293; // "--out needs a file name"

const QString out_option = QStringLiteral("out");

int run_status(CommandEnv& env) {
    if (!env.args.isEmpty())
        return usage_error(env, text_no_arguments, {QStringLiteral("status")});
    const QString out = env.parser.value(out_option);
    if (env.parser.isSet(out_option) && out.isEmpty())
        return usage_error(env, text_no_file_name);
    // The identity in the heading and the record layout come from the
    // device record, so it is read completely first.
    int code = env.session.connect_and_read_record();
    if (code != exit_ok)
        return code;
    const int shown = env.ui.status_tables_shown;
    {
        const ProgressLine line(env.ctx.status.readout, env.ctx.language);
        status::cmd_sysstatread_Click(env.ctx);
        code = env.session.run_until([&] { return env.ui.status_tables_shown > shown; });
    }
    if (env.ui.status_tables_shown == shown) {
        print_error(env.ctx.language.text(text_not_finished));
        return code == exit_ok ? exit_device : code;
    }
    const QString& table = env.ui.status_table;
    QStringList lines = table.split(QStringLiteral("\r\n"));
    if (!lines.isEmpty() && lines.last().isEmpty())
        lines.removeLast();
    for (const QString& line : lines)
        print_line(line);
    if (!out.isEmpty() && !status::write_status_table(out, table)) {
        print_error(env.ctx.language.text(text_not_written) + QLatin1Char(' ') +
                    QDir::toNativeSeparators(out));
        return exit_device;
    }
    return exit_ok;
}

} // namespace

CliCommand status_command() {
    CliCommand c;
    c.name = QStringLiteral("status");
    c.help = {{9290, 9291}}; // status [--out FILE]: read the status memory, print its table
    c.options = {{out_option, 9204, 9292}}; // FILE: status: also write the table to FILE
    c.run = run_status;
    return c;
}

} // namespace veltrako::cli
