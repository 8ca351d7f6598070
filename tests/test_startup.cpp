// The desktop program as a technician meets it, offscreen, against the
// in-process simulator on the program's own timer and event loop: settings
// and language texts read, live values on "Gerät", the device closed on
// quitting; a cancelled firmware update that leaves the poll cycle running,
// so that a service visit after it runs to its end; a device that waits in
// its boot loader, found at start-up and again after "Verbindung
// initialisieren", and brought back by the firmware update.

#include "link/sim_link.h"
#include "protocol_harness.h"
#include "report/report_draft.h"
#include "report_harness.h"
#include "sim/concentrator.h"
#include "sim/scenario.h"
#include "sim_helpers.h"
#include "startup.h"
#include "window_harness.h"

#include <QAction>
#include <QFileDialog>
#include <QTemporaryDir>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

// The window started as the program starts it, in German, on a folder of its
// own with a settings file that polls every 20 ms.
struct Started {
    explicit Started(const QByteArray& scenario)
        : device(std::make_shared<sim::Concentrator>(scenario_from(scenario))),
          ctx(clock, form, std::make_unique<link::SimLink>(clock, device)) {
        QFile::copy(QStringLiteral(VELTRAKO2_LANG_DIR "/langde.txt"), dir.filePath("langde.txt"));
        write_file(dir.filePath("veltrako2.ini"), "TIMEOUT|1\r\nTIMERINTERVAL|20\r\n"
                                                  "VERORDNUNG|6\r\nADHERENZ_ANTEIL|80\r\n");
        form.bind(ctx);
        ui::StartupOptions options;
        options.application_dir = dir.path();
        form.show();
        ui::form_load(form, ctx, options);
    }
    QString status() const { return form.control_as<QLabel>("lbl_connection")->text(); }
    QString text(const char* name) const { return form.control_as<QLineEdit>(name)->text(); }

    QTemporaryDir dir;
    SystemClock clock;
    ui::FrmMain form;
    std::shared_ptr<sim::Concentrator> device;
    AppContext ctx;
};

} // namespace

class TestStartup : public QObject {
    Q_OBJECT
private slots:
    void shows_live_values_after_start() {
        BoxAnswers boxes;
        Started s("SW=5121\nSN=VO2-START\nO2=91\nNOISE=off\n");
        QCOMPARE(s.ctx.timer1.interval(), 20); // from veltrako2.ini
        QCOMPARE(s.ctx.compliance.prescribed_hours, 6.0);
        QCOMPARE(s.ctx.compliance.adherence_share, 80.0);
        QCOMPARE(s.form.tab1()->tabText(0), QString("Gerät")); // the language file read
        QCOMPARE(s.form.tab1()->currentIndex(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(s.text("t_o2"), QString("91"), 5000);
        QCOMPARE(s.text("t_sn").trimmed(), QString("VO2-START"));
        QCOMPARE(s.text("t_sw"), QString("5121"));
        QVERIFY2(boxes.texts.isEmpty(), qPrintable(boxes.texts.join('\n')));

        // Quitting closes the device.
        s.form.close();
        QCOMPARE(s.ctx.link.device_handle, 0u);
        QVERIFY(s.ctx.comm_log.comm_log.contains("Device Closed"));
    }

    // Datei → Softwareupdate → Abbrechen: the device heard nothing, so it is
    // polled on and the status bar keeps "Verbunden". A service visit after
    // it runs to its end; it used to stand at "Schritt 1 von 10" for ever.
    void cancelled_update_leaves_polling_on() {
        Started s("SW=5121\nSN=VO2-START\nNOISE=off\nSTATUS_GENERATE=3\nCOMPLIANCE_GENERATE=5\n"
                  "COMPLIANCE_FROM=-10d\nCOMPLIANCE_TO=now\n");
        QTRY_VERIFY_WITH_TIMEOUT(s.ctx.device.live_valid, 5000);
        when_modal([](QWidget* dialog) { qobject_cast<QDialog*>(dialog)->reject(); });
        s.form.menu_action("men_Softwareupdate")->trigger();
        QVERIFY(s.ctx.timer1.enabled());
        QVERIFY2(s.status().startsWith("Verbunden: VO2-START"), qPrintable(s.status()));
        const float seen = s.ctx.device.live_time;
        QTRY_VERIFY_WITH_TIMEOUT(s.ctx.device.live_time != seen, 5000); // live values go on

        BoxAnswers boxes; // the visit's closing message
        // A visit that stands still is ended, so that the test fails instead
        // of waiting for ever.
        QTimer watchdog;
        watchdog.setSingleShot(true);
        QObject::connect(&watchdog, &QTimer::timeout, [&s] {
            if (auto* visit = s.form.findChild<QDialog*>("frm_visit"))
                visit->reject();
        });
        watchdog.start(60000);
        s.form.menu_action("men_Servicebesuch")->trigger();
        QCOMPARE(boxes.texts.size(), 1);
        QVERIFY2(boxes.texts[0].startsWith(s.ctx.language.text(8422)), qPrintable(boxes.texts[0]));

        // Abbrechen in the visit's window ends the visit, not only the
        // window: it says so, and the pointer is no hourglass any more.
        when_modal([](QWidget* dialog) {
            QVERIFY(dialog->objectName() == "frm_visit");
            dialog->findChild<QPushButton*>("cmd_visitcancel")->click();
        });
        s.form.menu_action("men_Servicebesuch")->trigger();
        QCOMPARE(boxes.texts.size(), 2);
        QVERIFY2(boxes.texts[1].startsWith(s.ctx.language.text(8423)) &&
                     boxes.texts[1].contains(s.ctx.language.text(8426)),
                 qPrintable(boxes.texts[1]));
        QVERIFY(!QGuiApplication::overrideCursor());
    }

    void device_in_its_boot_loader_is_brought_back() {
        const QString waiting = QStringLiteral("Gerät wartet im Bootloader");
        // "Gerät wartet im Bootloader" and what to do, at every finding.
        auto found = std::make_unique<BoxAnswers>();
        Started s("SW=5121\nSW_AFTER_UPDATE=5122\nHARDWARE_ID=AE61\nNOISE=off\nBOOT_LOADER=on\n"
                  "BOOT_LOADER_GREETING=\"ae60000 BL1.3 AE61\\r\\n\"\n");
        QTRY_COMPARE_WITH_TIMEOUT(s.status(), waiting, 10000);
        QVERIFY(s.form.menu_action("men_Softwareupdate")->isEnabled());
        QVERIFY(!s.form.menu_action("men_Servicebesuch")->isEnabled());
        QVERIFY(!s.form.control("cmd_setsn")->isEnabled());
        s.form.menu_action("men_verbindung")->trigger();
        QVERIFY(s.status() != waiting);                        // looked for afresh ...
        QTRY_COMPARE_WITH_TIMEOUT(s.status(), waiting, 10000); // ... and found there again
        QTRY_COMPARE(found->texts.size(), 2);
        QVERIFY(found->texts[0].startsWith(waiting));
        found.reset();

        QByteArray file = "VERSION=5122\r\nHARDWARE=AE61\r\n";
        for (int i = 0; i < 3; ++i)
            file += loader_line(16 * i, QByteArray(16, 'x')).toHex() + "\r\n";
        QVERIFY(write_file(s.dir.filePath("new.ae6"), file));
        when_modal([&s](QWidget* dialog) {
            auto* files = qobject_cast<QFileDialog*>(dialog);
            QVERIFY(files);
            files->selectFile(s.dir.filePath("new.ae6"));
            QMetaObject::invokeMethod(files, "accept");
        });
        BoxAnswers update({QMessageBox::Yes, QMessageBox::Ok}); // the question, "abgeschlossen"
        s.form.menu_action("men_Softwareupdate")->trigger();
        QCOMPARE(update.texts.size(), 2);
        QCOMPARE(update.texts[1], s.ctx.language.text(104));
        QTRY_COMPARE_WITH_TIMEOUT(s.text("t_sw"), QString("5122"), 10000);
        QVERIFY2(s.status().startsWith("Verbunden"), qPrintable(s.status()));
        QVERIFY(!s.device->in_boot_loader());
    }

    // A report left unsaved by a crash comes back at the next start when the
    // technician wants it, unsaved, judged by the configured limits; a limit
    // that is no number is said first. Discarded on quitting, it is gone.
    void offers_the_draft_left_behind() {
        QTemporaryDir dir;
        QFile::copy(QStringLiteral(VELTRAKO2_LANG_DIR "/langde.txt"), dir.filePath("langde.txt"));
        write_file(dir.filePath("veltrako2.ini"),
                   "TIMEOUT|1\r\nGRENZE_O2|viel\r\nGRENZE_FLOW|15\r\n");
        const QString draft = dir.filePath(report::draft_file_name);
        write_file(draft, "ENTWURF|24.11.2026 16:40:02\r\nGERAETEDATEN|1\r\nSN|VO2-7\r\n"
                          "t_Patient|Erika Muster\r\nck_stk|1\r\n");
        SystemClock clock;
        ui::FrmMain form;
        auto device = std::make_shared<sim::Concentrator>(*sim::parse_scenario("NOISE=off\n"));
        AppContext ctx(clock, form, std::make_unique<link::SimLink>(clock, device));
        form.bind(ctx);
        BoxAnswers boxes({QMessageBox::Ok, QMessageBox::Yes});
        ui::StartupOptions options;
        options.application_dir = dir.path();
        form.show();
        ui::form_load(form, ctx, options);
        QCOMPARE(boxes.texts.size(), 2);
        QVERIFY2(boxes.texts[0].contains("GRENZE_O2 = viel \u2192 82"), qPrintable(boxes.texts[0]));
        QVERIFY2(boxes.texts[1].contains("Entwurf vom 24.11.2026 16:40:02 wiederherstellen?"),
                 qPrintable(boxes.texts[1]));
        QCOMPARE(ctx.report.limits.flow_percent, 15.0);
        QCOMPARE(ctx.report.limits.o2_min, 82.0);
        QCOMPARE(form.current_page(), Page::protokoll);
        QCOMPARE(form.control_as<QLineEdit>("t_patient")->text(), QString("Erika Muster"));
        QVERIFY(form.control_as<QCheckBox>("ck_stk")->isChecked());
        QVERIFY(ctx.report.report_changed && ctx.report.device_valid());
        QVERIFY(QFile::exists(draft));

        BoxAnswers discard({QMessageBox::Discard});
        form.close();
        QCOMPARE(discard.texts.size(), 1);
        QVERIFY(!form.isVisible());
        QVERIFY(!QFile::exists(draft));
    }
};

QTEST_MAIN(TestStartup)
#include "test_startup.moc"
