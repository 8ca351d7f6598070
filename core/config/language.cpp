#include "config/language.h"

namespace veltrako::config {

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

} // namespace veltrako::config
