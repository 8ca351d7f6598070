#include "archive/archive_schema.h"

#include "archive/archive_engine.h"
#include "archive/archive_sql.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QUuid>
#include <QVariant>

namespace veltrako::archive {

namespace {

// Times: "at" columns are the PC's time in seconds since 1970 UTC; period
// and status times are the device's own clock, seconds since 1970 as if its
// wall time were UTC (the device knows no zone).
const Migration version_1{
    1,
    {
        QStringLiteral("CREATE TABLE schema_version (version INTEGER NOT NULL)"),
        QStringLiteral("INSERT INTO schema_version (version) VALUES (0)"),
        // The board number is the one the latest event brought.
        QStringLiteral("CREATE TABLE devices ("
                       " sn TEXT PRIMARY KEY,"
                       " lp TEXT NOT NULL DEFAULT '',"
                       " lp_at BIGINT NOT NULL DEFAULT 0)"),
        QStringLiteral("CREATE TABLE events ("
                       " id TEXT PRIMARY KEY,"
                       " sn TEXT NOT NULL REFERENCES devices (sn),"
                       " kind TEXT NOT NULL,"
                       " at BIGINT NOT NULL,"
                       " visit_id TEXT,"
                       " written_by TEXT NOT NULL)"),
        QStringLiteral("CREATE INDEX events_by_device ON events (sn, at)"),
        // A period is kept once; its end is the one of the latest readout
        // that saw it (end_seen), so a running period's end moves on.
        QStringLiteral("CREATE TABLE usage_periods ("
                       " sn TEXT NOT NULL REFERENCES devices (sn),"
                       " start_time BIGINT NOT NULL,"
                       " end_time BIGINT NOT NULL,"
                       " running INTEGER NOT NULL,"
                       " end_seen BIGINT NOT NULL,"
                       " first_event TEXT NOT NULL REFERENCES events (id),"
                       " written_by TEXT NOT NULL,"
                       " PRIMARY KEY (sn, start_time))"),
        QStringLiteral("CREATE TABLE usage_readouts ("
                       " event_id TEXT PRIMARY KEY REFERENCES events (id),"
                       " periods INTEGER NOT NULL,"
                       " new_periods INTEGER NOT NULL,"
                       " source TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE status_entries ("
                       " sn TEXT NOT NULL REFERENCES devices (sn),"
                       " entry TEXT NOT NULL,"
                       " block INTEGER NOT NULL,"
                       " duration INTEGER NOT NULL,"
                       " extended INTEGER NOT NULL,"
                       " record TEXT NOT NULL,"
                       " first_event TEXT NOT NULL REFERENCES events (id),"
                       " written_by TEXT NOT NULL,"
                       " PRIMARY KEY (sn, entry))"),
        QStringLiteral("CREATE TABLE status_readouts ("
                       " event_id TEXT PRIMARY KEY REFERENCES events (id),"
                       " entries INTEGER NOT NULL,"
                       " new_entries INTEGER NOT NULL,"
                       " sw TEXT NOT NULL,"
                       " source TEXT NOT NULL)"),
        // A report's file lines and a visit's device snapshot, KEY and VALUE.
        QStringLiteral("CREATE TABLE event_values ("
                       " event_id TEXT NOT NULL REFERENCES events (id),"
                       " position INTEGER NOT NULL,"
                       " name TEXT NOT NULL,"
                       " value TEXT NOT NULL,"
                       " PRIMARY KEY (event_id, position))"),
        QStringLiteral("CREATE TABLE reports ("
                       " event_id TEXT PRIMARY KEY REFERENCES events (id),"
                       " path TEXT NOT NULL,"
                       " printed INTEGER NOT NULL,"
                       " inspector TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE visits ("
                       " event_id TEXT PRIMARY KEY REFERENCES events (id),"
                       " folder TEXT NOT NULL,"
                       " result TEXT NOT NULL,"
                       " reason TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE firmware_updates ("
                       " event_id TEXT PRIMARY KEY REFERENCES events (id),"
                       " old_version TEXT NOT NULL,"
                       " new_version TEXT NOT NULL,"
                       " result TEXT NOT NULL,"
                       " reason TEXT NOT NULL)"),
        QStringLiteral("CREATE TABLE device_writes ("
                       " event_id TEXT PRIMARY KEY REFERENCES events (id),"
                       " setting TEXT NOT NULL,"
                       " old_value TEXT NOT NULL,"
                       " new_value TEXT NOT NULL,"
                       " pc_user TEXT NOT NULL,"
                       " inspector TEXT NOT NULL)"),
    },
    {}};

// A change number is the number of the write transaction that last wrote a
// row: 0 for rows from before version 2 and for rows a laptop received from
// its server (which the server has already).
bool make_identity(QSqlDatabase& db, QString* error) {
    QSqlQuery q(db);
    q.prepare(QStringLiteral("INSERT INTO archive_identity (id) VALUES (?)"));
    q.addBindValue(QUuid::createUuid().toString(QUuid::WithoutBraces));
    if (q.exec())
        return true;
    if (error)
        *error = q.lastError().text();
    return false;
}

const Migration version_2{
    2,
    {
        QStringLiteral("ALTER TABLE devices ADD COLUMN changed BIGINT NOT NULL DEFAULT 0"),
        QStringLiteral("ALTER TABLE events ADD COLUMN changed BIGINT NOT NULL DEFAULT 0"),
        // The server login that wrote the event; empty on a laptop.
        QStringLiteral("ALTER TABLE events ADD COLUMN login TEXT NOT NULL DEFAULT ''"),
        QStringLiteral("ALTER TABLE usage_periods ADD COLUMN changed BIGINT NOT NULL DEFAULT 0"),
        QStringLiteral("ALTER TABLE status_entries ADD COLUMN changed BIGINT NOT NULL DEFAULT 0"),
        // The readout's own 30-day rule, "30d|…|met" or "|not met"; empty
        // when it had no prescription to judge against.
        QStringLiteral("ALTER TABLE usage_readouts ADD COLUMN adherence TEXT NOT NULL DEFAULT ''"),
        QStringLiteral("CREATE INDEX devices_by_change ON devices (changed)"),
        QStringLiteral("CREATE INDEX events_by_change ON events (changed, sn)"),
        QStringLiteral("CREATE INDEX periods_by_change ON usage_periods (changed, sn)"),
        QStringLiteral("CREATE INDEX status_by_change ON status_entries (changed, sn)"),
        QStringLiteral("CREATE TABLE change_counter (last BIGINT NOT NULL)"),
        QStringLiteral("INSERT INTO change_counter (last) VALUES (0)"),
        QStringLiteral("CREATE TABLE archive_identity (id TEXT PRIMARY KEY)"),
        // Per server archive: the last change number of this archive sent
        // there, the last of the server's received, and when a sync last
        // completed (PC time).
        QStringLiteral("CREATE TABLE sync_marks ("
                       " archive_id TEXT PRIMARY KEY,"
                       " sent BIGINT NOT NULL,"
                       " received BIGINT NOT NULL,"
                       " at BIGINT NOT NULL)"),
    },
    make_identity};

// What an inspection measured and how it was judged, one row per report
// that holds an ERGEBNIS line (reports of older programs have none), so
// that "the last inspection's O2 failed" is one join from a device's events.
// Numbers are what the technician typed, as numbers (NULL: not typed);
// limits those the report judged by (NULL: none to judge by); verdicts
// 'pass', 'fail' or '' (not judged); the result 'pass', 'fail' or
// 'incomplete', as the report file has it. o2_device is the device's own
// reading in the report's snapshot, o2_note 1 when the two differ by more
// than 3 percentage points.
const Migration version_3{3,
                          {
                              QStringLiteral("CREATE TABLE report_measurements ("
                                             " event_id TEXT PRIMARY KEY REFERENCES events (id),"
                                             " result TEXT NOT NULL,"
                                             " protection_class TEXT NOT NULL,"
                                             " o2 DOUBLE PRECISION,"
                                             " o2_limit DOUBLE PRECISION,"
                                             " o2_verdict TEXT NOT NULL,"
                                             " o2_device DOUBLE PRECISION,"
                                             " o2_note INTEGER NOT NULL,"
                                             " flow DOUBLE PRECISION,"
                                             " flow_set DOUBLE PRECISION,"
                                             " flow_low DOUBLE PRECISION,"
                                             " flow_high DOUBLE PRECISION,"
                                             " flow_verdict TEXT NOT NULL,"
                                             " earth DOUBLE PRECISION,"
                                             " earth_limit DOUBLE PRECISION,"
                                             " earth_verdict TEXT NOT NULL,"
                                             " leakage DOUBLE PRECISION,"
                                             " leakage_limit DOUBLE PRECISION,"
                                             " leakage_verdict TEXT NOT NULL,"
                                             " instruments TEXT NOT NULL)"),
                          },
                          {}};

} // namespace

const std::vector<Migration>& migrations() {
    static const std::vector<Migration> all{version_1, version_2, version_3};
    return all;
}

int latest_version() {
    return migrations().back().version;
}

std::optional<int> schema_version(QSqlDatabase& db, QString* error) {
    // A file that is not a database at all fails here already.
    const std::optional<bool> known = has_table(db, QStringLiteral("schema_version"), error);
    if (!known)
        return std::nullopt;
    if (!*known)
        return 0;
    QSqlQuery q(db);
    if (!q.exec(QStringLiteral("SELECT version FROM schema_version")) || !q.next()) {
        if (error)
            *error = q.lastError().text();
        return std::nullopt;
    }
    return q.value(0).toInt();
}

bool migrate(QSqlDatabase& db, int target, QString* error) {
    const std::optional<int> found = schema_version(db, error);
    if (!found)
        return false;
    if (*found > latest_version()) {
        if (error)
            *error = QStringLiteral("schema version %1 is newer than this program's %2")
                         .arg(*found)
                         .arg(latest_version());
        return false;
    }
    for (const Migration& m : migrations()) {
        if (m.version <= *found || m.version > target)
            continue;
        // Another program may be migrating the same file: the write lock
        // first, then the version it has reached.
        if (!begin_write_transaction(db, error))
            return false;
        if (!lock_for_migration(db, error)) {
            exec_sql(db, QStringLiteral("ROLLBACK"), nullptr);
            return false;
        }
        const std::optional<int> now = schema_version(db, error);
        if (!now) {
            exec_sql(db, QStringLiteral("ROLLBACK"), nullptr);
            return false;
        }
        if (*now >= m.version) {
            exec_sql(db, QStringLiteral("COMMIT"), nullptr);
            continue;
        }
        bool ok = true;
        for (const QString& sql : m.statements)
            if (!(ok = exec_sql(db, sql, error)))
                break;
        ok = ok && (!m.then || m.then(db, error));
        ok = ok &&
             exec_sql(db, QStringLiteral("UPDATE schema_version SET version = %1").arg(m.version),
                      error);
        if (!ok || !exec_sql(db, QStringLiteral("COMMIT"), error)) {
            exec_sql(db, QStringLiteral("ROLLBACK"), nullptr);
            return false;
        }
    }
    return true;
}

QString archive_identity(QSqlDatabase& db, QString* error) {
    QSqlQuery q(db);
    if (!q.exec(QStringLiteral("SELECT id FROM archive_identity")) || !q.next()) {
        if (error)
            *error = q.lastError().text();
        return {};
    }
    return q.value(0).toString();
}

} // namespace veltrako::archive
