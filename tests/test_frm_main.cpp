// The main window offscreen: every named control with its Tag, the tab strip
// and menu, growth with the window, the live page refreshed from a real
// device record, the hand-operated link buttons, quitting, frm_wait, and the
// dialogs behind the UserInterface calls.

#include "app_context.h"
#include "controls.h"
#include "dialogs.h"
#include "fake_link.h"
#include "frm_main.h"
#include "frm_wait.h"
#include "live_chart.h"
#include "manual_clock.h"

#include <QAction>
#include <QComboBox>
#include <QInputDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

using namespace veltrako;
using namespace veltrako::ui;
using namespace veltrako::testing;

namespace {

struct Harness {
    ManualClock clock;
    FrmMain form;
    FakeLink* link = new FakeLink;
    AppContext ctx{clock, form, std::unique_ptr<link::DeviceLink>(link)};
    Harness() { form.bind(ctx); }
};

QColor background(const QWidget* w) {
    return w->palette().color(QPalette::Window);
}

const QColor red(255, 0, 0);
const QColor green(0, 255, 0);
const QColor white(255, 255, 255);

// Runs `inspect` on the next modal window once it is open.
void when_modal(std::function<void(QWidget*)> inspect) {
    QTimer::singleShot(0, [inspect] {
        QWidget* modal = QApplication::activeModalWidget();
        QVERIFY(modal);
        inspect(modal);
    });
}

bool tag_in_range(int tag) {
    return (tag >= 11000 && tag <= 11113) || tag == 11500;
}

} // namespace

class TestFrmMain : public QObject {
    Q_OBJECT
private slots:
    void named_controls_data() {
        QTest::addColumn<QString>("name");
        QTest::addColumn<int>("index");
        QTest::addColumn<bool>("tagged");
        const char* tagged[] = {
            // "Gerät"
            "cmd_setsn", "cmd_togglelp", "cmd_resetbstd", "cmd_setbstd", "cmd_setdatetime",
            "cmd_Restzeit", "lbl_VentilE1", "lbl_VentilE2", "lbl_VentilA1", "lbl_VentilA2",
            "lbl_VentilSP", "lbl_AlarmT", "lbl_AlarmO21", "lbl_AlarmO22", "lbl_AlarmRest",
            "lbl_AlarmVollo", "lbl_AlarmNetz", "lbl_AlarmSens", "lbl_AlarmVolhi", "lbl_Alarmlow",
            "lbl_Alarmmid", "lbl_Alarmhigh", "frmZeiten", "frm_zeiten_preset", "cmd_t_reset",
            "lblkl2l", "lblgr2l",
            // "Protokoll"
            "lbl_geraetedaten", "lbl_Funktionstest", "lbl_Hersteller", "ck_Selbsttest",
            "ck_Ansaugtest", "ck_maxflow", "ck_minflow", "ck_Leistung", "ck_Typenschild",
            "ck_visuell", "ck_stk", "cmd_save", "cmd_open", "cmd_print",
            // "Compliance"
            "cmd_complianceread", "cmd_compliancedelete", "cmd_compliancesave",
            "cmd_complianceload", "cmd_complianceprint", "cmd_compliance_test",
            "lbl_compliancedauer", "l_recordnumber",
            // "System Status"
            "cmd_sysstatread", "cmd_sysstatsave",
            // "Entwickler"
            "lbl_info", "cmd_sendcommand", "cmd_clear", "cmd_saveprotokoll", "Command1", "Command2",
            "tab1"};
        for (const char* n : tagged)
            QTest::addRow("%s", n) << QString(n) << -1 << true;
        for (int i = 0; i <= 6; ++i)
            QTest::addRow("lbl_t(%d)", i) << "lbl_t" << i << true;
        const char* plain[] = {"t_bstd",
                               "t_Restzeit",
                               "t_datetime",
                               "t_c",
                               "t_druck",
                               "t_gastemp",
                               "t_kompressortemp",
                               "t_lp",
                               "t_o2",
                               "t_sensor1",
                               "t_sensor2",
                               "t_sn",
                               "t_spannung",
                               "t_sw",
                               "t_ventiloeffnung",
                               "t_volumenstrom",
                               "t_sollvolumenstrom",
                               "lbl_Phase",
                               "pic_akustO21",
                               "pic_akustO22",
                               "pic_akustvollo",
                               "Chart",
                               "t_krankenkasse",
                               "t_patient",
                               "t_strasse",
                               "t_Ort",
                               "t_Telefon",
                               "t_pruefer",
                               "t_Datum",
                               "t_Uhrzeit",
                               "t_bemerkungen",
                               "t_zubehoer",
                               "p_geraetedaten",
                               "frm_protokoll",
                               "p_compliance",
                               "t_compliancedauer",
                               "cmd_prevmonth",
                               "cmd_nextmonth",
                               "sysstatout",
                               "out",
                               "tb_command"};
        for (const char* n : plain)
            QTest::addRow("%s", n) << QString(n) << -1 << false;
        for (int i = 0; i <= 13; ++i)
            QTest::addRow("cb_t(%d)", i) << "cb_t" << i << false;
        for (int i = 0; i <= 1; ++i)
            QTest::addRow("cb_vs(%d)", i) << "cb_vs" << i << false;
        for (int i = 1; i <= 3; ++i)
            QTest::addRow("cmdPresetZeiten(%d)", i) << "cmdPresetZeiten" << i << false;
    }
    void named_controls() {
        QFETCH(QString, name);
        QFETCH(int, index);
        QFETCH(bool, tagged);
        FrmMain form;
        QWidget* w = form.control(name, index);
        QVERIFY2(w, qPrintable(name));
        QCOMPARE(w->objectName(), name);
        if (index >= 0)
            QCOMPARE(find_element(form, name, index), w);
        if (tagged)
            QVERIFY2(tag_in_range(tag_of(w)), qPrintable(QString::number(tag_of(w))));
    }

    void tags_are_unique_and_in_range() {
        FrmMain form;
        QMap<int, QString> seen;
        QVERIFY(tag_in_range(tag_of(&form)));
        seen.insert(tag_of(&form), form.objectName());
        const auto objects = form.findChildren<QObject*>();
        for (const QObject* o : objects) {
            const int tag = tag_of(o);
            if (tag == 0)
                continue;
            QVERIFY2(tag_in_range(tag), qPrintable(o->objectName()));
            QVERIFY2(!seen.contains(tag),
                     qPrintable(o->objectName() + " repeats the tag of " + seen.value(tag)));
            seen.insert(tag, o->objectName());
        }
        QVERIFY(seen.size() > 100);
    }

    void control_arrays_carry_their_index() {
        FrmMain form;
        QCOMPARE(form.controls_named("cb_t").size(), 14);
        QCOMPARE(form.controls_named("lbl_t").size(), 7);
        QCOMPARE(form.controls_named("cb_vs").size(), 2);
        QCOMPARE(form.controls_named("cmdPresetZeiten").size(), 3);
        QVERIFY(!form.control("cmdPresetZeiten", 0));
        QVERIFY(!form.control("cb_t", 14));
        for (int i = 0; i < 14; ++i) {
            auto* box = form.control_as<QComboBox>("cb_t", i);
            QVERIFY(box);
            QCOMPARE(index_of(box), i);
            // Entry k stands for the byte value k.
            QCOMPARE(box->count(), 256);
            QVERIFY(is_locked(box));
        }
        QCOMPARE(form.control_as<QLabel>("lbl_t", 4)->text(), QString("1-schließen (s)"));
    }

    void tab_strip_and_menu() {
        FrmMain form;
        QTabWidget* tabs = form.tab1();
        QStringList captions;
        for (int i = 0; i < tabs->count(); ++i)
            captions << tabs->tabText(i);
        QCOMPARE(captions,
                 (QStringList{"Gerät", "Protokoll", "Compliance", "System Status", "Entwickler"}));
        QCOMPARE(form.current_page(), Page::geraet);
        form.select_page(Page::system_status);
        QCOMPARE(tabs->currentIndex(), 3);
        QCOMPARE(form.current_page(), Page::system_status);

        const QList<std::pair<const char*, const char*>> actions = {
            {"men_Softwareupdate", "Softwareupdate"},
            {"men_Info", "Info"},
            {"men_beenden", "Beenden"},
            {"men_nurdruck", "Nur Druck"},
            {"men_verbindung", "Verbindung initialisieren"}};
        for (const auto& [name, text] : actions) {
            QAction* a = form.menu_action(name);
            QVERIFY2(a, name);
            QCOMPARE(a->objectName(), QString(name));
            QCOMPARE(a->text(), QString::fromUtf8(text));
            QVERIFY(tag_in_range(tag_of(a)));
        }
        QVERIFY(form.menu_action("men_nurdruck")->isCheckable());
        // "Verbindung initialisieren" is an entry of the menu bar itself.
        QVERIFY(form.menuBar()->actions().contains(form.menu_action("men_verbindung")));
        QStringList menus;
        for (QAction* a : form.menuBar()->actions())
            menus << a->text();
        QCOMPARE(menus, (QStringList{"Datei", "Diagramm", "Verbindung initialisieren"}));
    }

    void pressure_only_reaches_the_chart() {
        FrmMain form;
        QVERIFY(!form.chart()->pressure_only());
        form.menu_action("men_nurdruck")->trigger();
        QVERIFY(form.chart()->pressure_only());
        form.menu_action("men_nurdruck")->trigger();
        QVERIFY(!form.chart()->pressure_only());
    }

    void growing_controls_follow_the_window() {
        FrmMain form;
        form.resize(1300, 900);
        form.show();
        QVERIFY(QTest::qWaitForWindowExposed(&form));
        const auto measure = [&form](Page page, const char* name) {
            form.select_page(page);
            QApplication::processEvents();
            return form.control(name)->size();
        };
        const QSize chart = measure(Page::geraet, "Chart");
        const QSize table = measure(Page::system_status, "sysstatout");
        const QSize read = measure(Page::system_status, "cmd_sysstatread");
        const QSize compliance = measure(Page::compliance, "p_compliance");

        form.resize(1700, 1200);
        QApplication::processEvents();
        const QSize chart2 = measure(Page::geraet, "Chart");
        const QSize table2 = measure(Page::system_status, "sysstatout");
        const QSize read2 = measure(Page::system_status, "cmd_sysstatread");
        const QSize compliance2 = measure(Page::compliance, "p_compliance");
        QVERIFY2(chart2.width() > chart.width() + 300, "Chart width");
        QVERIFY2(chart2.height() > chart.height() + 200, "Chart height");
        QVERIFY(table2.width() > table.width() + 300);
        QVERIFY(table2.height() > table.height() + 200);
        QVERIFY(read2.width() > read.width() + 100);
        QVERIFY(compliance2.width() > compliance.width() + 300);
    }

    void live_record_reaches_the_page() {
        Harness h;
        device::DeviceRecord& r = h.ctx.device;
        r.live_valid = true;
        r.SN = "SN 4711";
        r.LP = "12345";
        r.O2 = 93;
        r.druck = 1013;
        r.phase = 5;
        r.ventile = 0;
        r.alarme = 0x81;
        r.alarmstufe = 2;
        r.zeiten[3] = 27;
        r.wert_o = 9;
        r.family_code = "50";
        r.SW = "501";
        device::detect_device_type(r);
        h.form.device_record_changed();

        QCOMPARE(h.form.control_as<QLineEdit>("t_sn")->text(), QString("SN 4711"));
        QCOMPARE(h.form.control_as<QLineEdit>("t_o2")->text(), QString("93"));
        QCOMPARE(h.form.control_as<QLineEdit>("t_druck")->text(), QString("1013"));
        QCOMPARE(h.form.control_as<QLabel>("lbl_Phase")->text(), QString("5"));
        QVERIFY(h.form.control("cmd_togglelp")->isEnabled());
        QCOMPARE(background(h.form.control("lbl_VentilE1")), red);
        QCOMPARE(background(h.form.control("lbl_VentilE2")), white);
        QCOMPARE(background(h.form.control("lbl_AlarmT")), red);
        QCOMPARE(background(h.form.control("lbl_AlarmVolhi")), red);
        QCOMPARE(background(h.form.control("lbl_AlarmO21")), green);
        QCOMPARE(background(h.form.control("pic_akustO21")), green);
        QCOMPARE(background(h.form.control("lbl_Alarmmid")), red);
        QCOMPARE(background(h.form.control("lbl_Alarmlow")), green);
        QCOMPARE(h.form.control_as<QComboBox>("cb_t", 3)->currentIndex(), 27);
        QCOMPARE(h.form.control_as<QComboBox>("cb_vs", 1)->currentIndex(), 9);
        // Family 50: first valve layout, three alarm levels, no flow selectors.
        QVERIFY(h.form.control("lbl_VentilSP")->isHidden());
        QVERIFY(h.form.control("lbl_AlarmRest")->isHidden());
        QVERIFY(!h.form.control("lbl_Alarmlow")->isHidden());
        QVERIFY(h.form.control("cb_vs", 0)->isHidden());
        QVERIFY(h.form.control("cb_t", 9)->isHidden());
        QVERIFY(!h.form.control("cb_t", 6)->isHidden());

        r.LP = "12346";
        h.form.device_record_changed();
        QVERIFY(!h.form.control("cmd_togglelp")->isEnabled());
    }

    void labels_left_as_they_are_keep_their_colour() {
        Harness h;
        device::DeviceRecord& r = h.ctx.device;
        r.live_valid = true;
        r.o22_source = true;
        r.alarme = 0x04; // lbl_AlarmRest red
        r.alarmstufe = 1;
        h.form.device_record_changed();
        QCOMPARE(background(h.form.control("lbl_AlarmRest")), red);
        QCOMPARE(background(h.form.control("lbl_Alarmmid")), red);

        r.o22_source = false; // lbl_AlarmRest no longer driven
        r.alarme = 0;
        h.form.device_record_changed();
        QCOMPARE(background(h.form.control("lbl_AlarmRest")), red);

        r.o22_source = true;
        r.alarmstufe = 2;
        h.form.device_record_changed();
        QCOMPARE(background(h.form.control("lbl_Alarmmid")), green);
        QCOMPARE(background(h.form.control("lbl_Alarmhigh")), red);
        r.alarmstufe = 3; // unknown level: both labels stay
        h.form.device_record_changed();
        QCOMPARE(background(h.form.control("lbl_Alarmmid")), green);
        QCOMPARE(background(h.form.control("lbl_Alarmhigh")), red);
    }

    void cleared_record_blanks_the_page() {
        Harness h;
        device::DeviceRecord& r = h.ctx.device;
        r.live_valid = true;
        r.SN = "SN 4711";
        r.ventile = 6;
        r.alarme = 0xFF;
        r.zeiten[0] = 100;
        h.form.device_record_changed();
        h.form.control_as<QLineEdit>("t_krankenkasse")->setText("AOK");
        h.form.control_as<QPlainTextEdit>("sysstatout")->setPlainText("table");
        h.form.control("cmd_setsn")->show();
        set_locked(h.form.control("cb_t", 0), false);

        device::clear_device_record(r);
        h.form.device_record_changed();
        for (QWidget* w : h.form.controls_with_prefix("t_")) {
            if (auto* line = qobject_cast<QLineEdit*>(w))
                QVERIFY2(line->text().isEmpty(), qPrintable(w->objectName()));
            if (auto* area = qobject_cast<QPlainTextEdit*>(w))
                QVERIFY2(area->toPlainText().isEmpty(), qPrintable(w->objectName()));
        }
        for (const char* prefix : {"lbl_Ventil", "lbl_Alarm", "pic_"}) {
            const auto lamps = h.form.controls_with_prefix(prefix);
            QVERIFY(!lamps.isEmpty());
            for (QWidget* w : lamps)
                QVERIFY2(background(w) == white, qPrintable(w->objectName()));
        }
        QVERIFY(h.form.control("cmd_setsn")->isHidden());
        QVERIFY(h.form.control_as<QPlainTextEdit>("sysstatout")->toPlainText().isEmpty());
        for (QWidget* w : h.form.controls_named("cb_t") + h.form.controls_named("cb_vs")) {
            QCOMPARE(qobject_cast<QComboBox*>(w)->currentIndex(), 0);
            QVERIFY(is_locked(w));
        }
    }

    void link_buttons_open_and_close_the_device() {
        Harness h;
        h.form.control_as<QPushButton>("Command1")->click();
        QCOMPARE(h.ctx.link.device_handle, 7u);
        QVERIFY(h.link->calls.contains("open 0"));
        QVERIFY(h.form.control_as<QPlainTextEdit>("out")->toPlainText().contains("Handle:7"));
        h.form.control_as<QPushButton>("Command2")->click();
        QCOMPARE(h.ctx.link.device_handle, 0u);
        QVERIFY(h.link->calls.contains("close 7"));
        QVERIFY(h.form.control_as<QPlainTextEdit>("out")->toPlainText().contains("Device Closed"));
    }

    void quitting_closes_the_device() {
        Harness h;
        h.form.show();
        h.form.control_as<QPushButton>("Command1")->click();
        h.ctx.timer1.set_enabled(true);
        h.form.menu_action("men_beenden")->trigger();
        QVERIFY(!h.form.isVisible());
        QCOMPARE(h.ctx.link.device_handle, 0u);
        QCOMPARE(h.link->calls.last(), QString("close 7"));
        QVERIFY(!h.ctx.timer1.enabled());
        QVERIFY(
            h.form.control_as<QPlainTextEdit>("out")->toPlainText().endsWith("Device Closed\n"));
    }

    void out_and_info_caption() {
        FrmMain form;
        form.append_out("Handle:1\r\n");
        form.append_out("Device Closed\r\n");
        QCOMPARE(form.control_as<QPlainTextEdit>("out")->toPlainText(),
                 QString("Handle:1\nDevice Closed\n"));
        form.clear_out();
        QVERIFY(form.control_as<QPlainTextEdit>("out")->toPlainText().isEmpty());
        form.set_info_caption("Software Update Block 3/80");
        QCOMPARE(form.control_as<QLabel>("lbl_info")->text(),
                 QString("Software Update Block 3/80"));
    }

    void info_menu_shows_the_version_window() {
        Harness h;
        h.ctx.language.language_text[1100] = "Programm";
        h.ctx.language.language_text[1000] = "Hersteller";
        bool applied = false;
        h.form.set_language_applier(
            [&applied](QWidget& form) { applied = form.objectName() == "frm_wait"; });
        QString shown;
        when_modal([&shown](QWidget* modal) {
            QCOMPARE(modal->objectName(), QString("frm_wait"));
            shown = modal->findChild<QLabel*>("lbl_text")->text();
            modal->findChild<QPushButton*>("cm_cancel")->click();
        });
        h.form.menu_action("men_Info")->trigger();
        QVERIFY(applied);
        QCOMPARE(shown, "Programm\n" + program_version() + "\nHersteller");
        QVERIFY(QRegularExpression("^\\d+\\.\\d+\\.\\d+$").match(program_version()).hasMatch());
    }

    void wait_dialog_cancel() {
        config::LanguageTables language;
        FrmWait wait(language);
        QCOMPARE(tag_of(&wait), 12000);
        QVERIFY(wait.isModal());
        when_modal([](QWidget* modal) {
            QCOMPARE(modal->findChild<QLabel*>("lbl_text")->text(), QString("Lese Datensatz 3"));
            modal->findChild<QPushButton*>("cm_cancel")->click();
        });
        wait.docommand("readcompliance", "Lese Datensatz 3");
        QVERIFY(wait.cancelled());
        QVERIFY(!wait.isVisible());
        wait.prepare("info");
        QVERIFY(!wait.cancelled());
    }

    void file_filters_data() {
        QTest::addColumn<QString>("filter");
        QTest::addColumn<QStringList>("expected");
        QTest::newRow("named") << "Text (*.txt)|*.txt" << QStringList{"Text (*.txt)"};
        QTest::newRow("firmware") << "Veltrak O2 Software (*.ae6)|*.ae6"
                                  << QStringList{"Veltrak O2 Software (*.ae6)"};
        QTest::newRow("pattern added")
            << "Systemstatus|*.txt" << QStringList{"Systemstatus (*.txt)"};
        QTest::newRow("two filters")
            << "A (*.a)|*.a|B|*.b;*.c" << QStringList{"A (*.a)", "B (*.b *.c)"};
        QTest::newRow("empty") << "" << QStringList{};
    }
    void file_filters() {
        QFETCH(QString, filter);
        QFETCH(QStringList, expected);
        QCOMPARE(qt_name_filters(filter), expected);
    }

    void message_boxes() {
        FrmMain form;
        QStringList buttons;
        when_modal([&buttons](QWidget* modal) {
            auto* box = qobject_cast<QMessageBox*>(modal);
            QVERIFY(box);
            for (QAbstractButton* b : box->buttons())
                buttons << QString::number(box->standardButton(b));
            box->button(QMessageBox::Ok)->click();
        });
        form.show_msg("Outbuffer overflow");
        QCOMPARE(buttons, QStringList{QString::number(QMessageBox::Ok)});

        when_modal([](QWidget* modal) {
            qobject_cast<QMessageBox*>(modal)->button(QMessageBox::No)->click();
        });
        QVERIFY(!form.ask_yes_no("Überschreiben?"));
        when_modal([](QWidget* modal) {
            qobject_cast<QMessageBox*>(modal)->button(QMessageBox::Yes)->click();
        });
        QVERIFY(form.ask_yes_no("Überschreiben?"));
        when_modal([](QWidget* modal) {
            qobject_cast<QMessageBox*>(modal)->button(QMessageBox::Cancel)->click();
        });
        QVERIFY(!form.ask_ok_cancel("Speichern?"));
    }

    void input_box() {
        FrmMain form;
        when_modal([](QWidget* modal) {
            auto* dialog = qobject_cast<QInputDialog*>(modal);
            QVERIFY(dialog);
            dialog->setTextValue("001234:5");
            dialog->accept();
        });
        QCOMPARE(form.input_box("Betriebsstunden", "veltrako2"),
                 std::optional<QString>("001234:5"));
        when_modal([](QWidget* modal) { qobject_cast<QInputDialog*>(modal)->reject(); });
        QCOMPARE(form.input_box("Betriebsstunden", "veltrako2"), std::nullopt);
    }

    void busy_pointer_is_a_state() {
        FrmMain form;
        QVERIFY(!QGuiApplication::overrideCursor());
        form.set_busy(true);
        form.set_busy(true);
        QCOMPARE(QGuiApplication::overrideCursor()->shape(), Qt::WaitCursor);
        form.set_busy(false);
        QVERIFY(!QGuiApplication::overrideCursor());
        form.set_busy(false);
        QVERIFY(!QGuiApplication::overrideCursor());
    }
};

QTEST_MAIN(TestFrmMain)
#include "test_frm_main.moc"
