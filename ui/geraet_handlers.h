#pragma once
// The handlers of the "Gerät" page: clicks, choices and focus changes of its
// controls go to the settings and valve timing procedures of the core. Only
// forwarding lives here.

namespace veltrako {
class AppContext;
}

namespace veltrako::ui {

class FrmMain;

void bind_geraet_page(FrmMain& form, AppContext& ctx);

} // namespace veltrako::ui
