#pragma once
// frm_wait: the small modal dialog that shows a text while one command
// sequence runs (and the version window of "Info"). Its cancel button sets a
// flag that the running sequence tests.

#include <QDialog>
#include <QString>

class QLabel;
class QPushButton;

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::ui {

// The program's version, major.minor.revision.
QString program_version();

class FrmWait : public QDialog {
    Q_OBJECT
public:
    FrmWait(const config::LanguageTables& language, QWidget* parent = nullptr);

    // Puts the text for `command` on lbl_text: "info" shows the program and
    // its version; "readcompliance" shows `text`.
    void prepare(const QString& command, const QString& text = {});
    // prepare(), then shows the dialog modally until it is closed.
    void docommand(const QString& command, const QString& text = {});

    bool cancelled() const { return cancelled_; }
    QString text() const;

private:
    const config::LanguageTables& language_;
    QLabel* lbl_text_;
    QPushButton* cm_cancel_;
    bool cancelled_ = false;
};

} // namespace veltrako::ui
