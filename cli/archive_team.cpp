#include "archive_team.h"

#include "app_context.h"
#include "archive/archive_schema.h"
#include "archive/archive_server.h"
#include "archive/archive_service.h"
#include "archive/archive_store.h"
#include "archive/archive_sync.h"
#include "cli_command.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "console_ui.h"
#include "server_option.h"

namespace veltrako::cli {

namespace {
constexpr int text_archive_off = 9601;
constexpr int text_ready = 9751;
constexpr int text_unreachable = 9752;
// How long a sync waits for another laptop's transaction on the server.
constexpr int server_lock_wait_ms = 30000;
} // namespace

int init_server_verb(CommandEnv& env) {
    const std::optional<archive::ServerAddress> address = take_server(env);
    if (!address)
        return exit_usage;
    archive::ArchiveStore server(*address);
    QString error;
    if (!archive::init_server(server, &error)) {
        print_error(cli_text(env, text_unreachable) + QLatin1Char(' ') + server.where() +
                    QStringLiteral(": ") + error.simplified());
        return exit_device;
    }
    print_line(cli_text(env, text_ready) + QLatin1Char(' ') + server.where() +
               QStringLiteral(", ") + QString::number(archive::latest_version()));
    return exit_ok;
}

int sync_verb(CommandEnv& env) {
    const std::optional<archive::ServerAddress> address = take_server(env);
    if (!address)
        return exit_usage;
    // What the server lacks comes from the laptop's archive: without one
    // there is nothing to keep in step.
    if (!env.archive.enabled()) {
        print_error(cli_text(env, text_archive_off));
        return exit_device;
    }
    archive::SyncOptions options;
    options.now = env.ctx.clock.now().toSecsSinceEpoch();
    archive::SyncReport report;
    env.archive.run_now([&](archive::ArchiveStore& local) {
        archive::ArchiveStore server(*address);
        server.set_busy_timeout_ms(server_lock_wait_ms);
        report = archive::sync_archive(local, server, options);
    });
    // The result line is a contract scripts read: its words stay as they are.
    print_line(QStringLiteral("sync: sent %1, received %2").arg(report.sent).arg(report.received));
    if (report.complete)
        return exit_ok;
    print_error(archive::sync_problem_text(env.ctx.language, report, options));
    return exit_device;
}

} // namespace veltrako::cli
