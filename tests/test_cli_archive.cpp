// The archive as scripts meet it: jobs land in it by themselves, history
// and import read and fill it, and the failures a field laptop sees (a
// locked, corrupt, read-only or full archive; two programs writing at once;
// a program killed in the middle of a merge) lose no device work and no
// archived data.

#include "cli_program.h"
#include "table.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QThread>

#include <csignal>
#include <optional>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using namespace veltrako::testing;
using Run = ProgramRun;

QString write_file(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (!f.open(QIODevice::WriteOnly) || f.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(path));
    return path;
}

// A compliance file of `count` nightly periods from `first_day` on.
QByteArray compliance_file(int count, const QDate& first_day = QDate(2020, 1, 1)) {
    QByteArray text;
    for (int i = 0; i < count; ++i) {
        const QDateTime start(first_day.addDays(i), QTime(22, 0));
        const QDateTime end = start.addSecs(8 * 3600 + i % 60);
        text += QByteArray::number(i % 4097) + '|' +
                start.toString("dd.MM.yyyy HH:mm:ss").toLatin1() + '-' +
                end.toString("dd.MM.yyyy HH:mm:ss").toLatin1() + "\r\n";
    }
    return text;
}

QStringList lines_of(const QString& text) {
    QStringList lines = text.split('\n', Qt::SkipEmptyParts);
    lines.removeIf([](const QString& l) { return l.startsWith("QStandardPaths:"); }); // Qt's own
    return lines;
}

QVariant value_of(const QString& file, const QString& sql) {
    QVariant value;
    {
        QSqlDatabase db = QSqlDatabase::addDatabase("QSQLITE", "look");
        db.setDatabaseName(file);
        if (db.open()) {
            QSqlQuery q(db);
            if (q.exec(sql) && q.next())
                value = q.value(0);
        }
        db.close();
    }
    QSqlDatabase::removeDatabase("look");
    return value;
}

int scalar(const QString& file, const QString& sql) {
    const QVariant v = value_of(file, sql);
    return v.isValid() ? v.toInt() : -1;
}

// A usage readout is in whole or not at all: every readout's new periods
// are the periods it first brought.
int half_merged_readouts(const QString& file) {
    if (scalar(file, "SELECT count(*) FROM sqlite_master WHERE name = 'usage_readouts'") <= 0)
        return 0; // killed before the tables were made: they are not there at all
    return scalar(file, "SELECT count(*) FROM usage_readouts u WHERE u.new_periods <>"
                        " (SELECT count(*) FROM usage_periods p WHERE p.first_event = u.event_id)");
}

} // namespace

class TestCliArchive : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { std::signal(SIGXFSZ, SIG_IGN); }

    // A readout and a report from the command line land in the archive;
    // history shows the device, its events, its usage as the compliance
    // command shows it, and its periods as CSV.
    void jobs_land_and_history_reads_them() {
        QTemporaryDir dir;
        const QString archive = dir.filePath("a.sqlite");
        const Run usage = run_cli(
            {"--archive", archive, "--link", "sim", "compliance", "--prescribed-hours", "6"});
        QCOMPARE(usage.exit_code, 0);
        const Run report = run_cli({"--archive", archive, "--link", "sim", "report", "--out",
                                    dir.filePath("r.txt"), "t_Pruefer=Max Muster", "m_O2=93.5"});
        QCOMPARE(report.exit_code, 0);
        // Nothing said but, should the simulated reading wander that far,
        // the note about the device's O2 sensor.
        QCOMPARE(lines_of(report.err).filter(QRegularExpression("^(?!The device's O2 sensor)")),
                 QStringList());

        const Run devices = run_cli({"--archive", archive, "history"});
        QCOMPARE(devices.exit_code, 0);
        const QStringList device = lines_of(devices.out);
        QCOMPARE(device.size(), 1);
        static const QRegularExpression form(
            R"(^(\S+)\|\S+\|\d{4}-\d\d-\d\d\|\d{6}:\d\d\|(\d+)\|\d{4}-\d\d-\d\d\|\d{4}-\d\d-\d\d$)");
        const QRegularExpressionMatch m = form.match(device[0]);
        QVERIFY2(m.hasMatch(), qPrintable(device[0]));
        const QString sn = m.captured(1);

        const QStringList events = lines_of(run_cli({"--archive", archive, "history", sn}).out);
        QCOMPARE(events.size(), 2);
        const QStringList read = events.filter("|usage|");
        const QStringList filed = events.filter("|report|");
        QVERIFY2(read.size() == 1 && read[0].contains(QRegularExpression(
                                         R"(^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d\|usage\|)" +
                                         m.captured(2) + " periods, " + m.captured(2) + " new$")),
                 qPrintable(events.join('\n')));
        // The report's result and the O2 it measured beside the device's own.
        QVERIFY2(filed.size() == 1 && filed[0].contains("|report|saved ") &&
                     filed[0].contains(QRegularExpression(
                         "inspector Max Muster, result incomplete, O2 measured 93.5 %, "
                         "device \\d+ %$")),
                 qPrintable(events.join('\n')));

        const Run months =
            run_cli({"--archive", archive, "history", sn, "--usage", "--prescribed-hours", "6"});
        QCOMPARE(months.exit_code, 0);
        QCOMPARE(months.out, usage.out);
        // The readout's own verdict on its best 30 days is kept with it.
        const QStringList thirty = lines_of(usage.out).filter(QRegularExpression("^30d\\|"));
        QCOMPARE(thirty.size(), 1);
        QCOMPARE(value_of(archive, "SELECT adherence FROM usage_readouts").toString(), thirty[0]);
        const QStringList csv =
            lines_of(run_cli({"--archive", archive, "history", sn, "--csv"}).out);
        QCOMPARE(csv.size(), m.captured(2).toInt() + 1);
        QCOMPARE(csv[0], QString("start,end,hours"));
        QVERIFY2(
            csv[1].contains(QRegularExpression(
                R"(^\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d,\d{4}-\d\d-\d\dT\d\d:\d\d:\d\d,\d+\.\d\d$)")),
            qPrintable(csv[1]));

        const Run unknown = run_cli({"--archive", archive, "history", "NOSUCH"});
        QCOMPARE(unknown.exit_code, 1);
        QCOMPARE(lines_of(unknown.err).size(), 1);
        QVERIFY(unknown.out.isEmpty());
    }

    // Imported files add what they hold once; a compliance file whose device
    // nobody names is refused, as is a file that cannot be read, and nothing
    // of either is half imported.
    void import_adds_once_and_refuses_whole_files() {
        QTemporaryDir dir;
        const QString archive = dir.filePath("a.sqlite");
        write_file(dir.filePath("in/VO2-7_2021-05-01/Compliance_x.txt"), compliance_file(30));
        // A visit that did not complete: its folder still names the device.
        write_file(dir.filePath("in/VO2-6_2021-05-01_2_unvollstaendig/Compliance_y.txt"),
                   compliance_file(10));
        write_file(dir.filePath("in/Compliance_VO2-8_20210501_101010.txt"),
                   compliance_file(20, QDate(2021, 1, 1)));
        const QString nameless = write_file(dir.filePath("nameless.txt"), compliance_file(5));
        const QString broken =
            write_file(dir.filePath("broken.txt"), compliance_file(5) + "7|not a time\r\n");

        const Run first = run_cli({"--archive", archive, "archive", "import", dir.filePath("in")});
        QCOMPARE(first.exit_code, 0);
        QCOMPARE(lines_of(first.out),
                 QStringList{"imported: 60 periods (60 new), 0 status entries, 0 reports"});
        const Run again = run_cli({"--archive", archive, "archive", "import", dir.filePath("in")});
        QCOMPARE(lines_of(again.out),
                 QStringList{"imported: 60 periods (0 new), 0 status entries, 0 reports"});

        const Run refused = run_cli({"--archive", archive, "archive", "import", nameless, broken});
        QCOMPARE(refused.exit_code, 1);
        const QStringList err = lines_of(refused.err);
        QCOMPARE(err.size(), 2);
        QVERIFY2(err[0].contains("nameless.txt") && err[0].contains("--sn"), qPrintable(err[0]));
        QVERIFY2(err[1].contains("broken.txt"), qPrintable(err[1]));
        QCOMPARE(lines_of(refused.out),
                 QStringList{"imported: 0 periods (0 new), 0 status entries, 0 reports"});
        const Run named =
            run_cli({"--archive", archive, "archive", "import", "--sn", "VO2-9", nameless});
        QCOMPARE(lines_of(named.out),
                 QStringList{"imported: 5 periods (5 new), 0 status entries, 0 reports"});
        QCOMPARE(lines_of(run_cli({"--archive", archive, "history"}).out).size(), 4);
        QCOMPARE(run_cli({"--archive", archive, "archive", "check"}).exit_code, 0);
        // Its six days hold five with 6 h: met at 70 %, not at the 90 % asked.
        const QStringList judged =
            lines_of(run_cli({"--archive", archive, "history", "VO2-9", "--usage",
                              "--prescribed-hours", "6", "--adherence-share", "90"})
                         .out);
        QCOMPARE(judged.filter(QRegularExpression("^30d\\|")),
                 QStringList{"30d|2020-01-01|2020-01-06|5|6|not met"});
    }

    // The usage readout ends as it would without an archive: exit 0, the
    // file written, the month lines printed; one stderr line says what was
    // not archived and why.
    void a_failing_archive_loses_no_device_work_data() {
        QTest::addColumn<QString>("fault");
        QTest::newRow("locked by another program") << "locked";
        QTest::newRow("corrupt file") << "corrupt";
        QTest::newRow("read-only folder and file") << "read-only";
        QTest::newRow("full disk") << "full";
    }
    void a_failing_archive_loses_no_device_work() {
        QFETCH(QString, fault);
        QTemporaryDir dir;
        const QString folder = dir.filePath("archive");
        const QString archive = folder + "/a.sqlite";
        QCOMPARE(run_cli({"--archive", archive, "archive", "import", "--sn", "VO2-1",
                          write_file(dir.filePath("old.txt"), compliance_file(40))})
                     .exit_code,
                 0);
        const Run before = run_cli({"--link", "sim", "--archive", "none", "compliance"});
        QCOMPARE(before.exit_code, 0);

        QStringList prefix; // a program that runs the command as another would
        QList<std::pair<QString, QString>> environment;
        std::optional<QSqlDatabase> lock;
        if (fault == "locked") {
            lock = QSqlDatabase::addDatabase("QSQLITE", "lock");
            lock->setDatabaseName(archive);
            QVERIFY(lock->open());
            QVERIFY(QSqlQuery(*lock).exec("BEGIN IMMEDIATE"));
            QVERIFY(QSqlQuery(*lock).exec("DELETE FROM usage_periods"));
        } else if (fault == "corrupt") {
            QFile::remove(archive + "-wal");
            QFile::remove(archive + "-shm");
            write_file(archive, QByteArray(16384, 'x'));
        } else if (fault == "read-only") {
            for (const QString& f : QDir(folder).entryList(QDir::Files))
                QFile::setPermissions(folder + "/" + f, QFileDevice::ReadOwner);
            QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
            // Root writes whatever the bits say, unless it gives up the right.
            if (geteuid() == 0) {
                if (QStandardPaths::findExecutable("setpriv").isEmpty())
                    QSKIP("running as root without setpriv: a read-only file cannot be had");
                prefix = {"--bounding-set", "-dac_override,-dac_read_search,-fowner"};
            }
        }
        const QString out = dir.filePath("c.txt");
        const QStringList arguments{"--link",     "sim",   "--archive", archive,
                                    "compliance", "--out", out};
        Run run;
        if (fault == "full") {
            // The compliance file fits; the archive's journal does not.
            run = run_with_limit(arguments, 8 * 1024);
        } else if (!prefix.isEmpty()) {
            run = run_through("setpriv", prefix, arguments);
        } else {
            run = run_cli(arguments);
        }
        if (lock) {
            QSqlQuery(*lock).exec("ROLLBACK");
            lock->close();
            lock.reset();
            QSqlDatabase::removeDatabase("lock");
        }
        QFile::setPermissions(folder, QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                          QFileDevice::ExeOwner);
        QCOMPARE(run.exit_code, 0);
        // The same month lines as without an archive. The simulated device's
        // last period runs until it is read, so the last month's hours and
        // mean of two readouts seconds apart may round differently.
        const QStringList got = lines_of(run.out);
        const QStringList want = lines_of(before.out);
        QCOMPARE(got.size(), want.size());
        QVERIFY(!want.isEmpty());
        QCOMPARE(got.mid(0, got.size() - 1), want.mid(0, want.size() - 1));
        QCOMPARE(got.last().section('|', 0, 0), want.last().section('|', 0, 0));
        QCOMPARE(got.last().section('|', 2, 2), want.last().section('|', 2, 2));
        QVERIFY(QFileInfo(out).size() > 0);
        const QStringList err = lines_of(run.err);
        QVERIFY2(err.size() == 1 && err[0].startsWith("Not archived: usage readout of ") &&
                     err[0].contains(archive),
                 qPrintable(run.err));
        if (fault != "corrupt") // what was archived before is all there
            QCOMPARE(scalar(archive, "SELECT count(*) FROM usage_periods"), 40);
    }

    // Two programs importing into one archive at the same time: both finish
    // and every period of both is there. Several rounds, each on a new file:
    // the two meet at the file's first opening only now and then.
    void two_writers_lose_nothing() {
        QTemporaryDir dir;
        const QString a =
            write_file(dir.filePath("Compliance_VO2-A_20240101_000000.txt"), compliance_file(4097));
        const QString b = write_file(dir.filePath("Compliance_VO2-B_20240101_000000.txt"),
                                     compliance_file(4097, QDate(2009, 1, 1)));
        const ProgramCopy cli(QStringLiteral(VELTRAKO2_CLI_PATH));
        for (int round = 0; round < 6; ++round) {
            const QString archive = dir.filePath(QString("a%1.sqlite").arg(round));
            QProcess first, second;
            for (auto [p, file] : {std::pair{&first, a}, std::pair{&second, b}})
                p->start(cli.file("veltrako2-cli"),
                         {"--archive", archive, "archive", "import", file});
            for (QProcess* p : {&first, &second}) {
                QVERIFY(p->waitForFinished(60000));
                QVERIFY2(p->exitCode() == 0, p->readAllStandardError().constData());
            }
            const QStringList devices = lines_of(run_cli({"--archive", archive, "history"}).out);
            QCOMPARE(devices.size(), 2);
            for (const QString& d : devices)
                QCOMPARE(d.section('|', 4, 4), QString("4097"));
        }
    }

    // Killed (SIGKILL) in the middle of merging: what is in the archive is
    // whole readouts only, the check passes, and the next run completes.
    void killed_mid_merge_leaves_a_consistent_archive() {
        QTemporaryDir dir;
        const QString archive = dir.filePath("a.sqlite");
        for (int i = 0; i < 12; ++i)
            write_file(
                dir.filePath(QStringLiteral("in/Compliance_VO2-%1_20240101_000000.txt").arg(i)),
                compliance_file(4097, QDate(2000 + i, 1, 1)));
        const ProgramCopy cli(QStringLiteral(VELTRAKO2_CLI_PATH));
        const QStringList import{"--archive", archive, "archive", "import", dir.filePath("in")};
        int killed = 0;
        for (const int after_ms : {150, 400, 800, 1300}) {
            QProcess p;
            p.start(cli.file("veltrako2-cli"), import);
            QVERIFY(p.waitForStarted());
            QThread::msleep(static_cast<unsigned long>(after_ms));
            if (p.state() == QProcess::Running) {
                ::kill(static_cast<pid_t>(p.processId()), SIGKILL);
                ++killed;
            }
            p.waitForFinished();
            QCOMPARE(half_merged_readouts(archive), 0);
            if (!QFileInfo::exists(archive))
                continue;
            const Run check = cli.run({"--archive", archive, "archive", "check"});
            QVERIFY2(check.exit_code == 0, qPrintable(check.err));
        }
        QVERIFY2(killed > 0, "every import finished before it could be killed");
        const Run last = cli.run(import);
        QCOMPARE(last.exit_code, 0);
        QCOMPARE(scalar(archive, "SELECT count(*) FROM usage_periods"), 12 * 4097);
        QCOMPARE(scalar(archive, "SELECT count(*) FROM usage_readouts"), 12);
    }

private:
    // veltrako2-cli with its files limited to `bytes` (a full disk).
    static Run run_with_limit(const QStringList& arguments, rlim_t bytes) {
        const ProgramCopy cli(QStringLiteral(VELTRAKO2_CLI_PATH));
        QProcess p;
        p.setChildProcessModifier([bytes] {
            rlimit limit{bytes, bytes};
            setrlimit(RLIMIT_FSIZE, &limit);
            std::signal(SIGXFSZ, SIG_IGN);
        });
        p.start(cli.file("veltrako2-cli"), arguments);
        return finished(p);
    }
    // veltrako2-cli started by `tool` with `tool_arguments` before it.
    static Run run_through(const QString& tool, const QStringList& tool_arguments,
                           const QStringList& arguments) {
        const ProgramCopy cli(QStringLiteral(VELTRAKO2_CLI_PATH));
        QProcess p;
        p.start(QStandardPaths::findExecutable(tool),
                tool_arguments + QStringList{cli.file("veltrako2-cli")} + arguments);
        return finished(p);
    }
    static Run finished(QProcess& p) {
        Run r;
        if (!p.waitForFinished(60000)) {
            p.kill();
            p.waitForFinished();
            return r;
        }
        r.exit_code = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
        r.out = QString::fromUtf8(p.readAllStandardOutput());
        r.err = QString::fromUtf8(p.readAllStandardError());
        return r;
    }
};

QTEST_GUILESS_MAIN(TestCliArchive)
#include "test_cli_archive.moc"
