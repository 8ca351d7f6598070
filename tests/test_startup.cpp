// The desktop program's start as a technician meets it, offscreen, against
// the in-process simulator: settings and language texts read, live values on
// "Gerät" by the program's own timer, and the device closed on quitting.

#include "link/sim_link.h"
#include "report/report_draft.h"
#include "report_harness.h"
#include "sim/concentrator.h"
#include "sim/scenario.h"
#include "startup.h"
#include "window_harness.h"

#include <QTemporaryDir>

using namespace veltrako;
using namespace veltrako::testing;

class TestStartup : public QObject {
    Q_OBJECT
private slots:
    void shows_live_values_after_start() {
        QTemporaryDir dir;
        QFile::copy(QStringLiteral(VELTRAKO2_LANG_DIR "/langde.txt"), dir.filePath("langde.txt"));
        write_file(dir.filePath("veltrako2.ini"), "TIMEOUT|1\r\nTIMERINTERVAL|20\r\n"
                                                  "VERORDNUNG|6\r\nADHERENZ_ANTEIL|80\r\n");
        SystemClock clock;
        ui::FrmMain form;
        auto device = std::make_shared<sim::Concentrator>(
            *sim::parse_scenario("SW=5121\nSN=VO2-START\nO2=91\nNOISE=off\n"));
        AppContext ctx(clock, form, std::make_unique<link::SimLink>(clock, device));
        form.bind(ctx);
        BoxAnswers boxes;
        ui::StartupOptions options;
        options.application_dir = dir.path();
        form.show();
        ui::form_load(form, ctx, options);
        QCOMPARE(ctx.timer1.interval(), 20); // from veltrako2.ini
        QCOMPARE(ctx.compliance.prescribed_hours, 6.0);
        QCOMPARE(ctx.compliance.adherence_share, 80.0);
        QCOMPARE(form.tab1()->tabText(0), QString("Gerät")); // the language file read
        QCOMPARE(form.tab1()->currentIndex(), 0);
        const auto text = [&form](const char* name) {
            return form.control_as<QLineEdit>(name)->text();
        };
        QTRY_COMPARE_WITH_TIMEOUT(text("t_o2"), QString("91"), 5000);
        QCOMPARE(text("t_sn").trimmed(), QString("VO2-START"));
        QCOMPARE(text("t_sw"), QString("5121"));
        QVERIFY2(boxes.texts.isEmpty(), qPrintable(boxes.texts.join('\n')));

        // Quitting closes the device.
        form.close();
        QCOMPARE(ctx.link.device_handle, 0u);
        QVERIFY(ctx.comm_log.comm_log.contains("Device Closed"));
    }

    // A report left unsaved by a crash comes back at the next start when the
    // technician wants it, unsaved; discarded on quitting, it is gone.
    void offers_the_draft_left_behind() {
        QTemporaryDir dir;
        QFile::copy(QStringLiteral(VELTRAKO2_LANG_DIR "/langde.txt"), dir.filePath("langde.txt"));
        write_file(dir.filePath("veltrako2.ini"), "TIMEOUT|1\r\n");
        const QString draft = dir.filePath(report::draft_file_name);
        write_file(draft, "ENTWURF|24.11.2026 16:40:02\r\nGERAETEDATEN|1\r\nSN|VO2-7\r\n"
                          "t_Patient|Erika Muster\r\nck_stk|1\r\n");
        SystemClock clock;
        ui::FrmMain form;
        auto device = std::make_shared<sim::Concentrator>(*sim::parse_scenario("NOISE=off\n"));
        AppContext ctx(clock, form, std::make_unique<link::SimLink>(clock, device));
        form.bind(ctx);
        BoxAnswers boxes({QMessageBox::Yes});
        ui::StartupOptions options;
        options.application_dir = dir.path();
        form.show();
        ui::form_load(form, ctx, options);
        QCOMPARE(boxes.texts.size(), 1);
        QVERIFY2(boxes.texts[0].contains("Entwurf vom 24.11.2026 16:40:02 wiederherstellen?"),
                 qPrintable(boxes.texts[0]));
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
