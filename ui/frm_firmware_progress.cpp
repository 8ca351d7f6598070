#include "frm_firmware_progress.h"

#include "config/language.h"

#include <QCloseEvent>
#include <QLabel>
#include <QProgressBar>
#include <QVBoxLayout>

namespace veltrako::ui {

FrmFirmwareProgress::FrmFirmwareProgress(const config::LanguageTables& language, QWidget* parent)
    : QDialog(parent, Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
      language_(language), caption_(new QLabel(this)), bar_(new QProgressBar(this)),
      times_(new QLabel(this)) {
    setObjectName(QStringLiteral("frm_firmware_progress"));
    setWindowTitle(language_.text(11002));
    setWindowModality(Qt::ApplicationModal);
    setMinimumWidth(360);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(caption_);
    layout->addWidget(bar_);
    layout->addWidget(times_);
    bar_->setTextVisible(true);
}

void FrmFirmwareProgress::begin(int blocks) {
    running_ = true;
    caption_->setText(language_.text(11002));
    times_->clear();
    bar_->setRange(0, blocks);
    bar_->setValue(0);
    show();
}

void FrmFirmwareProgress::block(const firmware::ProgressStep& step) {
    caption_->setText(step.caption());
    bar_->setValue(step.block - 1);
    times_->setText(language_.text(9103) + QLatin1Char(' ') +
                    firmware::minutes_seconds(step.elapsed_ms) + QStringLiteral("    ") +
                    language_.text(9104) + QLatin1Char(' ') +
                    firmware::minutes_seconds(step.remaining_ms));
}

void FrmFirmwareProgress::end() {
    bar_->setValue(bar_->maximum());
    running_ = false;
    hide();
}

QString FrmFirmwareProgress::caption() const {
    return caption_->text();
}

QString FrmFirmwareProgress::times() const {
    return times_->text();
}

int FrmFirmwareProgress::bar_value() const {
    return bar_->value();
}

int FrmFirmwareProgress::bar_maximum() const {
    return bar_->maximum();
}

void FrmFirmwareProgress::reject() {
    // Escape lands here.
    if (!running_)
        QDialog::reject();
}

void FrmFirmwareProgress::closeEvent(QCloseEvent* event) {
    if (running_)
        event->ignore();
    else
        QDialog::closeEvent(event);
}

} // namespace veltrako::ui

#include "moc_frm_firmware_progress.cpp"
