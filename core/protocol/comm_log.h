#pragma once
// The communication log: one line per frame sent ("OUT"), per chunk received
// ("IN") and per message on the developer page ("ERR"), time-stamped in
// seconds since the program started.

#include <QString>

namespace veltrako::protocol {

struct CommLog {
    QString comm_log;
    double log_start = 0; // seconds since midnight at program start
};

inline constexpr qsizetype comm_log_limit = 60000;
inline constexpr qsizetype comm_log_kept = 40000;

// Appends "TAG" padded to three characters, a blank, the time stamp as
// "000.00", twelve blanks, the text and CR LF. When the log passes
// 60000 characters it is cut back to its first 40000: the start of a session
// is what a service engineer needs to see, so the oldest part is kept.
void log_comm(CommLog& log, double now_since_midnight, const QString& tag, const QString& text);

} // namespace veltrako::protocol
