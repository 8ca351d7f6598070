#pragma once
// The language tables: every visible text of the program by number, with an
// optional font size, read from "lang" + code + ".txt" beside the program.

#include <QLocale>
#include <QString>
#include <QStringList>

#include <vector>

namespace veltrako {
class UserInterface;
}

namespace veltrako::config {

inline constexpr int language_entries = 20001; // numbers 0..20000

struct LanguageTables {
    std::vector<QString> language_text = std::vector<QString>(language_entries);
    std::vector<quint8> language_size = std::vector<quint8>(language_entries, 0);
    // Words about dates (month names, the device clock) follow the chosen
    // language, not the PC's: a German window on an English PC says "März".
    // Numbers keep the user's locale (QLocale()).
    QLocale words = QLocale::c();

    // Text n, or an empty text for a number outside the table.
    QString text(int n) const;
    quint8 size(int n) const;
};

// Empties both tables, then fills them from `path`: lines "number|size|text",
// trimmed; empty lines and lines starting with "*" are comments; a later line
// for the same number wins. A line that cannot be read ends loading with the
// message "Language File could not be loaded." and false, keeping what was
// stored before it. A missing file leaves the tables empty, so every tagged
// caption comes out empty and the fault is plain to see.
bool load_language(LanguageTables& tables, const QString& path, UserInterface& ui);
// The same on the lines of a file already read.
bool load_language_lines(LanguageTables& tables, const QStringList& lines, UserInterface& ui);

// The locale of the two-letter language code (--lang) for words about dates:
// "de" gives German month names and "dd.MM.yyyy"; an unknown code gives the
// C locale, whose words are English.
QLocale language_locale(const QString& code);

} // namespace veltrako::config
