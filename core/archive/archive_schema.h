#pragma once
// The archive's tables, as a list of forward migrations. A file records the
// version it has reached in schema_version; opening it runs the migrations
// after that version, each in its own transaction, and never rebuilds what is
// there. The SQL is written for SQLite and PostgreSQL alike: text, 64-bit
// integer and (for what a person measured) double precision columns, natural
// keys, INSERT ... ON CONFLICT.
//
// Identity never rests on a local row number: a device is its trimmed serial
// number, a usage period is (serial number, start second), a status entry is
// (serial number, the entry as its table line shows it), and every event has
// a UUID made where it happened. Every row says who wrote it (user@host).

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

class QSqlDatabase;

namespace veltrako::archive {

struct Migration {
    int version = 0; // the version the file has after it
    QStringList statements;
};

// In the order they run; the first brings an empty file to version 1.
const std::vector<Migration>& migrations();
int latest_version();

// The version recorded in the file; 0 for a file without tables. Nothing when
// it cannot be read.
std::optional<int> schema_version(QSqlDatabase& db, QString* error);

// A write transaction that holds the write lock from its start (SQLite's
// BEGIN IMMEDIATE), so that two programs writing at once wait for each other
// instead of failing when a read turns into a write.
bool begin_write_transaction(QSqlDatabase& db, QString* error);

// Runs every migration after the file's version up to `target`, each in one
// transaction. A file from a newer program (a version above every known
// one) is left alone and refused. False with the reason in `error`.
bool migrate(QSqlDatabase& db, int target, QString* error);

} // namespace veltrako::archive
