#pragma once
// A clock the test moves by hand. wait_ms() advances it and runs the test's
// hook, so code that waits inside a tick can be driven without sleeping.

#include "clock.h"

#include <functional>

namespace veltrako::testing {

class ManualClock final : public Clock {
public:
    explicit ManualClock(QDateTime start = QDateTime(QDate(2026, 3, 2), QTime(10, 0), Qt::UTC))
        : now_(std::move(start)) {}

    QDateTime now() const override { return now_; }
    qint64 elapsed_ms() const override { return elapsed_; }
    void wait_ms(int ms) override {
        advance_ms(ms);
        if (on_wait)
            on_wait(ms);
    }

    void advance_ms(qint64 ms) {
        elapsed_ += ms;
        now_ = now_.addMSecs(ms);
    }
    void set_now(const QDateTime& t) { now_ = t; }

    std::function<void(int)> on_wait;

private:
    QDateTime now_;
    qint64 elapsed_ = 0;
};

} // namespace veltrako::testing
