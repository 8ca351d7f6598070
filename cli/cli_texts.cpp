#include "cli_texts.h"

#include "app_context.h"
#include "cli_command.h"
#include "cli_session.h"
#include "config/language.h"
#include "console_ui.h"

namespace veltrako::cli {

QString fill_in(const QString& pattern, const QStringList& args) {
    QString out;
    out.reserve(pattern.size());
    for (qsizetype i = 0; i < pattern.size(); ++i) {
        const QChar c = pattern.at(i);
        qsizetype end = i + 1;
        while (c == QLatin1Char('%') && end < pattern.size() && end - i <= 2 &&
               pattern.at(end).isDigit())
            ++end;
        const int index = end > i + 1 ? pattern.mid(i + 1, end - i - 1).toInt() : 0;
        if (index >= 1 && index <= args.size()) {
            out += args[index - 1];
            i = end - 1;
        } else {
            out += c;
        }
    }
    return out;
}

QString cli_text(const config::LanguageTables& language, int n, const QStringList& args) {
    QString text = language.text(n);
    text.replace(QChar(0x00A6), QLatin1Char('|'));
    return fill_in(text, args);
}

QString cli_text(const CommandEnv& env, int n, const QStringList& args) {
    return cli_text(env.ctx.language, n, args);
}

int usage_error(const CommandEnv& env, int n, const QStringList& args) {
    print_error(cli_text(env, n, args));
    return exit_usage;
}

} // namespace veltrako::cli
