// The "Protokoll" page: the safety inspection report with its device-data
// picture and the save/open/print buttons.

#include "controls.h"
#include "measurement_box.h"
#include "pages.h"
#include "report_page.h"

#include <QCheckBox>
#include <QFrame>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace veltrako::ui {

namespace {

QFont heading_font() {
    QFont f;
    f.setBold(true);
    return f;
}

QPlainTextEdit* make_text_area(const QString& name) {
    auto* area = new QPlainTextEdit;
    area->setObjectName(name);
    area->setMinimumHeight(50);
    area->setMaximumHeight(70);
    return area;
}

// The patient, insurer and inspection fields, one under the other.
QGridLayout* person_fields() {
    auto* grid = new QGridLayout;
    grid->setVerticalSpacing(4);
    struct Row {
        const char* label;
        int tag;
        const char* caption;
        const char* box;
    };
    static const Row rows[] = {
        {"lbl_krankenkasse", 11073, "Krankenkasse", "t_krankenkasse"},
        {"lbl_patient", 11074, "Patient", "t_patient"},
        {"lbl_strasse", 11075, "Straße", "t_strasse"},
        {"lbl_Ort", 11076, "Ort", "t_Ort"},
        {"lbl_Telefon", 11077, "Telefon", "t_Telefon"},
        {"lbl_pruefer", 11078, "Prüfer", "t_pruefer"},
        {"lbl_Datum", 11079, "Datum", "t_Datum"},
        {"lbl_Uhrzeit", 11080, "Uhrzeit", "t_Uhrzeit"},
    };
    int row = 0;
    for (const Row& r : rows) {
        grid->addWidget(make_label(QLatin1String(r.label), r.tag, QString::fromUtf8(r.caption)),
                        row, 0);
        grid->addWidget(make_box(QLatin1String(r.box), false), row, 1);
        ++row;
    }
    grid->setRowStretch(row, 1);
    return grid;
}

// The functional test and the maker's checks, one column beside the fields.
QVBoxLayout* checks() {
    auto* column = new QVBoxLayout;
    column->setSpacing(3);
    QLabel* test =
        make_label(QStringLiteral("lbl_Funktionstest"), 11071, QStringLiteral("Funktionstest"));
    test->setFont(heading_font());
    column->addWidget(test);
    struct Check {
        const char* name;
        int tag;
        const char* caption;
    };
    static const Check tests[] = {
        {"ck_Selbsttest", 11081, "Selbsttest, alle Funktionen vorhanden"},
        {"ck_Ansaugtest", 11082, "Ansaugtest Kompressor"},
        {"ck_maxflow", 11083, "maximaler Flow"},
        {"ck_minflow", 11084, "minimaler Flow"},
        {"ck_Leistung", 11085, "Leistungsaufnahme"},
        {"ck_visuell", 11087, "visuelle Kontrolle"},
    };
    for (const Check& c : tests)
        column->addWidget(make_check(QLatin1String(c.name), c.tag, QString::fromUtf8(c.caption)));

    QLabel* maker =
        make_label(QStringLiteral("lbl_Hersteller"), 11072, QStringLiteral("nur Hersteller"));
    maker->setFont(heading_font());
    column->addWidget(maker);
    column->addWidget(make_check(QStringLiteral("ck_Typenschild"), 11086,
                                 QStringLiteral("Typenschild anbringen")));
    column->addWidget(
        make_check(QStringLiteral("ck_stk"), 11088, QStringLiteral("STK durchgeführt")));
    column->addStretch(1);
    return column;
}

// Remarks and accessories side by side, each under its caption.
QHBoxLayout* remarks() {
    auto* row = new QHBoxLayout;
    const auto area = [](const char* label, int tag, const char* caption, const char* name) {
        auto* column = new QVBoxLayout;
        column->setSpacing(2);
        column->addWidget(make_label(QLatin1String(label), tag, QString::fromUtf8(caption)));
        column->addWidget(make_text_area(QLatin1String(name)));
        return column;
    };
    row->addLayout(area("lbl_bemerkungen", 11089, "Bemerkungen", "t_bemerkungen"));
    row->addLayout(area("lbl_zubehoer", 11090, "ausgeliefertes Zubehör", "t_zubehoer"));
    return row;
}

// Everything typed into the report: the fields beside the checks, under
// them the measured values, then the remarks.
QWidget* report_fields() {
    auto* fields = new QWidget;
    auto* layout = new QVBoxLayout(fields);
    layout->setContentsMargins(0, 0, 0, 0);
    auto* top = new QHBoxLayout;
    top->addLayout(person_fields(), 1);
    top->addSpacing(8);
    top->addLayout(checks());
    layout->addLayout(top);
    layout->addWidget(build_measurement_box());
    layout->addLayout(remarks());
    layout->addStretch(1);
    return fields;
}

QWidget* device_data() {
    auto* column = new QWidget;
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    QLabel* heading =
        make_label(QStringLiteral("lbl_geraetedaten"), 11070, QStringLiteral("Gerätedaten"));
    heading->setFont(heading_font());
    layout->addWidget(heading);
    // Says when the report on the page is of another device than the one
    // connected; its text is made when a report is shown.
    auto* other_device = new QLabel;
    other_device->setObjectName(QStringLiteral("lbl_anderes_geraet"));
    other_device->setWordWrap(true);
    other_device->setStyleSheet(QStringLiteral("color: rgb(200, 0, 0); font-weight: bold;"));
    other_device->hide();
    layout->addWidget(other_device);
    // Picture box for the snapshot of the device data; drawn by the report.
    auto* picture = new DeviceDataPicture;
    picture->setObjectName(QStringLiteral("p_geraetedaten"));
    picture->setFrameShape(QFrame::Box);
    picture->setAutoFillBackground(true);
    QPalette p = picture->palette();
    p.setColor(QPalette::Window, Qt::white);
    picture->setPalette(p);
    picture->setMinimumSize(260, 300);
    layout->addWidget(picture, 1);

    auto* buttons = new QGroupBox;
    buttons->setObjectName(QStringLiteral("frm_protokoll"));
    auto* row = new QHBoxLayout(buttons);
    row->addWidget(make_button(QStringLiteral("cmd_save"), 11091, QStringLiteral("Speichern")));
    row->addWidget(make_button(QStringLiteral("cmd_open"), 11092, QStringLiteral("Öffnen")));
    row->addWidget(make_button(QStringLiteral("cmd_print"), 11093, QStringLiteral("Drucken")));
    layout->addWidget(buttons);
    return column;
}

} // namespace

QWidget* build_page_protokoll() {
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("page_protokoll"));
    auto* layout = new QHBoxLayout(page);
    layout->addWidget(report_fields(), 2);
    layout->addWidget(device_data(), 1);
    return page;
}

} // namespace veltrako::ui
