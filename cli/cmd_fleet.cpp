// fleet: every device in the team's server archive, one line each,
// "SN|last visit yyyy-mm-dd|BSTD at it|due reasons"; --due only the devices
// with a reason (archive_fleet.h says which).

#include "app_context.h"
#include "archive/archive_fleet.h"
#include "archive/archive_store.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "console_ui.h"
#include "server_option.h"

#include <QCommandLineParser>

namespace veltrako::cli {

namespace {

constexpr int text_bad_rules = 8966;   // "WARTUNG_MONATE and WARTUNG_STUNDEN take whole ..."
constexpr int text_unreachable = 9752; // "cannot reach the team archive"
constexpr int text_fleet_usage = 9753; // "fleet takes no arguments, only --due and --server"

const QString due_opt = QStringLiteral("due");

int run_fleet(CommandEnv& env) {
    if (!env.args.isEmpty())
        return usage_error(env, text_fleet_usage);
    QString bad;
    const std::optional<archive::MaintenanceRules> rules = archive::maintenance_rules(
        env.ctx.config.WARTUNG_MONATE, env.ctx.config.WARTUNG_STUNDEN, &bad);
    if (!rules) {
        print_error(cli_text(env, text_bad_rules) + QLatin1Char(' ') + bad);
        return exit_usage;
    }
    const std::optional<archive::ServerAddress> address = take_server(env);
    if (!address)
        return exit_usage;
    archive::ArchiveStore server(*address);
    QString error;
    const auto rows = archive::read_fleet(server, *rules, env.ctx.clock.now().date(), &error);
    if (!rows) {
        print_error(cli_text(env, text_unreachable) + QLatin1Char(' ') + server.where() +
                    QStringLiteral(": ") + error.simplified());
        return exit_device;
    }
    const bool due_only = env.parser.isSet(due_opt);
    for (const archive::FleetRow& row : *rows)
        if (!due_only || !row.reasons.isEmpty())
            print_line(archive::fleet_line(row));
    return exit_ok;
}

} // namespace

CliCommand fleet_command() {
    CliCommand c;
    c.name = QStringLiteral("fleet");
    c.help = {
        {9762, 0}, // fleet [--due] [--server URI]
        {0, 9763}, // one line per device in the team archive: SN|last visit|BSTD at it|due ...
        {0, 9764}, // reasons (visit, hours, adherence); --due only the devices that are due
    };
    // fleet: only the devices that are due
    c.options = {{due_opt, 0, 9765}, server_option()};
    c.run = run_fleet;
    return c;
}

} // namespace veltrako::cli
