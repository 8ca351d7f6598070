#pragma once
// The "Protokoll" page bound to the report record: it shows the record,
// collects the controls back into it, marks every edit, and runs the save,
// open and print buttons. The rules are in core/report.

#include <QFrame>
#include <QString>

#include <functional>

namespace veltrako {
class AppContext;
}
namespace veltrako::print {
class DrawingSurface;
}

namespace veltrako::ui {

// p_geraetedaten: the device data of the report, drawn through the same
// drawing surface as the printout.
class DeviceDataPicture final : public QFrame {
public:
    using Drawer = std::function<void(print::DrawingSurface& surface)>;
    explicit DeviceDataPicture(QWidget* parent = nullptr);
    void set_drawer(Drawer draw) { draw_ = std::move(draw); }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    Drawer draw_;
};

class FrmMain;

// Connects the page's controls, the tab change that starts a fresh report,
// and the report's part of a device connection.
void bind_protokoll_page(FrmMain& form, AppContext& ctx);

// show_report: every report control from the record, the device data redrawn,
// the buttons enabled only with valid device data; afterwards the report
// counts as unchanged (filling the controls fired their change events).
void show_report(FrmMain& form, AppContext& ctx);
// collect_report: every report control into the record.
void collect_report(FrmMain& form, AppContext& ctx);
// What the control of a report key holds, as collect_report reads it.
QString read_report_control(const FrmMain& form, const QString& key);

// The line that says the report on the page is of another device than the
// one connected, shown only then; follows the report and the device record.
void show_other_device_note(FrmMain& form, const AppContext& ctx);

// The report's device data follows the device record (start-up, connecting,
// a device found again); without live data it keeps its snapshot.
void refresh_report(FrmMain& form, AppContext& ctx);

// A fresh report from the present device state, dated now, on the page.
void start_fresh_report(FrmMain& form, AppContext& ctx);

// At start-up: a draft left by a crash or an earlier run is offered; when
// the technician takes it, it is on the "Protokoll" page, unsaved. True then.
bool restore_report_draft(FrmMain& form, AppContext& ctx);

// cmd_save_Click: collect, then save; true when a file was written.
bool cmd_save_click(FrmMain& form, AppContext& ctx);
// cmd_print_Click: collect, choose the printer, print the report.
void cmd_print_click(FrmMain& form, AppContext& ctx);

} // namespace veltrako::ui
