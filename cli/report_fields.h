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

namespace veltrako::cli {

// The fields as report key and value, keys spelt as the report spells them.
// Nothing, with the reason in `error`, for an unknown key or a check box
// that is given anything but 0 or 1.
std::optional<QList<std::pair<QString, QString>>>
report_fields(const QStringList& args, const config::LanguageTables& language, QString* error);

} // namespace veltrako::cli
