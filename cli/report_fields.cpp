#include "report_fields.h"

#include "app_context.h"
#include "cli_command.h"
#include "cli_texts.h"
#include "console_ui.h"
#include "report/report_measurements.h"
#include "report/report_record.h"

#include <QDir>

namespace veltrako::cli {

namespace {
constexpr int text_unknown_field = 9471;   // "unknown report field \"%1\"; the fields are %2"
constexpr int text_check_box = 9472;       // "%1 takes 0 or 1, not \"%2\""
constexpr int text_not_a_number = 9700;    // "%1 takes a number ..., not \"%2\""
constexpr int text_not_a_class = 9701;     // "t_Schutzklasse takes I or II, not \"%1\""
constexpr int text_limit_no_number = 9702; // "%1 in %2 is no number of zero or more: \"%3\""
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

QString measurement_problem(const QList<std::pair<QString, QString>>& fields,
                            const config::LanguageTables& language) {
    for (const auto& [key, value] : fields) {
        // An empty value is no measurement: the report leaves it open.
        if (value.trimmed().isEmpty())
            continue;
        if (key.startsWith(QLatin1String("m_")) && !report::parse_measurement(value))
            return cli_text(language, text_not_a_number, {key, value});
        if (key == QLatin1String(report::key_protection_class) &&
            report::parse_protection_class(value) == report::ProtectionClass::unknown)
            return cli_text(language, text_not_a_class, {value});
    }
    return {};
}

bool take_report_limits(CommandEnv& env, report::Limits& limits) {
    const auto problems = report::limit_problems(env.ctx.config);
    if (!problems.isEmpty()) {
        print_error(cli_text(env, text_limit_no_number,
                             {problems.first().first, QDir::toNativeSeparators(env.ctx.config_path),
                              problems.first().second}));
        return false;
    }
    limits = report::configured_limits(env.ctx.config);
    return true;
}

std::optional<QList<std::pair<QString, QString>>> checked_report_input(CommandEnv& env,
                                                                       report::Limits& limits) {
    QString error;
    auto fields = report_fields(env.args, env.ctx.language, &error);
    if (!fields) {
        print_error(error);
        return std::nullopt;
    }
    if (const QString problem = measurement_problem(*fields, env.ctx.language);
        !problem.isEmpty()) {
        print_error(problem);
        return std::nullopt;
    }
    if (!take_report_limits(env, limits))
        return std::nullopt;
    return fields;
}

} // namespace veltrako::cli
