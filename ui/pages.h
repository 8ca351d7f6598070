#pragma once
// One builder per page of the tab strip tab1. Each returns the page with all
// of its named controls; the window finds them by name afterwards.

class QWidget;

namespace veltrako {
class AppContext;
}
namespace veltrako::compliance {
struct PrintedFor;
}

namespace veltrako::ui {

QWidget* build_page_geraet();
QWidget* build_page_protokoll();
QWidget* build_page_compliance();
QWidget* build_page_system_status();
QWidget* build_page_entwickler();
QWidget* build_page_verlauf();

class FrmMain;
// Connects the "Compliance" page to the usage memory of `ctx`.
void bind_page_compliance(FrmMain& form, AppContext& ctx);
// What a compliance printout says beyond the table: the patient typed on the
// "Protokoll" page and the print date.
compliance::PrintedFor compliance_printed_for(const FrmMain& form, const AppContext& ctx);
// Shows a status readout's progress on the "System Status" page.
void bind_status_progress(FrmMain& form, AppContext& ctx);

} // namespace veltrako::ui
