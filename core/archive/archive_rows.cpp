#include "archive/archive_rows.h"

#include "archive/archive_store.h"

#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

#include <algorithm>
#include <set>

namespace veltrako::archive {

namespace {

// How a table's rows are chosen for a unit or a range.
enum class Travel {
    device,     // the devices the unit or range is about
    own_change, // rows that carry a change number of their own
    with_event, // rows that belong to an event and go with it
};

struct TableShape {
    QString name;
    QStringList columns;
    QString conflict; // "ON CONFLICT ..." as it merges
    Travel travel;
};

const std::vector<TableShape>& tables() {
    static const std::vector<TableShape> all{
        {QStringLiteral("devices"),
         {"sn", "lp", "lp_at", "changed"},
         // The board number of the latest event that brought one.
         QStringLiteral("ON CONFLICT (sn) DO UPDATE SET lp = excluded.lp, lp_at = excluded.lp_at,"
                        " changed = excluded.changed"
                        " WHERE excluded.lp <> '' AND excluded.lp_at > devices.lp_at"),
         Travel::device},
        {QStringLiteral("events"),
         {"id", "sn", "kind", "at", "visit_id", "written_by", "changed"},
         QStringLiteral("ON CONFLICT (id) DO NOTHING"),
         Travel::own_change},
        {QStringLiteral("usage_readouts"),
         {"event_id", "periods", "new_periods", "source", "adherence"},
         QStringLiteral("ON CONFLICT (event_id) DO NOTHING"),
         Travel::with_event},
        {QStringLiteral("status_readouts"),
         {"event_id", "entries", "new_entries", "sw", "source"},
         QStringLiteral("ON CONFLICT (event_id) DO NOTHING"),
         Travel::with_event},
        {QStringLiteral("event_values"),
         {"event_id", "position", "name", "value"},
         QStringLiteral("ON CONFLICT (event_id, position) DO NOTHING"),
         Travel::with_event},
        {QStringLiteral("reports"),
         {"event_id", "path", "printed", "inspector"},
         QStringLiteral("ON CONFLICT (event_id) DO NOTHING"),
         Travel::with_event},
        // What a report measured travels with it.
        {QStringLiteral("report_measurements"),
         {"event_id",     "result",        "protection_class", "o2",
          "o2_limit",     "o2_verdict",    "o2_device",        "o2_note",
          "flow",         "flow_set",      "flow_low",         "flow_high",
          "flow_verdict", "earth",         "earth_limit",      "earth_verdict",
          "leakage",      "leakage_limit", "leakage_verdict",  "instruments"},
         QStringLiteral("ON CONFLICT (event_id) DO NOTHING"),
         Travel::with_event},
        {QStringLiteral("visits"),
         {"event_id", "folder", "result", "reason"},
         QStringLiteral("ON CONFLICT (event_id) DO NOTHING"),
         Travel::with_event},
        {QStringLiteral("firmware_updates"),
         {"event_id", "old_version", "new_version", "result", "reason"},
         QStringLiteral("ON CONFLICT (event_id) DO NOTHING"),
         Travel::with_event},
        {QStringLiteral("device_writes"),
         {"event_id", "setting", "old_value", "new_value", "pc_user", "inspector"},
         QStringLiteral("ON CONFLICT (event_id) DO NOTHING"),
         Travel::with_event},
        {QStringLiteral("usage_periods"),
         {"sn", "start_time", "end_time", "running", "end_seen", "first_event", "written_by",
          "changed"},
         // The same rule as a readout's: the later readout knows the end better.
         period_merge_clause(),
         Travel::own_change},
        {QStringLiteral("status_entries"),
         {"sn", "entry", "block", "duration", "extended", "record", "first_event", "written_by",
          "changed"},
         QStringLiteral("ON CONFLICT (sn, entry) DO NOTHING"),
         Travel::own_change},
    };
    return all;
}

// Parameters per statement: well below both engines' limits, and few
// enough round trips that a readout of 4097 periods is a handful.
constexpr int parameters_per_statement = 4000;

// A NULL stays NULL; an empty text stays a text (the drivers would bind a
// null string as NULL).
QVariant bindable(const QVariant& v) {
    if (!v.isNull() && v.typeId() == QMetaType::QString && v.toString().isNull())
        return QStringLiteral("");
    return v;
}

bool fail(const QSqlQuery& q, QString* error) {
    if (error)
        *error = q.lastError().text();
    return false;
}

bool select_into(QSqlDatabase& db, const TableShape& t, const QString& where,
                 const QVariantList& values, Rows& rows, QString* error) {
    QSqlQuery q(db);
    q.setForwardOnly(true);
    q.prepare(QStringLiteral("SELECT %1 FROM %2 WHERE %3")
                  .arg(t.columns.join(QStringLiteral(", ")), t.name, where));
    for (int i = 0; i < values.size(); ++i)
        q.bindValue(i, values[i]);
    if (!q.exec())
        return fail(q, error);
    TableRows found{t.name, {}};
    const int n = static_cast<int>(t.columns.size());
    while (q.next()) {
        QVariantList row;
        row.reserve(n);
        for (int c = 0; c < n; ++c)
            row << q.value(c);
        found.rows << row;
    }
    rows.tables.push_back(std::move(found));
    return true;
}

const TableShape* shape_of(const QString& table) {
    for (const TableShape& t : tables())
        if (t.name == table)
            return &t;
    return nullptr;
}

} // namespace

int Rows::events() const {
    for (const TableRows& t : tables)
        if (t.table == QLatin1String("events"))
            return static_cast<int>(t.rows.size());
    return 0;
}

QStringList Rows::devices() const {
    std::set<QString> sns;
    for (const TableRows& t : tables)
        if (t.table == QLatin1String("devices"))
            for (const QVariantList& row : t.rows)
                sns.insert(row.value(0).toString());
    return {sns.begin(), sns.end()};
}

std::optional<std::vector<Unit>> units_between(QSqlDatabase& db, qint64 after, qint64 up_to,
                                               QString* error) {
    QSqlQuery q(db);
    q.setForwardOnly(true);
    q.prepare(QStringLiteral(
        "SELECT changed, sn, sum(is_event) FROM ("
        " SELECT changed, sn, 1 AS is_event FROM events WHERE changed > ? AND changed <= ?"
        " UNION ALL SELECT changed, sn, 0 FROM usage_periods WHERE changed > ? AND changed <= ?"
        " UNION ALL SELECT changed, sn, 0 FROM status_entries WHERE changed > ? AND changed <= ?"
        ") AS changes GROUP BY changed, sn ORDER BY changed, sn"));
    for (int i = 0; i < 3; ++i) {
        q.bindValue(2 * i, after);
        q.bindValue(2 * i + 1, up_to);
    }
    if (!q.exec()) {
        fail(q, error);
        return std::nullopt;
    }
    std::vector<Unit> units;
    while (q.next())
        units.push_back({q.value(0).toLongLong(), q.value(1).toString(), q.value(2).toInt()});
    return units;
}

std::optional<Rows> read_unit(QSqlDatabase& db, const Unit& unit, QString* error) {
    Rows rows;
    const QString its_events =
        QStringLiteral("event_id IN (SELECT id FROM events WHERE changed = ? AND sn = ?)");
    for (const TableShape& t : tables()) {
        const bool ok = t.travel == Travel::device
                            ? select_into(db, t, QStringLiteral("sn = ?"), {unit.sn}, rows, error)
                        : t.travel == Travel::own_change
                            ? select_into(db, t, QStringLiteral("changed = ? AND sn = ?"),
                                          {unit.change, unit.sn}, rows, error)
                            : select_into(db, t, its_events, {unit.change, unit.sn}, rows, error);
        if (!ok)
            return std::nullopt;
    }
    return rows;
}

std::optional<Rows> read_range(QSqlDatabase& db, qint64 after, qint64 up_to, QString* error) {
    Rows rows;
    const QString in_range = QStringLiteral("changed > ? AND changed <= ?");
    const QString range_events =
        QStringLiteral("SELECT %1 FROM events WHERE changed > ? AND changed <= ?");
    for (const TableShape& t : tables()) {
        bool ok = false;
        if (t.travel == Travel::device)
            ok = select_into(db, t,
                             QStringLiteral("(%1) OR sn IN (%2)")
                                 .arg(in_range, range_events.arg(QStringLiteral("sn"))),
                             {after, up_to, after, up_to}, rows, error);
        else if (t.travel == Travel::own_change)
            ok = select_into(db, t, in_range, {after, up_to}, rows, error);
        else
            ok = select_into(
                db, t,
                QStringLiteral("event_id IN (%1)").arg(range_events.arg(QStringLiteral("id"))),
                {after, up_to}, rows, error);
        if (!ok)
            return std::nullopt;
    }
    return rows;
}

std::optional<int> merge_rows(QSqlDatabase& db, const Rows& rows, qint64 change, QString* error) {
    int new_events = 0;
    for (const TableRows& t : rows.tables) {
        const TableShape* shape = shape_of(t.table);
        if (!shape) {
            if (error)
                *error = QStringLiteral("no such table: %1").arg(t.table);
            return std::nullopt;
        }
        const int n = static_cast<int>(shape->columns.size());
        const int changed_at = static_cast<int>(shape->columns.indexOf(QStringLiteral("changed")));
        const QString one_row = QLatin1Char('(') +
                                QStringList(n, QStringLiteral("?")).join(QStringLiteral(", ")) +
                                QLatin1Char(')');
        const int per_statement = std::max(1, parameters_per_statement / n);
        QSqlQuery q(db);
        int prepared_for = 0;
        for (qsizetype from = 0; from < t.rows.size(); from += per_statement) {
            const int count =
                static_cast<int>(std::min<qsizetype>(per_statement, t.rows.size() - from));
            if (count != prepared_for) {
                q.prepare(QStringLiteral("INSERT INTO %1 (%2) VALUES %3 %4")
                              .arg(t.table, shape->columns.join(QStringLiteral(", ")),
                                   QStringList(count, one_row).join(QStringLiteral(", ")),
                                   shape->conflict));
                prepared_for = count;
            }
            int p = 0;
            for (int r = 0; r < count; ++r) {
                const QVariantList& row = t.rows[from + r];
                for (int c = 0; c < n; ++c)
                    q.bindValue(p++, c == changed_at ? QVariant(change) : bindable(row.value(c)));
            }
            if (!q.exec()) {
                fail(q, error);
                return std::nullopt;
            }
            if (t.table == QLatin1String("events"))
                new_events += q.numRowsAffected();
        }
    }
    return new_events;
}

std::optional<qint64> last_change(QSqlDatabase& db, QString* error) {
    QSqlQuery q(db);
    if (!q.exec(QStringLiteral("SELECT last FROM change_counter")) || !q.next()) {
        fail(q, error);
        return std::nullopt;
    }
    return q.value(0).toLongLong();
}

} // namespace veltrako::archive
