#include "clock.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QThread>
#include <QTimer>

#include <algorithm>

namespace veltrako {

float seconds_since_midnight(const QDateTime& t) {
    return static_cast<float>(t.time().msecsSinceStartOfDay() / 1000.0);
}

double since_midnight_difference(double later, double earlier) {
    double d = later - earlier;
    if (d < 0)
        d += 86400.0;
    return d;
}

bool Clock::wait_for(int ms, const std::function<bool()>& ready) {
    for (int waited = 0; waited < ms; ++waited) {
        if (ready())
            return true;
        wait_ms(1);
    }
    return ready();
}

SystemClock::SystemClock() {
    steady_.start();
}

QDateTime SystemClock::now() const {
    const QDateTime local = QDateTime::currentDateTime();
    return QDateTime(local.date(), local.time(), Qt::UTC);
}

qint64 SystemClock::elapsed_ms() const {
    return steady_.elapsed();
}

qint64 SystemClock::elapsed_us() const {
    return steady_.nsecsElapsed() / 1000;
}

void SystemClock::wait_ms(int ms) {
    // A nested event loop rather than a spin: the timer and the user's clicks
    // keep being served while we wait, and the core stays idle. Timers only
    // know whole milliseconds and wake a little late, which adds up over the
    // thousands of waits of a readout or a firmware update; so the timer
    // covers all but the last millisecond, and that one is slept in short
    // steps, still serving events, to end the wait on time.
    constexpr qint64 ns_per_ms = 1000000;
    constexpr qint64 fine_ns = ns_per_ms;
    constexpr unsigned long step_us = 100;
    const qint64 deadline = steady_.nsecsElapsed() + ms * ns_per_ms;
    for (qint64 left = deadline - steady_.nsecsElapsed(); left > fine_ns;
         left = deadline - steady_.nsecsElapsed()) {
        QEventLoop loop;
        QTimer::singleShot(static_cast<int>((left - fine_ns) / ns_per_ms), Qt::PreciseTimer, &loop,
                           &QEventLoop::quit);
        loop.exec();
    }
    for (qint64 left = deadline - steady_.nsecsElapsed(); left > 0;
         left = deadline - steady_.nsecsElapsed()) {
        QCoreApplication::processEvents(QEventLoop::AllEvents);
        QThread::usleep(
            std::min<unsigned long>(step_us, static_cast<unsigned long>(left / 1000) + 1));
    }
}

bool SystemClock::wait_for(int ms, const std::function<bool()>& ready) {
    constexpr unsigned long step_us = 100;
    // Events are served a hundred times a second, across one wait and the
    // next: often enough for clicks and timers, and a window that changes
    // with every answer is not repainted hundreds of times a second.
    constexpr qint64 events_every_ns = 10000000;
    const qint64 deadline = steady_.nsecsElapsed() + qint64(ms) * 1000000;
    qint64& events_due = events_due_ns_;
    for (;;) {
        if (ready())
            return true;
        const qint64 now = steady_.nsecsElapsed();
        if (now >= deadline)
            return false;
        if (now >= events_due) {
            QCoreApplication::processEvents(QEventLoop::AllEvents);
            events_due = steady_.nsecsElapsed() + events_every_ns;
            continue;
        }
        QThread::usleep(step_us);
    }
}

} // namespace veltrako
