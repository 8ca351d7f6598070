// history: what the archive keeps of the devices. Without a serial number
// one line per device; with one, one line per archived event, oldest first,
// or the month lines of its usage over every archived period (--usage), or
// the periods as CSV (--csv).

#include "app_context.h"
#include "archive/archive_history.h"
#include "archive/archive_service.h"
#include "archive/archive_store.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "console_ui.h"
#include "prescribed_hours.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace veltrako::cli {

namespace {

constexpr int text_unknown_sn = 9600;
constexpr int text_archive_off = 9601;
constexpr int text_unreadable = 9602;
constexpr int text_one_sn = 9620;
constexpr int text_needs_sn = 9621;
constexpr int text_usage_or_csv = 9622;

const QString usage_opt = QStringLiteral("usage");
const QString csv_opt = QStringLiteral("csv");

int unreadable(CommandEnv& env, const QString& error) {
    print_error(env.ctx.language.text(text_unreadable) + QLatin1Char(' ') + env.archive.path() +
                QStringLiteral(": ") + error);
    return exit_device;
}

int run_history(CommandEnv& env) {
    const QCommandLineParser& p = env.parser;
    if (env.args.size() > 1)
        return usage_error(env, text_one_sn);
    const bool per_month = p.isSet(usage_opt);
    const bool csv = p.isSet(csv_opt);
    if ((per_month || csv) && env.args.isEmpty())
        return usage_error(env, text_needs_sn);
    if (per_month && csv)
        return usage_error(env, text_usage_or_csv);
    if (per_month && !take_prescribed_hours(env))
        return exit_usage;
    if (!env.archive.enabled()) {
        print_error(env.ctx.language.text(text_archive_off));
        return exit_device;
    }
    const QString sn = env.args.value(0).trimmed();
    // Reading makes no file: where there is none, nothing has been archived.
    const bool exists = QFileInfo::exists(env.archive.path());
    int code = exit_ok;
    env.archive.run_now([&](archive::ArchiveStore& store) {
        QString error;
        if (sn.isEmpty()) {
            if (!exists)
                return;
            const auto devices = store.devices(&error);
            if (!devices) {
                code = unreadable(env, error);
                return;
            }
            for (const archive::DeviceRow& d : *devices)
                print_line(archive::device_line(d));
            return;
        }
        if (!exists || !store.has_device(sn, &error)) {
            code = error.isEmpty() ? exit_device : unreadable(env, error);
            if (error.isEmpty())
                print_error(env.ctx.language.text(text_unknown_sn) + QLatin1Char(' ') + sn);
            return;
        }
        if (per_month || csv) {
            compliance::Stamp running_end = 0;
            const auto periods = store.periods(sn, &error, &running_end);
            if (!periods) {
                code = unreadable(env, error);
                return;
            }
            const QStringList lines =
                csv ? archive::csv_lines(*periods)
                    : archive::usage_lines(*periods, env.ctx.compliance.prescribed_hours,
                                           env.ctx.compliance.adherence_share, QLocale(),
                                           running_end);
            for (const QString& line : lines)
                print_line(line);
            return;
        }
        const auto events = store.events(sn, &error);
        if (!events) {
            code = unreadable(env, error);
            return;
        }
        for (const archive::EventRow& e : *events)
            print_line(archive::event_line(e, env.ctx.language, QLocale()));
    });
    return code;
}

} // namespace

CliCommand history_command() {
    CliCommand c;
    c.name = QStringLiteral("history");
    c.help = {
        {9640, 9641}, // history: one line per archived device: SN|LP|last visit|...
        {9642, 9643}, // history SN: one line per archived event: yyyy-mm-dd hh:mm:ss|kind|summary
        {9644, 0},    // history SN --usage [--prescribed-hours H]
        {0, 9645},    // the month lines of compliance over every archived period
        {9646, 9647}, // history SN --csv: the archived periods: start,end,hours
    };
    c.options = {
        {usage_opt, 0, 9648}, // history: the month lines of the archived usage
        {csv_opt, 0, 9649},   // history: the archived periods as CSV
        prescribed_hours_option(),
        adherence_share_option(),
    };
    c.run = run_history;
    return c;
}

} // namespace veltrako::cli
