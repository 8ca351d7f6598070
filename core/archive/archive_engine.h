#pragma once
// Where SQLite (the laptop's file) and PostgreSQL (a team's server) differ.
// Everything else of the archive is one SQL text for both; each difference
// is one small function here, named for what it does, and decides by the
// connection's driver.

#include <QString>
#include <QStringList>

#include <optional>

class QSqlDatabase;

namespace veltrako::archive {

enum class Engine { sqlite, postgres };

Engine engine_of(const QSqlDatabase& db);

// A write transaction. SQLite: holds the write lock from its start (BEGIN
// IMMEDIATE), so that two programs writing at once wait for each other
// instead of failing when a read turns into a write. PostgreSQL locks rows
// as they are written; writers meet at the change counter (archive_store.h).
bool begin_write_transaction(QSqlDatabase& db, QString* error);

// Inside a write transaction: nobody else migrates until it ends. SQLite's
// write lock does that already; a server takes a lock of its own, since the
// tables it would lock may not exist yet.
bool lock_for_migration(QSqlDatabase& db, QString* error);

// Whether the archive's table `name` exists. Nothing when the database
// cannot be read at all (a file that is no database).
std::optional<bool> has_table(QSqlDatabase& db, const QString& name, QString* error);

// SQLite's own settings of a connection: the write-ahead journal (readers and
// one writer at once, and a killed writer leaves the file as it was) and
// foreign keys, which SQLite checks only when asked. Another program that
// has the file open holds it up for `busy_timeout_ms` at most.
bool configure_sqlite_connection(QSqlDatabase& db, int busy_timeout_ms, QString* error);

// A server session that waits no longer than `lock_wait_ms` for another
// laptop's transaction and is ended by the server when it sits in an open
// transaction (a laptop whose network went away), so that it never holds
// the others up for long. The server's notices stay with the server.
bool configure_server_connection(QSqlDatabase& db, int lock_wait_ms, QString* error);

// The engine's own check of its pages and references: SQLite's integrity
// and foreign-key checks, one line per fault. A server keeps its pages and
// foreign keys itself: nothing to add.
std::optional<QStringList> engine_integrity_problems(QSqlDatabase& db, QString* error);

} // namespace veltrako::archive
