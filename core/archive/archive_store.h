#pragma once
// The archive itself: one Qt SQL connection, to the laptop's SQLite file or
// to a team's PostgreSQL server, opened on the thread that uses it and used
// only there, since Qt SQL connections cannot move between threads. Every
// write is one transaction: a batch of events goes in whole or not at all,
// and takes the next change number (archive_schema.h), which is also where
// writers on a server wait for each other. Nothing here talks to a person; a
// failure comes back as a text saying why.

#include "archive/archive_event.h"
#include "archive/server_address.h"

#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

class QSqlDatabase;

namespace veltrako::archive {

// What a batch added, event by event in batch order.
struct EventAdded {
    bool added = false; // false: an event of that id was there already
    int periods = 0;    // usage: periods handed in
    int new_periods = 0;
    int entries = 0; // status
    int new_entries = 0;
};

struct DeviceRow {
    QString sn;
    QString lp;
    qint64 last_visit_at = 0; // 0: no visit or report
    QString last_visit_bstd;
    int periods = 0;
    compliance::Stamp first_period = 0; // device clock; 0 without periods
    compliance::Stamp last_period = 0;
};

// An event with what the history line says of it.
struct EventRow {
    QString id;
    QString kind;
    qint64 at = 0;
    QString visit_id;
    QString written_by;
    // By kind: usage periods/new_periods, status entries/new_entries, report
    // path/printed/inspector, visit folder/result/reason, firmware
    // old/new_value and result/reason, write setting/old/new/pc_user/inspector.
    int count = 0;
    int new_count = 0;
    QString path;
    bool printed = false;
    QString inspector;
    QString result;
    QString reason;
    QString setting;
    QString old_value;
    QString new_value;
    QString pc_user;
    // report: its result ("pass", "fail", "incomplete"; empty for a report
    // of an older program), the O2 measured and the device's own reading.
    QString report_result;
    std::optional<double> o2_measured;
    std::optional<double> o2_device;
};

// A visit or an inspection report of one device, with the device's values
// as they were then.
struct VisitRow {
    QString id;
    QString kind; // "visit" or "report"
    qint64 at = 0;
    QMap<QString, QString> values; // parameter keys ("BSTD", "SW", "ZEITEN3", ...)
    // What the report (a visit's own) measured: its result, the O2 of the
    // analyser and the device's own O2 reading; empty without one.
    QString report_result = {};
    std::optional<double> o2_measured = {};
    std::optional<double> o2_device = {};
};

class ArchiveStore {
public:
    // The laptop's file.
    explicit ArchiveStore(QString path);
    // A team's server.
    explicit ArchiveStore(const ServerAddress& server);
    ~ArchiveStore();
    ArchiveStore(const ArchiveStore&) = delete;
    ArchiveStore& operator=(const ArchiveStore&) = delete;

    QString path() const { return path_; }
    bool is_server() const { return server_.has_value(); }
    // The file, or the server's address without a password.
    QString where() const;
    // How long a write waits for another program's transaction to end.
    void set_busy_timeout_ms(int ms) { busy_timeout_ms_ = ms; }

    // Opens the file (made when missing, with its folder), sets WAL and
    // foreign keys and migrates it to the latest version, or to `target`.
    // A server is connected to and must be at the latest version already
    // (archive init-server brings it there); with a `target` it is migrated
    // to that version. True when it is ready; already open counts. A failed
    // open is tried again by the next call.
    bool open(QString* error, int target = -1);
    bool is_open() const { return open_; }
    void close();

    // The events in one transaction. Events already known (by id) add
    // nothing. False, with nothing written, on any failure.
    bool write(const std::vector<ArchiveEvent>& batch, std::vector<EventAdded>* added,
               QString* error);

    // Sorted by serial number.
    std::optional<std::vector<DeviceRow>> devices(QString* error);
    bool has_device(const QString& sn, QString* error);
    // Oldest first.
    std::optional<std::vector<EventRow>> events(const QString& sn, QString* error);
    // Every archived period of the device, by start. `running_end`, when
    // given, becomes the end of the period with the latest end if that one
    // was still running at its readout (the readout's day), else 0.
    std::optional<std::vector<compliance::ComplianceRecord>>
    periods(const QString& sn, QString* error, compliance::Stamp* running_end = nullptr);
    // Visits, and reports filed outside a visit, oldest first.
    std::optional<std::vector<VisitRow>> visits(const QString& sn, QString* error);
    // When each status entry of the device was first archived (PC time).
    std::optional<std::vector<qint64>> status_first_seen(const QString& sn, QString* error);

    // SQLite's integrity check and the archive's own rules; one line per
    // problem, none when all is well. Nothing when the check could not run.
    std::optional<QStringList> check(QString* error);

    // The connection, for the sync and for tests that look inside.
    QSqlDatabase database() const;

private:
    bool open_file(QSqlDatabase& db, QString* error, int target);
    bool open_server(QSqlDatabase& db, QString* error, int target);
    bool write_event(const ArchiveEvent& e, qint64 change, EventAdded& added, QString* error);

    QString path_;
    std::optional<ServerAddress> server_;
    QString connection_;
    bool open_ = false;
    int busy_timeout_ms_ = 5000;
};

// How a usage period merges into one already kept (by serial number and
// start second): "ON CONFLICT ... DO UPDATE ...", for a readout and a sync
// alike.
QString period_merge_clause();

// Inside a write transaction: the next change number, which every row the
// transaction writes carries. Nothing when it cannot be had.
std::optional<qint64> next_change(QSqlDatabase& db, QString* error);

} // namespace veltrako::archive
