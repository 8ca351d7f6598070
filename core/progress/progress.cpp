#include "progress/progress.h"

#include "device/device_view.h"

#include <QLocale>

#include <algorithm>

namespace veltrako::progress {

int Standing::percent() const {
    if (total <= 0)
        return 0;
    return static_cast<int>(static_cast<qint64>(std::clamp(done, 0, total)) * 100 / total);
}

void Progress::start(qint64 now_ms, int total) {
    phase_ = Phase::running;
    done_ = 0;
    total_ = std::max(total, 0);
    start_ms_ = last_ms_ = now_ms;
    notify();
}

void Progress::set_total(int total, qint64 now_ms) {
    if (phase_ != Phase::running)
        return;
    total_ = std::max(total, 0);
    last_ms_ = now_ms;
    notify();
}

void Progress::advance(int done, qint64 now_ms) {
    if (phase_ != Phase::running)
        return;
    done_ = std::max(done, 0);
    last_ms_ = now_ms;
    notify();
}

void Progress::finish(qint64 now_ms) {
    if (phase_ != Phase::running)
        return;
    phase_ = Phase::finished;
    // A job may end before its announced total (a ring that wrapped, an
    // erased record): what was done is all there was.
    total_ = done_;
    last_ms_ = now_ms;
    notify();
}

void Progress::cancel(qint64 now_ms) {
    if (phase_ != Phase::running)
        return;
    phase_ = Phase::cancelled;
    last_ms_ = now_ms;
    notify();
}

void Progress::fail(qint64 now_ms) {
    if (phase_ != Phase::running)
        return;
    phase_ = Phase::failed;
    last_ms_ = now_ms;
    notify();
}

void Progress::reset() {
    if (phase_ == Phase::idle)
        return;
    phase_ = Phase::idle;
    done_ = total_ = 0;
    notify();
}

Standing Progress::standing() const {
    Standing s;
    s.phase = phase_;
    s.done = done_;
    s.total = total_;
    s.elapsed_ms = last_ms_ - start_ms_;
    if (phase_ == Phase::finished)
        s.remaining_ms = 0;
    else if (phase_ == Phase::running && done_ > 0 && total_ > 0)
        s.remaining_ms = s.elapsed_ms * std::max(total_ - done_, 0) / done_;
    return s;
}

void Progress::notify() {
    if (changed)
        changed();
}

QString minutes_seconds(qint64 ms) {
    const qint64 seconds = ms <= 0 ? 0 : (ms + 999) / 1000;
    const QLocale locale;
    const QString ss = device::format_value(static_cast<double>(seconds % 60), 0, locale);
    return device::format_value(static_cast<double>(seconds / 60), 0, locale) + QLatin1Char(':') +
           (ss.size() < 2 ? QLatin1Char('0') + ss : ss);
}

} // namespace veltrako::progress
