// The status memory against the simulated concentrator, through the scripted
// user interface: the record chain and its end, the table shown, the
// automatic save once per device key, and the manual save's questions.

#include "config/config.h"
#include "config/text_file.h"
#include "protocol/commands.h"
#include "protocol/poll_cycle.h"
#include "protocol_harness.h"
#include "sim_helpers.h"
#include "status/status_readout.h"
#include "status/status_table.h"

#include <QDir>
#include <QTemporaryDir>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

// A connected program with the status feature, the shipped German texts,
// and every request the device took.
struct Session {
    explicit Session(const QString& scenario) : d(*sim::load_scenario(scenario)) {
        d.device->set_observer(
            [this](const sim::Concentrator::Event& e) { requests << e.request; });
        status::install_status_memory(d.ctx);
        config::load_language(d.ctx.language, VELTRAKO_LANG_DIR "/langde.txt", d.ui);
        d.ctx.program_dir = dir.path() + '/';
        d.ctx.config_path = dir.filePath("veltrako2.ini");
        config::set_config_defaults(d.ctx.config, d.ctx.program_dir);
        protocol::connect_routine(d.ctx);
        tick_until([&] { return d.ctx.device.live_valid && d.ctx.protocol.queue_count == 0; });
    }
    template <class F> bool tick_until(F done) { return testing::tick_until(d.clock, d.ctx, done); }
    bool read_status() {
        const qsizetype shown = d.ui.status_tables.size();
        status::cmd_sysstatread_Click(d.ctx);
        // A second click while the first readout runs does nothing.
        status::cmd_sysstatread_Click(d.ctx);
        return tick_until([&] { return d.ui.status_tables.size() > shown; });
    }
    int reads_of(int n) const { return requests.count(protocol::cmd::read_status_record(n)); }

    QTemporaryDir dir;
    LinkedDevice d;
    QList<QByteArray> requests;
};

QStringList files_in(const QTemporaryDir& dir) {
    return QDir(dir.path()).entryList({"Status_*.txt"}, QDir::Files);
}

} // namespace

class TestStatusMemory : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }

    void readout_and_table_data() {
        const Table<QString, int> row; // scenario, records
        row("three records, the fourth erased", "status_example", 3);
        row("full memory: no 33rd request", "status_full", 32);
        row("first record erased: headings only", VELTRAKO2_TEST_DATA "/no_status.scn", 0);
    }
    void readout_and_table() {
        const auto [scenario, records] = Table<QString, int>::fetch();
        Session s(scenario);
        QVERIFY(s.read_status());
        for (int n = 1; n <= 33; ++n) // each once, the erased end too; never a 33rd
            QCOMPARE(s.reads_of(n), n <= std::min(records + 1, 32) ? 1 : 0);
        QVERIFY(!s.d.ui.busy);
        const progress::Standing done = s.d.ctx.status.readout.standing();
        QCOMPARE(done.phase, progress::Phase::finished);
        QCOMPARE(done.done, records);
        QCOMPARE(done.percent(), records ? 100 : 0);
        const QStringList lines = s.d.ui.status_tables.last().split("\r\n");
        QCOMPARE(lines.size(), 8 + records + 1);
        QCOMPARE(lines[3], "Datum       " + s.d.clock.now().toString("dd.MM.yyyy HH:mm:ss"));
        if (scenario == "status_example") {
            QCOMPARE(lines[0], "SN          VO2-0012345 ");
            QCOMPARE(lines[8], "   227  1800  0002     -     -    51     -     -     -     -     - "
                               "  ---  37,3  37,8  5,40  5,40   6,0  83,8  87,2  85,6");
        }
        // Fewer than two records are not saved.
        s.d.ui.file_answers << s.dir.filePath("t.txt");
        QCOMPARE(status::save_status(s.d.ctx, status::SaveMode::manual), records >= 2);
    }

    // (Once per device key: see the next test.)
    void automatic_readout_saves() {
        Session s("family7x");
        QTemporaryDir out;
        s.d.ctx.config.AUTOSAVE = "1";
        s.d.ctx.config.AUTOSAVEDIR = out.path(); // without a separator at its end
        QVERIFY(s.tick_until([&] { return !files_in(out).isEmpty(); }));
        // Each record asked for once, the erased end of the list as well.
        for (int n = 1; n <= 8; ++n)
            QCOMPARE(s.reads_of(n), n <= 7 ? 1 : 0);
        const QStringList files = files_in(out);
        QVERIFY2(files[0].startsWith("Status_VO2-7E00042_LP1550300042_7E5_20260302_"),
                 qPrintable(files[0]));
        const QStringList lines = *config::read_text_lines(out.filePath(files[0]));
        QCOMPARE(lines.size(), 8 + 6);
        QVERIFY(lines[4].contains('|'));
    }

    void automatic_save_keeps_one_file_per_board_data() {
        const Table<QString, QString, QString, bool, bool> row; // sn, lp, sw, saved, first kept
        row("same device and version", "VO2-1  ", "LP1", "5121", false, true);
        row("same board, new version", "VO2-1", "LP1", "5122", true, false);
        row("another board", "VO2-1", "LP2", "5121", true, true);
    }
    void automatic_save_keeps_one_file_per_board() {
        const auto [sn, lp, sw, second_saved, first_kept] =
            Table<QString, QString, QString, bool, bool>::fetch();
        Session s("default");
        QTemporaryDir out;
        s.d.ctx.config.AUTOSAVEDIR = out.path() + '/';
        auto& d = s.d.ctx.device;
        s.d.ctx.status.records = {QByteArray(), QByteArray(22, '\1'), QByteArray(22, '\2')};
        std::tie(d.SN, d.LP, d.SW) = std::tuple("VO2-1", "LP1", "5121");
        QVERIFY(status::save_status(s.d.ctx, status::SaveMode::automatic));
        const QStringList first = files_in(out);
        s.d.clock.advance_ms(1000);
        std::tie(d.SN, d.LP, d.SW) = std::tie(sn, lp, sw);
        QCOMPARE(status::save_status(s.d.ctx, status::SaveMode::automatic), second_saved);
        const QStringList now = files_in(out);
        QCOMPARE(now.contains(first.value(0)), first_kept);
        QCOMPARE(now.size(), int(first_kept) + int(second_saved));
    }

    void manual_save_asks_until_answered_data() {
        // what is wrong first; per dialog "old", "new" or "" (cancel); answers
        // to "overwrite?"; file written
        const Table<QString, QStringList, QList<bool>, QString> row;
        row("cancelled", "", {""}, {}, "");
        row("existing, yes", "", {"old"}, {true}, "old");
        row("existing, no, cancel", "", {"old", ""}, {false}, "");
        row("existing, no, new name", "", {"old", "new"}, {false}, "new");
        row("existing, no, existing, yes", "", {"old", "old"}, {false, true}, "old");
        row("no serial number: message, no dialog", "no serial number", {}, {}, "");
        row("configuration not writable", "no configuration", {"new"}, {}, "");
    }
    void manual_save_asks_until_answered() {
        const auto [wrong, choices, overwrite, written] =
            Table<QString, QStringList, QList<bool>, QString>::fetch();
        Session s("status_example");
        QVERIFY(s.read_status());
        if (wrong == "no serial number")
            s.d.ctx.device.SN = "    ";
        if (wrong == "no configuration")
            s.d.ctx.config_path = s.dir.filePath("missing/veltrako2.ini");
        QTemporaryDir chosen;
        QVERIFY(config::write_text_lines(chosen.filePath("old.txt"), {"kept"}));
        for (const QString& c : choices)
            s.d.ui.file_answers << (c.isEmpty() ? QString() : chosen.filePath(c + ".txt"));
        s.d.ui.yes_no_answers = overwrite;

        QCOMPARE(status::save_status(s.d.ctx, status::SaveMode::manual), !written.isEmpty());
        QCOMPARE(s.d.ui.dialogs.size(), choices.size());
        QCOMPARE(s.d.ui.messages, wrong == "no serial number"
                                      ? QStringList{s.d.ctx.language.text(3806)}
                                      : QStringList{});
        QCOMPARE(s.d.ui.questions, QStringList(overwrite.size(), s.d.ctx.language.text(3808)));
        QCOMPARE(*config::read_text_lines(chosen.filePath("old.txt")) == QStringList{"kept"},
                 written != "old");
        QCOMPARE(QFile::exists(chosen.filePath("new.txt")), written == "new");
        if (choices.isEmpty())
            return;
        const FileDialogRequest& r = s.d.ui.dialogs.first();
        QCOMPARE(r.start_dir, s.d.ctx.program_dir);
        QCOMPARE(r.filter, "Systemstatus (*.txt)|*.txt");
        QCOMPARE(r.proposed_name, "Status_VO2-0012345_LP1240010077_5121_" +
                                      s.d.clock.now().toString("yyyyMMdd_HHmmss") + ".txt");
        if (written.isEmpty())
            return;
        QFile file(chosen.filePath(written + ".txt"));
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(file.readAll()), status::format_status(s.d.ctx));
        // The chosen folder is where the next dialog starts, kept in the file.
        QCOMPARE(s.d.ctx.config.INITDIR, chosen.path() + '/');
        QVERIFY(config::read_text_lines(s.dir.filePath("veltrako2.ini"))
                    ->contains("INITDIR|" + chosen.path() + '/'));
    }
};

QTEST_GUILESS_MAIN(TestStatusMemory)
#include "test_status_memory.moc"
