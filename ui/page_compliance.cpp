// The "Compliance" page: readout buttons, the monthly usage chart and the
// month's compliance duration.

#include "controls.h"
#include "pages.h"

#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace veltrako::ui {

QWidget* build_page_compliance() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("page_compliance"));
    auto* layout = new QHBoxLayout(page);

    auto* buttons = new QVBoxLayout;
    struct Button {
        const char* name;
        int tag;
        const char* caption;
    };
    static const Button all[] = {
        {"cmd_complianceread", 11095, "Speicher auslesen"},
        {"cmd_compliancedelete", 11096, "Speicher löschen"},
        {"cmd_compliancesave", 11097, "Speichern"},
        {"cmd_complianceload", 11098, "Laden"},
        {"cmd_complianceprint", 11099, "Drucken"},
        {"cmd_compliance_test", 11100, "Testdaten"},
    };
    for (const Button& b : all)
        buttons->addWidget(make_button(QLatin1String(b.name), b.tag, QString::fromUtf8(b.caption)));
    buttons->addSpacing(12);
    buttons->addWidget(make_label(QStringLiteral("lbl_compliancedauer"), 11101,
                                  QStringLiteral("Compliance-Dauer (h)")));
    QLineEdit* hours = make_box(QStringLiteral("t_compliancedauer"), true);
    hours->setAlignment(Qt::AlignRight);
    buttons->addWidget(hours);
    auto* months = new QHBoxLayout;
    months->addWidget(make_button(QStringLiteral("cmd_prevmonth"), 0, QStringLiteral("<<")));
    months->addWidget(make_button(QStringLiteral("cmd_nextmonth"), 0, QStringLiteral(">>")));
    buttons->addLayout(months);
    QLabel* record =
        make_label(QStringLiteral("l_recordnumber"), 11102, QStringLiteral("Record Nr.:"));
    record->hide(); // visible only while a readout runs
    buttons->addWidget(record);
    buttons->addStretch(1);
    layout->addLayout(buttons);

    // Picture box of the monthly chart; it grows with the window.
    auto* chart = new QFrame;
    chart->setObjectName(QStringLiteral("p_compliance"));
    chart->setFrameShape(QFrame::Box);
    chart->setAutoFillBackground(true);
    QPalette p = chart->palette();
    p.setColor(QPalette::Window, Qt::white);
    chart->setPalette(p);
    chart->setMinimumSize(300, 200);
    layout->addWidget(chart, 1);
    return page;
}

} // namespace veltrako::ui
