#pragma once
// Where the program takes its time from. Production uses the system clock;
// tests use a clock they move by hand, so every time-out and schedule can be
// driven deterministically without sleeping.

#include <QDateTime>
#include <QElapsedTimer>

#include <functional>

namespace veltrako {

class Clock {
public:
    virtual ~Clock() = default;

    // The local wall-clock date and time, as the technician reads it on the PC.
    // Held with Qt::UTC as a plain calendar value, so that date arithmetic never
    // trips over daylight-saving gaps.
    virtual QDateTime now() const = 0;
    // Milliseconds on a steady clock, for durations and wire timing.
    virtual qint64 elapsed_ms() const = 0;
    // The same steady clock in microseconds, for wire timing finer than a
    // millisecond (a byte takes 95 us at 115200 baud).
    virtual qint64 elapsed_us() const { return elapsed_ms() * 1000; }
    // Returns after `ms` milliseconds and lets pending events run meanwhile
    // (timer ticks, clicks), without keeping a core busy.
    virtual void wait_ms(int ms) = 0;
    // Returns as soon as `ready` holds, or after `ms` milliseconds, whichever
    // comes first, letting pending events run meanwhile; true when `ready`
    // held. Looks once a millisecond here (through wait_ms); a clock that can
    // look more often does.
    virtual bool wait_for(int ms, const std::function<bool()>& ready);
};

// Seconds since midnight of `t`, in single precision as the poll cycle keeps them.
float seconds_since_midnight(const QDateTime& t);

// Difference of two seconds-since-midnight readings; a negative difference
// means midnight passed in between and counts as that difference plus one day.
double since_midnight_difference(double later, double earlier);

class SystemClock final : public Clock {
public:
    SystemClock();
    QDateTime now() const override;
    qint64 elapsed_ms() const override;
    qint64 elapsed_us() const override;
    void wait_ms(int ms) override;
    // Looks every tenth of a millisecond (an answer of a few bytes is there
    // within a millisecond or two, and a millisecond's delay per answer would
    // add a quarter to a readout), and serves events every 10 ms.
    bool wait_for(int ms, const std::function<bool()>& ready) override;

private:
    QElapsedTimer steady_;
    qint64 events_due_ns_ = 0; // when wait_for serves events next
};

} // namespace veltrako
