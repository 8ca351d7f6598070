// Firmware update: the ".ae6" file's checks, and the whole dialogue with the
// simulated concentrator's boot loader at the real wire's pace, with the
// clock moved by hand so that a few seconds of waiting cost nothing; and the
// progress dialog the window shows meanwhile.

#include "config/language.h"
#include "config/text_file.h"
#include "firmware/firmware_update.h"
#include "frm_firmware_progress.h"
#include "link/connection_state.h"
#include "protocol/poll_cycle.h"
#include "protocol_harness.h"
#include "sim_helpers.h"

#include <QFile>
#include <QTemporaryDir>

#include <algorithm>

using namespace veltrako;
using namespace veltrako::testing;
using firmware::FileFault;
using firmware::UnknownHardware;
using firmware::UpdateResult;

namespace {

// One data line as hex text, the way files hold it.
QString data_line(int address, const QByteArray& data) {
    return QString::fromLatin1(loader_line(address, data).toHex().toUpper());
}

// `n` lines of 16 bytes each, the usual length of a file's lines.
QStringList data_lines(int n) {
    QStringList lines;
    for (int i = 0; i < n; ++i)
        lines << data_line(0x1000 + 16 * i, QByteArray(16, static_cast<char>('A' + i % 26)));
    return lines;
}

struct Recorder final : firmware::UpdateProgress {
    void begin(int blocks) override { log << QStringLiteral("begin %1").arg(blocks); }
    void block(const firmware::ProgressStep& step) override { steps << step; }
    void end() override { log << QStringLiteral("end"); }
    QStringList log;
    QList<firmware::ProgressStep> steps;
};

// The program connected to a simulated device with the default identity
// (hardware "AE61", software "5121" becoming "5122" once programmed), its
// device record read, and the English texts loaded.
struct Bench {
    explicit Bench(const QByteArray& faults = {})
        : Bench(scenario_from("NOISE=off\nSW=5121\nSW_AFTER_UPDATE=5122\nHARDWARE_ID=AE61\n" +
                              faults)) {}
    explicit Bench(const sim::Scenario& scenario)
        : device(scenario), linked(device, link::SimLink::WireTiming::realistic) {
        AppContext& ctx = linked.ctx;
        ctx.program_dir = dir.path() + QLatin1Char('/');
        ctx.config_path = dir.filePath(QStringLiteral("veltrako2.ini"));
        ctx.config.INITDIR = ctx.program_dir;
        if (!config::load_language(ctx.language, QStringLiteral(VELTRAKO2_LANG_DIR "/langen.txt"),
                                   linked.ui))
            qFatal("language file");
        connect();
        linked.device->set_observer([this](const sim::Concentrator::Event& e) { heard << e; });
        // From here on waits run as with Timer1 on: ticks while it is on.
        linked.clock.on_step = [&ctx] {
            if (ctx.timer1.enabled())
                protocol::timer1_tick(ctx);
        };
    }
    void connect() {
        protocol::connect_routine(linked.ctx);
        for (int i = 0; i < 120; ++i) {
            linked.clock.advance_ms(50);
            protocol::timer1_tick(linked.ctx);
        }
        // Let the last poll's answer come in, so the device hears nothing
        // more of the poll cycle.
        linked.clock.advance_ms(100);
        link::read_raw(linked.ctx);
    }
    QString file(const QStringList& lines, const QString& name = QStringLiteral("fw.ae6")) {
        const QString path = dir.filePath(name);
        if (!config::write_text_lines(path, lines))
            qFatal("cannot write %s", qPrintable(path));
        return path;
    }
    UpdateResult update(const QString& path, bool confirm = true) {
        linked.ui.file_answers << path;
        linked.ui.yes_no_answers << confirm;
        return firmware::firmware_update(linked.ctx, progress);
    }
    QString text(int n) const { return linked.ctx.language.text(n); }
    int data_line_writes() const {
        int n = 0;
        for (const auto& e : heard)
            n += e.boot_loader && e.request.startsWith('\x42');
        return n;
    }

    QTemporaryDir dir;
    sim::Scenario device;
    LinkedDevice linked;
    Recorder progress;
    QList<sim::Concentrator::Event> heard; // after the device record was read
};

const QStringList header{QStringLiteral("VERSION=5122"), QStringLiteral("HARDWARE=AE61")};

} // namespace

class TestFirmware : public QObject {
    Q_OBJECT
private slots:
    void file_checks_data() {
        // lines, fault, lines accepted, "version|hardware identifiers" once accepted
        const Table<QStringList, FileFault, int, QString> row;
        using F = FileFault;
        const QString a = data_line(0, "abc"), b = data_line(3, "def");
        row("lower-case key, blanks around =", {" version = 51 22 ", "hardware=AE61", a}, F::none,
            1, "51 22|AE61");
        row("two identifiers, blanks around |", {"VERSION=5122", "HARDWARE = AE60 | AE61 ", a},
            F::none, 1, "5122|AE60,AE61");
        row("empty lines and blanks around data skipped",
            header + QStringList{"", "  " + a.toLower() + "  ", "", b}, F::none, 2, "5122|AE61");
        row("data line not starting with 42", header + QStringList{a, b, "43" + a.mid(2)},
            F::bad_data_line, 2, "");
        row("odd length", header + QStringList{a, a + "0"}, F::bad_data_line, 1, "");
        row("not a hex digit", header + QStringList{"42G0"}, F::bad_data_line, 0, "");
        row("second = in the version line", {"VERSION=5122=1", "HARDWARE=AE61", a},
            F::no_version_line, 0, "");
        row("hardware first", {"HARDWARE=AE61", "VERSION=5122", a}, F::no_version_line, 0, "");
        row("empty file", {}, F::no_version_line, 0, "");
        row("no hardware line", {"VERSION=5122", a}, F::no_hardware_line, 0, "");
        row("header only", header + QStringList{""}, F::no_data_lines, 0, "");
    }
    void file_checks() {
        const auto [lines, fault, accepted, parsed] =
            Table<QStringList, FileFault, int, QString>::fetch();
        firmware::FirmwareImage image;
        const firmware::FileCheck check = firmware::parse_firmware_lines(lines, image);
        QCOMPARE(check.fault, fault);
        QCOMPARE(check.accepted, accepted);
        if (check.fault != FileFault::none)
            return;
        QCOMPARE(image.version + '|' + image.hardware.join(','), parsed);
        QCOMPARE(image.data_lines.size(), accepted);
        QVERIFY(image.data_lines.first().startsWith("42"));
    }

    void progress_estimate_data() {
        const Table<int, qint64, qint64, QString> row; // block, now, ms left, shown
        // 2000 blocks from ms 1000 on.
        row("first block: the floor", 1, 1000, 80000, "1:20");
        row("after 100 at 45 ms", 101, 5500, 85500, "1:26");
        row("last block", 2000, 81000, 40, "0:01");
    }
    void progress_estimate() {
        const auto [block, now_ms, remaining_ms, remaining] =
            Table<int, qint64, qint64, QString>::fetch();
        const firmware::ProgressStep s = firmware::ProgressClock(2000, 1000).step(block, now_ms);
        QCOMPARE(s.elapsed_ms, now_ms - 1000);
        QCOMPARE(s.remaining_ms, remaining_ms);
        QCOMPARE(firmware::minutes_seconds(s.remaining_ms), remaining);
        QCOMPARE(s.caption(), QStringLiteral("Software Update Block %1/2000").arg(block));
    }

    // The sample file shipped beside the programs, on the default scenario's
    // device.
    void whole_update_against_the_device() {
        const auto default_device = sim::load_scenario(QStringLiteral("default"));
        QVERIFY(default_device);
        Bench b(*default_device);
        AppContext& ctx = b.linked.ctx;
        QCOMPARE(ctx.device.SW, QString("5121"));
        QTemporaryDir elsewhere;
        const QString path = elsewhere.filePath("new.ae6");
        QVERIFY(QFile::copy(QStringLiteral(VELTRAKO2_SAMPLE_FIRMWARE), path));
        const QStringList lines = config::read_text_lines(path)->mid(2);
        const int n = int(lines.size());

        QCOMPARE(b.update(path), UpdateResult::done);
        QCOMPARE(b.linked.ui.dialogs.size(), 1);
        QCOMPARE(b.linked.ui.dialogs[0].filter, QString("Veltrak O2 Software (*.ae6)|*.ae6"));
        QCOMPARE(b.linked.ui.dialogs[0].start_dir, b.dir.path() + '/');
        // The question names the running and the new version; No is its default.
        QCOMPARE(b.linked.ui.confirmations, QStringList{b.text(8037) + "\n\n" + b.text(8030) +
                                                        " 5121\n" + b.text(8031) + " 5122"});
        QCOMPARE(b.linked.ui.messages, QStringList{b.text(104)});
        // The new folder is remembered, in the file as well.
        QCOMPARE(ctx.config.INITDIR, elsewhere.path() + '/');
        config::Config saved;
        QVERIFY(config::load_config(saved, b.dir.filePath("veltrako2.ini"), ctx.program_dir,
                                    b.linked.ui));
        QCOMPARE(saved.INITDIR, elsewhere.path() + '/');

        QList<QByteArray> programmed;
        for (const QString& l : lines)
            programmed << QByteArray::fromHex(l.toLatin1());
        QCOMPARE(b.linked.device->boot_loader().programmed_lines(), programmed);
        QVERIFY(!b.linked.device->in_boot_loader());
        QCOMPARE(b.progress.log, (QStringList{QStringLiteral("begin %1").arg(n), "end"}));
        QCOMPARE(b.progress.steps.size(), n);
        // Each block takes the first poll's wait and no more: the loader's ">"
        // is on the wire well within it.
        for (int i = 0; i < n; ++i)
            QCOMPARE(b.progress.steps[i].elapsed_ms, 40 * i);

        // The program has connected again by itself and shows the new software.
        QCOMPARE(ctx.device.SW, QString("5122"));
        QVERIFY(ctx.timer1.enabled());
        QCOMPARE(b.linked.ui.connection_states.last(), ConnectionState::connected);
        QCOMPARE(b.linked.ui.notes, QStringList{b.text(8038) + " 5122"});
    }

    // The loader's answers to data lines: a refusal on the first or first two
    // attempts is overcome, anything but a plain ">" three times is not. A
    // failed update leaves the device in its loader, says so, and can be run
    // again at once.
    void acknowledgement_data() {
        // faults, result, failure after text 105, lines programmed, data line writes
        const Table<QByteArray, UpdateResult, QString, int, int> row;
        using R = UpdateResult;
        row("line 2 taken on the second attempt", "NAK_LINE=2\nNAK_ATTEMPTS=1", R::done, "", 3, 4);
        row("line 2 taken on the third attempt", "NAK_LINE=2\nNAK_ATTEMPTS=2", R::done, "", 3, 5);
        row("line 2 never taken", "NAK_LINE=2\nNAK_ATTEMPTS=always", R::block_refused, " 2:'E'", 1,
            4);
        row("doubled acknowledgement", "ACK_FORM=doubled", R::block_refused, " 1:'>>'", 3, 3);
        row("acknowledgement with a blank", "ACK_FORM=blank", R::block_refused, " 1:'> '", 3, 3);
        row("silent loader", "SILENT=on", R::no_sync, "", 0, 0);
    }
    void acknowledgement() {
        const auto [faults, result, failure, programmed, writes] =
            Table<QByteArray, UpdateResult, QString, int, int>::fetch();
        Bench b;
        AppContext& ctx = b.linked.ctx;
        // The faults come on once the record is read: silence would stop the connect.
        b.linked.device->set_faults(scenario_from(faults + "\n").faults);
        const QString path = b.file(header + data_lines(3));
        QCOMPARE(b.update(path), result);
        QCOMPARE(b.linked.device->boot_loader().programmed_lines().size(), programmed);
        QCOMPARE(b.data_line_writes(), writes);
        QVERIFY(!b.linked.ui.busy);
        const QStringList& shown = b.linked.ui.messages;
        QCOMPARE(shown.size(), 1);
        const bool failed = result != UpdateResult::done;
        QCOMPARE(b.linked.device->in_boot_loader(), failed);
        QCOMPARE(ctx.link.boot_loader, failed);
        if (!failed)
            return;
        // The dialog is gone before the message; the device stays in its
        // loader, the message says what to do and the controls are off.
        QCOMPARE(b.progress.log, (QStringList{"begin 3", "end"}));
        const QString what = result == UpdateResult::no_sync ? b.text(103) : b.text(105) + failure;
        QCOMPARE(shown[0], what + "\r\n" + b.text(106));
        QCOMPARE(b.linked.ui.connection_states.last(), ConnectionState::boot_loader);
        QCOMPARE(b.linked.ui.connection_text, b.text(8004));
        QVERIFY(!link::device_controls_enabled(ctx));
        // Sync failed: three requests; never an "R".
        const auto heard = [&](const QByteArray& r) {
            return std::count_if(b.heard.begin(), b.heard.end(),
                                 [&](auto& e) { return e.request == r; });
        };
        QCOMPARE(heard("R"), 0);
        if (result == UpdateResult::no_sync)
            QCOMPARE(heard("I"), 3);

        b.linked.device->set_faults({});
        QCOMPARE(b.update(path), UpdateResult::done);
        QCOMPARE(ctx.device.SW, QString("5122"));
        QCOMPARE(b.linked.ui.connection_states.last(), ConnectionState::connected);
    }

    // A device that answers its loader's sync request but not "?" (a failed
    // update left it there) is found at connecting, said to wait in its boot
    // loader, and programmed without an identity: the file is checked
    // against the hardware its loader names; a loader that names none is
    // programmed only after a warning, as the caller allows.
    void device_waiting_in_its_boot_loader_data() {
        // the loader's greeting, what to do without a hardware id, result,
        // what the warning became ("question", "message", "note" or "")
        const Table<QByteArray, UnknownHardware, UpdateResult, QString> row;
        using H = UnknownHardware;
        using R = UpdateResult;
        row("loader names the hardware", "ae60000 BL1.3 AE61", H::refuse, R::done, "");
        row("loader names other hardware", "ae60000 BL1.3 AE60", H::program, R::left, "");
        row("loader says nothing, window asks", "ae60000 BL1.3", H::ask, R::done, "question");
        row("loader says nothing, refused", "ae60000 BL1.3", H::refuse, R::hardware_unknown,
            "message");
        row("loader says nothing, forced", "ae60000 BL1.3", H::program, R::done, "note");
    }
    void device_waiting_in_its_boot_loader() {
        const auto [greeting, unknown, result, warned] =
            Table<QByteArray, UnknownHardware, UpdateResult, QString>::fetch();
        Bench b("BOOT_LOADER=on\nBOOT_LOADER_GREETING=\"" + greeting + "\\r\\n\"");
        AppContext& ctx = b.linked.ctx;
        FakeUserInterface& ui = b.linked.ui;
        QVERIFY(ctx.link.boot_loader);
        QCOMPARE(ui.connection_states.last(), ConnectionState::boot_loader);
        QCOMPARE(ui.connection_text, b.text(8004));
        QCOMPARE(ui.messages, QStringList{b.text(8004) + "\r\n" + b.text(106)});
        QVERIFY(!ctx.timer1.enabled()); // nothing polls a loader
        QVERIFY(!link::device_controls_enabled(ctx));
        ui.messages.clear();

        ui.file_answers << b.file(header + data_lines(3));
        ui.yes_no_answers << true;
        QCOMPARE(firmware::firmware_update(ctx, b.progress, {unknown}), result);
        const bool done = result == UpdateResult::done;
        QCOMPARE(b.linked.device->boot_loader().programmed_lines().size(), done ? 3 : 0);
        QCOMPARE(ui.questions.size(),
                 result == UpdateResult::left || result == UpdateResult::hardware_unknown ? 0 : 1);
        const QString warning = b.text(8601) + "\r\n" + b.text(8602) + " AE61";
        QCOMPARE(ui.questions.value(0).startsWith(warning), warned == "question");
        QCOMPARE(ui.messages.value(0) == warning, warned == "message");
        QCOMPARE(ui.notes.value(0) == warning, warned == "note");
        if (greeting.endsWith("AE60"))
            QVERIFY(ui.messages.value(0).startsWith(b.text(102)));
        // The loader is not told to start again with "b".
        QVERIFY(std::none_of(b.heard.begin(), b.heard.end(),
                             [](const auto& e) { return e.request == "b"; }));
        if (!done) {
            QVERIFY(ctx.link.boot_loader && b.linked.device->in_boot_loader());
            return;
        }
        QVERIFY(ui.questions[0].contains(b.text(8030) + " " + b.text(8004)));
        QCOMPARE(ctx.device.SW, QString("5122"));
        QCOMPARE(ui.connection_states.last(), ConnectionState::connected);
        QVERIFY(ctx.timer1.enabled());
    }

    // Whatever is refused is refused before the device hears anything.
    void refused_before_anything_is_sent_data() {
        // lines, answer to the question, message ("#n" language text n, or
        // literal text), asked
        const Table<QStringList, bool, QStringList, bool> row;
        const QStringList lines = data_lines(2);
        row("second identifier matches, answered no",
            QStringList{"VERSION=5122", "HARDWARE= AE60 | AE61"} + lines, false, {}, true);
        row("bad data line", header + lines + QStringList{"4", "42"}, true, {"#3803", " 2"}, false);
    }
    void refused_before_anything_is_sent() {
        const auto [lines, confirm, texts, asked] =
            Table<QStringList, bool, QStringList, bool>::fetch();
        Bench b;
        QCOMPARE(b.update(b.file(lines), confirm), UpdateResult::left);
        QString expected;
        for (const QString& t : texts)
            expected += t.startsWith('#') ? b.text(t.mid(1).toInt()) : t;
        QCOMPARE(b.linked.ui.messages, expected.isEmpty() ? QStringList{} : QStringList{expected});
        QCOMPARE(b.linked.ui.questions.size(), asked ? 1 : 0);
        QVERIFY(b.heard.isEmpty() && b.progress.log.isEmpty());
        QVERIFY(!b.linked.device->in_boot_loader());
        // The device heard nothing: it is polled again, and the status bar
        // says "Connected", not that polling stopped.
        QVERIFY(b.linked.ctx.timer1.enabled());
        QVERIFY2(b.linked.ui.connection_text.startsWith(b.text(8002)),
                 qPrintable(b.linked.ui.connection_text));
    }

    void nothing_without_a_device_or_a_file() {
        Bench b;
        b.linked.ui.file_answers << QString(); // the dialog cancelled
        QCOMPARE(firmware::firmware_update(b.linked.ctx, b.progress), UpdateResult::left);
        QCOMPARE(b.linked.ui.dialogs.size(), 1);
        QVERIFY(b.linked.ctx.timer1.enabled()); // polled again after the cancelled dialog
        QVERIFY(b.linked.ui.connection_text.startsWith(b.text(8002)));
        link::close_device(b.linked.ctx);
        QCOMPARE(b.update(b.file(header + data_lines(1))), UpdateResult::left);
        QCOMPARE(b.linked.ui.dialogs.size(), 1);
        QVERIFY(b.linked.ui.messages.isEmpty() && b.heard.isEmpty());
    }

    // The progress dialog: what it shows for a block, and that nothing
    // closes it while lines are being written.
    void shows_the_block_and_cannot_be_closed_while_running() {
        config::LanguageTables language;
        language.language_text[9103] = QStringLiteral("Elapsed:");
        language.language_text[9104] = QStringLiteral("Remaining:");
        ui::FrmFirmwareProgress dialog(language);
        QVERIFY(!(dialog.windowFlags() & Qt::WindowCloseButtonHint));
        QCOMPARE(dialog.windowModality(), Qt::ApplicationModal);

        dialog.begin(2000);
        QVERIFY(dialog.isVisible());
        dialog.block(firmware::ProgressStep{101, 2000, 4500, 85500});
        QCOMPARE(dialog.caption(), QString("Software Update Block 101/2000"));
        QCOMPARE(dialog.bar_value(), 100);
        QCOMPARE(dialog.bar_maximum(), 2000);
        QCOMPARE(dialog.times(), QString("Elapsed: 0:05    Remaining: 1:26"));

        QVERIFY(!dialog.close());
        QTest::keyClick(&dialog, Qt::Key_Escape);
        QVERIFY(dialog.isVisible());

        dialog.end();
        QVERIFY(!dialog.isVisible());
        QCOMPARE(dialog.bar_value(), 2000);
    }
};

QTEST_MAIN(TestFirmware)
#include "test_firmware.moc"
