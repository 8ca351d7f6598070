// The "Compliance" page in the window, offscreen: its buttons follow the
// usage memory, the picture box draws the chart and redraws at a new size,
// and the month summary sits under it.

#include "app_context.h"
#include "compliance/compliance_print.h"
#include "fake_link.h"
#include "frm_main.h"
#include "manual_clock.h"
#include "pages.h"

#include <QImage>
#include <QLabel>
#include <QLineEdit>
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
};

QTEST_MAIN(TestPageCompliance)
#include "test_page_compliance.moc"
