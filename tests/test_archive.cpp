// The archive inside the program: how readouts merge (a period twice, the
// running period closed later, a ring that moved on), migrations from every
// earlier schema version, the archive's own check, the failures that must
// cost the job nothing but one message, a visit's events in one
// transaction, saved status tables meeting live readouts, what the history
// compares between visits, and the Verlauf page on the archive's own thread.

#include "archive/archive_event.h"
#include "archive/archive_fleet.h"
#include "archive/archive_history.h"
#include "archive/archive_hooks.h"
#include "archive/archive_schema.h"
#include "archive/archive_service.h"
#include "archive/archive_store.h"
#include "archive/server_address.h"
#include "history_page.h"
#include "report/report_measurements.h"
#include "report_harness.h"
#include "status/status_table.h"
#include "status/status_table_reader.h"
#include "table.h"
#include "window_harness.h"

#include <QHeaderView>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTableWidget>

#include <csignal>
#include <sys/resource.h>

using namespace veltrako;
using namespace veltrako::testing;
using compliance::ComplianceRecord;
using compliance::Stamp;

namespace {

// A function: the compliance code's own constants are ready only once main() runs.
Stamp base() {
    return compliance::make_stamp(2026, 1, 5, 8, 0, 0);
}
const QDateTime pc_time(QDate(2026, 3, 2), QTime(10, 0), Qt::UTC);

// "s-e" in hours after `base()`; a trailing "*" marks the running period.
jobs::UsageReadout readout(const QString& periods, int at_hours, const QString& sn = "VO2-1") {
    jobs::UsageReadout r{sn, QStringLiteral("LP1"), pc_time.addSecs(at_hours * 3600), {}, 0};
    for (QString p : periods.split(',', Qt::SkipEmptyParts)) {
        const bool running = p.endsWith('*');
        p.remove('*');
        const QStringList se = p.split('-');
        const ComplianceRecord rec{base() + se[0].toLongLong() * 3600,
                                   base() + se[1].toLongLong() * 3600};
        r.periods.push_back(rec);
        if (running)
            r.running_start = rec.start;
    }
    return r;
}

QString kept(archive::ArchiveStore& store, const QString& sn = "VO2-1") {
    QStringList out;
    QString error;
    const std::vector<ComplianceRecord> periods =
        store.periods(sn, &error).value_or(std::vector<ComplianceRecord>{});
    for (const ComplianceRecord& p : periods)
        out << QStringLiteral("%1-%2").arg((p.start - base()) / 3600).arg((p.end - base()) / 3600);
    return out.join(',');
}

int scalar(const QSqlDatabase& db, const QString& sql) {
    QSqlQuery q(db);
    return q.exec(sql) && q.next() ? q.value(0).toInt() : -1;
}

// Holds the archive's write lock the way another program does: a write
// transaction left open on a connection of its own.
class ForeignWriter {
public:
    explicit ForeignWriter(const QString& path) {
        {
            QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", name_);
            db.setDatabaseName(path);
            QVERIFY(db.open());
            QSqlQuery q(db);
            QVERIFY(q.exec("BEGIN IMMEDIATE"));
            QVERIFY(q.exec("INSERT INTO devices (sn) VALUES ('other program')"));
        }
    }
    ~ForeignWriter() {
        {
            QSqlDatabase db = QSqlDatabase::database(name_);
            QSqlQuery(db).exec("ROLLBACK");
            db.close();
        }
        QSqlDatabase::removeDatabase(name_);
    }

private:
    QString name_ = QStringLiteral("foreign");
};

// The program's context with the archive behind its hooks.
struct Archived : Desk {
    explicit Archived(const QString& file = {}, int busy_ms = 300)
        : service(file.isEmpty() ? path("archive.sqlite") : file,
                  archive::ArchiveService::Mode::inline_jobs, busy_ms) {
        archive::install_archive(ctx, service);
    }
    archive::ArchiveService service;
};

QByteArray status_record(int block, int seed) {
    QByteArray r(22, '\0');
    r[0] = static_cast<char>(block);
    r[1] = 0x07;
    r[2] = 0x08; // 1800 s
    for (int i = 3; i < 22; ++i)
        r[i] = static_cast<char>((seed * 31 + i * 7) % 200 + 1);
    return r;
}

} // namespace

class TestArchive : public QObject {
    Q_OBJECT
private slots:
    // Each readout merges by (serial number, start second): a period the
    // archive has is kept once, a later readout's end replaces the end of a
    // running one, an older file imported afterwards changes nothing, and
    // periods the device has overwritten since stay.
    void merge_rules_data() {
        // readouts "at hours|periods", periods kept, new per readout ("-": known
        // already), running periods kept
        const Table<QStringList, QString, QString, int> row;
        row("a period twice", {"1|0-2,3-5,0-2", "2|0-2,3-5"}, "0-2,3-5", "2,-", 0);
        row("the running period closed later", {"1|0-2,3-4*", "9|0-2,3-6,7-9*"}, "0-2,3-6,7-9",
            "2,1", 1);
        row("an older readout afterwards", {"9|0-2,3-6", "1|0-2,3-4*"}, "0-2,3-6", "2,0", 0);
        row("the ring moved on", {"1|0-1,2-3,4-5", "9|4-5,6-7,8-9"}, "0-1,2-3,4-5,6-7,8-9", "3,2",
            0);
        row("erased and reversed records", {"1|0-0,5-3,6-8"}, "6-8", "1", 0);
    }
    void merge_rules() {
        const auto [readouts, expected, new_counts, running] =
            Table<QStringList, QString, QString, int>::fetch();
        QTemporaryDir dir;
        archive::ArchiveStore store(dir.filePath("a.sqlite"));
        QStringList counts;
        for (const QString& r : readouts) {
            const QStringList parts = r.split('|');
            jobs::UsageReadout u = readout(parts[1], parts[0].toInt());
            // "0-0" stands for an erased record: no start, no end.
            for (ComplianceRecord& p : u.periods)
                if (p.start == base() && p.end == base())
                    p = {};
            std::vector<archive::EventAdded> added;
            QString error;
            QVERIFY2(store.write({archive::usage_event(u, "t@h")}, &added, &error),
                     qPrintable(error));
            counts << (added[0].added ? QString::number(added[0].new_periods) : QString("-"));
        }
        QCOMPARE(kept(store), expected);
        QCOMPARE(counts.join(','), new_counts);
        QString error;
        QCOMPARE(store.check(&error).value(), QStringList());
        QCOMPARE(scalar(store.database(), "SELECT count(*) FROM usage_periods WHERE running = 1"),
                 running);
    }

    // A file of every earlier version is brought forward, and what it held
    // is still there; a file of a newer program is left alone.
    void migrates_from_every_earlier_version_data() {
        QTest::addColumn<int>("from");
        for (int v = 0; v < archive::latest_version(); ++v)
            QTest::newRow(qPrintable(QStringLiteral("version %1").arg(v))) << v;
    }
    void migrates_from_every_earlier_version() {
        QFETCH(int, from);
        QTemporaryDir dir;
        const QString path = dir.filePath("a.sqlite");
        {
            archive::ArchiveStore old(path);
            QString error;
            QVERIFY2(old.open(&error, from), qPrintable(error));
            if (from >= 1) {
                // Rows as version 1 wrote them, in the columns every version
                // has; no later migration may lose them.
                QSqlQuery q(old.database());
                QVERIFY(q.exec("INSERT INTO devices (sn, lp, lp_at) VALUES ('VO2-1', 'LP1', 1)"));
                const QString event = "INSERT INTO events (id, sn, kind, at, visit_id, written_by)"
                                      " VALUES ('%1', 'VO2-1', '%2', %3, NULL, 'a@b')";
                QVERIFY(q.exec(event.arg("e1", "usage").arg(5)));
                QVERIFY(q.exec("INSERT INTO usage_periods (sn, start_time, end_time, running,"
                               " end_seen, first_event, written_by)"
                               " VALUES ('VO2-1', 100, 200, 0, 5, 'e1', 'a@b')"));
                // A report of an older program: no result, nothing measured.
                QVERIFY(q.exec(event.arg("r1", "report").arg(6)));
                QVERIFY(q.exec("INSERT INTO event_values VALUES ('r1', 0, 'O2', '95')"));
                QVERIFY(q.exec("INSERT INTO reports VALUES ('r1', '/r1.txt', 0, '')"));
            }
        }
        archive::ArchiveStore store(path);
        QString error;
        QVERIFY2(store.open(&error), qPrintable(error));
        QSqlDatabase db = store.database();
        QCOMPARE(archive::schema_version(db, &error).value(), archive::latest_version());
        QCOMPARE(scalar(db, "SELECT count(*) FROM usage_periods"), from >= 1 ? 1 : 0);
        QCOMPARE(scalar(db, "SELECT count(*) FROM reports"), from >= 1 ? 1 : 0);
        QVERIFY(store.write({archive::usage_event(readout("0-2", 1), "t@h")}, nullptr, &error));
        // A report of this program keeps what it measured, judged by the
        // limits it names: the last inspection's O2 verdict is one join away.
        const QStringList lines{"SN|VO2-1",           "O2|95",        "SOLL_VOLUMENSTROM|2,0",
                                "m_O2|80,5",          "m_Flow|2.1",   "t_Schutzklasse|II",
                                "m_Ableitstrom|0,05", "GRENZE_O2|85", "ERGEBNIS|fail"};
        QVERIFY(
            store.write({archive::report_event({"VO2-1", pc_time, "/r2.txt", false, lines}, "t@h")},
                        nullptr, &error));
        QSqlQuery last(db);
        QVERIFY(last.exec("SELECT m.o2_verdict, m.o2, m.o2_limit, m.o2_device, m.o2_note,"
                          " m.flow_low, m.flow_high, m.earth_verdict, m.leakage_limit, m.result"
                          " FROM events e JOIN report_measurements m ON m.event_id = e.id"
                          " WHERE e.sn = 'VO2-1' ORDER BY e.at DESC LIMIT 1"));
        QVERIFY(last.next());
        QStringList row;
        for (int i = 0; i < 10; ++i)
            row << (last.value(i).isNull() ? QStringLiteral("NULL") : last.value(i).toString());
        QCOMPARE(row.join(' '), QString("fail 80.5 85 95 1 1.8 2.2  0.1 fail"));
        QCOMPARE(store.check(&error).value(), QStringList());
    }
    void refuses_a_newer_file() {
        QTemporaryDir dir;
        const QString path = dir.filePath("a.sqlite");
        {
            archive::ArchiveStore s(path);
            QString error;
            QVERIFY(s.open(&error));
            QVERIFY(QSqlQuery(s.database()).exec("UPDATE schema_version SET version = 999"));
        }
        archive::ArchiveStore store(path);
        QString error;
        QVERIFY(!store.open(&error));
        QVERIFY2(error.contains("999"), qPrintable(error));
        QVERIFY(!store.write({archive::usage_event(readout("0-2", 1), "t@h")}, nullptr, &error));
    }

    // The archive's own rules, beyond SQLite's integrity check.
    void check_names_what_is_wrong() {
        QTemporaryDir dir;
        archive::ArchiveStore store(dir.filePath("a.sqlite"));
        QString error;
        QVERIFY(store.write({archive::usage_event(readout("0-2,3-5", 1), "t@h")}, nullptr, &error));
        QCOMPARE(store.check(&error).value(), QStringList());
        QVERIFY(QSqlQuery(store.database())
                    .exec("UPDATE usage_periods SET end_time = start_time - 60"));
        const QStringList problems = store.check(&error).value();
        QCOMPARE(problems.size(), 2);
        QVERIFY2(problems[0].contains("VO2-1") && problems[0].contains("2026-01-05T08:00:00") &&
                     problems[0].contains("ends before it starts"),
                 qPrintable(problems[0]));
    }

    // A failing archive: the readout has ended as it would without one, and
    // one message says what was not archived and why. Once the cause is
    // gone, the next job is archived again.
    void a_failing_archive_costs_one_message_data() {
        QTest::addColumn<QString>("fault");
        QTest::addColumn<QString>("why");
        QTest::newRow("locked by another program") << "locked"
                                                   << "locked";
        QTest::newRow("corrupt file") << "corrupt"
                                      << "not a database";
        QTest::newRow("full disk") << "full"
                                   << "";
        QTest::newRow("folder cannot be made") << "no folder"
                                               << "folder";
    }
    void a_failing_archive_costs_one_message() {
        QFETCH(QString, fault);
        QFETCH(QString, why);
        QTemporaryDir dir;
        QString file = dir.filePath("a.sqlite");
        if (fault == "no folder") {
            QFile blocker(dir.filePath("plain"));
            QVERIFY(blocker.open(QIODevice::WriteOnly));
            file = dir.filePath("plain/sub/a.sqlite");
        }
        Archived f(file);
        if (fault != "no folder" && fault != "corrupt")
            f.ctx.hooks.usage_read(readout("0-2", 1)); // the file exists and works
        QCOMPARE(f.ui.messages, QStringList());
        std::unique_ptr<ForeignWriter> lock;
        rlimit before{};
        if (fault == "locked")
            lock = std::make_unique<ForeignWriter>(file);
        if (fault == "corrupt") {
            QFile bad(file);
            QVERIFY(bad.open(QIODevice::WriteOnly));
            bad.write(QByteArray(8192, '\x5a'));
        }
        if (fault == "full") {
            // Room for a little more than the files hold, not for the readout.
            const qint64 held = std::max(QFileInfo(file).size(), QFileInfo(file + "-wal").size());
            getrlimit(RLIMIT_FSIZE, &before);
            rlimit small = before;
            small.rlim_cur = static_cast<rlim_t>(held + 8192);
            setrlimit(RLIMIT_FSIZE, &small);
        }
        QString big;
        for (int i = 0; i < 4000; ++i)
            big += QStringLiteral("%1-%2,").arg(10 + 2 * i).arg(11 + 2 * i);
        f.ctx.hooks.usage_read(readout(big, 5));
        if (fault == "full")
            setrlimit(RLIMIT_FSIZE, &before);
        QCOMPARE(f.ui.messages.size(), 1);
        QVERIFY2(f.ui.messages[0].contains("VO2-1") && f.ui.messages[0].contains(why) &&
                     f.ui.messages[0].contains(file),
                 qPrintable(f.ui.messages[0]));
        lock.reset();
        if (fault == "locked" || fault == "full") {
            f.ctx.hooks.usage_read(readout(big, 6));
            QCOMPARE(f.ui.messages.size(), 1);
            QCOMPARE(f.service.enabled(), true);
            QString error;
            f.service.run_now([&](archive::ArchiveStore& s) {
                QCOMPARE(s.periods("VO2-1", &error).value().size(), std::size_t(4001));
            });
        }
    }

    // What a visit hands on is written at its end, in one transaction, each
    // event naming the visit; a visit the archive cannot take is one message.
    void a_visit_is_one_transaction() {
        for (const bool locked : {false, true}) {
            Archived f;
            std::unique_ptr<ForeignWriter> lock;
            f.ctx.hooks.usage_read(readout("0-2", 0)); // the file exists
            if (locked)
                lock = std::make_unique<ForeignWriter>(f.service.path());
            f.ctx.hooks.visit_begun();
            f.ctx.hooks.status_read(
                {"VO2-1", "LP1", "5122", pc_time, false, {status_record(7, 1)}});
            f.ctx.hooks.usage_read(readout("0-2,3-5", 1));
            f.ctx.hooks.report_filed({"VO2-1",
                                      pc_time,
                                      "/r.txt",
                                      false,
                                      {"SN|VO2-1", "BSTD|1:00", "O2|94", "m_O2|90", "ERGEBNIS|"}});
            QCOMPARE(f.ui.messages.size(), 0); // nothing written before the visit ends
            f.ctx.hooks.visit_done({"VO2-1",
                                    pc_time,
                                    "/v/VO2-1_2026-03-02",
                                    jobs::VisitResult::written,
                                    {},
                                    {"SN|VO2-1", "BSTD|1:00"}});
            lock.reset();
            QCOMPARE(f.ui.messages.size(), locked ? 1 : 0);
            f.service.run_now([&](archive::ArchiveStore& s) {
                const QSqlDatabase db = s.database();
                QCOMPARE(scalar(db, "SELECT count(*) FROM events"), locked ? 1 : 5);
                QCOMPARE(scalar(db, "SELECT count(*) FROM events e JOIN events v ON v.id ="
                                    " e.visit_id AND v.kind = 'visit'"),
                         locked ? 0 : 3);
                // The visit shows what its report measured.
                QString error;
                const auto visits = s.visits("VO2-1", &error).value();
                QCOMPARE(visits.size(), std::size_t(locked ? 0 : 1));
                if (!locked) {
                    QCOMPARE(visits[0].kind, QString("visit"));
                    QCOMPARE(visits[0].o2_measured.value_or(0), 90.0);
                    QCOMPARE(visits[0].o2_device.value_or(0), 94.0);
                    QCOMPARE(visits[0].report_result, QString("incomplete"));
                }
            });
            if (locked)
                QVERIFY2(f.ui.messages[0].contains("VO2-1") && f.ui.messages[0].contains("locked"),
                         qPrintable(f.ui.messages[0]));
        }
    }

    // A saved status table read back gives the entries a live readout of the
    // same records gives, whatever the decimal separator: importing the
    // tables of earlier visits adds nothing the device already reported.
    void saved_status_table_meets_the_readout_data() {
        const Table<bool, QString> row; // extended layout, locale
        row("basic, German", false, "de_DE");
        row("extended, English", true, "en_US");
    }
    void saved_status_table_meets_the_readout() {
        const auto [extended, locale_name] = Table<bool, QString>::fetch();
        status::StatusMemory memory;
        for (int n = 1; n <= 5; ++n)
            memory.records.push_back(status_record(200 + n, n));
        device::DeviceRecord device;
        device.SN = "VO2-1";
        device.LP = "LP1";
        device.SW = "5122";
        device.o22_source = extended;
        const QStringList table = status::format_status_lines(
            memory, device, config::LanguageTables{}, pc_time, QLocale(locale_name));
        const auto read = status::read_status_table(table);
        QVERIFY(read);
        QCOMPARE(read->sn, QString("VO2-1"));
        QCOMPARE(read->at, QDateTime(pc_time.date(), pc_time.time()));
        QCOMPARE(read->extended, extended);
        QCOMPARE(read->record_lines.size(), 5);
        for (int n = 0; n < 5; ++n)
            QCOMPARE(archive::entry_from_table_line(read->record_lines[n]),
                     archive::status_entry(memory.records[n + 1], extended).entry);
    }
    void no_status_table_data() {
        QTest::addColumn<QStringList>("lines");
        const QStringList head{"SN          VO2-1",
                               "SN LP       LP1",
                               "SWVersion   5122",
                               "Datum       02.03.2026 10:00:00",
                               "h1",
                               "h2",
                               "h3",
                               "----"};
        QTest::newRow("too short") << head.mid(0, 6);
        QTest::newRow("no date") << QStringList(head).replaceInStrings("02.03.2026", "xx");
        QTest::newRow("a line of 3 columns") << head + QStringList{"  1  2  3"};
        QTest::newRow("no block number") << head + QStringList{QStringList(20, " x").join("")};
    }
    void no_status_table() {
        QFETCH(QStringList, lines);
        QVERIFY(!status::read_status_table(lines));
    }

    // Between two visits: the hours run and per day, the status entries new
    // since, the settings and the firmware that changed.
    void what_changed_between_visits() {
        const qint64 day = 86400;
        std::vector<archive::VisitRow> visits{
            {"a", "visit", 1000, {{"BSTD", "001000:00"}, {"SW", "5121"}, {"ZEITEN3", "5,40"}}},
            {"b",
             "report",
             1000 + 10 * day,
             {{"BSTD", "001120:30"}, {"SW", "5122"}, {"ZEITEN3", "5,60"}}},
        };
        const auto changes = archive::compare_visits(visits, {900, 1000, 5000, 1000 + 10 * day});
        QCOMPARE(changes.size(), std::size_t(2));
        QVERIFY(!changes[0].has_previous);
        QCOMPARE(changes[0].new_status_entries, 2);
        QCOMPARE(changes[1].hours_run.value(), 120.5);
        QCOMPARE(changes[1].hours_per_day.value(), 12.05);
        QCOMPARE(changes[1].new_status_entries, 2);
        QCOMPARE(changes[1].settings_changed, QStringList{"ZEITEN3: 5,40 → 5,60"});
        QCOMPARE(changes[1].firmware_changed, QString("5121 → 5122"));
    }

    // The month lines over every period are the compliance code's, also past
    // the 4097 records of one device memory.
    void month_lines_beyond_one_memory() {
        archive::Periods periods;
        const Stamp from = compliance::make_stamp(2024, 1, 1, 22, 0, 0);
        for (int d = 0; d < 5000; ++d) // one 9-hour night a day, 2024 to 2037
            periods.push_back({from + d * 86400LL, from + d * 86400LL + 9 * 3600});
        const QStringList lines = archive::usage_lines(periods, 8, 70, QLocale::c());
        QCOMPARE(lines.size(), 166); // January 2024 .. September 2037, the best 30 days
        // The 1st holds 2 h, its night going on into the 2nd.
        QCOMPARE(lines.first(), QString("2024-01|272.0|31|8.8|30|31"));
        QCOMPARE(lines[1], QString("2024-02|261.0|29|9.0|29|29"));
        QCOMPARE(lines.last(), QString("30d|2024-01-02|2024-01-31|30|30|met"));
        QCOMPARE(archive::csv_lines(periods).size(), 5001);
        QCOMPARE(archive::csv_lines(periods)[1],
                 QString("2024-01-01T22:00:00,2024-01-02T07:00:00,9.00"));
    }

    // In the window the archive works on its own thread, and the Verlauf
    // page fills itself from there through the event loop.
    void verlauf_page_on_the_archive_thread() {
        QTemporaryDir dir;
        const QString file = dir.filePath("a.sqlite");
        Window w;
        archive::ArchiveService service(file, archive::ArchiveService::Mode::own_thread);
        archive::install_archive(w.ctx, service);
        ui::bind_page_verlauf(w.form, w.ctx, service);
        w.ctx.hooks.report_filed({"VO2-1",
                                  pc_time.addDays(-30),
                                  "/r1.txt",
                                  false,
                                  {"SN|VO2-1", "BSTD|000100:00", "SW|5121"}});
        w.ctx.hooks.report_filed({"VO2-1",
                                  pc_time,
                                  "/r2.txt",
                                  true,
                                  {"SN|VO2-1", "BSTD|000400:00", "SW|5122", "O2|93", "m_O2|88,5",
                                   "ERGEBNIS|incomplete"}});
        w.ctx.hooks.usage_read(readout("0-9,24-33,1000-1009", 1));
        w.form.select_page(Page::verlauf);
        auto* devices = w.get<QTableWidget>("tbl_geraete");
        auto* visits = w.get<QTableWidget>("tbl_besuche");
        QTRY_COMPARE(devices->rowCount(), 1);
        QTRY_COMPARE(visits->rowCount(), 2);
        QCOMPARE(devices->item(0, 0)->text(), QString("VO2-1"));
        QCOMPARE(visits->item(0, 2)->text(), QString("000400:00"));
        QCOMPARE(visits->item(0, 6)->text(), QLocale().toString(300.0, 'f', 1));
        // The measured O2 beside the device's own reading; the older
        // report measured nothing.
        QCOMPARE(visits->item(0, 3)->text(), report::measurement_text(88.5, QLocale()));
        QCOMPARE(visits->item(0, 4)->text(), QString("93"));
        QVERIFY(visits->item(1, 3)->text().isEmpty());
        QVERIFY2(visits->item(0, 9)->text().contains("5121 → 5122"),
                 qPrintable(visits->item(0, 9)->text()));
        // The chart shows the month of the last period and leads back to the first.
        QTRY_VERIFY(w.get<QPushButton>("cmd_verlaufprev")->isEnabled());
        QVERIFY(!w.get<QPushButton>("cmd_verlaufnext")->isEnabled());
        QVERIFY(!w.get<QLabel>("l_verlaufsummary")->text().isEmpty());
        w.get<QPushButton>("cmd_verlaufprev")->click();
        QVERIFY(w.get<QPushButton>("cmd_verlaufnext")->isEnabled());
    }

    // The server as the user names it: a libpq URI, shown again without
    // change; a password refused wherever it stands; what libpq could not
    // take refused before it is handed on.
    void server_addresses_data() {
        const Table<QString, QString, QString> row; // URI, shown or the problem, host
        row("everything", "postgresql://anna@db.example.org:5433/fleet?sslmode=require",
            "postgresql://anna@db.example.org:5433/fleet?sslmode=require", "db.example.org");
        row("short scheme", "postgres://anna@db/fleet", "postgresql://anna@db/fleet", "db");
        row("socket folder", "postgresql://%2Fvar%2Frun%2Fpostgresql/fleet",
            "postgresql://%2Fvar%2Frun%2Fpostgresql/fleet", "/var/run/postgresql");
        row("IPv6 address", "postgresql://anna@[::1]:5432/fleet",
            "postgresql://anna@[::1]:5432/fleet", "::1");
        row("empty password", "postgresql://anna:@db/fleet", "postgresql://anna@db/fleet", "db");
        row("user:password", "postgresql://anna:geheim@db/fleet", "password", "");
        row("password parameter", "postgresql://anna@db/fleet?sslmode=verify-full&password=geheim",
            "password", "");
        row("keyword form", "host=db dbname=fleet", "not a URI", "");
        row("port out of range", "postgresql://db:99999/fleet", "not a URI", "");
        row("two hosts", "postgresql://h1,h2/fleet", "not a URI", "");
        row("blank in a name", "postgresql://db/fleet?ssl%20mode=require", "bad parameter", "");
        row("semicolon in a value", "postgresql://db/fleet?options=-c%20a%3Db%3Bc", "bad parameter",
            "");
    }
    void server_addresses() {
        const auto [uri, expected, host] = Table<QString, QString, QString>::fetch();
        const archive::ParsedAddress parsed = archive::parse_server_address(uri);
        const QString problem =
            parsed.problem == archive::AddressProblem::holds_password ? "password"
            : parsed.problem == archive::AddressProblem::not_a_uri    ? "not a URI"
                                                                      : "bad parameter";
        QCOMPARE(parsed.address ? parsed.address->shown() : problem, expected);
        if (parsed.address)
            QCOMPARE(parsed.address->host, host);
        else // the text that explains it never repeats the address
            QVERIFY(archive::address_problem_text(parsed.problem) > 0);
    }
    void server_connect_options() {
        const archive::ServerAddress a =
            archive::parse_server_address(
                "postgresql://db/fleet?sslmode=require&application_name=o%27s%20desk")
                .address.value();
        QCOMPARE(a.connect_options(), QString("sslmode='require';application_name='o\\'s desk';"
                                              "connect_timeout='10'"));
    }

    // When a device is due: its last visit more than WARTUNG_MONATE months
    // back (or none), its hours past the next multiple of WARTUNG_STUNDEN,
    // its last 30 days not met, or its last inspection's O2 failed.
    void due_reasons_data() {
        // days since the last visit (-1: none), BSTD then, hours run since,
        // WARTUNG_MONATE, WARTUNG_STUNDEN, the last readout's 30 days, the
        // last report's O2 verdict, reasons
        const Table<int, QString, double, QString, QString, QString, QString, QString> row;
        const QString met = "30d|2026-01-01|2026-01-30|30|30|met";
        const QString not_met = "30d|2026-01-01|2026-01-30|12|30|not met";
        row("six months to the day", 181, "001000:00", 0, "", "", met, "", "");
        row("a day more", 182, "001000:00", 0, "", "", "", "", "visit");
        row("twelve months allowed", 182, "001000:00", 0, "12", "", "", "", "");
        row("never visited", -1, "", 0, "", "5000", "", "", "visit");
        row("hours reach the multiple", 10, "004990:00", 10, "", "5000", "", "", "hours");
        row("hours just short", 10, "004990:00", 9.9, "", "5000", "", "", "");
        row("at a multiple at the visit", 10, "005000:00", 4999, "", "5000", "", "", "");
        row("no hours rule", 10, "004990:00", 100, "", "", "", "", "");
        row("unreadable BSTD", 10, "n/a", 100, "", "5000", "", "", "");
        row("30 days not met", 10, "000100:00", 0, "", "", not_met, "", "adherence");
        row("O2 failed", 10, "000100:00", 0, "", "", met, "fail", "o2");
        row("O2 passed", 10, "000100:00", 0, "", "", met, "pass", "");
        row("every reason", 400, "009999:30", 0.5, "", "5000", not_met, "fail",
            "visit,hours,adherence,o2");
    }
    void due_reasons() {
        const auto [days, bstd, since, months, hours, adherence, o2, expected] =
            Table<int, QString, double, QString, QString, QString, QString, QString>::fetch();
        const QDate today(2026, 3, 2);
        archive::FleetRow row;
        row.device.sn = "VO2-1";
        if (days >= 0)
            row.device.last_visit_at =
                QDateTime(today.addDays(-days), QTime(12, 0)).toSecsSinceEpoch();
        row.device.last_visit_bstd = bstd;
        row.hours_since_visit = since;
        row.last_adherence = adherence;
        row.last_o2_verdict = o2;
        const auto rules = archive::maintenance_rules(months, hours, nullptr);
        QVERIFY(rules);
        QCOMPARE(archive::due_reasons(row, *rules, today).join(','), expected);
    }
    void maintenance_rules_refuse_nonsense() {
        QString bad;
        QVERIFY(!archive::maintenance_rules("0", "", &bad));
        QCOMPARE(bad, QString("WARTUNG_MONATE 0"));
        QVERIFY(!archive::maintenance_rules("", "viele", &bad));
        QCOMPARE(bad, QString("WARTUNG_STUNDEN viele"));
        QCOMPARE(archive::maintenance_rules(" ", "", &bad)->months, 6);
    }

    void initTestCase() {
        // A write past the file-size limit fails instead of ending the test.
        std::signal(SIGXFSZ, SIG_IGN);
    }
};

QTEST_MAIN(TestArchive)
#include "test_archive.moc"
