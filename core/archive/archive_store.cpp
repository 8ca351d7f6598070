#include "archive/archive_store.h"

#include "archive/archive_engine.h"
#include "archive/archive_schema.h"
#include "archive/archive_sql.h"

#include <QDir>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

#include <set>

namespace veltrako::archive {

namespace {

// 1 January 1970 00:00 as a compliance stamp.
constexpr compliance::Stamp unix_origin = 25569 * compliance::seconds_per_day;

const QString usage_upsert =
    QStringLiteral(
        "INSERT INTO usage_periods"
        " (sn, start_time, end_time, running, end_seen, first_event, written_by, changed)"
        " VALUES (?, ?, ?, ?, ?, ?, ?, ?) ") +
    period_merge_clause();

QVariant text_or_null(const QString& s) {
    return s.isEmpty() ? QVariant() : QVariant(s);
}

bool fail(const QSqlQuery& q, QString* error) {
    if (error)
        *error = q.lastError().text();
    return false;
}

bool run(QSqlQuery& q, const QVariantList& values, QString* error) {
    for (int i = 0; i < values.size(); ++i) {
        const QVariant& v = values[i];
        // A text column holds an empty text, never NULL, for a value not given.
        if (v.typeId() == QMetaType::QString && v.toString().isNull())
            q.bindValue(i, QStringLiteral(""));
        else
            q.bindValue(i, v);
    }
    return q.exec() || fail(q, error);
}

std::optional<int> count_of(QSqlDatabase& db, const QString& sql, const QVariantList& values,
                            QString* error) {
    QSqlQuery q(db);
    q.prepare(sql);
    if (!run(q, values, error) || !q.next())
        return std::nullopt;
    return q.value(0).toInt();
}

// A number a person typed, or NULL when there is none.
QVariant number_or_null(const std::optional<double>& v) {
    return v ? QVariant(*v) : QVariant();
}

std::optional<double> number_of(const QVariant& v) {
    return v.isNull() ? std::nullopt : std::optional<double>(v.toDouble());
}

bool write_measured(QSqlDatabase& db, const QString& event_id, const ReportMeasured& m,
                    QString* error) {
    QSqlQuery q(db);
    q.prepare(QStringLiteral(
        "INSERT INTO report_measurements (event_id, result, protection_class, o2, o2_limit,"
        " o2_verdict, o2_device, o2_note, flow, flow_set, flow_low, flow_high, flow_verdict,"
        " earth, earth_limit, earth_verdict, leakage, leakage_limit, leakage_verdict,"
        " instruments) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)"));
    return run(q,
               {event_id,
                m.result,
                m.protection_class,
                number_or_null(m.o2),
                number_or_null(m.o2_limit),
                m.o2_verdict,
                number_or_null(m.o2_device),
                m.o2_note ? 1 : 0,
                number_or_null(m.flow),
                number_or_null(m.flow_set),
                number_or_null(m.flow_low),
                number_or_null(m.flow_high),
                m.flow_verdict,
                number_or_null(m.earth),
                number_or_null(m.earth_limit),
                m.earth_verdict,
                number_or_null(m.leakage),
                number_or_null(m.leakage_limit),
                m.leakage_verdict,
                m.instruments},
               error);
}

QString iso(compliance::Stamp s) {
    return QDateTime::fromSecsSinceEpoch(archive_seconds(s), Qt::UTC)
        .toString(QStringLiteral("yyyy-MM-ddTHH:mm:ss"));
}

} // namespace

QString period_merge_clause() {
    return QStringLiteral(
        "ON CONFLICT (sn, start_time) DO UPDATE SET"
        " end_time = excluded.end_time, running = excluded.running, end_seen = excluded.end_seen,"
        " changed = excluded.changed"
        // The readout made later knows the period's end better: a running
        // period's end moves on, and an older file imported afterwards
        // changes nothing. A period a later readout saw as it was stays as
        // it is, so that only what changed travels to the team's server.
        " WHERE excluded.end_seen > usage_periods.end_seen"
        " AND (excluded.end_time <> usage_periods.end_time"
        " OR excluded.running <> usage_periods.running)");
}

qint64 archive_seconds(compliance::Stamp s) {
    return s - unix_origin;
}

compliance::Stamp stamp_from_archive(qint64 seconds) {
    return seconds + unix_origin;
}

ArchiveStore::ArchiveStore(QString path)
    : path_(std::move(path)), connection_(QStringLiteral("veltrako2-archive-") +
                                          QUuid::createUuid().toString(QUuid::WithoutBraces)) {}

ArchiveStore::ArchiveStore(const ServerAddress& server) : ArchiveStore(QString()) {
    server_ = server;
}

QString ArchiveStore::where() const {
    return server_ ? server_->shown() : QDir::toNativeSeparators(path_);
}

ArchiveStore::~ArchiveStore() {
    close();
    QSqlDatabase::removeDatabase(connection_);
}

QSqlDatabase ArchiveStore::database() const {
    return QSqlDatabase::database(connection_, false);
}

void ArchiveStore::close() {
    if (QSqlDatabase::contains(connection_))
        QSqlDatabase::database(connection_, false).close();
    open_ = false;
}

bool ArchiveStore::open(QString* error, int target) {
    if (open_)
        return true;
    const QString driver = server_ ? QStringLiteral("QPSQL") : QStringLiteral("QSQLITE");
    QSqlDatabase db = QSqlDatabase::contains(connection_)
                          ? QSqlDatabase::database(connection_, false)
                          : QSqlDatabase::addDatabase(driver, connection_);
    if (!db.isValid()) {
        if (error)
            *error = server_ ? QStringLiteral("Qt's PostgreSQL driver is missing"
                                              " (package libqt6sql6-psql)")
                             : QStringLiteral("Qt's SQLite driver is missing"
                                              " (package libqt6sql6-sqlite)");
        return false;
    }
    open_ = server_ ? open_server(db, error, target) : open_file(db, error, target);
    return open_;
}

bool ArchiveStore::open_file(QSqlDatabase& db, QString* error, int target) {
    const QFileInfo info(path_);
    if (!info.absoluteDir().exists() && !QDir().mkpath(info.absolutePath())) {
        if (error)
            *error = QStringLiteral("cannot make the folder %1")
                         .arg(QDir::toNativeSeparators(info.absolutePath()));
        return false;
    }
    db.setDatabaseName(path_);
    db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=%1").arg(busy_timeout_ms_));
    if (!db.open()) {
        if (error)
            *error = db.lastError().text();
        return false;
    }
    const bool ready = configure_sqlite_connection(db, busy_timeout_ms_, error) &&
                       migrate(db, target < 0 ? latest_version() : target, error);
    if (!ready)
        db.close();
    return ready;
}

bool ArchiveStore::open_server(QSqlDatabase& db, QString* error, int target) {
    db.setHostName(server_->host);
    db.setPort(server_->port);
    db.setUserName(server_->user);
    db.setDatabaseName(server_->database);
    db.setConnectOptions(server_->connect_options());
    if (!db.open()) {
        // libpq's own words say what failed; the driver's add nothing.
        const QSqlError e = db.lastError();
        if (error)
            *error = (e.databaseText().isEmpty() ? e.text() : e.databaseText()).simplified();
        return false;
    }
    bool ready = configure_server_connection(db, busy_timeout_ms_, error);
    if (ready && target >= 0) {
        ready = migrate(db, target, error);
    } else if (ready) {
        const std::optional<int> version = schema_version(db, error);
        ready = version && *version == latest_version();
        if (version && !ready && error)
            *error = *version > latest_version()
                         ? QStringLiteral("the server's archive is of version %1, newer than"
                                          " this program's %2")
                               .arg(*version)
                               .arg(latest_version())
                         : QStringLiteral("the server's archive is of version %1, not %2:"
                                          " archive init-server brings it forward")
                               .arg(*version)
                               .arg(latest_version());
    }
    if (!ready)
        db.close();
    return ready;
}

std::optional<qint64> next_change(QSqlDatabase& db, QString* error) {
    QSqlQuery q(db);
    if (!q.exec(QStringLiteral("UPDATE change_counter SET last = last + 1")) ||
        !q.exec(QStringLiteral("SELECT last FROM change_counter")) || !q.next()) {
        if (error)
            *error = q.lastError().text();
        return std::nullopt;
    }
    return q.value(0).toLongLong();
}

bool ArchiveStore::write(const std::vector<ArchiveEvent>& batch, std::vector<EventAdded>* added,
                         QString* error) {
    if (!open(error))
        return false;
    QSqlDatabase db = database();
    if (!begin_write_transaction(db, error))
        return false;
    const std::optional<qint64> change = next_change(db, error);
    if (!change) {
        exec_sql(db, QStringLiteral("ROLLBACK"), nullptr);
        return false;
    }
    std::vector<EventAdded> results(batch.size());
    for (std::size_t i = 0; i < batch.size(); ++i) {
        if (!write_event(batch[i], *change, results[i], error)) {
            exec_sql(db, QStringLiteral("ROLLBACK"), nullptr);
            return false;
        }
    }
    if (!exec_sql(db, QStringLiteral("COMMIT"), error)) {
        exec_sql(db, QStringLiteral("ROLLBACK"), nullptr);
        return false;
    }
    if (added)
        *added = std::move(results);
    return true;
}

bool ArchiveStore::write_event(const ArchiveEvent& e, qint64 change, EventAdded& added,
                               QString* error) {
    QSqlDatabase db = database();
    QSqlQuery q(db);
    q.prepare(
        QStringLiteral("INSERT INTO devices (sn, lp, lp_at, changed) VALUES (?, ?, ?, ?)"
                       " ON CONFLICT (sn) DO UPDATE SET lp = excluded.lp, lp_at = excluded.lp_at,"
                       " changed = excluded.changed"
                       " WHERE excluded.lp <> '' AND excluded.lp_at >= devices.lp_at"
                       " AND (excluded.lp <> devices.lp OR excluded.lp_at > devices.lp_at)"));
    if (!run(q, {e.sn, e.lp.trimmed(), e.lp.trimmed().isEmpty() ? 0 : e.at, change}, error))
        return false;
    q.prepare(QStringLiteral("INSERT INTO events (id, sn, kind, at, visit_id, written_by, changed)"
                             " VALUES (?, ?, ?, ?, ?, ?, ?) ON CONFLICT (id) DO NOTHING"));
    if (!run(q, {e.id, e.sn, e.kind, e.at, text_or_null(e.visit_id), e.written_by, change}, error))
        return false;
    // The periods handed in, once each: what the readout says it holds.
    std::vector<compliance::ComplianceRecord> periods;
    std::set<compliance::Stamp> starts;
    for (const compliance::ComplianceRecord& p : e.periods)
        if (p.start != 0 && p.end != 0 && p.end >= p.start && starts.insert(p.start).second)
            periods.push_back(p);
    added.periods = static_cast<int>(periods.size());
    if (q.numRowsAffected() == 0)
        return true; // known already: everything of it is in
    added.added = true;

    if (e.kind == QLatin1String(kind_usage)) {
        const QString count_sql = QStringLiteral("SELECT count(*) FROM usage_periods WHERE sn = ?");
        const std::optional<int> before = count_of(db, count_sql, {e.sn}, error);
        if (!before)
            return false;
        q.prepare(usage_upsert);
        for (const compliance::ComplianceRecord& p : periods) {
            if (!run(q,
                     {e.sn, archive_seconds(p.start), archive_seconds(p.end),
                      p.start == e.running_start ? 1 : 0, e.at, e.id, e.written_by, change},
                     error))
                return false;
        }
        const std::optional<int> after = count_of(db, count_sql, {e.sn}, error);
        if (!after)
            return false;
        added.new_periods = *after - *before;
        q.prepare(QStringLiteral("INSERT INTO usage_readouts (event_id, periods, new_periods,"
                                 " source, adherence) VALUES (?, ?, ?, ?, ?)"));
        return run(q, {e.id, added.periods, added.new_periods, e.source, e.adherence}, error);
    }
    if (e.kind == QLatin1String(kind_status)) {
        q.prepare(QStringLiteral(
            "INSERT INTO status_entries (sn, entry, block, duration, extended, record,"
            " first_event, written_by, changed) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)"
            " ON CONFLICT (sn, entry) DO NOTHING"));
        std::set<QString> seen;
        for (const StatusEntry& s : e.entries) {
            if (!seen.insert(s.entry).second)
                continue;
            if (!run(q,
                     {e.sn, s.entry, s.block, s.duration, e.extended ? 1 : 0, s.record_hex, e.id,
                      e.written_by, change},
                     error))
                return false;
            added.new_entries += q.numRowsAffected() > 0 ? 1 : 0;
        }
        added.entries = static_cast<int>(seen.size());
        q.prepare(QStringLiteral("INSERT INTO status_readouts (event_id, entries, new_entries,"
                                 " sw, source) VALUES (?, ?, ?, ?, ?)"));
        return run(q, {e.id, added.entries, added.new_entries, e.sw, e.source}, error);
    }
    if (!e.values.isEmpty()) {
        q.prepare(QStringLiteral(
            "INSERT INTO event_values (event_id, position, name, value) VALUES (?, ?, ?, ?)"));
        for (int i = 0; i < e.values.size(); ++i) {
            const QString& line = e.values[i];
            const qsizetype bar = line.indexOf(QLatin1Char('|'));
            if (!run(q,
                     {e.id, i, bar < 0 ? line : line.left(bar),
                      bar < 0 ? QString() : line.mid(bar + 1)},
                     error))
                return false;
        }
    }
    if (e.kind == QLatin1String(kind_report)) {
        q.prepare(QStringLiteral("INSERT INTO reports (event_id, path, printed, inspector)"
                                 " VALUES (?, ?, ?, ?)"));
        if (!run(q, {e.id, e.path, e.printed ? 1 : 0, e.inspector}, error))
            return false;
        return !e.measured || write_measured(db, e.id, *e.measured, error);
    }
    if (e.kind == QLatin1String(kind_visit)) {
        q.prepare(QStringLiteral(
            "INSERT INTO visits (event_id, folder, result, reason) VALUES (?, ?, ?, ?)"));
        return run(q, {e.id, e.folder, e.result, e.reason}, error);
    }
    if (e.kind == QLatin1String(kind_firmware)) {
        q.prepare(QStringLiteral("INSERT INTO firmware_updates (event_id, old_version,"
                                 " new_version, result, reason) VALUES (?, ?, ?, ?, ?)"));
        return run(q, {e.id, e.old_value, e.new_value, e.result, e.reason}, error);
    }
    if (e.kind == QLatin1String(kind_write)) {
        q.prepare(QStringLiteral("INSERT INTO device_writes (event_id, setting, old_value,"
                                 " new_value, pc_user, inspector) VALUES (?, ?, ?, ?, ?, ?)"));
        return run(q, {e.id, e.setting, e.old_value, e.new_value, e.pc_user, e.inspector}, error);
    }
    if (error)
        *error = QStringLiteral("unknown kind of event: %1").arg(e.kind);
    return false;
}

std::optional<std::vector<DeviceRow>> ArchiveStore::devices(QString* error) {
    if (!open(error))
        return std::nullopt;
    QSqlDatabase db = database();
    QSqlQuery q(db);
    q.setForwardOnly(true);
    if (!q.exec(QStringLiteral(
            "SELECT d.sn, d.lp,"
            " (SELECT count(*) FROM usage_periods p WHERE p.sn = d.sn),"
            " (SELECT min(start_time) FROM usage_periods p WHERE p.sn = d.sn),"
            " (SELECT max(start_time) FROM usage_periods p WHERE p.sn = d.sn),"
            " (SELECT e.id FROM events e WHERE e.sn = d.sn AND (e.kind = 'visit' OR"
            "  (e.kind = 'report' AND e.visit_id IS NULL)) ORDER BY e.at DESC LIMIT 1)"
            " FROM devices d ORDER BY d.sn"))) {
        fail(q, error);
        return std::nullopt;
    }
    std::vector<DeviceRow> rows;
    QStringList last_visits;
    while (q.next()) {
        DeviceRow r;
        r.sn = q.value(0).toString();
        r.lp = q.value(1).toString();
        r.periods = q.value(2).toInt();
        if (r.periods > 0) {
            r.first_period = stamp_from_archive(q.value(3).toLongLong());
            r.last_period = stamp_from_archive(q.value(4).toLongLong());
        }
        last_visits << q.value(5).toString();
        rows.push_back(r);
    }
    QSqlQuery v(db);
    v.prepare(QStringLiteral(
        "SELECT e.at, (SELECT value FROM event_values x WHERE x.event_id = e.id"
        " AND x.name = 'BSTD' ORDER BY x.position LIMIT 1) FROM events e WHERE e.id = ?"));
    for (std::size_t i = 0; i < rows.size(); ++i) {
        if (last_visits[static_cast<qsizetype>(i)].isEmpty())
            continue;
        if (!run(v, {last_visits[static_cast<qsizetype>(i)]}, error))
            return std::nullopt;
        if (v.next()) {
            rows[i].last_visit_at = v.value(0).toLongLong();
            rows[i].last_visit_bstd = v.value(1).toString();
        }
    }
    return rows;
}

bool ArchiveStore::has_device(const QString& sn, QString* error) {
    if (!open(error))
        return false;
    QSqlDatabase db = database();
    return count_of(db, QStringLiteral("SELECT count(*) FROM devices WHERE sn = ?"), {sn}, error)
               .value_or(0) > 0;
}

std::optional<std::vector<EventRow>> ArchiveStore::events(const QString& sn, QString* error) {
    if (!open(error))
        return std::nullopt;
    QSqlQuery q(database());
    q.setForwardOnly(true);
    q.prepare(QStringLiteral(
        "SELECT e.id, e.kind, e.at, e.visit_id, e.written_by,"
        " coalesce(u.periods, s.entries, 0), coalesce(u.new_periods, s.new_entries, 0),"
        " coalesce(r.path, ''), coalesce(r.printed, 0), coalesce(r.inspector, w.inspector, ''),"
        " coalesce(v.folder, ''), coalesce(v.result, f.result, ''),"
        " coalesce(v.reason, f.reason, ''), coalesce(w.setting, ''),"
        " coalesce(w.old_value, f.old_version, ''), coalesce(w.new_value, f.new_version, ''),"
        " coalesce(w.pc_user, ''), coalesce(m.result, ''), m.o2, m.o2_device"
        " FROM events e"
        " LEFT JOIN usage_readouts u ON u.event_id = e.id"
        " LEFT JOIN status_readouts s ON s.event_id = e.id"
        " LEFT JOIN reports r ON r.event_id = e.id"
        " LEFT JOIN visits v ON v.event_id = e.id"
        " LEFT JOIN firmware_updates f ON f.event_id = e.id"
        " LEFT JOIN device_writes w ON w.event_id = e.id"
        " LEFT JOIN report_measurements m ON m.event_id = e.id"
        " WHERE e.sn = ? ORDER BY e.at, e.kind, e.id"));
    if (!run(q, {sn}, error))
        return std::nullopt;
    std::vector<EventRow> rows;
    while (q.next()) {
        EventRow r;
        r.id = q.value(0).toString();
        r.kind = q.value(1).toString();
        r.at = q.value(2).toLongLong();
        r.visit_id = q.value(3).toString();
        r.written_by = q.value(4).toString();
        r.count = q.value(5).toInt();
        r.new_count = q.value(6).toInt();
        r.path = q.value(7).toString();
        r.printed = q.value(8).toInt() != 0;
        r.inspector = q.value(9).toString();
        r.path = r.path.isEmpty() ? q.value(10).toString() : r.path;
        r.result = q.value(11).toString();
        r.reason = q.value(12).toString();
        r.setting = q.value(13).toString();
        r.old_value = q.value(14).toString();
        r.new_value = q.value(15).toString();
        r.pc_user = q.value(16).toString();
        r.report_result = q.value(17).toString();
        r.o2_measured = number_of(q.value(18));
        r.o2_device = number_of(q.value(19));
        rows.push_back(r);
    }
    return rows;
}

std::optional<std::vector<compliance::ComplianceRecord>>
ArchiveStore::periods(const QString& sn, QString* error, compliance::Stamp* running_end) {
    if (!open(error))
        return std::nullopt;
    QSqlQuery q(database());
    q.setForwardOnly(true);
    q.prepare(QStringLiteral("SELECT start_time, end_time, running FROM usage_periods"
                             " WHERE sn = ? ORDER BY start_time"));
    if (!run(q, {sn}, error))
        return std::nullopt;
    std::vector<compliance::ComplianceRecord> periods;
    compliance::Stamp latest_end = 0;
    bool latest_running = false;
    while (q.next()) {
        periods.push_back({stamp_from_archive(q.value(0).toLongLong()),
                           stamp_from_archive(q.value(1).toLongLong())});
        if (periods.back().end >= latest_end) {
            latest_end = periods.back().end;
            latest_running = q.value(2).toInt() != 0;
        }
    }
    if (running_end)
        *running_end = latest_running ? latest_end : 0;
    return periods;
}

std::optional<std::vector<VisitRow>> ArchiveStore::visits(const QString& sn, QString* error) {
    if (!open(error))
        return std::nullopt;
    QSqlDatabase db = database();
    QSqlQuery q(db);
    q.setForwardOnly(true);
    q.prepare(QStringLiteral(
        "SELECT e.id, e.kind, e.at, x.name, x.value FROM events e"
        " LEFT JOIN event_values x ON x.event_id = e.id"
        " WHERE e.sn = ? AND (e.kind = 'visit' OR (e.kind = 'report' AND e.visit_id IS NULL))"
        " ORDER BY e.at, e.id, x.position"));
    if (!run(q, {sn}, error))
        return std::nullopt;
    std::vector<VisitRow> rows;
    while (q.next()) {
        const QString id = q.value(0).toString();
        if (rows.empty() || rows.back().id != id)
            rows.push_back({id, q.value(1).toString(), q.value(2).toLongLong(), {}});
        if (!q.value(3).isNull())
            rows.back().values.insert(q.value(3).toString(), q.value(4).toString());
    }
    // What each visit's report, or a report of its own, measured; of a
    // visit's reports the latest counts.
    q.prepare(QStringLiteral("SELECT coalesce(r.visit_id, r.id), m.result, m.o2, m.o2_device"
                             " FROM report_measurements m JOIN events r ON r.id = m.event_id"
                             " WHERE r.sn = ? ORDER BY r.at, r.id"));
    if (!run(q, {sn}, error))
        return std::nullopt;
    while (q.next()) {
        const QString owner = q.value(0).toString();
        for (VisitRow& row : rows)
            if (row.id == owner) {
                row.report_result = q.value(1).toString();
                row.o2_measured = number_of(q.value(2));
                row.o2_device = number_of(q.value(3));
            }
    }
    return rows;
}

std::optional<std::vector<qint64>> ArchiveStore::status_first_seen(const QString& sn,
                                                                   QString* error) {
    if (!open(error))
        return std::nullopt;
    QSqlQuery q(database());
    q.setForwardOnly(true);
    q.prepare(QStringLiteral("SELECT e.at FROM status_entries s"
                             " JOIN events e ON e.id = s.first_event WHERE s.sn = ?"));
    if (!run(q, {sn}, error))
        return std::nullopt;
    std::vector<qint64> seen;
    while (q.next())
        seen.push_back(q.value(0).toLongLong());
    return seen;
}

std::optional<QStringList> ArchiveStore::check(QString* error) {
    if (!open(error))
        return std::nullopt;
    QSqlDatabase db = database();
    std::optional<QStringList> problems = engine_integrity_problems(db, error);
    if (!problems)
        return std::nullopt;
    QSqlQuery q(db);
    q.setForwardOnly(true);
    if (!q.exec(QStringLiteral("SELECT sn, start_time, end_time FROM usage_periods"
                               " WHERE end_time < start_time ORDER BY sn, start_time"))) {
        fail(q, error);
        return std::nullopt;
    }
    while (q.next())
        problems->append(QStringLiteral("period of %1 starting %2 ends before it starts (%3)")
                             .arg(q.value(0).toString(),
                                  iso(stamp_from_archive(q.value(1).toLongLong())),
                                  iso(stamp_from_archive(q.value(2).toLongLong()))));
    if (!q.exec(QStringLiteral("SELECT sn, start_time, count(*) FROM usage_periods"
                               " GROUP BY sn, start_time HAVING count(*) > 1"))) {
        fail(q, error);
        return std::nullopt;
    }
    while (q.next())
        problems->append(QStringLiteral("period of %1 starting %2 is kept %3 times")
                             .arg(q.value(0).toString(),
                                  iso(stamp_from_archive(q.value(1).toLongLong())),
                                  q.value(2).toString()));
    return problems;
}

} // namespace veltrako::archive
