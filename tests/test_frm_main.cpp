// The main window offscreen: the live page filled from a device record and
// blanked again, the status bar and the controls that follow the connection,
// quitting, the status page, the hand-operated link buttons, the connect
// menu, and the dialogs behind the UserInterface calls.

#include "controls.h"
#include "dialogs.h"
#include "link/connection_state.h"
#include "link/device_connection.h"
#include "live_chart.h"
#include "protocol/commands.h"
#include "protocol/poll_cycle.h"
#include "window_harness.h"

#include <QAction>
#include <QInputDialog>

#include <algorithm>

using namespace veltrako;
using namespace veltrako::ui;
using namespace veltrako::testing;

namespace {

using Connection = Table<bool, QString, bool, bool, bool, QString>;
const QColor red(255, 0, 0);
const QColor green(0, 255, 0);
const QColor white(255, 255, 255);
QString out(const Window& h) {
    return h.get<QPlainTextEdit>("out")->toPlainText();
}

} // namespace

class TestFrmMain : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }

    // A device record fills the page; once cleared, the page is blank again.
    void record_fills_then_clearing_blanks_the_page() {
        Window h;
        QVERIFY(link::open_device(h.ctx, true));
        device::DeviceRecord& r = h.ctx.device;
        r.live_valid = true;
        r.SN = "SN 4711";
        r.LP = "12345";
        r.GASTEMP = 37.25;
        r.phase = 5;
        r.alarme = 0x81;
        r.alarmstufe = 2;
        r.zeiten[3] = 255; // the last entry of the list
        r.wert_o = 9;
        r.family_code = "50";
        r.SW = "501";
        device::detect_device_type(r);
        h.ctx.live_history.add({0, 90, 2, 2, 1000});
        h.ctx.live_history.add({1, 95, 3, 2, 1040});
        h.form.device_record_changed();
        QCOMPARE(h.get<QLineEdit>("t_gastemp")->text(), QString("37,3"));
        QCOMPARE(h.get<QLabel>("lbl_Phase")->text(), QString("5"));
        QVERIFY(h.get("cmd_togglelp")->isEnabled());
        QCOMPARE(h.colour("lbl_VentilE1"), red);
        QCOMPARE(h.colour("lbl_AlarmO21"), green);
        QCOMPARE(h.colour("lbl_Alarmmid"), red);
        QCOMPARE(h.get<QComboBox>("cb_t", 3)->currentIndex(), 255);
        QCOMPARE(h.get<QComboBox>("cb_vs", 1)->currentIndex(), 9);
        // Family 50: first valve layout, no flow selectors.
        QVERIFY(h.get("lbl_VentilSP")->isHidden());
        QVERIFY(h.get("cb_vs", 0)->isHidden());

        // O22 from alarme2 knows two levels; an unknown one leaves the labels as they are.
        r.LP = "12346";
        r.o22_source = true;
        r.alarmstufe = 3;
        r.ventile = 6;
        r.alarme = 0xFF;
        h.form.device_record_changed();
        QVERIFY(!h.get("cmd_togglelp")->isEnabled());
        QCOMPARE(h.colour("lbl_Alarmmid"), red);
        QVERIFY(h.get("lbl_Alarmlow")->isHidden());

        const QImage plotted = h.form.chart()->grab().toImage();
        h.get<QLineEdit>("t_krankenkasse")->setText("AOK");
        h.get<QPlainTextEdit>("sysstatout")->setPlainText("table");
        h.get("cmd_setsn")->show();
        set_locked(h.get("cb_t", 0), false);
        device::clear_device_record(r);
        h.form.device_record_changed();
        QVERIFY(h.form.chart()->grab().toImage() != plotted); // no curves until data is valid
        // Every box of the device goes empty; the report being typed stays.
        const QWidget* report_page = h.get("page_protokoll");
        for (QWidget* w : h.form.controls_with_prefix("t_")) { // line boxes and text areas
            if (report_page->isAncestorOf(w))
                continue;
            QVERIFY2(
                (w->property("text").toString() + w->property("plainText").toString()).isEmpty(),
                qPrintable(w->objectName()));
        }
        QCOMPARE(h.get<QLineEdit>("t_krankenkasse")->text(), QString("AOK"));
        QVERIFY(h.get<QLabel>("lbl_Phase")->text().isEmpty());
        for (const char* prefix : {"lbl_Ventil", "lbl_Alarm", "pic_"}) {
            const auto lamps = h.form.controls_with_prefix(prefix);
            QVERIFY(!lamps.isEmpty());
            for (QWidget* w : lamps)
                QVERIFY2(h.colour(w->objectName()) == white, qPrintable(w->objectName()));
        }
        QVERIFY(h.get("cmd_setsn")->isHidden());
        QVERIFY(h.get<QPlainTextEdit>("sysstatout")->toPlainText().isEmpty());
        // No value without a device: the selectors are empty, not "0".
        for (QWidget* w : h.form.controls_named("cb_t") + h.form.controls_named("cb_vs")) {
            QCOMPARE(qobject_cast<QComboBox*>(w)->currentText(), QString());
            QVERIFY(is_locked(w));
        }
    }

    // Every control that sends to the device waits for its identity; the
    // firmware menu also serves a device left in its boot loader. The status
    // bar names the state, and says when an open device is not polled.
    void device_controls_follow_the_connection_data() {
        Connection row; // open, SW, boot loader, polled, enabled, status bar
        row("no device", false, "", false, false, false, "keins");
        row("open, no identity yet", true, "", false, true, false, "baut auf");
        row("identity read", true, "5121", false, true, true, "Verbunden: VO2-1");
        row("identity read, polling off", true, "5121", false, false, true, "angehalten");
        row("boot loader", true, "5121", true, false, false, "Bootloader");
    }
    void device_controls_follow_the_connection() {
        const auto [open, sw, boot_loader, polled, enabled, status] = Connection::fetch();
        Window h;
        for (const auto& [n, text] : {std::pair{8000, "keins"},
                                      {8001, "baut auf"},
                                      {8002, "Verbunden:"},
                                      {8004, "Bootloader"},
                                      {8600, "angehalten"}})
            h.ctx.language.language_text[n] = text;
        h.form.show();
        if (open)
            QVERIFY(link::open_device(h.ctx, true));
        h.ctx.device.SW = sw;
        h.ctx.device.SN = "VO2-1       ";
        h.ctx.device.LP = "LP124";
        h.ctx.presets.buttons[0].enabled = true;
        h.ctx.link.boot_loader = boot_loader;
        // Switched by hand: the ticks of the test's clock drive nothing here.
        h.ctx.timer1.on_tick = nullptr;
        h.ctx.timer1.set_enabled(polled);
        link::follow_connection(h.ctx);
        h.form.device_record_changed();
        QCOMPARE(h.get<QLabel>("lbl_connection")->text(), status);
        for (const char* name : {"cmd_setsn", "cmd_togglelp", "cmd_resetbstd", "cmd_setbstd",
                                 "cmd_setdatetime", "cmd_Restzeit", "cmd_t_reset", "pic_akustO21",
                                 "cmd_sysstatread", "cmd_complianceread", "cmd_compliancedelete"})
            QVERIFY2(h.get(name)->isEnabled() == enabled, name);
        QCOMPARE(h.get("cb_t", 3)->isEnabled(), enabled);
        QCOMPARE(h.get("cb_vs", 1)->isEnabled(), enabled);
        QCOMPARE(h.get("cmdPresetZeiten", 1)->isEnabled(), enabled);
        QCOMPARE(h.form.menu_action("men_Softwareupdate")->isEnabled(), enabled || boot_loader);
    }

    // Quitting with an unsaved report: three choices; Cancel keeps the
    // program, the report and the device, Discard quits.
    void quitting_with_an_unsaved_report_data() {
        Table<int, bool> row;
        row("cancel", QMessageBox::Cancel, false)("discard", QMessageBox::Discard, true);
    }
    void quitting_with_an_unsaved_report() {
        const auto [button, quits] = Table<int, bool>::fetch();
        Window h;
        h.form.show();
        QVERIFY(link::open_device(h.ctx, true));
        h.ctx.report.report_changed = true;
        QList<int> offered;
        int preset = 0;
        when_modal([&](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            for (QAbstractButton* b : box->buttons())
                offered << int(box->standardButton(b));
            preset = int(box->standardButton(box->defaultButton()));
            box->button(QMessageBox::StandardButton(button))->click();
        });
        h.form.menu_action("men_beenden")->trigger();
        std::sort(offered.begin(), offered.end());
        QCOMPARE(offered,
                 (QList<int>{QMessageBox::Save, QMessageBox::Cancel, QMessageBox::Discard}));
        QCOMPARE(preset, int(QMessageBox::Cancel));
        QCOMPARE(h.form.isVisible(), !quits);
        QCOMPARE(h.ctx.link.device_handle != 0, !quits);
        QVERIFY(h.ctx.report.report_changed);
    }

    void status_page_forwards_the_click_and_shows_the_table() {
        Window h;
        QVERIFY(link::open_device(h.ctx, true));
        h.ctx.device.SW = "5121"; // the identity is read
        link::follow_connection(h.ctx);
        h.get<QPushButton>("cmd_sysstatread")->click();
        // A readout runs once: no second click until it has ended.
        QVERIFY(!h.get("cmd_sysstatread")->isEnabled());
        QCOMPARE(h.ctx.protocol.queue_count, 1);
        QCOMPARE(h.ctx.protocol.send_queue[1], protocol::cmd::read_status_record(1));
        h.form.show_status_table("   227  1800\r\n     1     2\r\n");
        auto* table = h.get<QPlainTextEdit>("sysstatout");
        QCOMPARE(table->toPlainText(), "   227  1800\n     1     2\n");
        // Fixed pitch as asked for: which face the machine resolves it to
        // is the machine's business (fontconfig does not mark every
        // monospaced face so).
        for (const char* name : {"sysstatout", "out"}) {
            const QFont font = h.get(name)->font();
            QVERIFY2(font.fixedPitch() && font.styleHint() == QFont::TypeWriter, name);
            QVERIFY2(font.families().contains("monospace"), name);
        }
    }

    void link_buttons_and_quitting_close_the_device() {
        Window h;
        h.form.show();
        h.get<QPushButton>("Command1")->click();
        QCOMPARE(h.ctx.link.device_handle, 7u);
        QVERIFY(out(h).contains("Handle:7"));
        h.get<QPushButton>("Command2")->click();
        QCOMPARE(h.link->calls.last(), QString("close 7"));
        QVERIFY(out(h).endsWith("Device Closed\n")); // line ends as the box shows them

        h.get<QPushButton>("Command1")->click();
        h.ctx.timer1.set_enabled(true);
        h.form.menu_action("men_beenden")->trigger();
        QVERIFY(!h.form.isVisible());
        QCOMPARE(h.ctx.link.device_handle, 0u);
        QVERIFY(!h.ctx.timer1.enabled()); // no reconnection while the program ends

        QVERIFY(!h.form.chart()->pressure_only());
        h.form.menu_action("men_nurdruck")->trigger();
        QVERIFY(h.form.chart()->pressure_only());
    }

    // "Verbindung initialisieren": the old device's data and queue go, the
    // device is opened, the initial requests queued and Timer1 on, also when
    // no device answers (the silent reconnection takes over then).
    void connect_menu_starts_afresh_data() {
        Table<int, int>()("device present", 1, 29)("no device", 0, 0); // devices, requests queued
    }
    void connect_menu_starts_afresh() {
        const auto [devices, queued] = Table<int, int>::fetch();
        Window h;
        h.link->device_count = std::uint32_t(devices);
        protocol::ProtocolState& p = h.ctx.protocol;
        p.queue_count = 5;
        p.send_queue[1] = "T";
        h.ctx.device.SN = "old serial";
        h.ctx.device.live_valid = true;
        h.ctx.timer1.set_enabled(false);
        BoxAnswers boxes;
        h.form.menu_action("men_verbindung")->trigger();
        QCOMPARE(h.ctx.link.device_handle, devices ? 7u : 0u);
        QCOMPARE(p.queue_count, queued);
        if (queued)
            QCOMPARE(p.send_queue[1], QByteArray("?"));
        QVERIFY(h.ctx.device.SN.isEmpty());
        QVERIFY(!h.ctx.device.live_valid);
        QVERIFY(h.ctx.timer1.enabled());
        h.ctx.timer1.set_enabled(false);
        for (int i = 0; i < 3; ++i) // without a device the search goes on quietly
            protocol::timer1_tick(h.ctx);
        QCOMPARE(boxes.texts.size(), devices == 0 ? 1 : 0); // "no device" said once
    }

    void dialogs_return_the_answer() {
        FrmMain form;
        const auto answer = [&form](QMessageBox::StandardButton button, bool ok_cancel) {
            when_modal([button](QWidget* modal) {
                qobject_cast<QMessageBox*>(modal)->button(button)->click();
            });
            return ok_cancel ? form.ask_ok_cancel("Speichern?") : form.ask_yes_no("Überschreiben?");
        };
        QVERIFY(answer(QMessageBox::Yes, false));
        QVERIFY(!answer(QMessageBox::No, false));
        QVERIFY(answer(QMessageBox::Ok, true));
        QVERIFY(!answer(QMessageBox::Cancel, true));

        // Before a change that cannot be undone, No is the default.
        int preset = 0;
        when_modal([&preset](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            preset = int(box->standardButton(box->defaultButton()));
            box->defaultButton()->click();
        });
        QVERIFY(!form.confirm_change("Seriennummer überschreiben?"));
        QCOMPARE(preset, int(QMessageBox::No));

        when_modal([](QWidget* modal) {
            qobject_cast<QInputDialog*>(modal)->setTextValue("001234:5");
            qobject_cast<QInputDialog*>(modal)->accept();
        });
        QCOMPARE(form.input_box("Betriebsstunden", "veltrako2"),
                 std::optional<QString>("001234:5"));
        when_modal([](QWidget* modal) { qobject_cast<QInputDialog*>(modal)->reject(); });
        QCOMPARE(form.input_box("Betriebsstunden", "veltrako2"), std::nullopt);

        form.set_busy(true); // the busy pointer is a state, not a count
        form.set_busy(true);
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        form.set_busy(false);
        QVERIFY(!QGuiApplication::overrideCursor());
        QCOMPARE(qt_name_filters("A (*.a)|*.a|B|*.b;*.c"), (QStringList{"A (*.a)", "B (*.b *.c)"}));
        QCOMPARE(qt_name_filters(""), QStringList{});
    }
};

QTEST_MAIN(TestFrmMain)
#include "test_frm_main.moc"
