#pragma once
// Answers the message boxes a window opens while a test runs: with the
// given buttons, one box after the other, or, when none are given, accepts
// every box. Keeps the text of each box it answered.

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>

namespace veltrako::testing {

class BoxAnswers : public QObject {
public:
    explicit BoxAnswers(QList<QMessageBox::StandardButton> buttons = {})
        : buttons_(std::move(buttons)), accept_all_(buttons_.isEmpty()) {
        timer_.setInterval(5);
        connect(&timer_, &QTimer::timeout, this, [this] { look(); });
        timer_.start();
    }
    QStringList texts;

private:
    void look() {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        // A box may still be on top for a moment after its answer.
        if (!box || box == answered_)
            return;
        if (accept_all_) {
            answered_ = box;
            texts << box->text();
            box->accept();
        } else if (!buttons_.isEmpty() && box->button(buttons_.first())) {
            answered_ = box;
            texts << box->text();
            box->button(buttons_.takeFirst())->click();
        }
    }

    QList<QMessageBox::StandardButton> buttons_;
    bool accept_all_;
    QTimer timer_;
    QPointer<QMessageBox> answered_; // gone with its box
};

} // namespace veltrako::testing
