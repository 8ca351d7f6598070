#include "archive/archive_server.h"

#include "archive/archive_engine.h"
#include "archive/archive_schema.h"
#include "archive/archive_sql.h"
#include "archive/archive_store.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace veltrako::archive {

namespace {

// The tables of events and what belongs to them.
const QString event_tables = QStringLiteral(
    "events, usage_readouts, status_readouts, event_values, reports, report_measurements, visits,"
    " firmware_updates, device_writes");
const QString merged_tables = QStringLiteral("devices, usage_periods, status_entries");

const QStringList access_rules{
    QStringLiteral(
        "DO $$ BEGIN"
        " IF NOT EXISTS (SELECT 1 FROM pg_roles WHERE rolname = 'veltrako2_technician') THEN"
        "  CREATE ROLE veltrako2_technician NOLOGIN;"
        " END IF;"
        " IF NOT EXISTS (SELECT 1 FROM pg_roles WHERE rolname = 'veltrako2_office') THEN"
        "  CREATE ROLE veltrako2_office NOLOGIN;"
        " END IF;"
        " EXECUTE format('GRANT USAGE ON SCHEMA %I TO veltrako2_technician, veltrako2_office',"
        "  current_schema());"
        " END $$"),
    QStringLiteral("GRANT SELECT ON schema_version, archive_identity, change_counter, %1, %2"
                   " TO veltrako2_technician, veltrako2_office")
        .arg(event_tables, merged_tables),
    QStringLiteral("GRANT INSERT ON %1, %2 TO veltrako2_technician")
        .arg(event_tables, merged_tables),
    // The merge's columns only; which way they may move, the guard says.
    QStringLiteral("GRANT UPDATE (lp, lp_at, changed) ON devices TO veltrako2_technician"),
    QStringLiteral("GRANT UPDATE (end_time, running, end_seen, changed) ON usage_periods"
                   " TO veltrako2_technician"),
    QStringLiteral("GRANT UPDATE (last) ON change_counter TO veltrako2_technician"),
    QStringLiteral("GRANT DELETE ON %1 TO veltrako2_technician").arg(event_tables),
    // Who wrote an event is the server's to say, not the laptop's.
    QStringLiteral("ALTER TABLE events ALTER COLUMN login SET DEFAULT current_user"),
    QStringLiteral(
        "CREATE OR REPLACE FUNCTION veltrako2_guard() RETURNS trigger LANGUAGE plpgsql AS $f$"
        " DECLARE writer TEXT;"
        " BEGIN"
        // The archive's owner (and a superuser) may put anything right.
        "  IF pg_has_role(current_user,"
        "     (SELECT relowner FROM pg_class WHERE oid = TG_RELID), 'USAGE') THEN"
        "   IF TG_OP = 'DELETE' THEN RETURN OLD; END IF;"
        "   RETURN NEW;"
        "  END IF;"
        "  IF TG_OP = 'UPDATE' THEN"
        "   IF TG_TABLE_NAME = 'usage_periods' THEN"
        "    IF NEW.end_seen > OLD.end_seen THEN RETURN NEW; END IF;"
        "   ELSIF TG_TABLE_NAME = 'devices' THEN"
        "    IF NEW.lp_at > OLD.lp_at THEN RETURN NEW; END IF;"
        "   ELSIF TG_TABLE_NAME = 'change_counter' THEN"
        "    IF NEW.last > OLD.last THEN RETURN NEW; END IF;"
        "   END IF;"
        "   RAISE EXCEPTION 'the archive''s % change only by merging a later readout',"
        "    TG_TABLE_NAME USING ERRCODE = 'insufficient_privilege';"
        "  END IF;"
        "  IF TG_TABLE_NAME = 'events' THEN"
        "   writer := OLD.login;"
        "  ELSE"
        "   SELECT login INTO writer FROM events WHERE id = OLD.event_id;"
        "  END IF;"
        "  IF writer IS DISTINCT FROM current_user THEN"
        "   RAISE EXCEPTION 'not deleted from %: written by another login (%)', TG_TABLE_NAME,"
        "    coalesce(nullif(writer, ''), 'unknown') USING ERRCODE = 'insufficient_privilege';"
        "  END IF;"
        "  RETURN OLD;"
        " END $f$"),
};

} // namespace

bool init_server(ArchiveStore& server, QString* error) {
    if (!server.open(error, latest_version()))
        return false;
    QSqlDatabase db = server.database();
    QStringList statements = access_rules;
    for (const QString& table :
         (event_tables + QStringLiteral(", ") + merged_tables + QStringLiteral(", change_counter"))
             .split(QStringLiteral(", "))) {
        statements << QStringLiteral("DROP TRIGGER IF EXISTS veltrako2_guard ON %1").arg(table)
                   << QStringLiteral("CREATE TRIGGER veltrako2_guard BEFORE UPDATE OR DELETE ON"
                                     " %1 FOR EACH ROW EXECUTE FUNCTION veltrako2_guard()")
                          .arg(table);
    }
    // Two of these at once wait for each other; roles are the whole server's.
    if (!begin_write_transaction(db, error))
        return false;
    bool ok = lock_for_migration(db, error);
    for (const QString& sql : statements)
        if (!(ok = ok && exec_sql(db, sql, error)))
            break;
    if (ok && exec_sql(db, QStringLiteral("COMMIT"), error))
        return true;
    exec_sql(db, QStringLiteral("ROLLBACK"), nullptr);
    return false;
}

} // namespace veltrako::archive
