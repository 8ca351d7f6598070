#pragma once
// Timer1: the poll timer that drives all device traffic. It only calls the
// tick function; tests call the tick themselves and leave the timer off.

#include <QObject>
#include <QTimer>

#include <functional>

namespace veltrako::protocol {

class PollTimer : public QObject {
    Q_OBJECT
public:
    PollTimer() {
        timer_.setTimerType(Qt::PreciseTimer);
        connect(&timer_, &QTimer::timeout, this, [this] {
            if (on_tick)
                on_tick();
        });
    }
    void set_enabled(bool on) {
        if (on)
            timer_.start(interval_ms_);
        else
            timer_.stop();
        const bool changed = on != enabled_;
        enabled_ = on;
        if (changed && switched)
            switched();
    }
    bool enabled() const { return enabled_; }
    void set_interval(int ms) {
        interval_ms_ = ms > 0 ? ms : 1;
        if (enabled_)
            timer_.start(interval_ms_);
    }
    int interval() const { return interval_ms_; }

    std::function<void()> on_tick;
    // Called after the timer was switched on or off: whether the device is
    // polled is part of what the technician is told about the link.
    std::function<void()> switched;

private:
    QTimer timer_;
    int interval_ms_ = 50;
    bool enabled_ = false;
};

} // namespace veltrako::protocol
