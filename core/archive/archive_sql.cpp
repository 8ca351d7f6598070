#include "archive/archive_sql.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

namespace veltrako::archive {

bool exec_sql(QSqlDatabase& db, const QString& sql, QString* error) {
    QSqlQuery q(db);
    if (q.exec(sql))
        return true;
    if (error)
        *error = q.lastError().text();
    return false;
}

} // namespace veltrako::archive
