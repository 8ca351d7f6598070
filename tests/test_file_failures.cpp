// Every file the program writes is either written whole or left as it was:
// a disk that fills up part-way, a name that is taken by a folder, or a
// folder the user may not write to must never leave half a report, a cut
// settings file or a stray temporary file behind.

#include "app_context.h"
#include "compliance/compliance_file.h"
#include "compliance/compliance_readout.h"
#include "config/config.h"
#include "fake_link.h"
#include "fake_user_interface.h"
#include "manual_clock.h"
#include "protocol/poll_cycle.h"
#include "report/report_file.h"
#include "report/report_record.h"
#include "status/status_table.h"

#include <QDir>
#include <QFile>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <functional>
#include <sys/resource.h>
#include <unistd.h>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

const QByteArray old_content = "old\r\n";

struct Fixture {
    ManualClock clock{QDateTime(QDate(2026, 3, 2), QTime(14, 5, 9), Qt::UTC)};
    FakeUserInterface ui;
    AppContext ctx{clock, ui, std::make_unique<FakeLink>()};
    QString folder;

    explicit Fixture(const QString& dir) : folder(dir + QLatin1Char('/')) {
        ctx.program_dir = folder;
        ctx.user_dir = folder;
        // The settings file lives elsewhere, so that only the file under
        // test is written into the folder.
        ctx.config.INITDIR = folder;
    }
};

// One of the program's files: where it goes and how the program writes it.
struct Writer {
    std::function<QString(Fixture&)> target;
    std::function<bool(Fixture&)> write;
};

Writer configuration() {
    return {[](Fixture& f) { return f.folder + QStringLiteral("veltrako2.ini"); },
            [](Fixture& f) {
                f.ctx.config.AUTOSAVEDIR = QString(200, QLatin1Char('x'));
                return config::save_config(f.ctx.config,
                                           f.folder + QStringLiteral("veltrako2.ini"));
            }};
}

Writer communication_log() {
    return {[](Fixture& f) { return f.folder + QStringLiteral("protokoll20260302140509.txt"); },
            [](Fixture& f) {
                f.ctx.comm_log.comm_log = QString(2000, QLatin1Char('#')) + QStringLiteral("\r\n");
                return !protocol::cmd_saveprotokoll(f.ctx).isEmpty();
            }};
}

Writer status_dump() {
    return {[](Fixture& f) { return f.folder + QStringLiteral("Status_VO2.txt"); },
            [](Fixture& f) {
                const QString table =
                    QStringList(40, QString(120, QLatin1Char('-'))).join(QStringLiteral("\r\n"));
                return status::write_status_table(f.folder + QStringLiteral("Status_VO2.txt"),
                                                  table);
            }};
}

Writer compliance_file() {
    return {[](Fixture& f) { return f.folder + QStringLiteral("Compliance_VO2.txt"); },
            [](Fixture& f) {
                QRandomGenerator random(7);
                compliance::compliance_testdata(f.ctx.compliance, random);
                return compliance::write_compliance_file(
                    f.folder + QStringLiteral("Compliance_VO2.txt"), f.ctx.compliance, QLocale());
            }};
}

// The report goes through the "Speichern" button: dialog, overwrite
// question, file.
Writer inspection_report() {
    return {[](Fixture& f) { return f.folder + QStringLiteral("Report_VO2.txt"); },
            [](Fixture& f) {
                device::DeviceRecord d;
                d.live_valid = true;
                d.SN = QStringLiteral("VO2-7E00042 ");
                d.BSTD = QStringLiteral("012345:30");
                report::take_snapshot(f.ctx.report, d, true);
                f.ui.file_answers << f.folder + QStringLiteral("Report_VO2.txt");
                f.ui.yes_no_answers << true;
                return report::save_report(f.ctx);
            }};
}

enum class Fault { none, disk_full, folder_in_the_way, read_only_folder };

// Files can grow only to `bytes` while it lives: the disk is full.
class FileSizeLimit {
public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &saved_);
        old_handler_ = std::signal(SIGXFSZ, SIG_IGN);
        rlimit limit = saved_;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &saved_);
        std::signal(SIGXFSZ, old_handler_);
    }

private:
    rlimit saved_{};
    void (*old_handler_)(int) = nullptr;
};

QByteArray read_all(const QString& path) {
    QFile f(path);
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

class TestFileFailures : public QObject {
    Q_OBJECT
private slots:
    void written_whole_or_not_at_all_data() {
        QTest::addColumn<int>("writer");
        QTest::addColumn<Fault>("fault");
        const char* names[] = {"configuration", "communication log", "status dump",
                               "compliance file", "report"};
        const std::pair<Fault, const char*> faults[] = {
            {Fault::none, "written"},
            {Fault::disk_full, "disk full part-way"},
            {Fault::folder_in_the_way, "a folder of that name"},
            {Fault::read_only_folder, "read-only folder"}};
        for (int w = 0; w < 5; ++w)
            for (const auto& [fault, what] : faults)
                QTest::addRow("%s, %s", names[w], what) << w << fault;
    }

    void written_whole_or_not_at_all() {
        QFETCH(int, writer);
        QFETCH(Fault, fault);
        const Writer writers[] = {configuration(), communication_log(), status_dump(),
                                  compliance_file(), inspection_report()};
        const Writer& w = writers[writer];

        QTemporaryDir dir;
        Fixture f(dir.path());
        // The settings file of the report's dialog goes to a folder of its own.
        QTemporaryDir settings;
        f.ctx.config_path = settings.filePath(QStringLiteral("veltrako2.ini"));
        const QString target = w.target(f);
        if (fault == Fault::folder_in_the_way) {
            QVERIFY(QDir().mkpath(target));
            QFile inside(target + QStringLiteral("/keep.txt"));
            QVERIFY(inside.open(QIODevice::WriteOnly));
            inside.write(old_content);
        } else {
            QFile old(target);
            QVERIFY(old.open(QIODevice::WriteOnly));
            old.write(old_content);
        }
        const QStringList before =
            QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);

        bool written = false;
        switch (fault) {
        case Fault::none:
        case Fault::folder_in_the_way:
            written = w.write(f);
            break;
        case Fault::disk_full: {
            const FileSizeLimit full(64);
            written = w.write(f);
            break;
        }
        case Fault::read_only_folder: {
            QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::ExeOwner);
            QFile::setPermissions(target, QFile::ReadOwner);
            // The superuser writes anyway; nothing to show then.
            QFile probe(dir.filePath(QStringLiteral("probe")));
            if (probe.open(QIODevice::WriteOnly)) {
                probe.remove();
                QFile::setPermissions(dir.path(),
                                      QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
                QSKIP("running as the superuser: a read-only folder does not stop writes");
            }
            written = w.write(f);
            QFile::setPermissions(dir.path(),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
            QFile::setPermissions(target, QFile::ReadOwner | QFile::WriteOwner);
            break;
        }
        }

        // No temporary file or half file beside the target, whatever happened.
        QCOMPARE(QDir(dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
        if (fault == Fault::none) {
            QVERIFY(written);
            const QByteArray now = read_all(target);
            QVERIFY(now.size() > 64);
            QVERIFY(now.endsWith("\r\n"));
            return;
        }
        QVERIFY(!written);
        if (fault == Fault::folder_in_the_way) {
            QVERIFY(QFileInfo(target).isDir());
            QCOMPARE(read_all(target + QStringLiteral("/keep.txt")), old_content);
        } else {
            QCOMPARE(read_all(target), old_content);
        }
    }
};

QTEST_GUILESS_MAIN(TestFileFailures)
#include "test_file_failures.moc"
