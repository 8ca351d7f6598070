#pragma once
// A row that shows a job the page started: a bar with the units done of the
// total, the time left, "Abbrechen" when the job can be stopped, and a line
// of text beside them. Visible while the job runs, and after a cancel with
// what was done; hidden otherwise. One kind of row for every readout, so
// that they all look and read the same.

#include "progress/progress.h"

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace veltrako::ui {

struct ProgressTexts {
    QString cancel;         // the button's caption
    QString time_left;      // in front of the time, e.g. "Verbleibend:"
    QString running_note;   // beside the bar while the job runs (may be empty)
    QString cancelled_note; // in front of the number of units done after a cancel
};

class ProgressRow final : public QWidget {
    Q_OBJECT
public:
    // Children are named pb_`what`, lbl_`what`time, lbl_`what`note and, when
    // the job can be stopped, cmd_`what`cancel. Their texts come with each
    // standing, from the language the program runs in.
    ProgressRow(const QString& what, bool cancellable, QWidget* parent = nullptr);

    void show_standing(const progress::Standing& standing, const ProgressTexts& texts);
    // nullptr when the job cannot be stopped.
    QPushButton* cancel_button() const { return cancel_; }

private:
    QProgressBar* bar_;
    QLabel* time_;
    QLabel* note_;
    QPushButton* cancel_ = nullptr;
    progress::Phase shown_phase_ = progress::Phase::idle;
    qint64 shown_elapsed_ms_ = 0;
};

} // namespace veltrako::ui
