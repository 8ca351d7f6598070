// The team archive on a real PostgreSQL server that this program starts for
// itself: init-server from every earlier version, two laptops synchronising
// both ways and again, the roles' rights enforced by the server, a password
// that never shows, a connection cut in the middle of a sync and the next
// run completing, two syncs at once, the fleet's due devices, and the
// window's "Abgleichen" on the real event loop.

#include "archive/archive_event.h"
#include "archive/archive_fleet.h"
#include "archive/archive_hooks.h"
#include "archive/archive_schema.h"
#include "archive/archive_server.h"
#include "archive/archive_service.h"
#include "archive/archive_store.h"
#include "archive/archive_sync.h"
#include "cli_program.h"
#include "config/language.h"
#include "history_page.h"
#include "pg_server.h"
#include "table.h"
#include "window_harness.h"

#include <QCheckBox>
#include <QElapsedTimer>
#include <QProgressBar>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStatusBar>
#include <QTableWidget>
#include <QThread>

#include <atomic>
#include <memory>

using namespace veltrako;
using namespace veltrako::testing;
using compliance::ComplianceRecord;

namespace {

const QDateTime pc_time(QDate(2026, 3, 2), QTime(10, 0), Qt::UTC);

// `count` nightly periods of `sn` from night `first` on; the last one still
// running at the readout when `running`, which then ends `open_hours` after
// its start.
jobs::UsageReadout readout(const QString& sn, int first, int count, bool running = false,
                           int open_hours = 2) {
    jobs::UsageReadout r{sn, QStringLiteral("LP-") + sn, pc_time.addDays(first + count), {}, 0};
    const compliance::Stamp night0 = compliance::make_stamp(2025, 1, 1, 22, 0, 0);
    for (int i = first; i < first + count; ++i) {
        const compliance::Stamp start = night0 + i * 86400LL;
        const bool open = running && i == first + count - 1;
        r.periods.push_back({start, start + (open ? open_hours : 8) * 3600LL});
        if (open)
            r.running_start = start;
    }
    return r;
}

jobs::ReportFiled filed_report(const QString& sn, const QDateTime& at, const QString& bstd,
                               const QString& measured_o2 = QStringLiteral("80,5")) {
    return {sn,
            at,
            QStringLiteral("/r/") + sn + QStringLiteral(".txt"),
            false,
            {QStringLiteral("SN|") + sn, QStringLiteral("BSTD|") + bstd,
             QStringLiteral("t_Pruefer|Max Muster"), QStringLiteral("LP|LP-") + sn,
             QStringLiteral("O2|95"), QStringLiteral("m_O2|") + measured_o2,
             QStringLiteral("ERGEBNIS|fail")}};
}

void archive_into(archive::ArchiveStore& store, const std::vector<archive::ArchiveEvent>& events) {
    QString error;
    QVERIFY2(store.write(events, nullptr, &error), qPrintable(error));
}

void archive_into(const QString& file, const std::vector<archive::ArchiveEvent>& events) {
    archive::ArchiveStore store(file);
    archive_into(store, events);
}

archive::ServerAddress address(const QString& uri) {
    return archive::parse_server_address(uri).address.value();
}

QStringList lines_of(const QString& text) {
    QStringList lines = text.split('\n', Qt::SkipEmptyParts);
    lines.removeIf([](const QString& l) { return l.startsWith("QStandardPaths:"); });
    return lines;
}

// A program copy whose veltrako2.ini holds `lines`.
std::unique_ptr<ProgramCopy> cli_with_ini(const QStringList& lines) {
    auto cli = std::make_unique<ProgramCopy>(QStringLiteral(VELTRAKO2_CLI_PATH));
    const QString ini = cli->file("veltrako2.ini");
    QFile::remove(ini); // a link to the build's own: never written through
    QFile f(ini);
    if (f.open(QIODevice::WriteOnly))
        f.write((lines.join("\r\n") + "\r\n").toUtf8());
    return cli;
}

} // namespace

class TestArchiveServer : public QObject {
    Q_OBJECT

    std::unique_ptr<PgServer> pg;
    QString tech_a_password;

    // A database of its own with the archive set up by the administrator.
    QString fresh_archive() {
        const QString db = pg->fresh_database();
        archive::ArchiveStore admin(address(pg->uri(PgServer::admin, db)));
        QString error;
        if (!archive::init_server(admin, &error))
            qWarning("init-server: %s", qPrintable(error));
        return db;
    }
    qint64 count(const QString& db, const QString& sql) { return pg->scalar(sql, db); }

private slots:
    void initTestCase() {
        pg = std::make_unique<PgServer>();
        // No server, no test: this fails, it never skips.
        QVERIFY2(pg->ok(), qPrintable(pg->error()));
        fresh_archive(); // the roles exist from here on
        tech_a_password = pg->add_login("tech_a", archive::technician_role);
        pg->add_login("tech_b", archive::technician_role);
        pg->add_login("office", archive::office_role);
    }
    void cleanupTestCase() { pg.reset(); }

    // init-server brings a server archive of every earlier version forward,
    // keeps what it held, and may run again.
    void init_server_from_every_version_data() {
        QTest::addColumn<int>("from");
        for (int v = 0; v < archive::latest_version(); ++v)
            QTest::newRow(qPrintable(QStringLiteral("version %1").arg(v))) << v;
    }
    void init_server_from_every_version() {
        QFETCH(int, from);
        const QString db = pg->fresh_database();
        const QString uri = pg->uri(PgServer::admin, db);
        if (from > 0) {
            archive::ArchiveStore old(address(uri));
            QString error;
            QVERIFY2(old.open(&error, from), qPrintable(error));
            QSqlQuery q(old.database());
            QVERIFY(q.exec("INSERT INTO devices (sn, lp, lp_at) VALUES ('VO2-1', 'LP1', 1)"));
            QVERIFY(q.exec("INSERT INTO events VALUES ('e1', 'VO2-1', 'usage', 5, NULL, 'a@b')"));
            QVERIFY(
                q.exec("INSERT INTO usage_periods VALUES ('VO2-1', 100, 200, 0, 5, 'e1', 'a@b')"));
        }
        for (int run = 0; run < 2; ++run) {
            const ProgramRun r = run_cli({"archive", "init-server", "--server", uri});
            QVERIFY2(r.exit_code == 0, qPrintable(r.err));
            QCOMPARE(lines_of(r.out), QStringList{QStringLiteral("team archive ready: %1, %2")
                                                      .arg(uri)
                                                      .arg(archive::latest_version())});
        }
        QCOMPARE(count(db, "SELECT version FROM schema_version"), archive::latest_version());
        QCOMPARE(count(db, "SELECT count(*) FROM usage_periods"), from > 0 ? 1 : 0);
        QCOMPARE(count(db, "SELECT count(*) FROM archive_identity"), 1);
        // A technician may use it straight away.
        archive::ArchiveStore tech(address(pg->uri("tech_a", db)));
        QString error;
        QVERIFY2(tech.open(&error), qPrintable(error));
        QVERIFY2(tech.write({archive::usage_event(readout("VO2-2", 0, 3), "t@h")}, nullptr, &error),
                 qPrintable(error));
    }

    // A laptop's archive from before the team archive (version 1) carries no
    // change numbers: its first sync sends everything it held.
    void an_older_laptop_archive_sends_everything() {
        const QString db = fresh_archive();
        QTemporaryDir dir;
        const QString file = dir.filePath("old.sqlite");
        {
            archive::ArchiveStore old(file);
            QString error;
            QVERIFY2(old.open(&error, 1), qPrintable(error));
            QSqlQuery q(old.database());
            QVERIFY(q.exec("INSERT INTO devices (sn, lp, lp_at) VALUES ('VO2-1', 'LP1', 1)"));
            QVERIFY(q.exec("INSERT INTO events VALUES ('e1', 'VO2-1', 'usage', 5, NULL, 'a@b')"));
            QVERIFY(q.exec("INSERT INTO usage_readouts VALUES ('e1', 1, 1, 'device')"));
            QVERIFY(
                q.exec("INSERT INTO usage_periods VALUES ('VO2-1', 100, 200, 0, 5, 'e1', 'a@b')"));
        }
        archive::ArchiveStore local(file); // brought forward as it opens
        archive_into(local, {archive::usage_event(readout("VO2-2", 0, 3), "a@b")});
        archive::ArchiveStore server(address(pg->uri("tech_a", db)));
        const archive::SyncReport r = archive::sync_archive(local, server, {});
        QVERIFY2(r.complete, qPrintable(r.error));
        QCOMPARE(r.sent, 2);
        QCOMPARE(count(db, "SELECT count(*) FROM usage_periods"), 4);
        QCOMPARE(archive::sync_archive(local, server, {}).sent, 0);
    }

    // Two laptops: each sends what the server lacks and fetches what the
    // other added; a second run has nothing to do; both end with the same
    // history, the running period closed by the later readout.
    void two_laptops_sync_both_ways() {
        const QString db = fresh_archive();
        QTemporaryDir dir;
        const QString a = dir.filePath("a.sqlite");
        const QString b = dir.filePath("b.sqlite");
        archive_into(a, {archive::usage_event(readout("VO2-1", 0, 100, true), "anna@a")});
        archive_into(
            a, {archive::report_event(filed_report("VO2-1", pc_time, "001000:00"), "anna@a")});
        archive_into(b, {archive::usage_event(readout("VO2-1", 50, 100), "ben@b")});
        archive_into(
            b, {archive::status_event({"VO2-2", "LP2", "5122", pc_time, false, {}}, "ben@b")});
        const auto sync = [&](const QString& file, const QString& login) {
            const ProgramRun r =
                run_cli({"--archive", file, "archive", "sync", "--server", pg->uri(login, db)});
            return r.exit_code == 0 ? lines_of(r.out).join('\n') : r.err;
        };
        QCOMPARE(sync(a, "tech_a"), QString("sync: sent 2, received 0"));
        QCOMPARE(sync(b, "tech_b"), QString("sync: sent 2, received 2"));
        QCOMPARE(sync(a, "tech_a"), QString("sync: sent 0, received 2"));
        QCOMPARE(sync(a, "tech_a"), QString("sync: sent 0, received 0"));
        QCOMPARE(sync(b, "tech_b"), QString("sync: sent 0, received 0"));

        QCOMPARE(count(db, "SELECT count(*) FROM events"), 4);
        QCOMPARE(count(db, "SELECT count(*) FROM usage_periods"), 150);
        QCOMPARE(count(db, "SELECT count(*) FROM usage_periods WHERE running = 1"), 0);
        // The server knows who sent what.
        QCOMPARE(count(db, "SELECT count(*) FROM events WHERE login = 'tech_b'"), 2);
        // What a report measured travels with it, both ways.
        QCOMPARE(count(db, "SELECT count(*) FROM report_measurements WHERE o2_verdict = 'fail'"),
                 1);
        for (const QStringList& history : {QStringList{"history"}, QStringList{"history", "VO2-1"},
                                           QStringList{"history", "VO2-1", "--csv"}}) {
            const ProgramRun on_a = run_cli(QStringList{"--archive", a} + history);
            const ProgramRun on_b = run_cli(QStringList{"--archive", b} + history);
            QCOMPARE(on_a.exit_code, 0);
            QCOMPARE(on_a.out, on_b.out);
        }
        const QStringList csv =
            lines_of(run_cli({"--archive", a, "history", "VO2-1", "--csv"}).out);
        QCOMPARE(csv.size(), 151);
        // Night 99 ran 2 hours in a's readout and 8 in b's, which came later.
        QVERIFY2(csv[100].endsWith(",8.00"), qPrintable(csv[100]));
        for (const QString& file : {a, b})
            QCOMPARE(run_cli({"--archive", file, "archive", "check"}).exit_code, 0);

        // The next visit's readout: only the three new nights travel.
        archive_into(a, {archive::usage_event(readout("VO2-1", 50, 103), "anna@a")});
        QCOMPARE(sync(a, "tech_a"), QString("sync: sent 1, received 0"));
        QCOMPARE(count(db, "SELECT count(*) FROM usage_periods"
                           " WHERE changed = (SELECT last FROM change_counter)"),
                 3);
    }

    // The server enforces the roles, whatever program connects: a
    // technician adds and merges but deletes only what its own login wrote;
    // the office reads only.
    void roles_are_enforced_by_the_server() {
        const QString db = fresh_archive();
        for (const QString& login : {QString("tech_a"), QString("tech_b")}) {
            archive::ArchiveStore s(address(pg->uri(login, db)));
            archive_into(
                s, {archive::report_event(filed_report("VO2-" + login, pc_time, "000100:00"),
                                          login + "@pc"),
                    archive::usage_event(readout("VO2-" + login, 0, 5, true), login + "@pc")});
        }
        const auto as = [&](const QString& login, const QString& sql) {
            const QString name = "as-" + login;
            QString error;
            {
                QSqlDatabase c = QSqlDatabase::addDatabase("QPSQL", name);
                c.setHostName("127.0.0.1");
                c.setPort(pg->port());
                c.setUserName(login);
                c.setDatabaseName(db);
                if (!c.open()) {
                    error = c.lastError().text();
                } else {
                    QSqlQuery q(c);
                    if (!q.exec(sql))
                        error = q.lastError().text();
                }
                c.close();
            }
            QSqlDatabase::removeDatabase(name);
            return error;
        };
        const QString b_report = "DELETE FROM reports WHERE event_id IN"
                                 " (SELECT id FROM events WHERE sn = 'VO2-tech_b')";
        const QString refused = as("tech_a", b_report);
        QVERIFY2(refused.contains("written by another login (tech_b)"), qPrintable(refused));
        QCOMPARE(count(db, "SELECT count(*) FROM reports"), 2);
        QCOMPARE(as("tech_b", b_report), QString());
        QCOMPARE(count(db, "SELECT count(*) FROM reports"), 1);
        // The merge moves an end only forward; nothing else of another's row changes.
        QVERIFY(!as("tech_a", "UPDATE usage_periods SET end_time = 0, end_seen = end_seen - 1"
                              " WHERE sn = 'VO2-tech_b'")
                     .isEmpty());
        QVERIFY(
            !as("tech_a", "UPDATE events SET written_by = 'x' WHERE sn = 'VO2-tech_b'").isEmpty());
        QVERIFY(!as("tech_a", "DELETE FROM usage_periods").isEmpty());
        QCOMPARE(count(db, "SELECT count(*) FROM usage_periods"), 10);
        // The office reads everything and writes nothing.
        QCOMPARE(as("office", "SELECT count(*) FROM usage_periods"), QString());
        QVERIFY(
            as("office", "INSERT INTO devices (sn) VALUES ('x')").contains("permission denied"));
        archive::ArchiveStore office(address(pg->uri("office", db)));
        QString error;
        QVERIFY(
            !office.write({archive::usage_event(readout("VO2-9", 0, 1), "o@o")}, nullptr, &error));
        QVERIFY2(error.contains("permission denied"), qPrintable(error));
    }

    // A URI holding a password is refused before anything connects, with a
    // pointer to ~/.pgpass; the password shows nowhere: not on stdout or
    // stderr, not in the log, not in the ini. Nor does the one libpq reads
    // from the password file when a sync runs or fails.
    void a_password_never_shows_data() {
        QTest::addColumn<QString>("given");
        QTest::newRow("user:password@") << "user part";
        QTest::newRow("?password=") << "parameter";
        QTest::newRow("ARCHIV_SERVER in the ini") << "ini";
    }
    void a_password_never_shows() {
        QFETCH(QString, given);
        const QString db = fresh_archive();
        const QString secret =
            QStringLiteral("Geheim") + QString::number(QDateTime::currentMSecsSinceEpoch());
        const QString uri = given == "parameter"
                                ? pg->uri("tech_a", db) + "?sslmode=disable&password=" + secret
                                : QStringLiteral("postgresql://tech_a:%1@127.0.0.1:%2/%3")
                                      .arg(secret)
                                      .arg(pg->port())
                                      .arg(db);
        const auto cli = cli_with_ini(given == "ini" ? QStringList{"ARCHIV_SERVER|" + uri}
                                                     : QStringList{"TIMEOUT|1"});
        QTemporaryDir dir;
        const QString log = dir.filePath("log.txt");
        const QString ini = cli->file("veltrako2.ini");
        QFile f(ini);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray ini_before = f.readAll();
        f.close();
        for (const QStringList& command :
             {QStringList{"archive", "sync"}, QStringList{"archive", "init-server"},
              QStringList{"fleet"}}) {
            QStringList arguments{"--archive", dir.filePath("a.sqlite"), "--verbose", "--log", log};
            arguments << command;
            if (given != "ini")
                arguments << "--server" << uri;
            const ProgramRun r = cli->run(arguments);
            QCOMPARE(r.exit_code, 2);
            QVERIFY2(r.err.contains("~/.pgpass"), qPrintable(r.err));
            QFile written(log);
            const QString logged =
                written.open(QIODevice::ReadOnly) ? written.readAll() : QString();
            QVERIFY2(!(r.out + r.err + logged).contains(secret), qPrintable(r.err));
            QVERIFY(f.open(QIODevice::ReadOnly));
            QCOMPARE(f.readAll(), ini_before);
            f.close();
        }
    }
    void the_password_file_stays_unseen() {
        // The password libpq reads from the password file, when it connects
        // and when the server refuses the login, with every log turned on.
        const QString db = fresh_archive();
        QTemporaryDir dir;
        const QString log = dir.filePath("log.txt");
        for (const QString& database : {db, QStringLiteral("nosuchdatabase")}) {
            const ProgramRun r =
                run_cli({"--archive", dir.filePath("a.sqlite"), "--verbose", "--log", log,
                         "archive", "sync", "--server", pg->uri("tech_a", database)},
                        60000, {{"QT_LOGGING_RULES", "veltrako2.*=true"}});
            QCOMPARE(r.exit_code, database == db ? 0 : 1);
            QFile written(log);
            const QString logged =
                written.open(QIODevice::ReadOnly) ? written.readAll() : QString();
            QVERIFY2(!(r.out + r.err + logged).contains(tech_a_password), qPrintable(r.err));
            if (database != db)
                QVERIFY2(r.err.contains("nosuchdatabase"), qPrintable(r.err));
        }
        QVERIFY(!pg->log().contains(tech_a_password));
    }

    // A connection cut in the middle: the backend ended by the server while
    // the sync waits inside a transaction (the run tries again and
    // completes), or the server gone for good (the run stops after three
    // retries, saying what was not sent, and the next run completes).
    // Nothing is lost or doubled.
    void a_cut_connection_data() {
        QTest::addColumn<QString>("cut");
        QTest::newRow("backend terminated inside a transaction") << "terminated";
        QTest::newRow("server stopped between visits") << "stopped";
    }
    void a_cut_connection() {
        QFETCH(QString, cut);
        const QString db = fresh_archive();
        QTemporaryDir dir;
        archive::ArchiveStore local(dir.filePath("a.sqlite"));
        for (int d = 1; d <= 6; ++d)
            archive_into(local, {archive::usage_event(
                                    readout(QStringLiteral("VO2-%1").arg(d), d * 10, 300), "a@a")});
        archive::ArchiveStore server(address(pg->uri("tech_a", db)));
        archive::SyncOptions options;
        options.first_wait_ms = 20;
        archive::SyncReport report;
        if (cut == "terminated") {
            // Another session holds the change counter: the sync's first
            // transaction waits for it, and is ended from outside while it
            // waits; then the other session lets go.
            std::atomic<bool> holding{false};
            std::atomic<int> ended{0};
            const int port = pg->port();
            std::unique_ptr<QThread> cutter(QThread::create([&] {
                {
                    QSqlDatabase holder = QSqlDatabase::addDatabase("QPSQL", "holder");
                    holder.setHostName("127.0.0.1");
                    holder.setPort(port);
                    holder.setUserName(PgServer::admin);
                    holder.setDatabaseName(db);
                    QSqlQuery h(holder);
                    holding = holder.open() && h.exec("BEGIN") &&
                              h.exec("SELECT last FROM change_counter FOR UPDATE");
                    QSqlQuery look(holder);
                    for (int i = 0; i < 2000 && ended == 0; ++i) {
                        // A transaction sees the server's activity as it was
                        // when it first looked, unless told to look again.
                        if (look.exec("SELECT pg_stat_clear_snapshot()") &&
                            look.exec("SELECT count(pg_terminate_backend(pid)) FROM"
                                      " pg_stat_activity WHERE application_name = 'veltrako2'"
                                      " AND wait_event_type = 'Lock'") &&
                            look.next())
                            ended = look.value(0).toInt();
                        QThread::msleep(10);
                    }
                    h.exec("ROLLBACK");
                    holder.close();
                }
                QSqlDatabase::removeDatabase("holder");
            }));
            cutter->start();
            for (int i = 0; i < 1000 && !holding; ++i)
                QThread::msleep(10);
            QVERIFY(holding);
            report = archive::sync_archive(local, server, options);
            cutter->wait();
            QCOMPARE(ended.load(), 1);
            QVERIFY2(report.complete, qPrintable(report.error));
            QCOMPARE(report.sent, 6);
        } else {
            bool stopped = false;
            report = archive::sync_archive(local, server, options, [&](int done, int) {
                if (done == 2 && !stopped)
                    stopped = pg->stop();
            });
            QVERIFY(stopped);
            QVERIFY(!report.complete);
            QVERIFY(report.gave_up);
            QCOMPARE(report.sent, 2);
            QCOMPARE(report.unsent_events, 4);
            QCOMPARE(report.unsent_devices, (QStringList{"VO2-3", "VO2-4", "VO2-5", "VO2-6"}));
            QVERIFY2(pg->start(), qPrintable(pg->log()));
            report = archive::sync_archive(local, server, options);
            QVERIFY2(report.complete, qPrintable(report.error));
            QCOMPARE(report.sent, 4);
        }
        QCOMPARE(count(db, "SELECT count(*) FROM events"), 6);
        QCOMPARE(count(db, "SELECT count(*) FROM usage_readouts"), 6);
        QCOMPARE(count(db, "SELECT count(*) FROM usage_periods"), 6 * 300);
        report = archive::sync_archive(local, server, options);
        QVERIFY(report.complete);
        QCOMPARE(report.sent + report.received, 0);
    }

    // A program that closes stops its sync before the next transaction, and
    // waits for no retry; the next run sends the rest.
    void a_stopped_sync_ends_at_once() {
        const QString db = fresh_archive();
        QTemporaryDir dir;
        archive::ArchiveStore local(dir.filePath("a.sqlite"));
        for (int d = 1; d <= 3; ++d)
            archive_into(local, {archive::usage_event(
                                    readout(QStringLiteral("VO2-%1").arg(d), 0, 5), "a@a")});
        archive::ArchiveStore server(address(pg->uri("tech_a", db)));
        std::atomic<bool> stop{false};
        archive::SyncOptions options;
        options.stop = &stop;
        options.first_wait_ms = 60000; // a retry would be seen
        QElapsedTimer took;
        took.start();
        const archive::SyncReport r =
            archive::sync_archive(local, server, options, [&](int done, int) { stop = done >= 1; });
        QVERIFY(took.elapsed() < 30000);
        QVERIFY(!r.complete && !r.gave_up);
        QCOMPARE(r.sent, 1);
        QCOMPARE(r.unsent_events, 2);
        QCOMPARE(archive::sync_archive(local, server, {}).sent, 2);
    }

    // From the command line: a server nobody answers for ends the run with
    // exit status 1 after three retries, saying what was not sent; the next
    // run sends it.
    void the_command_line_says_what_was_not_sent() {
        const QString db = fresh_archive();
        QTemporaryDir dir;
        const QString file = dir.filePath("a.sqlite");
        archive_into(file, {archive::usage_event(readout("VO2-1", 0, 10), "a@a")});
        archive_into(file,
                     {archive::report_event(filed_report("VO2-2", pc_time, "000010:00"), "a@a")});
        const ProgramRun failed = run_cli({"--archive", file, "archive", "sync", "--server",
                                           QStringLiteral("postgresql://tech_a@127.0.0.1:%1/%2")
                                               .arg(PgServer::free_port())
                                               .arg(db)});
        QCOMPARE(failed.exit_code, 1);
        QCOMPARE(lines_of(failed.out), QStringList{"sync: sent 0, received 0"});
        const QStringList err = lines_of(failed.err);
        QCOMPARE(err.size(), 1);
        QVERIFY2(err[0].startsWith("not sent: 2 events of VO2-1, VO2-2. The sync gave up after 3"
                                   " retries: ") &&
                     err[0].endsWith("The next sync completes it."),
                 qPrintable(err[0]));
        const ProgramRun next =
            run_cli({"--archive", file, "archive", "sync", "--server", pg->uri("tech_a", db)});
        QCOMPARE(next.exit_code, 0);
        QCOMPARE(lines_of(next.out), QStringList{"sync: sent 2, received 0"});
    }

    // Two laptops that read the same device sync it at the same moment:
    // both finish, each visit arrives in one transaction, and once each has
    // fetched the other's, both hold every period once.
    void two_syncs_at_once() {
        const QString db = fresh_archive();
        QTemporaryDir dir;
        const QStringList files{dir.filePath("a.sqlite"), dir.filePath("b.sqlite")};
        for (int i = 0; i < 2; ++i) {
            const QDateTime began = pc_time.addDays(i);
            archive::ArchiveEvent visit =
                archive::visit_event({"VO2-7",
                                      began,
                                      "/v/VO2-7_" + QString::number(i),
                                      jobs::VisitResult::written,
                                      {},
                                      {"SN|VO2-7", "BSTD|00100" + QString::number(i) + ":00"}},
                                     "laptop" + QString::number(i));
            std::vector<archive::ArchiveEvent> batch{
                archive::usage_event(readout("VO2-7", i * 97, 4000, i == 0), "laptop"),
                archive::report_event(
                    filed_report("VO2-7", began, "00100" + QString::number(i) + ":00"), "laptop")};
            for (archive::ArchiveEvent& e : batch)
                e.visit_id = visit.id;
            batch.push_back(visit);
            archive_into(files[i], batch);
        }
        const ProgramCopy cli(QStringLiteral(VELTRAKO2_CLI_PATH));
        for (int round = 0; round < 2; ++round) {
            QProcess a, b;
            const QStringList logins{"tech_a", "tech_b"};
            QProcess* both[] = {&a, &b};
            for (int i = 0; i < 2; ++i)
                both[i]->start(cli.file("veltrako2-cli"), {"--archive", files[i], "archive", "sync",
                                                           "--server", pg->uri(logins[i], db)});
            for (QProcess* p : both) {
                QVERIFY(p->waitForFinished(60000));
                QVERIFY2(p->exitCode() == 0, p->readAllStandardError().constData());
            }
        }
        // The round after: whoever synced first has fetched the other's now.
        const ProgramRun again =
            cli.run({"--archive", files[0], "archive", "sync", "--server", pg->uri("tech_a", db)});
        QCOMPARE(lines_of(again.out), QStringList{"sync: sent 0, received 0"});
        QCOMPARE(count(db, "SELECT count(*) FROM usage_periods"), 4097);
        QCOMPARE(count(db, "SELECT count(*) FROM events"), 6);
        QCOMPARE(count(db, "SELECT count(DISTINCT changed) FROM events"), 2);
        const ProgramRun on_a = cli.run({"--archive", files[0], "history", "VO2-7", "--csv"});
        const ProgramRun on_b = cli.run({"--archive", files[1], "history", "VO2-7", "--csv"});
        QCOMPARE(lines_of(on_a.out).size(), 4098);
        QCOMPARE(on_a.out, on_b.out);
    }

    // The office's fleet list: the due devices and why, by the ini's rules.
    void fleet_names_the_due_devices() {
        const QString db = fresh_archive();
        archive::ArchiveStore s(address(pg->uri("tech_a", db)));
        const QDateTime now = QDateTime::currentDateTime();
        const QDateTime long_ago = now.addMonths(-8);
        const QDateTime lately = now.addMonths(-1);
        archive_into(
            s, {archive::report_event(filed_report("VO2-A", long_ago, "001000:00", "95"), "t")});
        archive_into(
            s, {archive::report_event(filed_report("VO2-B", lately, "004990:00", "95"), "t")});
        // VO2-B has run 16 hours since: 4990 + 16 is past 5000.
        jobs::UsageReadout since{"VO2-B", "LP", now, {}, 0};
        const compliance::Stamp night = compliance::to_stamp(lately.addDays(2));
        since.periods = {{night, night + 8 * 3600}, {night + 86400, night + 86400 + 8 * 3600}};
        archive_into(s, {archive::usage_event(since, "t")});
        // C's O2 failed at its last inspection, after passing at the one before.
        archive_into(s, {archive::report_event(
                            filed_report("VO2-C", lately.addDays(-7), "000090:00", "95"), "t")});
        archive_into(s, {archive::report_event(filed_report("VO2-C", lately, "000100:00"), "t")});
        archive_into(s, {archive::usage_event(readout("VO2-D", 0, 5), "t")});
        // The last readouts of C and E judged their 30 days against 6 and 9
        // hours: 8 hours a night meet the one and not the other.
        for (const auto& [sn, hours] : {std::pair{"VO2-C", 6.0}, std::pair{"VO2-E", 9.0}}) {
            jobs::UsageReadout r = readout(sn, 0, 40);
            r.at = lately.addDays(1);
            r.prescribed_hours = hours;
            archive_into(s, {archive::usage_event(r, "t")});
        }
        archive_into(
            s, {archive::report_event(filed_report("VO2-E", lately, "000200:00", "95"), "t")});
        const auto fleet = [&](const QStringList& ini, const QStringList& arguments) {
            return cli_with_ini(ini)->run(QStringList{"fleet", "--server", pg->uri("office", db)} +
                                          arguments);
        };
        const QString a = "VO2-A|" + long_ago.toString("yyyy-MM-dd") + "|001000:00|visit";
        const QString b = "VO2-B|" + lately.toString("yyyy-MM-dd") + "|004990:00|hours";
        const QString c = "VO2-C|" + lately.toString("yyyy-MM-dd") + "|000100:00|o2";
        const QString d = "VO2-D|||visit";
        const QString e = "VO2-E|" + lately.toString("yyyy-MM-dd") + "|000200:00|adherence";
        QCOMPARE(lines_of(fleet({"WARTUNG_STUNDEN|5000"}, {}).out), (QStringList{a, b, c, d, e}));
        QCOMPARE(lines_of(fleet({"WARTUNG_STUNDEN|5000"}, {"--due"}).out),
                 (QStringList{a, b, c, d, e}));
        QCOMPARE(lines_of(fleet({"WARTUNG_MONATE|12"}, {"--due"}).out), (QStringList{c, d, e}));
        const ProgramRun bad = fleet({"WARTUNG_MONATE|sechs"}, {});
        QCOMPARE(bad.exit_code, 2);
        QVERIFY2(bad.err.contains("WARTUNG_MONATE sechs"), qPrintable(bad.err));
    }

    // "Abgleichen" on the Verlauf page, on the archive's own thread and the
    // real event loop: the progress bar moves, the result line and the
    // status bar's tooltip say what happened, the devices another laptop
    // added are listed, and "nur fällige" keeps the due ones.
    void abgleichen_on_the_event_loop() {
        const QString db = fresh_archive();
        const QDateTime now = QDateTime::currentDateTime();
        archive::ArchiveStore other(address(pg->uri("tech_b", db)));
        archive_into(other, {archive::report_event(
                                filed_report("VO2-X", now.addMonths(-8), "000500:00"), "b@b")});
        QTemporaryDir dir;
        Window w(now);
        QVERIFY(config::load_language(w.ctx.language, VELTRAKO2_LANG_DIR "/langen.txt", w.form));
        w.ctx.config.ARCHIV_SERVER = pg->uri("tech_a", db);
        archive::ArchiveService service(dir.filePath("a.sqlite"),
                                        archive::ArchiveService::Mode::own_thread);
        archive::install_archive(w.ctx, service);
        ui::bind_page_verlauf(w.form, w.ctx, service);
        QTRY_COMPARE(w.form.statusBar()->toolTip(),
                     QString("Not yet synchronised with the team archive"));
        w.ctx.hooks.report_filed(filed_report("VO2-Y", now, "000100:00", "95"));
        w.form.select_page(Page::verlauf);
        auto* devices = w.get<QTableWidget>("tbl_geraete");
        QTRY_COMPARE(devices->rowCount(), 1);

        auto* button = w.get<QPushButton>("cmd_abgleichen");
        int most = 0;
        QObject::connect(w.get<QProgressBar>("prg_abgleich"), &QProgressBar::valueChanged,
                         [&](int v) { most = std::max(most, v); });
        button->click();
        QVERIFY(!button->isEnabled()); // one sync at a time
        QTRY_COMPARE(w.get<QLabel>("l_abgleich")->text(), QString("Sync: 1 sent, 1 received"));
        QVERIFY(button->isEnabled());
        QCOMPARE(most, 2); // the report sent, the other's fetched
        QCOMPARE(w.form.statusBar()->toolTip(),
                 "Last sync with the team archive: " + now.toString("yyyy-MM-dd HH:mm"));
        QTRY_COMPARE(devices->rowCount(), 2);
        QCOMPARE(devices->item(0, 0)->text(), QString("VO2-X"));
        // Its report is old and its O2 failed: both reasons in the page's words.
        QCOMPARE(devices->item(0, 1)->text(), QString("visit, O2 concentration"));
        QCOMPARE(devices->item(1, 1)->text(), QString());
        w.get<QCheckBox>("chk_nurfaellige")->click();
        QCOMPARE(devices->rowCount(), 1);
        QCOMPARE(devices->item(0, 0)->text(), QString("VO2-X"));

        // Without a server the button says where one is named.
        Window bare;
        QVERIFY(
            config::load_language(bare.ctx.language, VELTRAKO2_LANG_DIR "/langen.txt", bare.form));
        archive::ArchiveService local(dir.filePath("b.sqlite"),
                                      archive::ArchiveService::Mode::inline_jobs);
        ui::bind_page_verlauf(bare.form, bare.ctx, local);
        QVERIFY(!bare.get<QPushButton>("cmd_abgleichen")->isEnabled());
        QVERIFY(bare.get<QPushButton>("cmd_abgleichen")->toolTip().contains("ARCHIV_SERVER"));
    }
};

QTEST_MAIN(TestArchiveServer)
#include "test_archive_server.moc"
