#include "report_fields.h"

#include "cli_texts.h"
#include "report/report_record.h"

namespace veltrako::cli {

namespace {
constexpr int text_unknown_field = 9471; // "unknown report field \"%1\"; the fields are %2"
constexpr int text_check_box = 9472;     // "%1 takes 0 or 1, not \"%2\""
} // namespace

std::optional<QList<std::pair<QString, QString>>>
report_fields(const QStringList& args, const config::LanguageTables& language, QString* error) {
    QList<std::pair<QString, QString>> fields;
    for (const QString& arg : args) {
        const qsizetype eq = arg.indexOf(QLatin1Char('='));
        const int index = eq > 0 ? report::report_key_index(arg.left(eq)) : 0;
        if (index == 0) {
            *error = cli_text(language, text_unknown_field,
                              {arg.left(eq < 0 ? arg.size() : eq),
                               report::report_keys().mid(1).join(QStringLiteral(", "))});
            return std::nullopt;
        }
        const QString& key = report::report_keys()[index];
        const QString value = arg.mid(eq + 1);
        if (report::field_kind(key) == report::FieldKind::check && value != QLatin1String("0") &&
            value != QLatin1String("1")) {
            *error = cli_text(language, text_check_box, {key, value});
            return std::nullopt;
        }
        fields.append({key, value});
    }
    return fields;
}

} // namespace veltrako::cli
