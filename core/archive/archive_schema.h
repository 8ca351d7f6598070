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
//
// Version 2 readies the archive for a team's server: rows that travel carry
// the number of the transaction that last wrote them ("changed", counted in
// change_counter), so a sync finds what is new on either side without
// comparing everything; events say which server login wrote them; each
// archive has an identity of its own, and a laptop keeps how far it has
// synchronised with each server archive in sync_marks; a usage readout
// keeps its own verdict on the 30-day rule.

#include <QString>
#include <QStringList>

#include <functional>
#include <optional>
#include <vector>

class QSqlDatabase;

namespace veltrako::archive {

struct Migration {
    int version = 0; // the version the file has after it
    QStringList statements;
    // Runs after the statements, in the same transaction.
    std::function<bool(QSqlDatabase& db, QString* error)> then;
};

// In the order they run; the first brings an empty file to version 1.
const std::vector<Migration>& migrations();
int latest_version();

// The version recorded in the file; 0 for a file without tables. Nothing when
// it cannot be read.
std::optional<int> schema_version(QSqlDatabase& db, QString* error);

// Runs every migration after the file's version up to `target`, each in one
// transaction. A file from a newer program (a version above every known
// one) is left alone and refused. False with the reason in `error`.
bool migrate(QSqlDatabase& db, int target, QString* error);

// The archive's identity, made once when it reached version 2; empty when
// it cannot be read.
QString archive_identity(QSqlDatabase& db, QString* error);

} // namespace veltrako::archive
