// The desktop program's start as a technician meets it, offscreen, against
// the in-process simulator: language texts on the window, live values on
// "Gerät", one message when no device is there and a connection by itself
// when one appears, and the device closed on quitting.

#include "box_answers.h"
#include "link/sim_link.h"
#include "report_harness.h"
#include "sim/concentrator.h"
#include "sim/scenario.h"
#include "startup.h"
#include "t2_harness.h"

#include <QTemporaryDir>

using namespace veltrako;

namespace {

struct Program {
    explicit Program(const QByteArray& scenario_text) {
        QFile::copy(QStringLiteral(VELTRAKO2_LANG_DIR "/langde.txt"), dir.filePath("langde.txt"));
        testing::write_file(dir.filePath("veltrako2.ini"), "TIMEOUT|1\r\nTIMERINTERVAL|20\r\n");
        QString error;
        const auto scenario = sim::parse_scenario(scenario_text, &error);
        device = std::make_shared<sim::Concentrator>(*scenario);
        ctx = std::make_unique<AppContext>(clock, form,
                                           std::make_unique<link::SimLink>(clock, device));
        form.bind(*ctx);
    }
    void start() {
        ui::StartupOptions options;
        options.application_dir = dir.path();
        form.show();
        ui::form_load(form, *ctx, options);
    }
    QString text(const char* name) const {
        return form.control_as<QLineEdit>(QString::fromLatin1(name))->text();
    }
    void plug(bool in) {
        sim::Faults faults = device->faults();
        faults.unplug = !in;
        device->set_faults(faults);
    }

    QTemporaryDir dir;
    SystemClock clock;
    ui::FrmMain form;
    std::shared_ptr<sim::Concentrator> device;
    std::unique_ptr<AppContext> ctx;
};

const QByteArray steady_device = "SW=5121\nSN=VO2-START\nO2=91\nNOISE=off\n";

} // namespace

class TestStartup : public QObject {
    Q_OBJECT
private slots:
    void shows_live_values_after_start() {
        veltrako::testing::BoxAnswers boxes;
        Program program(steady_device);
        program.start();
        QCOMPARE(program.ctx->timer1.interval(), 20);                // from veltrako2.ini
        QCOMPARE(program.form.tab1()->tabText(0), QString("Gerät")); // the language file read
        QCOMPARE(program.form.tab1()->currentIndex(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(program.text("t_o2"), QString("91"), 5000);
        QCOMPARE(program.text("t_sn").trimmed(), QString("VO2-START"));
        QCOMPARE(program.text("t_sw"), QString("5121"));
        QVERIFY2(boxes.texts.isEmpty(), qPrintable(boxes.texts.join('\n')));

        // Quitting closes the device.
        program.form.close();
        QCOMPARE(program.ctx->link.device_handle, 0u);
        QVERIFY(program.ctx->comm_log.comm_log.contains("Device Closed"));
    }

    void without_device_one_message_then_connects_by_itself() {
        veltrako::testing::BoxAnswers boxes;
        Program program(steady_device);
        program.plug(false);
        program.start();
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts.size(), 1, 3000);
        QVERIFY2(boxes.texts[0].contains("Gerät"), qPrintable(boxes.texts[0]));
        QTest::qWait(300); // the search goes on quietly
        QCOMPARE(boxes.texts.size(), 1);
        QVERIFY(program.text("t_o2").isEmpty());

        program.plug(true);
        QTRY_COMPARE_WITH_TIMEOUT(program.text("t_o2"), QString("91"), 5000);
        QCOMPARE(boxes.texts.size(), 1);
    }
};

QTEST_MAIN(TestStartup)
#include "test_startup.moc"
