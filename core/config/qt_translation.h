#pragma once
// Qt's own words (the buttons "Cancel" and "Yes", the file and print dialogs)
// in the program's language, from the translations Qt ships beside itself
// (on Debian the package qt6-translations-l10n).

#include <QString>

class QTranslator;

namespace veltrako::config {

// Loads Qt's translation for the two-letter `code` into `translator`. False
// when there is none (English needs none: it is Qt's own); Qt's words then
// stay English and nothing else changes.
bool load_qt_translation(QTranslator& translator, const QString& code);

} // namespace veltrako::config
