// Every file the program writes is either written whole or left as it was:
// a disk that fills up part-way or a name that is taken by a folder must
// never leave half a report, a cut settings file or a stray temporary file
// behind.

#include "app_context.h"
#include "compliance/compliance_file.h"
#include "compliance/compliance_readout.h"
#include "config/config.h"
#include "protocol/poll_cycle.h"
#include "report/report_file.h"
#include "report/report_record.h"
#include "report_harness.h"
#include "status/status_table.h"
#include "table.h"

#include <QDir>
#include <QRandomGenerator>

#include <csignal>
#include <functional>
#include <optional>
#include <sys/resource.h>
#include <unistd.h>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

const QByteArray old_content = "old\r\n";

// One of the program's files: its name, and how the program writes it.
struct Writer {
    const char* what;
    const char* file;
    std::function<bool(Desk&, const QString&)> write;
};

const Writer writers[] = {
    {"configuration", "veltrako2.ini",
     [](Desk& f, const QString& path) {
         f.ctx.config.AUTOSAVEDIR = QString(200, QLatin1Char('x'));
         return config::save_config(f.ctx.config, path);
     }},
    {"communication log", "protokoll20260302140509.txt",
     [](Desk& f, const QString&) {
         f.ctx.comm_log.comm_log = QString(2000, QLatin1Char('#')) + QStringLiteral("\r\n");
         return !protocol::cmd_saveprotokoll(f.ctx).isEmpty();
     }},
    {"status dump", "Status_VO2.txt",
     [](Desk&, const QString& path) {
         return status::write_status_table(
             path, QStringList(40, QString(120, QLatin1Char('-'))).join(QStringLiteral("\r\n")));
     }},
    {"compliance file", "Compliance_VO2.txt",
     [](Desk& f, const QString& path) {
         QRandomGenerator random(7);
         compliance::compliance_testdata(f.ctx.compliance, random);
         return compliance::write_compliance_file(path, f.ctx.compliance, QLocale());
     }},
    // The report goes through the "Speichern" button: dialog, overwrite
    // question, file.
    {"report", "Report_VO2.txt",
     [](Desk& f, const QString& path) {
         device::DeviceRecord d;
         d.live_valid = true;
         d.SN = QStringLiteral("VO2-7E00042 ");
         d.BSTD = QStringLiteral("012345:30");
         report::take_snapshot(f.ctx.report, d, true);
         f.ui.file_answers << path;
         f.ui.yes_no_answers << true;
         return report::save_report(f.ctx);
     }},
};

enum class Fault { none, disk_full, folder_in_the_way };

// Files can grow only to `bytes` while it lives: the disk is full. (A write
// past the limit then fails instead of raising SIGXFSZ: see initTestCase.)
struct FileSizeLimit {
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &saved);
        rlimit limit = saved;
        limit.rlim_cur = bytes;
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &saved); }
    rlimit saved{};
};

} // namespace

class TestFileFailures : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { std::signal(SIGXFSZ, SIG_IGN); }

    void written_whole_or_not_at_all_data() {
        const Table<int, Fault> table;
        for (int w = 0; w < 5; ++w) {
            const QByteArray what = writers[w].what;
            table(what + ", written", w, Fault::none);
            table(what + ", disk full part-way", w, Fault::disk_full);
            table(what + ", a folder of that name", w, Fault::folder_in_the_way);
        }
    }

    void written_whole_or_not_at_all() {
        const auto [writer, fault] = Table<int, Fault>::fetch();
        const Writer& w = writers[writer];
        Desk f;
        // The settings file of the report's dialog goes to a folder of its
        // own, so that only the file under test is written into the folder.
        QTemporaryDir settings;
        f.ctx.config_path = settings.filePath(QStringLiteral("veltrako2.ini"));
        const QString target = f.path(QLatin1String(w.file));
        if (fault == Fault::folder_in_the_way) {
            QVERIFY(QDir().mkpath(target));
            QVERIFY(write_file(target + QStringLiteral("/keep.txt"), old_content));
        } else {
            QVERIFY(write_file(target, old_content));
        }
        const QStringList before =
            QDir(f.dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot);

        std::optional<FileSizeLimit> full;
        if (fault == Fault::disk_full)
            full.emplace(64);
        const bool written = w.write(f, target);
        full.reset();

        // No temporary file or half file beside the target, whatever happened.
        QCOMPARE(QDir(f.dir.path()).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), before);
        if (fault == Fault::none) {
            QVERIFY(written);
            const QByteArray now = read_file(target);
            QVERIFY(now.size() > 64 && now.endsWith("\r\n"));
            return;
        }
        QVERIFY(!written);
        if (fault == Fault::folder_in_the_way) {
            QVERIFY(QFileInfo(target).isDir());
            QCOMPARE(read_file(target + QStringLiteral("/keep.txt")), old_content);
        } else {
            QCOMPARE(read_file(target), old_content);
        }
    }
};

QTEST_GUILESS_MAIN(TestFileFailures)
#include "test_file_failures.moc"
