#include "protocol/comm_log.h"

#include "clock.h"

namespace veltrako::protocol {

void log_comm(CommLog& log, double now_since_midnight, const QString& tag, const QString& text) {
    const double stamp = since_midnight_difference(now_since_midnight, log.log_start);
    // Appended piece by piece to the log itself: a line is written for every
    // chunk received and every frame sent, and building it apart first cost
    // an allocation per piece.
    QString& out = log.comm_log;
    const QStringView short_tag = QStringView(tag).left(3);
    out += short_tag;
    out.resize(out.size() + 4 - short_tag.size(), QLatin1Char(' '));
    out += QString::number(stamp, 'f', 2).rightJustified(6, QLatin1Char('0'));
    out.resize(out.size() + 12, QLatin1Char(' '));
    out += text;
    out += QLatin1String("\r\n");
    if (out.size() > comm_log_limit)
        out.truncate(comm_log_kept);
}

} // namespace veltrako::protocol
