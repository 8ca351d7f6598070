// The status memory against the simulated concentrator and through the
// scripted user interface: the record chain and its end, the table shown,
// the automatic save once per device key, and the manual save's dialog,
// overwrite question and remembered folder.

#include "config/config.h"
#include "config/text_file.h"
#include "protocol/commands.h"
#include "protocol/poll_cycle.h"
#include "sim_helpers.h"
#include "status/status_readout.h"
#include "status/status_table.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

const QString model_line = QStringLiteral(
    "   227  1800  0002     -     -    51     -     -     -     -     -   ---  37,3  37,8  5,40  "
    "5,40   6,0  83,8  87,2  85,6");

sim::Scenario scenario_named(const QString& name) {
    const auto s = sim::load_scenario(name);
    if (!s)
        qFatal("scenario %s does not load", qPrintable(name));
    return *s;
}

// A connected program with the status feature in it, the shipped German
// texts, and every request the device took.
struct Session {
    explicit Session(const sim::Scenario& scenario) : d(scenario) {
        d.device->set_observer(
            [this](const sim::Concentrator::Event& e) { requests << e.request; });
        status::install_status_memory(d.ctx);
        config::load_language(d.ctx.language, QStringLiteral(VELTRAKO_LANG_DIR "/langde.txt"),
                              d.ui);
        d.ctx.program_dir = dir.path() + '/';
        config::set_config_defaults(d.ctx.config, d.ctx.program_dir);
    }
    void tick() {
        d.clock.advance_ms(50);
        protocol::timer1_tick(d.ctx);
    }
    // Ticks until `done` holds; false after `limit` ticks.
    template <class F> bool tick_until(F done, int limit = 2000) {
        for (int i = 0; i < limit && !done(); ++i)
            tick();
        return done();
    }
    bool connect() {
        protocol::connect_routine(d.ctx);
        return tick_until([&] {
            return d.ctx.device.live_valid && d.ctx.protocol.queue_count == 0 &&
                   !d.ctx.protocol.waiting_reply;
        });
    }
    bool read_status() {
        const qsizetype shown = d.ui.status_tables.size();
        status::cmd_sysstatread_Click(d.ctx);
        return tick_until([&] { return d.ui.status_tables.size() > shown; });
    }
    int record_reads(int n) const { return requests.count(protocol::cmd::read_status_record(n)); }
    QStringList files(const QString& in) const {
        return QDir(in).entryList({"Status_*.txt"}, QDir::Files, QDir::Name);
    }

    QTemporaryDir dir;
    LinkedDevice d;
    QList<QByteArray> requests;
};

QStringList lines_of(const QString& path) {
    return config::read_text_lines(path).value_or(QStringList{"(missing)"});
}

} // namespace

class TestStatusMemory : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }
    void cleanupTestCase() { QLocale::setDefault(QLocale::c()); }

    void readout_ends_where_the_memory_does_data() {
        QTest::addColumn<QString>("scenario");
        QTest::addColumn<int>("records");
        QTest::addColumn<int>("last_read");
        QTest::newRow("three records, then the erased fourth") << "status_example" << 3 << 4;
        QTest::newRow("full memory: 32, no 33rd request") << "status_full" << 32 << 32;
    }
    void readout_ends_where_the_memory_does() {
        QFETCH(QString, scenario);
        QFETCH(int, records);
        QFETCH(int, last_read);
        Session s(scenario_named(scenario));
        QVERIFY(s.connect());
        QVERIFY(s.read_status());
        for (int n = 1; n <= last_read; ++n)
            QCOMPARE(s.record_reads(n), 1);
        QCOMPARE(s.record_reads(last_read + 1), 0);
        QCOMPARE(s.d.ctx.status.record_count(), records);
        QVERIFY(!s.d.ui.busy);
        const QStringList lines = s.d.ui.status_tables.last().split("\r\n");
        QCOMPARE(lines.size(), 8 + records + 1);
        // Nothing more is asked once the table stands.
        for (int i = 0; i < 40; ++i)
            s.tick();
        QCOMPARE(s.record_reads(last_read + 1), 0);
    }

    void model_record_from_the_device() {
        Session s(scenario_named("status_example"));
        QVERIFY(s.connect());
        QVERIFY(s.read_status());
        const QStringList lines = s.d.ui.status_tables.last().split("\r\n");
        QCOMPARE(lines[0], "SN          VO2-0012345 ");
        QCOMPARE(lines[1], "SN LP       LP1240010077");
        QCOMPARE(lines[2], "SWVersion   5121");
        QCOMPARE(lines[3], "Datum       " + s.d.clock.now().toString("dd.MM.yyyy HH:mm:ss"));
        QCOMPARE(lines[5].left(12), " Block     n");
        QCOMPARE(lines[8], model_line);
    }

    void erased_first_record_gives_headings_only_and_no_save() {
        Session s(scenario_from("SW=5121\nSN=VO2-1\n"));
        QVERIFY(s.connect());
        QVERIFY(s.read_status());
        QCOMPARE(s.record_reads(1), 1);
        QCOMPARE(s.record_reads(2), 0);
        QCOMPARE(s.d.ui.status_tables.last().split("\r\n").size(), 8 + 1);
        s.d.ui.file_answers << s.dir.filePath("x.txt");
        QVERIFY(!status::save_status(s.d.ctx, status::SaveMode::manual));
        QVERIFY(s.d.ui.dialogs.isEmpty());
    }

    void automatic_readout_saves_once() {
        Session s(scenario_named("family7x"));
        QTemporaryDir out;
        s.d.ctx.config.AUTOSAVE = "1";
        s.d.ctx.config.AUTOSAVEDIR = out.path(); // no separator at its end
        QVERIFY(s.connect());
        QVERIFY(s.tick_until([&] { return !s.files(out.path()).isEmpty(); }));
        const QStringList files = s.files(out.path());
        QCOMPARE(files.size(), 1);
        QVERIFY2(files[0].startsWith("Status_VO2-7E00042_LP1550300042_7E5_20260302_"),
                 qPrintable(files[0]));
        const QStringList lines = lines_of(out.filePath(files[0]));
        QCOMPARE(lines.size(), 8 + 6);
        QVERIFY(lines[4].contains('|') && !lines[4].contains('/'));
        // The same device read again in this run is not saved again.
        s.d.clock.advance_ms(2000);
        QVERIFY(s.read_status());
        for (int i = 0; i < 10; ++i)
            s.tick();
        QCOMPARE(s.files(out.path()), files);
    }

    void automatic_save_keeps_one_file_per_board_data() {
        QTest::addColumn<QString>("sn");
        QTest::addColumn<QString>("lp");
        QTest::addColumn<QString>("sw");
        QTest::addColumn<bool>("second_saved");
        QTest::addColumn<bool>("first_kept");
        QTest::newRow("same device and version: not again") << "VO2-1  "
                                                            << "LP1"
                                                            << "5121" << false << true;
        QTest::newRow("same board, new version: older file goes") << "VO2-1"
                                                                  << "LP1"
                                                                  << "5122" << true << false;
        QTest::newRow("another board: both stay") << "VO2-1"
                                                  << "LP2"
                                                  << "5121" << true << true;
    }
    void automatic_save_keeps_one_file_per_board() {
        QFETCH(QString, sn);
        QFETCH(QString, lp);
        QFETCH(QString, sw);
        QFETCH(bool, second_saved);
        QFETCH(bool, first_kept);
        Session s(scenario_from("SW=5121\n"));
        QTemporaryDir out;
        s.d.ctx.config.AUTOSAVEDIR = out.path() + '/';
        auto& d = s.d.ctx.device;
        s.d.ctx.status.records = {QByteArray(), QByteArray(22, '\1'), QByteArray(22, '\2')};
        d.SN = "VO2-1";
        d.LP = "LP1";
        d.SW = "5121";
        QVERIFY(status::save_status(s.d.ctx, status::SaveMode::automatic));
        const QStringList first = s.files(out.path());
        QCOMPARE(first.size(), 1);
        s.d.clock.advance_ms(1000);
        d.SN = sn;
        d.LP = lp;
        d.SW = sw;
        QCOMPARE(status::save_status(s.d.ctx, status::SaveMode::automatic), second_saved);
        const QStringList now = s.files(out.path());
        QCOMPARE(now.contains(first[0]), first_kept);
        QCOMPARE(now.size(), int(first_kept) + int(second_saved));
        if (second_saved)
            QVERIFY(now.contains("Status_VO2-1_" + lp + "_" + sw + "_20260302_100001.txt"));
    }

    void manual_save_asks_until_answered_data() {
        QTest::addColumn<QStringList>("choices"); // per dialog: "old", "new" or "" (cancel)
        QTest::addColumn<QList<bool>>("overwrite");
        QTest::addColumn<QString>("written"); // "", "old" or "new"
        QTest::newRow("cancelled") << QStringList{""} << QList<bool>{} << "";
        QTest::newRow("existing, yes") << QStringList{"old"} << QList<bool>{true} << "old";
        QTest::newRow("existing, no, then cancelled")
            << QStringList{"old", ""} << QList<bool>{false} << "";
        QTest::newRow("existing, no, then a new name")
            << QStringList{"old", "new"} << QList<bool>{false} << "new";
        QTest::newRow("existing, no, existing, yes")
            << QStringList{"old", "old"} << QList<bool>{false, true} << "old";
    }
    void manual_save_asks_until_answered() {
        QFETCH(QStringList, choices);
        QFETCH(QList<bool>, overwrite);
        QFETCH(QString, written);
        Session s(scenario_named("status_example"));
        QVERIFY(s.connect());
        QVERIFY(s.read_status());
        QTemporaryDir chosen;
        const QString old_file = chosen.filePath("old.txt");
        const QString new_file = chosen.filePath("new.txt");
        QVERIFY(config::write_text_lines(old_file, {"kept"}));
        for (const QString& c : choices)
            s.d.ui.file_answers << (c.isEmpty() ? QString() : chosen.filePath(c + ".txt"));
        s.d.ui.yes_no_answers = overwrite;
        const bool saved = status::save_status(s.d.ctx, status::SaveMode::manual);

        QCOMPARE(saved, !written.isEmpty());
        QCOMPARE(s.d.ui.dialogs.size(), choices.size());
        QCOMPARE(s.d.ui.questions.size(), overwrite.size());
        for (const QString& q : s.d.ui.questions)
            QCOMPARE(q, s.d.ctx.language.text(3808));
        const FileDialogRequest& r = s.d.ui.dialogs.first();
        QCOMPARE(r.start_dir, s.d.ctx.program_dir);
        QCOMPARE(r.filter, "Systemstatus (*.txt)|*.txt");
        QCOMPARE(r.default_suffix, ".txt");
        QCOMPARE(r.proposed_name, "Status_VO2-0012345_LP1240010077_5121_" +
                                      s.d.clock.now().toString("yyyyMMdd_HHmmss") + ".txt");
        QCOMPARE(lines_of(old_file) == QStringList{"kept"}, written != "old");
        QCOMPARE(QFile::exists(new_file), written == "new");
        if (written.isEmpty())
            return;
        const QString path = written == "old" ? old_file : new_file;
        QFile raw(path);
        QVERIFY(raw.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(raw.readAll()), status::format_status(s.d.ctx));
        QCOMPARE(lines_of(path)[8], model_line);
        // The chosen folder is the next dialog's start, and is kept in the file.
        QCOMPARE(s.d.ctx.config.INITDIR, chosen.path() + '/');
        QVERIFY(lines_of(s.d.ctx.program_dir + "veltrako2.ini")
                    .contains("INITDIR|" + chosen.path() + '/'));
    }

    void manual_save_refusals_data() {
        QTest::addColumn<QString>("sn");
        QTest::addColumn<bool>("config_writable");
        QTest::addColumn<QString>("message");
        QTest::newRow("no serial number") << "            " << true << "3806";
        QTest::newRow("configuration cannot be written") << "VO2-1" << false << "";
    }
    void manual_save_refusals() {
        QFETCH(QString, sn);
        QFETCH(bool, config_writable);
        QFETCH(QString, message);
        Session s(scenario_named("status_example"));
        QVERIFY(s.connect());
        QVERIFY(s.read_status());
        s.d.ctx.device.SN = sn;
        if (!config_writable)
            s.d.ctx.program_dir = s.dir.filePath("missing/");
        QTemporaryDir chosen;
        s.d.ui.file_answers << chosen.filePath("t.txt");
        QVERIFY(!status::save_status(s.d.ctx, status::SaveMode::manual));
        QVERIFY(!QFile::exists(chosen.filePath("t.txt")));
        QCOMPARE(s.d.ui.messages, message.isEmpty()
                                      ? QStringList{}
                                      : QStringList{s.d.ctx.language.text(message.toInt())});
        QCOMPARE(s.d.ui.dialogs.size(), message.isEmpty() ? 1 : 0);
    }

    void save_needs_a_connected_device() {
        Session s(scenario_named("status_example"));
        QVERIFY(s.connect());
        QVERIFY(s.read_status());
        link::close_device(s.d.ctx);
        s.d.ui.file_answers << s.dir.filePath("t.txt");
        QVERIFY(!status::save_status(s.d.ctx, status::SaveMode::manual));
        QVERIFY(s.d.ui.dialogs.isEmpty());
        status::cmd_sysstatread_Click(s.d.ctx);
        QCOMPARE(s.d.ctx.status.record_count(), 3); // not emptied, nothing asked
    }
};

QTEST_GUILESS_MAIN(TestStatusMemory)
#include "test_status_memory.moc"
