// The "Compliance" page in the window, offscreen: its buttons follow the
// usage memory, the picture box draws the chart and redraws at a new size,
// the month summary sits under it, and a readout shows its progress.

#include "app_context.h"
#include "compliance/compliance_print.h"
#include "fake_link.h"
#include "frm_main.h"
#include "link/sim_link.h"
#include "manual_clock.h"
#include "pages.h"
#include "protocol/poll_cycle.h"
#include "sim/concentrator.h"
#include "sim/scenario.h"

#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QTest>

using namespace veltrako;
using namespace veltrako::ui;
using namespace veltrako::testing;

namespace {

int green_pixels(const QImage& image) {
    int n = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            n += image.pixelColor(x, y) == QColor(0, 200, 0) ? 1 : 0;
    return n;
}

} // namespace

class TestPageCompliance : public QObject {
    Q_OBJECT
private slots:
    void testdaten_fills_the_page_and_the_chart_follows_its_size() {
        ManualClock clock;
        FrmMain form;
        AppContext ctx{clock, form, std::unique_ptr<link::DeviceLink>(new FakeLink)};
        form.bind(ctx);
        ctx.language.language_text[6012] = QStringLiteral("Days with use");
        form.tab1()->setCurrentIndex(2);
        form.show();
        const auto button = [&](const char* name) {
            return form.control_as<QPushButton>(QLatin1String(name));
        };
        QWidget* chart = form.control(QStringLiteral("p_compliance"));
        QVERIFY(!button("cmd_complianceprint")->isEnabled());
        QCOMPARE(green_pixels(chart->grab().toImage()), 0);

        button("cmd_compliance_test")->click();
        QVERIFY(button("cmd_complianceprint")->isEnabled());
        QVERIFY(button("cmd_prevmonth")->isEnabled());
        QVERIFY(!button("cmd_nextmonth")->isEnabled());
        // No device: neither reading nor erasing.
        QVERIFY(!button("cmd_complianceread")->isEnabled());
        QVERIFY(!button("cmd_compliancedelete")->isEnabled());
        QVERIFY(form.control_as<QLineEdit>("t_compliancedauer")->text().contains('.'));
        QVERIFY(
            form.control_as<QLabel>("l_compliancesummary")->text().startsWith("Days with use: 30"));

        chart->resize(600, 400);
        const int small = green_pixels(chart->grab().toImage());
        chart->resize(1200, 800);
        const int large = green_pixels(chart->grab().toImage());
        QVERIFY(small > 0);
        // Four times the area; the margins, sized by the text, grow less.
        QVERIFY2(large > 4 * small && large < 6 * small,
                 qPrintable(QStringLiteral("%1 %2").arg(small).arg(large)));

        // December 2006 has fewer hours of use than January 2007.
        button("cmd_prevmonth")->click();
        QVERIFY(button("cmd_nextmonth")->isEnabled());
        QVERIFY(green_pixels(chart->grab().toImage()) < large);

        // The printout names the patient typed on the report page, and its
        // PDF the month shown and that these are test data.
        form.control_as<QLineEdit>("t_patient")->setText("Erika Muster");
        QCOMPARE(compliance_printed_for(form, ctx).patient, QString("Erika Muster"));
        QCOMPARE(compliance::compliance_pdf_name(ctx.compliance.state, ctx.compliance.records, 0),
                 QString("Compliance_Testdaten_2006-12.pdf"));
    }

    // A readout from the simulated device: the progress row while the
    // records come in, the read button off, and "Abbrechen" leaving the
    // number read and no chart.
    void readout_shows_progress_and_cancels() {
        ManualClock clock;
        FrmMain form;
        QString error;
        const auto scenario = sim::parse_scenario(
            "COMPLIANCE_GENERATE=400\nCOMPLIANCE_FROM=2020-01-01\nCOMPLIANCE_TO=2024-12-01\n",
            &error);
        QVERIFY2(scenario, qPrintable(error));
        AppContext ctx{
            clock, form,
            std::make_unique<link::SimLink>(clock, std::make_shared<sim::Concentrator>(*scenario))};
        form.bind(ctx);
        const QStringList texts{"Cancel", "Time left:", "Live values paused", "Records read:"};
        for (int i = 0; i < texts.size(); ++i)
            ctx.language.language_text[8300 + i] = texts[i];
        form.tab1()->setCurrentIndex(2);
        form.show();
        const auto tick = [&] {
            clock.advance_ms(50);
            protocol::timer1_tick(ctx);
        };
        protocol::connect_routine(ctx);
        for (int i = 0; i < 100 && !(ctx.device.live_valid && ctx.protocol.queue_count == 0); ++i)
            tick();
        auto* read = form.control_as<QPushButton>("cmd_complianceread");
        auto* cancel = form.control_as<QPushButton>("cmd_compliancecancel");
        auto* bar = form.control_as<QProgressBar>("pb_compliance");
        const auto label = [&](const char* name) {
            return form.control_as<QLabel>(QLatin1String(name))->text();
        };
        QVERIFY(read->isEnabled());
        QVERIFY(bar->isHidden() || !bar->parentWidget()->isVisible());

        read->click();
        bool looked = false;
        clock.on_wait = [&](int) {
            if (looked || ctx.compliance.state.read_index != 200)
                return;
            looked = true;
            QVERIFY(!read->isEnabled());
            QVERIFY(bar->isVisible() && cancel->isVisible());
            // Shown ten times a second of the readout, not for every record.
            QCOMPARE(bar->maximum(), 401);
            QVERIFY2(bar->value() > 100 && bar->value() <= 200, qPrintable(bar->text()));
            QCOMPARE(bar->text(), QString("%1 / 401").arg(bar->value()));
            QVERIFY2(label("lbl_compliancetime").startsWith("Time left: 0:"),
                     qPrintable(label("lbl_compliancetime")));
            QCOMPARE(label("lbl_compliancenote"), "Live values paused");
            cancel->click();
        };
        for (int i = 0; i < 20; ++i)
            tick();
        QVERIFY(looked);
        QCOMPARE(label("lbl_compliancenote"), "Records read: 200");
        QVERIFY(!bar->isVisible() && !cancel->isVisible());
        QVERIFY(read->isEnabled());
        QVERIFY(!form.control("cmd_complianceprint")->isEnabled());
        QVERIFY(label("l_compliancesummary").isEmpty());
    }
};

QTEST_MAIN(TestPageCompliance)
#include "test_page_compliance.moc"
