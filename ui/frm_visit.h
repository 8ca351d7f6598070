#pragma once
// The progress of a service visit: one modal dialog for all its steps, with
// the step, the progress of the readout or of the files, the time left, and
// "Abbrechen". It closes itself when the visit has ended.

#include <QDialog>

class QLabel;
class QPushButton;

namespace veltrako::config {
struct LanguageTables;
}
namespace veltrako::visit {
class Visit;
}

namespace veltrako::ui {

class ProgressRow;

class FrmVisit final : public QDialog {
    Q_OBJECT
public:
    FrmVisit(const config::LanguageTables& language, visit::Visit& visit,
             QWidget* parent = nullptr);

    // Shows the visit's standing; closes the dialog once it has ended.
    void refresh();
    QString step_caption() const;

public slots:
    // Escape, the close button and "Abbrechen" cancel the visit.
    void reject() override;

private:
    const config::LanguageTables& language_;
    visit::Visit& visit_;
    QLabel* step_;
    ProgressRow* row_;
    QPushButton* cancel_;
};

} // namespace veltrako::ui
