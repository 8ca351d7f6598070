#pragma once
// The device counts time in seconds since 1 January 2000 00:00:00. Dates are
// plain calendar values (held as Qt::UTC), like the program's clock.

#include <QDateTime>

#include <cstdint>

namespace veltrako::sim {

inline QDateTime device_epoch() {
    return QDateTime(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC);
}

// The PC's local date and time as a plain calendar value, as the program
// reads it.
inline QDateTime pc_present_time() {
    const QDateTime local = QDateTime::currentDateTime();
    return QDateTime(local.date(), local.time(), Qt::UTC);
}

inline qint64 device_seconds(const QDateTime& t) {
    QDateTime utc = t;
    utc.setTimeSpec(Qt::UTC); // the calendar value as it stands, no zone shift
    return device_epoch().secsTo(utc);
}

inline QDateTime device_date_time(qint64 seconds) {
    return device_epoch().addSecs(seconds);
}

} // namespace veltrako::sim
