// archive: the archive file itself. "import PATH..." reads visit folders,
// compliance files, status tables and report files into it, each file in
// one transaction; "check" runs SQLite's integrity check and the archive's
// own rules. "init-server" and "sync" work with the team's server
// (archive_team.cpp).

#include "app_context.h"
#include "archive/archive_event.h"
#include "archive/archive_import.h"
#include "archive/archive_service.h"
#include "archive/archive_store.h"
#include "archive_team.h"
#include "cli_session.h"
#include "commands.h"
#include "console_ui.h"
#include "server_option.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>

namespace veltrako::cli {

namespace {

constexpr int text_archive_off = 9601;
constexpr int text_unreadable = 9602;
constexpr int text_not_imported = 9603;
constexpr int text_problem = 9604;
constexpr int text_sound = 9605;
constexpr int text_archive_usage = 9623;
constexpr int text_import_paths = 9624;
constexpr int text_no_such_file = 9657; // "no such file"

const QString sn_opt = QStringLiteral("sn");

int import_paths(CommandEnv& env, const QStringList& paths) {
    if (paths.isEmpty()) {
        print_error(env.ctx.language.text(text_import_paths));
        return exit_usage;
    }
    archive::ImportRequest request{paths, env.parser.value(sn_opt), archive::this_writer()};
    const std::vector<archive::ImportedFile> files = archive::read_import(request);
    int periods = 0, new_periods = 0, entries = 0, reports = 0;
    int code = exit_ok;
    const auto refuse = [&](const QString& path, const QString& why) {
        print_error(env.ctx.language.text(text_not_imported) + QLatin1Char(' ') +
                    QDir::toNativeSeparators(path) + QStringLiteral(": ") + why);
        code = exit_device;
    };
    env.archive.run_now([&](archive::ArchiveStore& store) {
        for (const archive::ImportedFile& f : files) {
            if (!f.error.isEmpty()) {
                refuse(f.path, f.error);
                continue;
            }
            std::vector<archive::EventAdded> added;
            QString error;
            if (!store.write(f.events, &added, &error)) {
                refuse(f.path, error);
                continue;
            }
            for (std::size_t i = 0; i < added.size(); ++i) {
                periods += added[i].periods;
                new_periods += added[i].new_periods;
                entries += added[i].new_entries;
                reports += added[i].added && f.events[i].kind == QLatin1String(archive::kind_report)
                               ? 1
                               : 0;
            }
        }
    });
    // The result line is a contract scripts read: its words stay as they are.
    print_line(QStringLiteral("imported: %1 periods (%2 new), %3 status entries, %4 reports")
                   .arg(periods)
                   .arg(new_periods)
                   .arg(entries)
                   .arg(reports));
    return code;
}

int check(CommandEnv& env) {
    int code = exit_ok;
    env.archive.run_now([&](archive::ArchiveStore& store) {
        QString error;
        if (!QFileInfo::exists(store.path())) {
            error = env.ctx.language.text(text_no_such_file);
        } else if (const auto problems = store.check(&error)) {
            for (const QString& problem : *problems)
                print_error(env.ctx.language.text(text_problem) + QLatin1Char(' ') + problem);
            if (!problems->isEmpty()) {
                code = exit_device;
                return;
            }
            print_line(env.ctx.language.text(text_sound) + QLatin1Char(' ') +
                       QDir::toNativeSeparators(store.path()));
            return;
        }
        print_error(env.ctx.language.text(text_unreadable) + QLatin1Char(' ') +
                    QDir::toNativeSeparators(store.path()) + QStringLiteral(": ") + error);
        code = exit_device;
    });
    return code;
}

int run_archive(CommandEnv& env) {
    const QString what = env.args.value(0);
    const QStringList alone{QStringLiteral("check"), QStringLiteral("init-server"),
                            QStringLiteral("sync")};
    if ((what != QLatin1String("import") && !alone.contains(what)) ||
        (alone.contains(what) && env.args.size() > 1)) {
        print_error(env.ctx.language.text(text_archive_usage));
        return exit_usage;
    }
    if (what == QLatin1String("init-server"))
        return init_server_verb(env);
    if (what == QLatin1String("sync"))
        return sync_verb(env);
    if (!env.archive.enabled()) {
        print_error(env.ctx.language.text(text_archive_off));
        return exit_device;
    }
    return what == QLatin1String("import") ? import_paths(env, env.args.mid(1)) : check(env);
}

} // namespace

CliCommand archive_command() {
    CliCommand c;
    c.name = QStringLiteral("archive");
    c.help = {
        {9650, 0},    // archive import PATH... [--sn SN]
        {0, 9651},    // read visit folders, compliance files, status tables and report
        {0, 9652},    // files into the archive: imported: P periods (N new), S status ...
        {9653, 9654}, // archive check: the archive's integrity and its own rules
        {9754, 0},    // archive init-server [--server URI]
        {0, 9755},    // create or migrate the team archive on a PostgreSQL server,
        {0, 9756},    // with the roles veltrako2_technician and veltrako2_office
        {9757, 0},    // archive sync [--server URI]
        {0, 9758},    // send the server what it lacks, fetch what other laptops added:
        {0, 9759},    // sync: sent N, received M
    };
    // SN: archive import: the serial number of compliance files that name no device
    c.options = {{sn_opt, 9655, 9656}, server_option()};
    c.run = run_archive;
    return c;
}

} // namespace veltrako::cli
