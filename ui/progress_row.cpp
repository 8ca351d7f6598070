#include "progress_row.h"

#include "controls.h"
#include "device/device_view.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QLocale>
#include <QProgressBar>
#include <QPushButton>

namespace veltrako::ui {

ProgressRow::ProgressRow(const QString& what, bool cancellable, QWidget* parent)
    : QWidget(parent), bar_(new QProgressBar),
      time_(make_label(QStringLiteral("lbl_") + what + QStringLiteral("time"), 0, QString())),
      note_(make_label(QStringLiteral("lbl_") + what + QStringLiteral("note"), 0, QString())) {
    setObjectName(what + QStringLiteral("_progress"));
    bar_->setObjectName(QStringLiteral("pb_") + what);
    bar_->setTextVisible(true);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(bar_, 1);
    layout->addWidget(time_);
    if (cancellable) {
        cancel_ = make_button(QStringLiteral("cmd_") + what + QStringLiteral("cancel"), 0,
                              QStringLiteral("Abbrechen"));
        layout->addWidget(cancel_);
    }
    layout->addWidget(note_);
    hide();
}

void ProgressRow::show_standing(const progress::Standing& s, const ProgressTexts& texts) {
    // A readout moves hundreds of records a second; ten pictures a second
    // tell the same, and painting each would slow the readout down.
    constexpr qint64 redraw_ms = 100;
    if (s.phase == shown_phase_ && s.elapsed_ms >= shown_elapsed_ms_ &&
        s.elapsed_ms - shown_elapsed_ms_ < redraw_ms)
        return;
    shown_phase_ = s.phase;
    shown_elapsed_ms_ = s.elapsed_ms;
    const bool running = s.phase == progress::Phase::running;
    const bool cancelled = s.phase == progress::Phase::cancelled;
    setVisible(running || cancelled);
    bar_->setVisible(running);
    time_->setVisible(running);
    if (cancel_) {
        cancel_->setText(texts.cancel);
        cancel_->setVisible(running);
    }
    const QLocale locale;
    if (cancelled) {
        note_->setText(texts.cancelled_note + QLatin1Char(' ') +
                       device::format_value(s.done, 0, locale));
        return;
    }
    if (!running)
        return;
    note_->setText(texts.running_note);
    // An unknown total turns the bar into a busy indicator.
    bar_->setRange(0, s.total);
    bar_->setValue(std::min(s.done, s.total));
    QString shown = device::format_value(s.done, 0, locale);
    if (s.total > 0)
        shown += QStringLiteral(" / ") + device::format_value(s.total, 0, locale);
    // The bar takes "%" as the start of a placeholder.
    bar_->setFormat(shown.replace(QLatin1Char('%'), QStringLiteral("%%")));
    time_->setText(s.remaining_ms ? texts.time_left + QLatin1Char(' ') +
                                        progress::minutes_seconds(*s.remaining_ms)
                                  : QString());
}

} // namespace veltrako::ui

#include "moc_progress_row.cpp"
