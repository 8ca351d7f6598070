#include "clock.h"

#include <QEventLoop>
#include <QTimer>

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

void SystemClock::wait_ms(int ms) {
    // A nested event loop rather than a spin: the timer and the user's clicks
    // keep being served while we wait, and the core stays idle.
    const qint64 deadline = steady_.elapsed() + ms;
    for (qint64 left = ms; left > 0; left = deadline - steady_.elapsed()) {
        QEventLoop loop;
        QTimer::singleShot(static_cast<int>(left), Qt::PreciseTimer, &loop, &QEventLoop::quit);
        loop.exec();
    }
}

} // namespace veltrako
