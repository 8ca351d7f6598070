#pragma once
// One SQL statement without values, run on a connection of the archive: the
// settings, locks, migrations and transaction ends every part of the archive
// issues the same way.

#include <QString>

class QSqlDatabase;

namespace veltrako::archive {

// False, with the database's reason in `error` (when given), when it failed.
bool exec_sql(QSqlDatabase& db, const QString& sql, QString* error);

} // namespace veltrako::archive
