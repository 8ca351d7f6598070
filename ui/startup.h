#pragma once
// Form_Load of frm_main: the initialisation routine, the language texts on
// the window, the first page, and the first connection.

#include "config/config_location.h"

#include <QSize>
#include <QString>

namespace veltrako {
class AppContext;
}

namespace veltrako::ui {

class FrmMain;

struct StartupOptions {
    QString application_dir; // where veltrako2.ini and the language files are
    QString language_code = QStringLiteral("de");
    // --archive: a file, or "none"; empty: ARCHIV, else the default.
    QString archive_option;
    // Where the settings go when application_dir is read-only.
    config::UserFolders user_folders = config::standard_user_folders();
};

void form_load(FrmMain& form, AppContext& ctx, const StartupOptions& options);

// The window's size on a screen whose free area (less its panels) is
// `available`; without a screen, the size the pages are designed for.
QSize form_size(const QSize& available);

} // namespace veltrako::ui
