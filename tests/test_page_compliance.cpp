// The "Compliance" page in the window, offscreen: its buttons follow the
// usage memory, the picture box draws the chart and redraws at a new size,
// the month summary sits under it, and a readout shows its progress.

#include "compliance/compliance_print.h"
#include "compliance/compliance_readout.h"
#include "fake_link.h"
#include "frm_main.h"
#include "pages.h"
#include "protocol/poll_cycle.h"
#include "sim_helpers.h"

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

// The window on the "Compliance" page, offscreen; with a simulated device
// when a scenario is given, whose requests are kept in `received`.
struct Window {
    explicit Window(const QByteArray& scenario = {})
        : device(scenario.isEmpty() ? nullptr
                                    : std::make_shared<sim::Concentrator>(scenario_from(scenario))),
          ctx{clock, form,
              device ? std::unique_ptr<link::DeviceLink>(new link::SimLink(clock, device))
                     : std::unique_ptr<link::DeviceLink>(new FakeLink)} {
        if (device)
            device->set_observer([this](const sim::Concentrator::Event& e) {
                if (!e.boot_loader)
                    received += e.request.left(1);
            });
        form.bind(ctx);
        form.tab1()->setCurrentIndex(2);
        form.show();
    }
    template <class W = QPushButton> W* get(const char* name) {
        return form.control_as<W>(QLatin1String(name));
    }
    QString label(const char* name) { return get<QLabel>(name)->text(); }
    void tick() {
        clock.advance_ms(50);
        protocol::timer1_tick(ctx);
    }

    ManualClock clock;
    FrmMain form;
    std::shared_ptr<sim::Concentrator> device;
    AppContext ctx;
    QByteArray received; // the first letter of each request
};

} // namespace

class TestPageCompliance : public QObject {
    Q_OBJECT
private slots:
    // "Testdaten": January 2007 with a session every day but the 31st, and a
    // December before it.
    void testdaten_fills_the_page_and_the_chart_follows_its_size() {
        Window p;
        p.ctx.language.language_text[6012] = QStringLiteral("Days with use");
        p.ctx.language.language_text[8510] = QStringLiteral("%1-%2 %3/%4 %5 h %6 %7%");
        p.ctx.language.language_text[8511] = QStringLiteral("met");
        p.ctx.language.language_text[8513] = QStringLiteral("dd.MM.yyyy");
        p.ctx.language.language_text[8514] = QStringLiteral("dd.MM.yyyy");
        p.ctx.compliance.prescribed_hours = 6;
        auto* adherence = p.get<QLabel>("l_complianceadherence");
        const compliance::ComplianceState& state = p.ctx.compliance.state;
        QWidget* chart = p.form.control(QStringLiteral("p_compliance"));
        QVERIFY(!p.get("cmd_complianceprint")->isEnabled());
        QCOMPARE(green_pixels(chart->grab().toImage()), 0);

        p.get("cmd_compliance_test")->click();
        QCOMPARE(state.shown_month, compliance::make_stamp(2007, 1, 1));
        QVERIFY(p.get("cmd_complianceprint")->isEnabled());
        QVERIFY(p.get("cmd_prevmonth")->isEnabled());
        QVERIFY(!p.get("cmd_nextmonth")->isEnabled());
        // No device: neither reading nor erasing.
        QVERIFY(!p.get("cmd_complianceread")->isEnabled());
        QVERIFY(!p.get("cmd_compliancedelete")->isEnabled());
        QVERIFY(p.get<QLineEdit>("t_compliancedauer")->text().contains('.'));
        QVERIFY(p.label("l_compliancesummary").startsWith("Days with use: 30"));
        // Every day of January 2007 reached 6 h: the best 30 days, under the
        // summary whatever month is shown.
        QCOMPARE(adherence->text(), "01.01.2007-30.01.2007 30/30 6 h met 70%");
        QVERIFY(adherence->isVisible());

        chart->resize(600, 400);
        const int small = green_pixels(chart->grab().toImage());
        chart->resize(1200, 800);
        const int large = green_pixels(chart->grab().toImage());
        QVERIFY(small > 0);
        // Four times the area; the margins, sized by the text, grow less.
        QVERIFY2(large > 4 * small && large < 6 * small,
                 qPrintable(QStringLiteral("%1 %2").arg(small).arg(large)));

        // December 2006 has fewer hours of use than January 2007, and use on
        // both sides.
        p.get("cmd_prevmonth")->click();
        QCOMPARE(state.shown_month, compliance::make_stamp(2006, 12, 1));
        QCOMPARE(state.total_hours, 24.0 + 48.75);
        QVERIFY(p.get("cmd_prevmonth")->isEnabled() && p.get("cmd_nextmonth")->isEnabled());
        QVERIFY(green_pixels(chart->grab().toImage()) < large);
        QCOMPARE(adherence->text(), "01.01.2007-30.01.2007 30/30 6 h met 70%");

        // The printout names the patient typed on the report page, and its
        // PDF the month shown and that these are test data.
        p.get<QLineEdit>("t_patient")->setText("Erika Muster");
        QCOMPARE(compliance_printed_for(p.form, p.ctx).patient, QString("Erika Muster"));
        QCOMPARE(compliance::compliance_pdf_name(state, p.ctx.compliance.records, 0),
                 QString("Compliance_Testdaten_2006-12.pdf"));
        // Without a prescription, no line for it.
        p.ctx.compliance.prescribed_hours = 0;
        p.get("cmd_compliance_test")->click();
        QVERIFY(adherence->text().isEmpty() && !adherence->isVisible());
    }

    // A readout from the simulated device: the progress row while the
    // records come in, the read button off, and "Abbrechen" leaving the
    // number read and no chart. No request goes out after "Abbrechen", and
    // the answer on its way is ignored.
    void readout_shows_progress_and_cancels() {
        Window p("COMPLIANCE_GENERATE=400\nCOMPLIANCE_FROM=2020-01-01\nCOMPLIANCE_TO=2024-12-01\n");
        const QStringList texts{"Cancel", "Time left:", "Live values paused", "Records read:"};
        for (int i = 0; i < texts.size(); ++i)
            p.ctx.language.language_text[8300 + i] = texts[i];
        const compliance::ComplianceMemory& m = p.ctx.compliance;
        protocol::connect_routine(p.ctx);
        for (int i = 0; i < 100 && !(p.ctx.device.live_valid && p.ctx.protocol.queue_count == 0);
             ++i)
            p.tick();
        auto* read = p.get("cmd_complianceread");
        auto* cancel = p.get("cmd_compliancecancel");
        auto* bar = p.get<QProgressBar>("pb_compliance");
        QVERIFY(read->isEnabled());
        QVERIFY(bar->isHidden() || !bar->parentWidget()->isVisible());
        // Cancelled before the next tick: the count and the first record
        // stay unasked.
        p.received.clear();
        read->click();
        compliance::compliance_cancel(p.ctx);
        for (int i = 0; i < 3; ++i)
            p.tick();
        QCOMPARE(p.received.count('K') + p.received.count('k'), 0);

        read->click();
        bool looked = false;
        p.clock.on_wait = [&](int) {
            if (looked || m.state.read_index != 200)
                return;
            looked = true;
            // Nothing may read, erase or replace the table under the readout.
            for (const char* button : {"cmd_complianceread", "cmd_compliancedelete",
                                       "cmd_complianceload", "cmd_compliance_test"})
                QVERIFY2(!p.get(button)->isEnabled(), button);
            QVERIFY(bar->isVisible() && cancel->isVisible());
            // Shown ten times a second of the readout, not for every record.
            QCOMPARE(bar->maximum(), 401);
            QVERIFY2(bar->value() > 100 && bar->value() <= 200, qPrintable(bar->text()));
            QCOMPARE(bar->text(), QString("%1 / 401").arg(bar->value()));
            QVERIFY2(p.label("lbl_compliancetime").startsWith("Time left: 0:"),
                     qPrintable(p.label("lbl_compliancetime")));
            QCOMPARE(p.label("lbl_compliancenote"), "Live values paused");
            cancel->click();
        };
        for (int i = 0; i < 20; ++i)
            p.tick();
        QVERIFY(looked);
        QCOMPARE(p.received.count('k'), 201);
        QCOMPARE(m.readout.phase(), progress::Phase::cancelled);
        QVERIFY(m.records[199] != compliance::ComplianceRecord{});
        QVERIFY(m.records[200] == compliance::ComplianceRecord{});
        QCOMPARE(p.label("lbl_compliancenote"), "Records read: 200");
        QVERIFY(p.get<QLabel>("lbl_compliancenote")->isVisible());
        QVERIFY(!bar->isVisible() && !cancel->isVisible());
        QVERIFY(read->isEnabled());
        QVERIFY(!p.get("cmd_complianceprint")->isEnabled());
        QVERIFY(!p.get("cmd_compliancesave")->isEnabled());
        QVERIFY(!p.get<QLabel>("l_recordnumber")->isVisible());
        QVERIFY(!m.state.has_data && p.label("l_compliancesummary").isEmpty());

        // Read again from the start, to the end.
        p.clock.on_wait = nullptr;
        p.received.clear();
        read->click();
        for (int i = 0; i < 2000 && !m.state.has_data; ++i)
            p.tick();
        QCOMPARE(p.received.count('K'), 1);
        QCOMPARE(m.state.last_index, 400);
    }
};

QTEST_MAIN(TestPageCompliance)
#include "test_page_compliance.moc"
