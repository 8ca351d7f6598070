#include "protocol/comm_log.h"

#include "clock.h"

namespace veltrako::protocol {

void log_comm(CommLog& log, double now_since_midnight, const QString& tag, const QString& text) {
    const double stamp = since_midnight_difference(now_since_midnight, log.log_start);
    QString line = (tag + QStringLiteral("   ")).left(3);
    line += QLatin1Char(' ');
    line += QStringLiteral("%1").arg(stamp, 6, 'f', 2, QLatin1Char('0'));
    line += QString(12, QLatin1Char(' '));
    line += text;
    line += QStringLiteral("\r\n");
    log.comm_log += line;
    if (log.comm_log.size() > comm_log_limit)
        log.comm_log.truncate(comm_log_kept);
}

} // namespace veltrako::protocol
