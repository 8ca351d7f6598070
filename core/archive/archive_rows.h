#pragma once
// The archive's rows as they travel between a laptop and its server: read
// from one connection and merged into the other by the same rules a job's
// events merge by (an event once, by its UUID; a period by serial number and
// start second, the later readout's end winning; a device's board number
// from its latest event). The same SQL on both engines.
//
// What travels together: a unit is everything one write transaction of the
// laptop wrote for one device (a visit's events, an imported file), read by
// its change number; a range is everything a server wrote between two of its
// change numbers. Every unit or range is merged in one transaction of the
// receiving side, which the caller opens and closes.

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <optional>
#include <vector>

class QSqlDatabase;

namespace veltrako::archive {

struct TableRows {
    QString table;
    QList<QVariantList> rows; // in the table's travelling columns
};

// In the order they can be merged: a row's references come before it.
struct Rows {
    std::vector<TableRows> tables;
    int events() const;
    QStringList devices() const;
};

// What the laptop has not sent yet: one entry per change number and device,
// ascending.
struct Unit {
    qint64 change = 0;
    QString sn;
    int events = 0;
};
std::optional<std::vector<Unit>> units_between(QSqlDatabase& db, qint64 after, qint64 up_to,
                                               QString* error);

// The rows of one unit, with its device.
std::optional<Rows> read_unit(QSqlDatabase& db, const Unit& unit, QString* error);
// The rows a server wrote after change `after` up to `up_to`, with the
// devices their events name.
std::optional<Rows> read_range(QSqlDatabase& db, qint64 after, qint64 up_to, QString* error);

// Merges `rows` into the open transaction of `db`; every row written takes
// `change` as its change number. The number of events that were new there.
std::optional<int> merge_rows(QSqlDatabase& db, const Rows& rows, qint64 change, QString* error);

// The archive's last change number.
std::optional<qint64> last_change(QSqlDatabase& db, QString* error);

} // namespace veltrako::archive
