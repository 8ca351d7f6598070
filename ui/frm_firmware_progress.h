#pragma once
// The progress of a firmware update: a modal dialog with the block caption,
// a bar, and the elapsed and remaining time. It has no close button and
// ignores Escape and closing from the switch into the loader until the last
// line is written, because an interrupted update leaves the device unusable.

#include "firmware/update_progress.h"

#include <QDialog>

class QLabel;
class QProgressBar;

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::ui {

class FrmFirmwareProgress final : public QDialog, public firmware::UpdateProgress {
    Q_OBJECT
public:
    FrmFirmwareProgress(const config::LanguageTables& language, QWidget* parent = nullptr);

    void begin(int blocks) override;
    void block(const firmware::ProgressStep& step) override;
    void end() override;

    bool running() const { return running_; }
    QString caption() const;
    QString times() const;
    int bar_value() const;
    int bar_maximum() const;

public slots:
    void reject() override;

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    const config::LanguageTables& language_;
    QLabel* caption_;
    QProgressBar* bar_;
    QLabel* times_;
    bool running_ = false;
};

} // namespace veltrako::ui
