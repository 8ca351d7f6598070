#pragma once
// A clock the test moves by hand. wait_ms() advances it and runs the test's
// hook, so code that waits inside a tick can be driven without sleeping.

#include "clock.h"

#include <algorithm>
#include <functional>

namespace veltrako::testing {

class ManualClock final : public Clock {
public:
    explicit ManualClock(QDateTime start = QDateTime(QDate(2026, 3, 2), QTime(10, 0), Qt::UTC))
        : now_(std::move(start)) {}

    QDateTime now() const override { return now_; }
    qint64 elapsed_ms() const override { return elapsed_; }
    void wait_ms(int ms) override {
        if (on_step && !stepping_) {
            // Time passes as in the program's event loop: a step at a time,
            // with the step's work (a poll tick) after each. A wait inside
            // that work only moves the time.
            stepping_ = true;
            for (qint64 left = ms; left > 0;) {
                const qint64 part = std::min(left, step_ms - since_step_);
                advance_ms(part);
                left -= part;
                since_step_ += part;
                if (since_step_ >= step_ms) {
                    since_step_ = 0;
                    on_step();
                }
            }
            stepping_ = false;
        } else {
            advance_ms(ms);
        }
        if (on_wait)
            on_wait(ms);
    }

    void advance_ms(qint64 ms) {
        elapsed_ += ms;
        now_ = now_.addMSecs(ms);
    }
    void set_now(const QDateTime& t) { now_ = t; }

    std::function<void(int)> on_wait;
    // When set, waits run `on_step` every `step_ms` of their time.
    std::function<void()> on_step;
    qint64 step_ms = 50;

private:
    QDateTime now_;
    qint64 elapsed_ = 0;
    qint64 since_step_ = 0;
    bool stepping_ = false;
};

} // namespace veltrako::testing
