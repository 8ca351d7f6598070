#pragma once
// Report fields given on the command line as KEY=VALUE (report --out, visit).

#include <QList>
#include <QString>
#include <QStringList>

#include <optional>
#include <utility>

namespace veltrako::config {
struct LanguageTables;
}
namespace veltrako::report {
struct Limits;
}

namespace veltrako::cli {

struct CommandEnv;

// The fields as report key and value, keys spelt as the report spells them.
// Nothing, with the reason in `error`, for an unknown key or a check box
// that is given anything but 0 or 1.
std::optional<QList<std::pair<QString, QString>>>
report_fields(const QStringList& args, const config::LanguageTables& language, QString* error);

// Why the measured values among `fields` cannot go into a report: a value
// that is no number (a decimal comma or point is fine), or a protection
// class other than I or II. Empty when they can.
QString measurement_problem(const QList<std::pair<QString, QString>>& fields,
                            const config::LanguageTables& language);

// The limits of veltrako2.ini into `limits`; a limit there that is no
// number is named on stderr and the result is false (a usage error).
bool take_report_limits(CommandEnv& env, report::Limits& limits);

// The fields of the command line and the limits of veltrako2.ini, every one
// checked before the device is touched; nothing, the first problem said on
// stderr, when one is wrong (a usage error).
std::optional<QList<std::pair<QString, QString>>> checked_report_input(CommandEnv& env,
                                                                       report::Limits& limits);

} // namespace veltrako::cli
