#pragma once
// Everything the core needs from a person or a screen. The desktop window
// implements it with message boxes and widgets, the command-line front end with
// stdout/stderr and command-line answers, and tests with a scripted fake that
// records what was shown. The core never opens a window itself.

#include <QString>
#include <QStringList>

#include <optional>

namespace veltrako {

enum class MsgIcon { none, information, question, exclamation, critical };

struct FileDialogRequest {
    QString title;
    QString start_dir;      // INITDIR
    QString filter;         // "Text (*.txt)|*.txt" style, as the language file gives it
    QString default_suffix; // ".txt"
    QString proposed_name;  // file name offered in a save dialog
};

// Pages of the tab strip tab1, in their designed order.
enum class Page {
    geraet = 0,
    protokoll = 1,
    compliance = 2,
    system_status = 3,
    entwickler = 4,
    verlauf = 5, // the device's history, after the designed five
};

// What the technician is told about the link (core/link/connection_state.h).
enum class ConnectionState { no_device, connecting, connected, not_answering, boot_loader };

// The answers to the question before the program ends with an unsaved report.
enum class SaveAnswer { save, discard, cancel };

class UserInterface {
public:
    virtual ~UserInterface() = default;

    // A message box with an OK button only.
    virtual void show_msg(const QString& text, MsgIcon icon = MsgIcon::none,
                          const QString& title = {}) = 0;
    virtual bool ask_yes_no(const QString& text, const QString& title = {}) = 0;
    virtual bool ask_ok_cancel(const QString& text, const QString& title = {}) = 0;
    // A Yes/No question before a change that cannot be undone. No is the
    // default, so that a hurried Enter changes nothing.
    virtual bool confirm_change(const QString& text) = 0;
    // Save / Discard / Cancel; Cancel is the default.
    virtual SaveAnswer ask_save_discard_cancel(const QString& text) = 0;
    // Input box; std::nullopt when the user cancels.
    virtual std::optional<QString> input_box(const QString& prompt, const QString& title,
                                             const QString& initial = {}) = 0;
    // File dialogs; an empty result means cancelled.
    virtual QString choose_open_file(const FileDialogRequest& request) = 0;
    virtual QString choose_save_file(const FileDialogRequest& request) = 0;

    // The hourglass pointer.
    virtual void set_busy(bool busy) = 0;

    virtual Page current_page() const = 0;
    virtual void select_page(Page page) = 0;

    // The "Entwickler" page: the message box `out` and the frame label `lbl_info`.
    virtual void append_out(const QString& text) = 0;
    virtual void clear_out() = 0;
    virtual void set_info_caption(const QString& text) = 0;

    // The connection state or its wording changed (the serial number came
    // in, say). The window's status bar and every control that needs a device
    // follow it.
    virtual void connection_changed(ConnectionState state, const QString& text) = 0;
    // A note beside the connection state, such as the outcome of the last
    // write; `icon` tells a confirmation (information) from a problem.
    virtual void show_note(const QString& text, MsgIcon icon) = 0;

    // The device record changed: the "Gerät" page redraws from it.
    virtual void device_record_changed() = 0;

    // The "System Status" page's table (sysstatout) gets new text.
    virtual void show_status_table(const QString& text) = 0;
};

} // namespace veltrako
