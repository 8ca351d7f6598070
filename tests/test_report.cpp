// The inspection report without widgets: the file both ways, the device values
// under their keys, the dialogs around saving and opening, the question at the end.

#include "compliance/compliance_file.h"
#include "compliance/compliance_month.h"
#include "compliance/compliance_print.h"
#include "config/text_file.h"
#include "device/parameter_values.h"
#include "inspected_device.h"
#include "report/report_draft.h"
#include "report/report_file.h"
#include "report_harness.h"
#include "status/status_readout.h"
#include "table.h"

#include <QElapsedTimer>
#include <QFileInfo>

using namespace veltrako;
using namespace veltrako::report;
using namespace veltrako::testing;

namespace {

struct Harness : Desk {
    Harness() {
        for (int n : {3, 7001, 7004, 7005, 7006, 7007, 8200, 8201, 8552})
            ctx.language.language_text[static_cast<std::size_t>(n)] =
                QStringLiteral("text%1").arg(n);
    }
};

QMap<QString, QString> pairs(const QStringList& lines) {
    QMap<QString, QString> m;
    for (const QString& l : lines)
        m.insert(l.section(QLatin1Char('|'), 0, 0), l.section(QLatin1Char('|'), 1));
    return m;
}

} // namespace

// What stands under the keys no identity or live answer fills.
using Keys = Table<QString, QString, QString>;
// Device values as a file holds them: numbers in either decimal form.
using Read = Table<QString, QString>; // line, then O2|GASTEMP|ZEITEN3 read from it
// The page says so when the report is of another device than the one
// connected, and only then.
using Note = Table<QString, QString, bool, QString>;
// Saving needs valid device data; an existing file is replaced only on
// Yes, otherwise the dialog comes back.
using Save = Table<bool, QList<bool>, int, bool>; // valid, overwrite, dialogs, written
// Quitting with unsaved changes: Save quits only once the file is
// written, Discard quits, Cancel stays with the report as it is.
// changed, answer, what the save reports, quits, saves
using Quit = Table<bool, int, bool, bool, int>;
// A check box takes a state only from a number it can show.
using Check = Table<QString, int>; // value, state (-1: left as it is)

class TestReport : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }

    // Saved, the file has its fixed lines, CR LF, the numbers as the page
    // shows them; opened again, typed values come back as typed, except that
    // a bar stays a slash.
    void file_both_ways() {
        Harness h;
        take_snapshot(h.ctx.report, inspected_device(), true);
        const std::pair<const char*, const char*> typed[] = {
            {"t_Krankenkasse", "AOK | Bayern"},
            {"t_Bemerkungen", "Filter gewechselt\r\nSchlauch neu\nende"},
            {"ck_stk", "1"},
            {"t_Strasse", "Gärtnerstraße 5"},
            {"t_Patient", "A"},
            {"m_O2", "84,5"},
            {"t_Messgeraet", "Analysator X1, kal. 01/2026"}};
        for (const auto& [key, value] : typed)
            h.ctx.report.set_value(QLatin1String(key), QString::fromUtf8(value));
        // Judged by a stricter O2 limit than the configuration's.
        h.ctx.report.limits.o2_min = 85;
        const QString file = h.path(QStringLiteral("r.txt"));
        h.ui.file_answers = {file, file};
        QVERIFY(save_report(h.ctx));

        const QByteArray bytes = read_file(file);
        QVERIFY(bytes.endsWith("\r\n") && bytes.count('\n') == 62 && bytes.count("\r\n") == 62);
        QVERIFY(bytes.contains("G\xC3\xA4rtnerstra\xC3\x9F"));
        const QStringList lines = QString::fromUtf8(bytes).split(QStringLiteral("\r\n"));
        QCOMPARE(lines[0], QStringLiteral("t_Krankenkasse|AOK / Bayern"));
        QCOMPARE(lines[1], QStringLiteral("t_Patient|A"));
        QCOMPARE(lines[18], QStringLiteral("SN|VO2-7E00042 "));
        QCOMPARE(lines[18 + 30], QStringLiteral("ZEITEN13|23"));
        QCOMPARE(lines[49], QStringLiteral("REST|731"));
        // Then the measured values, their limits and the result: every line
        // an older file held keeps its place, and an older reader skips keys
        // it does not know.
        QCOMPARE(lines.mid(50, 13),
                 QStringList({"m_O2|84,5", "m_Flow|", "t_Schutzklasse|", "m_Schutzleiter|",
                              "m_Ableitstrom|", "t_Messgeraet|Analysator X1, kal. 01/2026",
                              "GRENZE_O2|85", "GRENZE_FLOW|10", "GRENZE_SCHUTZLEITER|0,3",
                              "GRENZE_ABLEITSTROM_I|0,5", "GRENZE_ABLEITSTROM_II|0,1",
                              "ERGEBNIS|fail", ""}));
        const auto m = pairs(lines);
        QCOMPARE(m.value("O2"), QStringLiteral("95"));
        QCOMPARE(m.value("GASTEMP"), QStringLiteral("36,8"));
        QCOMPARE(m.value("VOLUMENSTROM"), QStringLiteral("2,0"));
        // A confirmed dialog moves the start folder and rewrites the configuration.
        QCOMPARE(h.ctx.config.INITDIR, h.dir.path() + QLatin1Char('/'));
        QVERIFY(QFile::exists(h.path(QStringLiteral("veltrako2.ini"))));
        QCOMPARE(h.ui.messages, QStringList{QStringLiteral("text7005")});
        QCOMPARE(h.ui.dialogs[0].filter, QStringLiteral("text7001 (*.txt)|*.txt"));
        QCOMPARE(h.ui.dialogs[0].proposed_name, QStringLiteral("VO2-7E00042_20260302_140509"));

        int shown = 0;
        QVERIFY(open_report(h.ctx, [&] { ++shown; }));
        QCOMPARE(shown, 1); // once, with the file read
        for (const auto& [key, value] : typed)
            QCOMPARE(h.ctx.report.value(QLatin1String(key)),
                     QString::fromUtf8(value)
                         .replace(QStringLiteral(" | "), QStringLiteral(" / "))
                         .replace(QStringLiteral("neu\nende"), QStringLiteral("neu\r\nende")));
        QVERIFY(h.ctx.report.device_valid());
        QCOMPARE(h.ctx.report.limits.o2_min, 85.0); // the file's, not the configuration's
        const device::DeviceRecord& d = h.ctx.report.report_device;
        QCOMPARE(d.SN, QStringLiteral("VO2-7E00042 "));
        QCOMPARE(d.BSTD, QStringLiteral("012345:30"));
        QVERIFY(d.zeiten[13] == 23 && d.wert_o == 42);
        // Numbers come back as the page showed them.
        QVERIFY(d.VOLUMENSTROM == 2.0 && d.GASTEMP == 36.8);
    }

    void setting_keys_data() {
        const Keys row;
        row("lower flow", "52", "MIN_VOLUMENSTROM", "7")("upper flow", "52", "MAX_VOLUMENSTROM",
                                                         "42");
        row("no flow settings before 51", "50", "MAX_VOLUMENSTROM", "");
        row("alarm signal", "30", "ALARMSIGNAL", "3");
        row("no alarm signal before 30", "25", "ALARMSIGNAL", "")("modem", "52", "GSMSW", "");
    }
    void setting_keys() {
        const auto [family, key, value] = Keys::fetch();
        QCOMPARE(device::parameter_value(inspected_device(family), key, QLocale::c()), value);
    }

    void device_values_read_data() {
        const Read row;
        row("decimal comma", "GASTEMP|36,5", "0|36.5|0");
        row("decimal point", "GASTEMP|36.5", "0|36.5|0");
        row("not a number", "O2|viel", "0|0|0")("two bars", "O2|9|5", "0|0|0");
        row("timing", "ZEITEN3|200", "0|0|200")("timing over a byte", "ZEITEN3|256", "0|0|0");
        row("key in lower case", "o2|95", "0|0|0")("o2", "O2|95", "95|0|0");
    }
    void device_values_read() {
        const auto [line, read] = Read::fetch();
        ReportRecord r;
        read_report_lines(r, {line});
        const device::DeviceRecord& d = r.report_device;
        QCOMPARE(QStringLiteral("%1|%2|%3").arg(d.O2).arg(d.GASTEMP).arg(d.zeiten[3]), read);
    }

    // The reader does not know "VEEPROM": a value filed under it is gone
    // when the report is saved again. A file without device keys opens as
    // valid, with nothing left of the report before.
    void files_from_elsewhere() {
        Harness h;
        const QString in = h.path(QStringLiteral("in.txt"));
        QVERIFY(config::write_text_lines(
            in, {"SN|A1", "VEEPROM|V2.1", "VEEPROMP|V3", "SW_NUM|52", "MIN_VOLUMENSTROM|9"}));
        const QString out = h.path(QStringLiteral("out.txt"));
        const QString patient = h.path(QStringLiteral("only_patient.txt"));
        QVERIFY(config::write_text_lines(patient, {"t_Patient|Otto", "no bar here", "junk|a|b"}));
        h.ui.file_answers = {in, out, patient};
        QVERIFY(open_report(h.ctx, [] {}));
        QVERIFY(save_report(h.ctx));
        const auto m = pairs(*config::read_text_lines(out));
        QCOMPARE(m.value("SN"), QStringLiteral("A1"));
        QVERIFY(m.contains("VEEPROM") && m.value("VEEPROM").isEmpty() && !m.contains("VEEPROMP"));
        // The family read back decides which settings the device has.
        QCOMPARE(m.value("MIN_VOLUMENSTROM"), QStringLiteral("9"));

        QVERIFY(open_report(h.ctx, [] {}));
        QVERIFY(h.ctx.report.device_valid() && h.ctx.report.report_device.SN.isEmpty());
        QCOMPARE(h.ctx.report.value(QStringLiteral("t_Patient")), QStringLiteral("Otto"));
        // A file without limits is judged by the configuration's; one that
        // names a limit that is no number keeps the configuration's for it.
        h.ctx.config.GRENZE_FLOW = QStringLiteral("20");
        const QString limits = h.path(QStringLiteral("limits.txt"));
        QVERIFY(config::write_text_lines(limits, {"GRENZE_O2|90", "GRENZE_SCHUTZLEITER|gering"}));
        h.ui.file_answers = {patient, limits};
        QVERIFY(open_report(h.ctx, [] {}));
        Limits expected;
        expected.flow_percent = 20;
        QCOMPARE(h.ctx.report.limits, expected);
        QVERIFY(open_report(h.ctx, [] {}));
        expected.o2_min = 90;
        QCOMPARE(h.ctx.report.limits, expected);
    }

    // A cancelled dialog or a file that cannot be read leaves the report as
    // it was, unsaved changes included; only the unreadable file says so.
    void open_cancelled_or_unreadable_data() {
        Table<bool>()("cancelled", true)("missing file", false);
    }
    void open_cancelled_or_unreadable() {
        const auto [cancel] = Table<bool>::fetch();
        Harness h;
        take_snapshot(h.ctx.report, inspected_device(), true);
        h.ctx.report.set_value(QStringLiteral("t_Patient"), QStringLiteral("Otto"));
        h.ctx.report.report_changed = true;
        if (!cancel)
            h.ui.file_answers = {h.path(QStringLiteral("gone.txt"))};
        int shown = 0;
        QVERIFY(!open_report(h.ctx, [&] { ++shown; }));
        QCOMPARE(shown, 0);
        QVERIFY(h.ctx.report.device_valid() && h.ctx.report.report_changed);
        QCOMPARE(h.ctx.report.value(QStringLiteral("t_Patient")), QStringLiteral("Otto"));
        QCOMPARE(h.ctx.report.report_device.SN, inspected_device().SN);
        QCOMPARE(h.ui.messages.size(), cancel ? 0 : 1);
        // A fresh snapshot, as on the next visit to the page, drops what was typed.
        take_snapshot(h.ctx.report, inspected_device(), true);
        QVERIFY(h.ctx.report.value(QStringLiteral("t_Patient")).isEmpty() &&
                !h.ctx.report.report_changed);
    }

    void other_device_note_data() {
        const Note row;
        row("another device", "VO2-1", "VO2-2 ", true, "text8200 VO2-1 text8201 VO2-2");
        row("the same, blanks aside", "VO2-1 ", "VO2-1", true, "");
        row("no device identified", "VO2-1", "VO2-2", false, "");
        row("report without serial number", "", "VO2-2", true, "");
    }
    void other_device_note() {
        const auto [report_sn, connected_sn, connected, note] = Note::fetch();
        const Harness h;
        ReportRecord r;
        r.report_device.live_valid = true;
        r.report_device.SN = report_sn;
        device::DeviceRecord device;
        device.live_valid = connected;
        device.SN = connected_sn;
        QCOMPARE(report::other_device_note(r, device, h.ctx.language), note);
    }

    void save_conditions_data() {
        const Save row;
        row("no device data", false, {}, 0, false)("overwrite yes", true, {true}, 1, true);
        row("overwrite no, then cancel", true, {false}, 2, false);
    }
    void save_conditions() {
        const auto [valid, overwrite, dialogs, written] = Save::fetch();
        Harness h;
        device::DeviceRecord d = inspected_device();
        d.live_valid = valid;
        take_snapshot(h.ctx.report, d, true);
        const QString file = h.path(QStringLiteral("old.txt"));
        QVERIFY(config::write_text_lines(file, {"old"}));
        h.ui.file_answers = {file};
        h.ui.yes_no_answers = overwrite;
        QCOMPARE(save_report(h.ctx), written);
        QCOMPARE(int(h.ui.dialogs.size()), dialogs);
        QCOMPARE(h.ui.questions.size(), overwrite.size());
        QCOMPARE(config::read_text_lines(file)->size(), written ? 62 : 1);
    }

    void checksaved_answers_data() {
        const Quit row;
        row("unchanged: no question", false, int(SaveAnswer::cancel), true, true, 0);
        row("save", true, int(SaveAnswer::save), true, true, 1);
        row("save, nothing written", true, int(SaveAnswer::save), false, false, 1);
        row("discard", true, int(SaveAnswer::discard), true, true, 0);
        row("cancel", true, int(SaveAnswer::cancel), true, false, 0);
    }
    void checksaved_answers() {
        const auto [changed, answer, written, quits, saves] = Quit::fetch();
        Harness h;
        h.ctx.report.report_changed = changed;
        h.ui.save_answers = {SaveAnswer(answer)};
        int saved = 0;
        QCOMPARE(checksaved(h.ctx, [&, written = written] { return ++saved, written; }), quits);
        QCOMPARE(saved, saves);
        QCOMPARE(h.ui.questions, changed ? QStringList{"text3"} : QStringList{});
        QCOMPARE(h.ctx.report.report_changed, changed); // kept for a second try
    }

    void check_box_values_data() {
        const Check row;
        row("one", "1", 1)("zero", "0", 0)("one with decimals", "1,0", 1)("text", "ja", -1);
        row("empty", "", 0)("grey state", "2", -1);
    }
    void check_box_values() {
        const auto [value, state] = Check::fetch();
        ReportRecord r;
        r.set_value(QStringLiteral("ck_Maxflow"), value);
        const auto check = report_view(r)[10];
        QCOMPARE(check.key, QStringLiteral("ck_Maxflow"));
        QCOMPARE(check.checked.has_value() ? int(*check.checked) : -1, state);
    }

    // Every name the program proposes holds the device's serial number
    // cleaned the same way: "/" or ":" would turn it into a folder or a drive.
    void proposed_names_are_file_names_data() {
        const Table<QString, QString> row;
        const QString odd = QStringLiteral(" AB/12:3\x01 ");
        const QDateTime when(QDate(2026, 12, 31), QTime(23, 59, 1), Qt::UTC);
        ReportRecord r;
        r.report_device.SN = odd;
        row("report file", default_report_name(r, when), "AB_12_3__20261231_235901");
        r.set_value(QStringLiteral("t_Datum"), QStringLiteral("02.03.2026"));
        row("report PDF, day of the inspection", report_pdf_name(r, when),
            "Pruefprotokoll_AB_12_3__20260302.pdf");
        r.set_value(QStringLiteral("t_Datum"), QStringLiteral("bald"));
        row("report PDF, no date on the form", report_pdf_name(r, when),
            "Pruefprotokoll_AB_12_3__20261231.pdf");
        ManualClock clock{when};
        FakeUserInterface ui;
        AppContext ctx(clock, ui, nullptr);
        ctx.device.SN = odd;
        ctx.device.LP = QStringLiteral("LP|1");
        ctx.device.SW = QStringLiteral("5121");
        row("compliance file", compliance::default_file_name(ctx),
            "Compliance_AB_12_3__20261231_235901.txt");
        ctx.compliance.state.serial_number = odd;
        ctx.compliance.state.shown_month = compliance::make_stamp(2026, 2, 14);
        row("compliance PDF",
            compliance::compliance_pdf_name(ctx.compliance.state, ctx.compliance.records, 0),
            "Compliance_AB_12_3__2026-02.pdf");
        row("status table key", status::status_device_key(ctx.device), "AB_12_3__LP_1_5121");
    }
    void proposed_names_are_file_names() {
        const auto [proposed, expected] = Table<QString, QString>::fetch();
        QCOMPARE(proposed, expected);
    }

    // "Speichern" in the question before the program ends saves, or says
    // why it cannot and keeps the program; saved or discarded, the report
    // leaves no draft and counts as saved.
    void quit_save_saves_or_says_why_data() {
        // device data, answer, quits, messages, draft left
        Table<bool, int, bool, QStringList, bool> row;
        row("no device data", false, int(SaveAnswer::save), false, QStringList{"text8552"}, true);
        row("saved", true, int(SaveAnswer::save), true, QStringList{"text7005"}, false);
        row("discarded", true, int(SaveAnswer::discard), true, QStringList{}, false);
    }
    void quit_save_saves_or_says_why() {
        const auto [valid, answer, quits, messages, draft_left] =
            Table<bool, int, bool, QStringList, bool>::fetch();
        Harness h;
        device::DeviceRecord d = inspected_device();
        d.live_valid = valid;
        take_snapshot(h.ctx.report, d, true);
        h.ctx.report.set_value(QStringLiteral("t_Patient"), QStringLiteral("Erika"));
        h.ctx.report.report_changed = true;
        QVERIFY(config::write_text_lines(draft_path(h.ctx),
                                         draft_lines(h.ctx.report, h.clock.now(), QLocale())));
        h.ui.save_answers = {SaveAnswer(answer)};
        h.ui.file_answers = {h.path(QStringLiteral("r.txt"))};
        QCOMPARE(checksaved(h.ctx, [&] { return save_report(h.ctx); }), quits);
        QCOMPARE(h.ui.messages, messages);
        QCOMPARE(QFile::exists(draft_path(h.ctx)), draft_left);
        QCOMPARE(h.ctx.report.report_changed, !quits || answer == int(SaveAnswer::discard));
    }

    // The draft holds the report whole and is never taken for a report: not
    // a ".txt" file the report dialogs list, its own first line, unsaved
    // when restored; a report file is no draft.
    void draft_both_ways() {
        Harness h;
        take_snapshot(h.ctx.report, inspected_device(), true);
        h.ctx.report.set_value(QStringLiteral("t_Bemerkungen"), QStringLiteral("a|b\r\nzwei"));
        h.ctx.report.set_value(QStringLiteral("ck_stk"), QStringLiteral("1"));
        h.ctx.report.set_value(QStringLiteral("m_Schutzleiter"), QStringLiteral("0,2"));
        h.ctx.report.limits.earth_max = 0.25;
        QVERIFY(!draft_path(h.ctx).endsWith(QStringLiteral(".txt")));
        QCOMPARE(QFileInfo(draft_path(h.ctx)).absolutePath(),
                 QFileInfo(h.ctx.config_path).absolutePath());
        const QStringList lines = draft_lines(h.ctx.report, h.clock.now(), QLocale());
        const std::optional<Draft> draft = parse_draft_lines(lines, {});
        QVERIFY(draft);
        QCOMPARE(draft->written, h.clock.now());
        QVERIFY(draft->report.report_changed && draft->report.device_valid());
        QCOMPARE(draft->report.value(QStringLiteral("t_Bemerkungen")),
                 QStringLiteral("a/b\r\nzwei"));
        QCOMPARE(draft->report.report_device.SN, inspected_device().SN);
        // The measured values and the limits they are judged by come back too.
        QCOMPARE(draft->report.value(QStringLiteral("m_Schutzleiter")), QStringLiteral("0,2"));
        QCOMPARE(draft->report.limits, h.ctx.report.limits);
        QVERIFY(!parse_draft_lines(report_file_lines(h.ctx.report, QLocale()), {}));
        // A report without device data comes back without them.
        h.ctx.report.report_device.live_valid = false;
        QVERIFY(!parse_draft_lines(draft_lines(h.ctx.report, h.clock.now(), QLocale()), {})
                     ->report.device_valid());
        // Typed text is what counts, not the date and time a report starts with.
        ReportRecord fresh;
        set_report_defaults(fresh, h.clock.now());
        QVERIFY(!has_typed_text(fresh));
        ReportRecord measured = fresh;
        fresh.set_value(QStringLiteral("ck_Visuell"), QStringLiteral("1"));
        QVERIFY(has_typed_text(fresh));
        measured.set_value(QStringLiteral("m_O2"), QStringLiteral("93"));
        QVERIFY(has_typed_text(measured));
    }

    // Written a second after the last edit, by the clock moved by hand: an
    // edit in between puts it off; an unsaved report emptied again has none,
    // a report shown unchanged gets none. At start-up Yes restores it
    // unsaved, No removes it.
    void draft_a_second_after_the_last_edit() {
        Harness h;
        const QString path = draft_path(h.ctx);
        int collected = 0;
        h.ctx.report_draft.collect = [&] { ++collected; };
        h.ctx.report.set_value(QStringLiteral("t_Patient"), QStringLiteral("Erika"));
        h.ctx.report.report_changed = true;
        h.ctx.report_draft.edited();
        h.clock.advance_ms(600);
        h.ctx.report_draft.edited();
        h.clock.advance_ms(999);
        h.ctx.report_draft.tick();
        QVERIFY(!QFile::exists(path) && h.ctx.report_draft.waiting());
        h.clock.advance_ms(1);
        h.ctx.report_draft.tick();
        QVERIFY(QFile::exists(path) && !h.ctx.report_draft.waiting());
        QCOMPARE(collected, 1);
        QCOMPARE(read_draft(path, {})->report.value(QStringLiteral("t_Patient")),
                 QStringLiteral("Erika"));

        h.ctx.report.set_value(QStringLiteral("t_Patient"), QString());
        h.ctx.report_draft.edited();
        h.clock.advance_ms(1000);
        h.ctx.report_draft.tick();
        QVERIFY(!QFile::exists(path));
        h.ctx.report.set_value(QStringLiteral("t_Patient"), QStringLiteral("aus Datei"));
        h.ctx.report.report_changed = false;
        h.ctx.report_draft.edited();
        h.clock.advance_ms(1000);
        h.ctx.report_draft.tick();
        QVERIFY(!QFile::exists(path));

        // A draft that cannot be written is said once, not every second.
        h.ctx.language.language_text[8553] = QStringLiteral("nicht geschrieben:");
        h.ctx.config_path = h.path(QStringLiteral("gone/veltrako2.ini"));
        h.ctx.report.report_changed = true;
        for (int i = 0; i < 2; ++i) {
            h.ctx.report_draft.edited();
            h.clock.advance_ms(1000);
            h.ctx.report_draft.tick();
        }
        QCOMPARE(h.ui.notes.size(), 1);
        QVERIFY(h.ui.notes[0].startsWith(QStringLiteral("nicht geschrieben: ")));
        QCOMPARE(h.ui.note_icon, MsgIcon::exclamation);
        h.ctx.config_path = h.path(QStringLiteral("veltrako2.ini"));

        h.ctx.language.language_text[8550] = QStringLiteral("Entwurf vom %1 wiederherstellen?");
        h.ctx.report.report_changed = true;
        QVERIFY(
            config::write_text_lines(path, draft_lines(h.ctx.report, h.clock.now(), QLocale())));
        h.ui.yes_no_answers = {true, false};
        const std::optional<ReportRecord> restored = offer_draft(h.ctx);
        QVERIFY(restored && restored->report_changed);
        QCOMPARE(restored->value(QStringLiteral("t_Patient")), QStringLiteral("aus Datei"));
        QCOMPARE(h.ui.questions, QStringList{"Entwurf vom 02.03.2026 14:05:14 wiederherstellen?"});
        QVERIFY(QFile::exists(path)); // until saved or discarded
        QVERIFY(!offer_draft(h.ctx));
        QVERIFY(!QFile::exists(path));
        QVERIFY(!offer_draft(h.ctx)); // none: no question
        QCOMPARE(h.ui.questions.size(), 2);
    }

    // The same on the program's own timer and event loop: nothing at once,
    // the draft about a second later.
    void draft_on_the_real_timer() {
        SystemClock clock;
        FakeUserInterface ui;
        AppContext ctx(clock, ui, std::make_unique<FakeLink>());
        QTemporaryDir dir;
        ctx.config_path = dir.filePath(QStringLiteral("veltrako2.ini"));
        ctx.report.set_value(QStringLiteral("t_Patient"), QStringLiteral("Erika"));
        ctx.report.report_changed = true;
        QElapsedTimer waited;
        waited.start();
        ctx.report_draft.edited();
        QTest::qWait(300);
        QVERIFY(!QFile::exists(draft_path(ctx)));
        QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(draft_path(ctx)), 10000);
        QVERIFY2(waited.elapsed() >= DraftKeeper::delay_ms,
                 qPrintable(QString::number(waited.elapsed())));
        QVERIFY(!ctx.report_draft.waiting());
    }
};

QTEST_GUILESS_MAIN(TestReport)
#include "test_report.moc"
