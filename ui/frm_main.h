#pragma once
// frm_main: the main window with its menu and the tab strip tab1 of five
// pages. It is the desktop's UserInterface: the core reaches the technician
// through it. The window is built without a context; bind() connects the
// handlers once the context (which needs the window at construction) exists.
//
// Form_Resize / tab_resize: the pages use layouts, so tab1 fills the window
// and the growing controls (sysstatout with its buttons, Chart,
// p_compliance) stretch with it without code of their own. Each page sits in
// a scroll area: on a window smaller than a page needs, the page scrolls
// instead of squeezing its controls over each other.
//
// The status bar at the bottom says how the link stands (lbl_connection) and
// holds one note beside it (lbl_note), such as the outcome of the last write.

#include "user_interface.h"

#include <QHash>
#include <QList>
#include <QMainWindow>

#include <functional>

class QAction;
class QLabel;
class QTabWidget;

namespace veltrako {
class AppContext;
}

namespace veltrako::ui {

class LiveChart;

class FrmMain : public QMainWindow, public UserInterface {
    Q_OBJECT
public:
    explicit FrmMain(QWidget* parent = nullptr);
    ~FrmMain() override;

    // Connects the controls to the context's state and procedures.
    void bind(AppContext& ctx);
    AppContext* context() const { return ctx_; }

    // Puts the language texts on a form; applied to every frm_wait this
    // window opens (frm_main itself is done by start-up).
    using LanguageApplier = std::function<void(QWidget& form)>;
    void set_language_applier(LanguageApplier apply) { apply_language_ = std::move(apply); }

    // A control by object name; for a control array, element `index`.
    QWidget* control(const QString& name, int index = -1) const;
    template <class T> T* control_as(const QString& name, int index = -1) const {
        return qobject_cast<T*>(control(name, index));
    }
    // Every element of a control array (or the one control of that name).
    QList<QWidget*> controls_named(const QString& name) const { return controls_.values(name); }
    // Every control whose object name starts with `prefix`.
    QList<QWidget*> controls_with_prefix(const QString& prefix) const;
    QAction* menu_action(const QString& name) const;
    QTabWidget* tab1() const { return tab1_; }
    LiveChart* chart() const { return chart_; }

    // Shows frm_wait modally with `command` (docommand).
    void show_wait(const QString& command, const QString& text = {});

    // UserInterface
    void show_msg(const QString& text, MsgIcon icon = MsgIcon::none,
                  const QString& title = {}) override;
    bool ask_yes_no(const QString& text, const QString& title = {}) override;
    bool ask_ok_cancel(const QString& text, const QString& title = {}) override;
    bool confirm_change(const QString& text) override;
    SaveAnswer ask_save_discard_cancel(const QString& text) override;
    std::optional<QString> input_box(const QString& prompt, const QString& title,
                                     const QString& initial = {}) override;
    QString choose_open_file(const FileDialogRequest& request) override;
    QString choose_save_file(const FileDialogRequest& request) override;
    void set_busy(bool busy) override;
    Page current_page() const override;
    void select_page(Page page) override;
    void append_out(const QString& text) override;
    void clear_out() override;
    void set_info_caption(const QString& text) override;
    void connection_changed(ConnectionState state, const QString& text) override;
    void show_note(const QString& text, MsgIcon icon) override;
    void device_record_changed() override;
    void show_status_table(const QString& text) override;

protected:
    // Form_QueryUnload: the device is closed before the program ends.
    void closeEvent(QCloseEvent* event) override;

private:
    void build_menu();
    void index_controls();
    void bind_entwickler_page(AppContext& ctx);
    void men_Softwareupdate_Click(AppContext& ctx);
    // "Servicebesuch…": the whole visit into a new folder under INITDIR,
    // with the report as the form holds it.
    void men_Servicebesuch_Click(AppContext& ctx);
    // Every control that sends to the device follows the connection.
    void follow_device_controls();
    // The Gerät page and the status bar say how far the device's clock is off.
    void show_clock_note();

    AppContext* ctx_ = nullptr;
    QTabWidget* tab1_ = nullptr;
    LiveChart* chart_ = nullptr;
    QLabel* connection_label_ = nullptr;
    QLabel* note_label_ = nullptr;
    QLabel* clock_label_ = nullptr;
    ConnectionState shown_state_ = ConnectionState::no_device;
    QMultiHash<QString, QWidget*> controls_;
    QHash<QString, QAction*> actions_;
    bool busy_ = false;
    LanguageApplier apply_language_;
};

} // namespace veltrako::ui
