#include "archive/archive_sync.h"

#include "archive/archive_engine.h"
#include "archive/archive_rows.h"
#include "archive/archive_schema.h"
#include "archive/archive_sql.h"
#include "archive/archive_store.h"
#include "config/language.h"

#include <QElapsedTimer>
#include <QLoggingCategory>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QThread>

#include <algorithm>
#include <set>

namespace veltrako::archive {

namespace {

Q_LOGGING_CATEGORY(lc_sync, "veltrako2.archive.sync", QtWarningMsg)

void roll_back(QSqlDatabase db) {
    if (db.isOpen())
        QSqlQuery(db).exec(QStringLiteral("ROLLBACK"));
}

struct Marks {
    qint64 sent = -1; // nothing sent yet: rows of change number 0 are to go too
    qint64 received = 0;
};

std::optional<Marks> read_marks(QSqlDatabase& db, const QString& id, QString* error) {
    QSqlQuery q(db);
    q.prepare(QStringLiteral("SELECT sent, received FROM sync_marks WHERE archive_id = ?"));
    q.addBindValue(id);
    if (!q.exec()) {
        if (error)
            *error = q.lastError().text();
        return std::nullopt;
    }
    Marks m;
    if (q.next())
        m = {q.value(0).toLongLong(), q.value(1).toLongLong()};
    return m;
}

// Inside a write transaction of the laptop.
bool write_mark(QSqlDatabase& db, const QString& id, const QString& column, qint64 value,
                QString* error) {
    QSqlQuery q(db);
    q.prepare(QStringLiteral("INSERT INTO sync_marks (archive_id, sent, received, at)"
                             " VALUES (?, -1, 0, 0) ON CONFLICT (archive_id) DO NOTHING"));
    q.addBindValue(id);
    if (!q.exec()) {
        if (error)
            *error = q.lastError().text();
        return false;
    }
    q.prepare(QStringLiteral("UPDATE sync_marks SET %1 = ? WHERE archive_id = ?").arg(column));
    q.addBindValue(value);
    q.addBindValue(id);
    if (q.exec())
        return true;
    if (error)
        *error = q.lastError().text();
    return false;
}

bool commit(QSqlDatabase& db, QString* error) {
    if (exec_sql(db, QStringLiteral("COMMIT"), error))
        return true;
    roll_back(db);
    return false;
}

// The server's ranges after `after` up to `up_to`, without the transactions
// this run wrote itself, `size` numbers at most each.
std::vector<std::pair<qint64, qint64>> ranges(qint64 after, qint64 up_to,
                                              const std::set<qint64>& own, int size) {
    std::vector<std::pair<qint64, qint64>> out;
    const auto add = [&](qint64 from, qint64 to) {
        for (qint64 a = from; a < to; a += size)
            out.push_back({a, std::min(to, a + size)});
    };
    qint64 from = after;
    for (const qint64 s : own) {
        if (s <= from || s > up_to)
            continue;
        add(from, s - 1);
        from = s;
    }
    add(from, up_to);
    return out;
}

class Run {
public:
    Run(ArchiveStore& local, ArchiveStore& server, const SyncOptions& options,
        const SyncProgress& progress)
        : local_(local), server_(server), options_(options), progress_(progress) {}

    SyncReport go() {
        if (!local_.open(&report_.error))
            return report_;
        QSqlDatabase here = local_.database();
        QString id;
        std::optional<qint64> server_last;
        if (!with_retries([&](QString* why) {
                QSqlDatabase there = server_.database();
                id = archive_identity(there, why);
                return !id.isEmpty() && (server_last = last_change(there, why)).has_value();
            }))
            return stopped_before_sending(here);
        std::optional<Marks> marks = read_marks(here, id, &report_.error);
        const std::optional<qint64> local_last =
            marks ? last_change(here, &report_.error) : std::nullopt;
        const auto units = local_last
                               ? units_between(here, marks->sent, *local_last, &report_.error)
                               : std::nullopt;
        if (!units)
            return report_;
        total_ = static_cast<int>(units->size() +
                                  ranges(marks->received, *server_last, {}, options_.range).size());
        tell();

        for (std::size_t i = 0; i < units->size(); ++i) {
            const Unit& unit = (*units)[i];
            // The unit's change number is sent once all its devices are.
            const bool last_of_change =
                i + 1 == units->size() || (*units)[i + 1].change != unit.change;
            if (!with_retries([&](QString* why) { return send(unit, id, last_of_change, why); })) {
                for (std::size_t j = i; j < units->size(); ++j) {
                    report_.unsent_events += (*units)[j].events;
                    if (!report_.unsent_devices.contains((*units)[j].sn))
                        report_.unsent_devices << (*units)[j].sn;
                }
                return report_;
            }
            ++done_;
            tell();
        }
        // Everything this archive held when the run began is on the server,
        // including rows of change number 0 (from before version 2).
        if (!local_write([&](QString* why) {
                return write_mark(here, id, QStringLiteral("sent"), *local_last, why);
            }))
            return report_;
        report_.sent_all = true;

        if (!with_retries([&](QString* why) {
                QSqlDatabase there = server_.database();
                return (server_last = last_change(there, why)).has_value();
            }))
            return report_;
        const auto todo = ranges(marks->received, *server_last, own_, options_.range);
        total_ = done_ + static_cast<int>(todo.size());
        tell();
        for (const std::pair<qint64, qint64>& range : todo) {
            if (!with_retries(
                    [&](QString* why) { return receive(range.first, range.second, id, why); }))
                return report_;
            ++done_;
            tell();
        }
        report_.complete = local_write([&](QString* why) {
            return write_mark(here, id, QStringLiteral("received"), *server_last, why) &&
                   write_mark(here, id, QStringLiteral("at"), options_.now, why);
        });
        return report_;
    }

private:
    // One unit of the laptop in one transaction of the server.
    bool send(const Unit& unit, const QString& id, bool last_of_change, QString* why) {
        QSqlDatabase here = local_.database();
        QSqlDatabase there = server_.database();
        const std::optional<Rows> rows = read_unit(here, unit, why);
        if (!rows || !begin_write_transaction(there, why))
            return false;
        const std::optional<qint64> change = next_change(there, why);
        const std::optional<int> added =
            change ? merge_rows(there, *rows, *change, why) : std::nullopt;
        if (!added) {
            roll_back(there);
            return false;
        }
        if (!commit(there, why))
            return false;
        own_.insert(*change);
        report_.sent += *added;
        qCDebug(lc_sync) << "sent change" << unit.change << unit.sn << "as" << *change;
        if (!last_of_change)
            return true;
        return local_write([&](QString* w) {
            return write_mark(here, id, QStringLiteral("sent"), unit.change, w);
        });
    }

    // One range of the server's transactions in one transaction of the laptop.
    bool receive(qint64 after, qint64 up_to, const QString& id, QString* why) {
        QSqlDatabase here = local_.database();
        QSqlDatabase there = server_.database();
        const std::optional<Rows> rows = read_range(there, after, up_to, why);
        if (!rows || !begin_write_transaction(here, why))
            return false;
        // Rows from the server take change number 0: the server has them.
        const std::optional<int> added = merge_rows(here, *rows, 0, why);
        if (!added || !write_mark(here, id, QStringLiteral("received"), up_to, why)) {
            roll_back(here);
            return false;
        }
        if (!commit(here, why))
            return false;
        report_.received += *added;
        return true;
    }

    template <class Step> bool local_write(Step step) {
        QSqlDatabase here = local_.database();
        if (!begin_write_transaction(here, &report_.error))
            return false;
        if (!step(&report_.error)) {
            roll_back(here);
            return false;
        }
        return commit(here, &report_.error);
    }

    bool stopped() const { return options_.stop && options_.stop->load(); }

    // The step on an open connection; after a failure on a new one, after a
    // wait, `retries` times.
    template <class Step> bool with_retries(Step step) {
        for (int attempt = 0;; ++attempt) {
            QString why = QStringLiteral("stopped");
            if (!stopped() && server_.open(&why) && step(&why))
                return true;
            qCInfo(lc_sync) << "attempt" << attempt + 1 << "failed:" << why;
            if (attempt == options_.retries || stopped()) {
                report_.error = why;
                report_.gave_up = !stopped();
                return false;
            }
            server_.close();
            QElapsedTimer waited;
            waited.start();
            while (!stopped() && waited.elapsed() < (qint64(options_.first_wait_ms) << attempt))
                QThread::msleep(20);
        }
    }

    SyncReport stopped_before_sending(QSqlDatabase& here) {
        // What would have gone: every unit after the last mark of any server
        // (the server's identity is not known).
        QString ignored;
        const std::optional<qint64> last = last_change(here, &ignored);
        qint64 sent = -1;
        QSqlQuery q(here);
        if (q.exec(QStringLiteral("SELECT min(sent) FROM sync_marks")) && q.next() &&
            !q.value(0).isNull())
            sent = q.value(0).toLongLong();
        if (const auto units = last ? units_between(here, sent, *last, &ignored) : std::nullopt)
            for (const Unit& u : *units) {
                report_.unsent_events += u.events;
                if (!report_.unsent_devices.contains(u.sn))
                    report_.unsent_devices << u.sn;
            }
        return report_;
    }

    void tell() {
        if (progress_)
            progress_(done_, total_);
    }

    ArchiveStore& local_;
    ArchiveStore& server_;
    const SyncOptions& options_;
    const SyncProgress& progress_;
    SyncReport report_;
    std::set<qint64> own_; // the server's change numbers this run wrote
    int done_ = 0;
    int total_ = 0;
};

} // namespace

SyncReport sync_archive(ArchiveStore& local, ArchiveStore& server, const SyncOptions& options,
                        const SyncProgress& progress) {
    return Run(local, server, options, progress).go();
}

QString sync_problem_text(const config::LanguageTables& language, const SyncReport& report,
                          const SyncOptions& options) {
    if (report.complete)
        return {};
    QString text;
    if (report.unsent_events > 0)
        text = language.text(8955)
                   .arg(report.unsent_events)
                   .arg(report.unsent_devices.join(QStringLiteral(", "))) +
               QStringLiteral(". ");
    else if (report.sent_all)
        text = language.text(8956) + QStringLiteral(". ");
    // The server's failures are retried; this archive's are not.
    text += report.gave_up ? language.text(8957).arg(options.retries) : language.text(8825);
    QString why = report.error.simplified();
    if (!why.endsWith(QLatin1Char('.')) && !why.endsWith(QLatin1Char('?')))
        why += QLatin1Char('.');
    return text + QLatin1Char(' ') + why + QLatin1Char(' ') + language.text(8958);
}

std::optional<qint64> last_sync(ArchiveStore& local, QString* error) {
    if (!local.open(error))
        return std::nullopt;
    QSqlQuery q(local.database());
    if (!q.exec(QStringLiteral("SELECT max(at) FROM sync_marks")) || !q.next()) {
        if (error)
            *error = q.lastError().text();
        return std::nullopt;
    }
    return q.value(0).isNull() ? 0 : q.value(0).toLongLong();
}

} // namespace veltrako::archive
