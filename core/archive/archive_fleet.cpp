#include "archive/archive_fleet.h"

#include "archive/archive_history.h"

#include <QDateTime>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <cmath>

namespace veltrako::archive {

namespace {

std::optional<int> positive_whole(const QString& text) {
    bool ok = false;
    const int n = text.trimmed().toInt(&ok);
    return ok && n > 0 ? std::optional<int>(n) : std::nullopt;
}

// The device's clock shows the local wall time: a PC time as it reads it.
qint64 device_seconds(qint64 pc_seconds) {
    const QDateTime t = QDateTime::fromSecsSinceEpoch(pc_seconds);
    return pc_seconds + t.offsetFromUtc();
}

} // namespace

std::optional<MaintenanceRules> maintenance_rules(const QString& months, const QString& hours,
                                                  QString* bad) {
    MaintenanceRules rules;
    if (!months.trimmed().isEmpty()) {
        const std::optional<int> m = positive_whole(months);
        if (!m) {
            if (bad)
                *bad = QStringLiteral("WARTUNG_MONATE ") + months;
            return std::nullopt;
        }
        rules.months = *m;
    }
    if (!hours.trimmed().isEmpty()) {
        const std::optional<int> h = positive_whole(hours);
        if (!h) {
            if (bad)
                *bad = QStringLiteral("WARTUNG_STUNDEN ") + hours;
            return std::nullopt;
        }
        rules.hours = *h;
    }
    return rules;
}

QStringList due_reasons(const FleetRow& row, const MaintenanceRules& rules, const QDate& today) {
    QStringList reasons;
    const DeviceRow& d = row.device;
    const QDate visited =
        d.last_visit_at == 0 ? QDate() : QDateTime::fromSecsSinceEpoch(d.last_visit_at).date();
    if (!visited.isValid() || visited.addMonths(rules.months) < today)
        reasons << QStringLiteral("visit");
    if (rules.hours && visited.isValid()) {
        if (const std::optional<double> at_visit = operating_hours(d.last_visit_bstd)) {
            const double next = (std::floor(*at_visit / *rules.hours) + 1) * *rules.hours;
            if (*at_visit + row.hours_since_visit >= next)
                reasons << QStringLiteral("hours");
        }
    }
    if (row.last_adherence.endsWith(QLatin1String("|not met")))
        reasons << QStringLiteral("adherence");
    if (row.last_o2_verdict == QLatin1String("fail"))
        reasons << QStringLiteral("o2");
    return reasons;
}

std::optional<std::vector<FleetRow>> read_fleet(ArchiveStore& store, const MaintenanceRules& rules,
                                                const QDate& today, QString* error) {
    const std::optional<std::vector<DeviceRow>> devices = store.devices(error);
    if (!devices)
        return std::nullopt;
    QSqlQuery q(store.database());
    // The part of each period after the visit.
    q.prepare(QStringLiteral("SELECT CAST(sum(CASE WHEN start_time >= ? THEN end_time - start_time"
                             " ELSE end_time - ? END) AS BIGINT)"
                             " FROM usage_periods WHERE sn = ? AND end_time > ?"));
    QSqlQuery last_readout(store.database());
    last_readout.prepare(
        QStringLiteral("SELECT u.adherence FROM events e JOIN usage_readouts u ON u.event_id = e.id"
                       " WHERE e.sn = ? ORDER BY e.at DESC, e.id DESC LIMIT 1"));
    // The last inspection, whatever it measured: an O2 that failed once and
    // was not measured again is not taken for a device still failing.
    QSqlQuery last_report(store.database());
    last_report.prepare(QStringLiteral(
        "SELECT m.o2_verdict FROM events e JOIN report_measurements m ON m.event_id = e.id"
        " WHERE e.sn = ? ORDER BY e.at DESC, e.id DESC LIMIT 1"));
    std::vector<FleetRow> rows;
    for (const DeviceRow& d : *devices) {
        FleetRow row;
        row.device = d;
        if (d.last_visit_at != 0) {
            const qint64 since = device_seconds(d.last_visit_at);
            q.bindValue(0, since);
            q.bindValue(1, since);
            q.bindValue(2, d.sn);
            q.bindValue(3, since);
            if (!q.exec() || !q.next()) {
                if (error)
                    *error = q.lastError().text();
                return std::nullopt;
            }
            row.hours_since_visit = q.value(0).toDouble() / 3600.0;
        }
        last_readout.bindValue(0, d.sn);
        if (!last_readout.exec()) {
            if (error)
                *error = last_readout.lastError().text();
            return std::nullopt;
        }
        if (last_readout.next())
            row.last_adherence = last_readout.value(0).toString();
        last_report.bindValue(0, d.sn);
        if (!last_report.exec()) {
            if (error)
                *error = last_report.lastError().text();
            return std::nullopt;
        }
        if (last_report.next())
            row.last_o2_verdict = last_report.value(0).toString();
        row.reasons = due_reasons(row, rules, today);
        rows.push_back(std::move(row));
    }
    return rows;
}

QString fleet_line(const FleetRow& row) {
    const DeviceRow& d = row.device;
    return QStringList{
        d.sn,
        d.last_visit_at == 0
            ? QString()
            : QDateTime::fromSecsSinceEpoch(d.last_visit_at).toString(QStringLiteral("yyyy-MM-dd")),
        d.last_visit_bstd, row.reasons.join(QLatin1Char(','))}
        .join(QLatin1Char('|'));
}

} // namespace veltrako::archive
