#pragma once
// Form_Load of frm_main: the initialisation routine, the language texts on
// the window, the first page, and the first connection.

#include <QString>

namespace veltrako {
class AppContext;
}

namespace veltrako::ui {

class FrmMain;

struct StartupOptions {
    QString application_dir; // where veltrako2.ini and the language files are
    QString language_code = QStringLiteral("de");
};

void form_load(FrmMain& form, AppContext& ctx, const StartupOptions& options);

} // namespace veltrako::ui
