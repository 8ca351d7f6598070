#include "archive/archive_engine.h"

#include "archive/archive_sql.h"

#include <QElapsedTimer>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>
#include <QVariant>

namespace veltrako::archive {

namespace {

// The key of the server's migration lock: any number of our own.
constexpr qint64 migration_lock_key = 0x76656c7472616b6f; // "veltrako"

} // namespace

Engine engine_of(const QSqlDatabase& db) {
    return db.driverName() == QLatin1String("QPSQL") ? Engine::postgres : Engine::sqlite;
}

bool begin_write_transaction(QSqlDatabase& db, QString* error) {
    return exec_sql(db,
                    engine_of(db) == Engine::sqlite ? QStringLiteral("BEGIN IMMEDIATE")
                                                    : QStringLiteral("BEGIN"),
                    error);
}

bool lock_for_migration(QSqlDatabase& db, QString* error) {
    if (engine_of(db) == Engine::sqlite)
        return true;
    return exec_sql(db, QStringLiteral("SELECT pg_advisory_xact_lock(%1)").arg(migration_lock_key),
                    error);
}

std::optional<bool> has_table(QSqlDatabase& db, const QString& name, QString* error) {
    QSqlQuery q(db);
    q.prepare(engine_of(db) == Engine::sqlite
                  ? QStringLiteral("SELECT count(*) FROM sqlite_master WHERE type = 'table'"
                                   " AND name = ?")
                  : QStringLiteral("SELECT count(*) FROM information_schema.tables"
                                   " WHERE table_schema = current_schema() AND table_name = ?"));
    q.addBindValue(name);
    if (!q.exec() || !q.next()) {
        if (error)
            *error = q.lastError().text();
        return std::nullopt;
    }
    return q.value(0).toInt() > 0;
}

namespace {

std::optional<QString> journal_mode(QSqlDatabase& db, const QString& pragma, QString* error) {
    QSqlQuery q(db);
    if (q.exec(pragma) && q.next())
        return q.value(0).toString().toLower();
    if (error)
        *error = q.lastError().text();
    return std::nullopt;
}

// A file is switched to the write-ahead journal once, by whichever program
// opens it first; the switch needs the file to itself and, unlike every
// other statement, fails at once instead of waiting for the busy time-out
// while another program has it open. So the switch is tried again until the
// file is found switched (by the other program, usually) or the time-out is
// over.
bool use_write_ahead_journal(QSqlDatabase& db, int busy_timeout_ms, QString* error) {
    QElapsedTimer waited;
    waited.start();
    for (;;) {
        const std::optional<QString> mode =
            journal_mode(db, QStringLiteral("PRAGMA journal_mode"), error);
        if (mode == QLatin1String("wal"))
            return true;
        if (mode && journal_mode(db, QStringLiteral("PRAGMA journal_mode=WAL"), error) ==
                        QLatin1String("wal"))
            return true;
        if (waited.elapsed() >= busy_timeout_ms)
            return false;
        QThread::msleep(10);
    }
}

} // namespace

bool configure_sqlite_connection(QSqlDatabase& db, int busy_timeout_ms, QString* error) {
    return use_write_ahead_journal(db, busy_timeout_ms, error) &&
           exec_sql(db, QStringLiteral("PRAGMA foreign_keys=ON"), error) &&
           exec_sql(db, QStringLiteral("PRAGMA synchronous=NORMAL"), error);
}

bool configure_server_connection(QSqlDatabase& db, int lock_wait_ms, QString* error) {
    // The server's notices ("trigger ... does not exist, skipping") are not
    // the user's business; its warnings and errors are.
    return exec_sql(db, QStringLiteral("SET client_min_messages = warning"), error) &&
           exec_sql(db, QStringLiteral("SET lock_timeout = %1").arg(lock_wait_ms), error) &&
           exec_sql(db,
                    QStringLiteral("SET idle_in_transaction_session_timeout = %1")
                        .arg(std::max(60000, 4 * lock_wait_ms)),
                    error);
}

std::optional<QStringList> engine_integrity_problems(QSqlDatabase& db, QString* error) {
    QStringList problems;
    if (engine_of(db) == Engine::postgres)
        return problems;
    QSqlQuery q(db);
    q.setForwardOnly(true);
    if (!q.exec(QStringLiteral("PRAGMA integrity_check"))) {
        if (error)
            *error = q.lastError().text();
        return std::nullopt;
    }
    while (q.next()) {
        const QString line = q.value(0).toString();
        if (line != QLatin1String("ok"))
            problems << line;
    }
    if (!q.exec(QStringLiteral("PRAGMA foreign_key_check"))) {
        if (error)
            *error = q.lastError().text();
        return std::nullopt;
    }
    while (q.next())
        problems << QStringLiteral("%1: row %2 refers to a missing %3")
                        .arg(q.value(0).toString(), q.value(1).toString(), q.value(2).toString());
    return problems;
}

} // namespace veltrako::archive
