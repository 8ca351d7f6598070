#pragma once
// The language tables: every visible text of the program by number, with an
// optional font size, read from "lang" + code + ".txt" beside the program.

#include <QString>

#include <vector>

namespace veltrako {
class UserInterface;
}

namespace veltrako::config {

inline constexpr int language_entries = 20001; // numbers 0..20000

struct LanguageTables {
    std::vector<QString> language_text = std::vector<QString>(language_entries);
    std::vector<quint8> language_size = std::vector<quint8>(language_entries, 0);

    // Text n, or an empty text for a number outside the table.
    QString text(int n) const;
    quint8 size(int n) const;
};

bool load_language(LanguageTables& tables, const QString& path, UserInterface& ui);

} // namespace veltrako::config
