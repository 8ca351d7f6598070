#include "config/qt_translation.h"

#include <QLibraryInfo>
#include <QTranslator>

namespace veltrako::config {

bool load_qt_translation(QTranslator& translator, const QString& code) {
    if (code.isEmpty())
        return false;
    const QString folder = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    // "qt_" gathers the translations of every Qt module; "qtbase_" holds the
    // dialogs and buttons, for an installation that has only that one.
    return translator.load(QStringLiteral("qt_") + code, folder) ||
           translator.load(QStringLiteral("qtbase_") + code, folder);
}

} // namespace veltrako::config
