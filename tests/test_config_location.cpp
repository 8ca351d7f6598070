// Where the settings go: beside a program the user may write to, else in the
// user's own folders. The read-only program folder is a temporary folder with
// its write bits removed. Root writes there anyway; the parts that depend on
// the refusal are skipped then, and the rest runs through the decision with
// the answer given by hand.

#include "app_context.h"
#include "config/config.h"
#include "config/config_location.h"
#include "protocol/poll_cycle.h"
#include "report_harness.h"
#include "status/status_readout.h"
#include "table.h"

#include <QDir>

using namespace veltrako;
using namespace veltrako::config;
using namespace veltrako::testing;

namespace {

const QByteArray shipped_ini = "TIMEOUT|1\r\nTIMERINTERVAL|20\r\nAUTOSAVE|0\r\nAUTOSAVEDIR|\r\n";

constexpr QFileDevice::Permissions read_only = QFileDevice::ReadOwner | QFileDevice::ExeOwner |
                                               QFileDevice::ReadGroup | QFileDevice::ExeGroup |
                                               QFileDevice::ReadOther | QFileDevice::ExeOther;
constexpr QFileDevice::Permissions writable = read_only | QFileDevice::WriteOwner;

// True for root, whom a missing write bit does not stop.
bool write_bits_ignored() {
    QTemporaryDir dir;
    QFile::setPermissions(dir.path(), read_only);
    QFile probe(dir.filePath(QStringLiteral("probe")));
    const bool written = probe.open(QIODevice::WriteOnly);
    probe.remove(); // closes it first
    QFile::setPermissions(dir.path(), writable);
    return written;
}

// A program folder as an installation leaves it: the shipped settings, then
// the write bits taken away from the file and the folder.
struct ProgramFolder {
    ProgramFolder() {
        write_file(path() + QLatin1String(config_file_name), shipped_ini);
        QFile::setPermissions(path() + QLatin1String(config_file_name),
                              read_only & ~QFileDevice::ExeOwner);
        QFile::setPermissions(dir.path(), read_only);
    }
    ~ProgramFolder() { QFile::setPermissions(dir.path(), writable); }
    QString path() const { return dir.path() + QLatin1Char('/'); }
    QTemporaryDir dir;
};

using Choose = Table<QString, bool, QString, QString, QString>;
using Probe = Table<bool, bool, bool, bool>;

} // namespace

class TestConfigLocation : public QObject {
    Q_OBJECT
private slots:
    void choose_data() {
        const Choose row; // program folder, writable, settings, seeded from, user folder
        const char* own = "/home/tech/veltrako2/veltrako2.ini";
        const char* user = "/home/tech/.config/veltrako2/veltrako2.ini";
        row("own folder", "/home/tech/veltrako2", true, own, "", "/home/tech/veltrako2/");
        row("own folder with separator", "/home/tech/veltrako2/", true, own, "",
            "/home/tech/veltrako2/");
        row("installed", "/opt/veltrako2/", false, user, "/opt/veltrako2/veltrako2.ini",
            "/home/tech/Documents/");
        row("installed, no separator", "/opt/veltrako2", false, user,
            "/opt/veltrako2/veltrako2.ini", "/home/tech/Documents/");
    }
    void choose() {
        const auto [program_dir, writable, config_path, seed_path, user_dir] = Choose::fetch();
        const UserFolders folders{QStringLiteral("/home/tech/.config/veltrako2"),
                                  QStringLiteral("/home/tech/Documents"),
                                  QStringLiteral("/home/tech/.local/share/veltrako2")};
        const ConfigLocation location = choose_config_location(program_dir, writable, folders);
        QCOMPARE(location.config_path, config_path);
        QCOMPARE(location.seed_path, seed_path);
        QCOMPARE(location.user_dir, user_dir);
        QCOMPARE(location.in_user_folder, !writable);
        // The archive follows the settings: beside a portable program, in the
        // user's data folder for an installed one.
        QCOMPARE(location.archive_path,
                 writable ? QFileInfo(config_path).path() + QStringLiteral("/archive.sqlite")
                          : QStringLiteral("/home/tech/.local/share/veltrako2/archive.sqlite"));
    }

    // ARCHIV and --archive choose another file or none; a relative name is
    // taken from the settings' folder.
    void archive_file_data() {
        QTest::addColumn<QString>("setting");
        QTest::addColumn<QString>("option");
        QTest::addColumn<QString>("expected");
        QTest::newRow("default") << ""
                                 << ""
                                 << "/opt/x/archive.sqlite";
        QTest::newRow("setting") << "/srv/a.sqlite"
                                 << ""
                                 << "/srv/a.sqlite";
        QTest::newRow("relative setting") << "hist/a.sqlite"
                                          << ""
                                          << "/cfg/hist/a.sqlite";
        QTest::newRow("relative option") << "hist/a.sqlite"
                                         << "b.sqlite"
                                         << QDir::current().absoluteFilePath("b.sqlite");
        QTest::newRow("option over setting") << "/srv/a.sqlite"
                                             << "/tmp/b.sqlite"
                                             << "/tmp/b.sqlite";
        QTest::newRow("setting none") << "none"
                                      << ""
                                      << "";
        QTest::newRow("option none") << "/srv/a.sqlite"
                                     << "none"
                                     << "";
        QTest::newRow("option over none") << "none"
                                          << "/tmp/b.sqlite"
                                          << "/tmp/b.sqlite";
    }
    void archive_file() {
        QFETCH(QString, setting);
        QFETCH(QString, option);
        QFETCH(QString, expected);
        ConfigLocation location;
        location.config_path = QStringLiteral("/cfg/veltrako2.ini");
        location.archive_path = QStringLiteral("/opt/x/archive.sqlite");
        QCOMPARE(archive_path(location, setting, option), expected);
    }

    // The probe tries for real; permission bits alone would say yes to a
    // file in a folder where no new file can be made.
    void probe_data() {
        const Probe row; // settings there, settings writable, folder writable, answer
        row("fresh folder", false, false, true, true);
        row("own settings", true, true, true, true);
        row("read-only file", true, false, true, false);
        row("read-only folder", true, true, false, false);
        row("read-only folder, no file", false, false, false, false);
    }
    void probe() {
        const auto [ini_there, ini_writable, folder_writable, expected] = Probe::fetch();
        QTemporaryDir dir;
        const QString ini = dir.filePath(QLatin1String(config_file_name));
        if (ini_there) {
            write_file(ini, shipped_ini);
            QFile::setPermissions(ini, ini_writable ? writable : read_only);
        }
        QFile::setPermissions(dir.path(), folder_writable ? writable : read_only);
        const bool answer = can_write_config(ini);
        QFile::setPermissions(dir.path(), writable);
        if (!expected && write_bits_ignored())
            QSKIP("running as root: a missing write bit does not stop writing");
        QCOMPARE(answer, expected);
        if (ini_there)
            QCOMPARE(read_file(ini), shipped_ini); // the probe left the settings alone
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden).size(),
                 ini_there ? 1 : 0); // and no probe file behind
    }

    // The command line only reads: without settings of the user's own it
    // reads the shipped ones, and nothing appears in the user's folders.
    void reading_alone_makes_nothing() {
        ProgramFolder program;
        QTemporaryDir home;
        const UserFolders folders{home.filePath(QStringLiteral(".config/veltrako2")),
                                  home.filePath(QStringLiteral("Documents")),
                                  home.filePath(QStringLiteral(".local/share/veltrako2"))};
        ConfigLocation location = find_config_location(program.path(), folders);
        if (write_bits_ignored())
            location = choose_config_location(program.path(), false, folders);
        QCOMPARE(readable_config(location), program.path() + QLatin1String(config_file_name));
        QVERIFY(QDir(home.path()).isEmpty());
        QVERIFY(QDir().mkpath(folders.config_dir));
        write_file(location.config_path, "TIMERINTERVAL|30\r\n");
        QCOMPARE(readable_config(location), location.config_path);
    }

    // Two starts of an installed copy: the shipped settings are read from the
    // user's copy; the communication log goes to the user's documents; a
    // status save must still write and remember its folder in the user's
    // settings (it gives up without a word when it cannot), where the next
    // start finds it. Neither the shipped file nor the program folder change.
    void settings_and_files_live_with_the_user() {
        ProgramFolder program;
        QTemporaryDir home;
        const UserFolders folders{home.filePath(QStringLiteral(".config/veltrako2")),
                                  home.filePath(QStringLiteral("Documents")),
                                  home.filePath(QStringLiteral(".local/share/veltrako2"))};
        ConfigLocation location = locate_config(program.path(), folders);
        if (write_bits_ignored()) {
            // Root may write beside the program, so it stays there; the rest
            // goes through the decision for a user who may not.
            QVERIFY(!location.in_user_folder);
            location = choose_config_location(program.path(), false, folders);
            prepare_config_location(location);
        }
        QVERIFY(location.in_user_folder);
        QCOMPARE(location.config_path, folders.config_dir + QStringLiteral("/veltrako2.ini"));
        QCOMPARE(read_file(location.config_path), shipped_ini);

        testing::ManualClock clock;
        testing::FakeUserInterface ui;
        AppContext ctx(clock, ui, nullptr);
        ctx.program_dir = program.path();
        ctx.config_path = location.config_path;
        ctx.user_dir = location.user_dir;
        set_config_defaults(ctx.config, location.user_dir);
        QVERIFY(load_config(ctx.config, location.config_path, location.user_dir, ui));
        QCOMPARE(ctx.config.TIMERINTERVAL, qint16(20));
        QCOMPARE(ctx.config.INITDIR, folders.documents_dir + QLatin1Char('/'));
        QVERIFY(QFileInfo(ctx.config.INITDIR).isDir());

        clock.set_now(QDateTime(QDate(2024, 5, 6), QTime(7, 8, 9), Qt::UTC));
        log_comm(ctx, QStringLiteral("OUT"), QStringLiteral("49 "));
        const QString log = protocol::cmd_saveprotokoll(ctx);
        QCOMPARE(log, folders.documents_dir + QStringLiteral("/protokoll20240506070809.txt"));
        QVERIFY(read_file(log).startsWith("OUT "));

        ctx.device.SN = QStringLiteral("VO2-7E00042 ");
        ctx.device.SW = QStringLiteral("52A");
        ctx.link.device_handle = 1; // a device is connected
        for (int n = 1; n <= 2; ++n)
            ctx.status.records.push_back(QByteArray(22, char(n)));
        const QString reports = home.filePath(QStringLiteral("Berichte/"));
        QVERIFY(QDir().mkpath(reports));
        ui.file_answers << reports + QStringLiteral("Status.txt");
        QVERIFY(status::save_status(ctx, status::SaveMode::manual));
        QVERIFY(QFileInfo(reports + QStringLiteral("Status.txt")).size() > 0);
        QCOMPARE(ui.dialogs.value(0).start_dir, folders.documents_dir + QLatin1Char('/'));

        const ConfigLocation again = locate_config(program.path(), folders);
        const ConfigLocation& second = again.in_user_folder ? again : location;
        Config reread;
        set_config_defaults(reread, second.user_dir);
        QVERIFY(load_config(reread, second.config_path, second.user_dir, ui));
        QCOMPARE(reread.INITDIR, reports); // not seeded over
        QCOMPARE(reread.TIMERINTERVAL, qint16(20));
        QVERIFY(ui.messages.isEmpty());

        QCOMPARE(read_file(program.path() + QLatin1String(config_file_name)), shipped_ini);
        QCOMPARE(QDir(program.dir.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
    }
};

QTEST_GUILESS_MAIN(TestConfigLocation)
#include "test_config_location.moc"
