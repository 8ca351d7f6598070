#include "config/language.h"

#include "config/text_file.h"
#include "user_interface.h"

#include <QStringList>

#include <algorithm>

namespace veltrako::config {

namespace {

constexpr int max_font_size = 255;

// A whole number in [0, max]; -1 otherwise.
int bounded_number(const QString& field, int max) {
    bool ok = false;
    const int n = field.trimmed().toInt(&ok);
    return ok && n >= 0 && n <= max ? n : -1;
}

} // namespace

QString LanguageTables::text(int n) const {
    if (n < 0 || n >= language_entries)
        return {};
    return language_text[static_cast<std::size_t>(n)];
}

quint8 LanguageTables::size(int n) const {
    if (n < 0 || n >= language_entries)
        return 0;
    return language_size[static_cast<std::size_t>(n)];
}

namespace {

bool load_failed(UserInterface& ui) {
    ui.show_msg(QStringLiteral("Language File could not be loaded."));
    return false;
}

void clear_tables(LanguageTables& tables) {
    std::fill(tables.language_text.begin(), tables.language_text.end(), QString());
    std::fill(tables.language_size.begin(), tables.language_size.end(), quint8{0});
}

} // namespace

bool load_language(LanguageTables& tables, const QString& path, UserInterface& ui) {
    // Our language files are UTF-8 (texts such as "Gerät" and "Prüfer");
    // read_text_lines decodes them so.
    const std::optional<QStringList> lines = read_text_lines(path);
    if (!lines) {
        clear_tables(tables);
        return load_failed(ui);
    }
    return load_language_lines(tables, *lines, ui);
}

bool load_language_lines(LanguageTables& tables, const QStringList& lines, UserInterface& ui) {
    clear_tables(tables);
    for (const QString& raw : lines) {
        const QString line = raw.trimmed();
        if (line.isEmpty() || line.startsWith(QLatin1Char('*')))
            continue;
        const QStringList fields = line.split(QLatin1Char('|'));
        if (fields.size() < 3)
            return load_failed(ui);
        const int number = bounded_number(fields[0], language_entries - 1);
        const int size = bounded_number(fields[1], max_font_size);
        if (number < 0 || size < 0)
            return load_failed(ui);
        const auto at = static_cast<std::size_t>(number);
        tables.language_text[at] = fields[2];
        tables.language_size[at] = static_cast<quint8>(size);
    }
    return true;
}

QLocale language_locale(const QString& code) {
    const QLocale locale(code);
    // QLocale falls back to C for a code it does not know; a code of another
    // shape ("deu", "de_AT") is not a language code of ours.
    if (code.size() != 2 || locale.language() == QLocale::C)
        return QLocale::c();
    return locale;
}

} // namespace veltrako::config
