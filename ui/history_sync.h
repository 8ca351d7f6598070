#pragma once
// "Abgleichen" on the Verlauf page: the laptop's archive synchronised with
// the team's server (ARCHIV_SERVER) on the archive's own thread, with a
// progress bar, the result line beside it, and the time of the last sync in
// the status bar's tooltip. The window never talks to the server otherwise.

#include <functional>

namespace veltrako {
class AppContext;
}
namespace veltrako::archive {
class ArchiveService;
}

namespace veltrako::ui {

class FrmMain;

// `synced` runs after every sync that received something, on the window's
// thread.
void bind_history_sync(FrmMain& form, AppContext& ctx, archive::ArchiveService& service,
                       std::function<void()> synced);

} // namespace veltrako::ui
