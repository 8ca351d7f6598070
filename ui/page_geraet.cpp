// The "Gerät" page: identity and settings, live values, valve and alarm
// lamps, the valve timing selectors with their presets, and the live diagram.

#include "controls.h"
#include "device/settings.h"
#include "device/timing_presets.h"
#include "live_chart.h"
#include "pages.h"

#include <QComboBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QLocale>
#include <QPushButton>
#include <QVBoxLayout>

namespace veltrako::ui {

namespace {

// Entry k of a selector stands for the byte value k. A selector takes the
// focus from a click or the keyboard, not from the wheel turned over it.
void fill_timing_list(QComboBox* box) {
    box->addItems(device::timing_entries(QLocale()));
    box->setFocusPolicy(Qt::StrongFocus);
}

void fill_flow_list(QComboBox* box) {
    box->addItems(device::flow_selector_entries());
    box->setFocusPolicy(Qt::StrongFocus);
}

QGroupBox* identity_frame() {
    QGroupBox* frame = make_frame(QStringLiteral("frm_geraet"), 11010, QStringLiteral("Gerät"));
    auto* grid = new QGridLayout(frame);
    int row = 0;
    const auto add = [&](const QString& label_name, int tag, const QString& caption,
                         const QString& box_name, bool read_only, QWidget* b1 = nullptr,
                         QWidget* b2 = nullptr) {
        grid->addWidget(make_label(label_name, tag, caption), row, 0);
        QLineEdit* box = make_box(box_name, read_only);
        // A full date and time fits, in any language's short form.
        fit_to_text(box, QStringLiteral("88.88.8888 88:88:88"));
        grid->addWidget(box, row, 1);
        // A single button spans both button columns: the two narrow ones of
        // the hours set their width, not the widest caption.
        if (b1)
            grid->addWidget(b1, row, 2, 1, b2 ? 1 : 2);
        if (b2)
            grid->addWidget(b2, row, 3);
        ++row;
    };
    add(QStringLiteral("lbl_sn"), 11011, QStringLiteral("Seriennummer"), QStringLiteral("t_sn"),
        false, make_button(QStringLiteral("cmd_setsn"), 11012, QStringLiteral("Setzen")));
    add(QStringLiteral("lbl_lp"), 11013, QStringLiteral("LP-Nummer"), QStringLiteral("t_lp"), true,
        make_button(QStringLiteral("cmd_togglelp"), 11014, QStringLiteral("Low Power ein/aus")));
    add(QStringLiteral("lbl_sw"), 11015, QStringLiteral("Software"), QStringLiteral("t_sw"), true);
    add(QStringLiteral("lbl_bstd"), 11016, QStringLiteral("Betriebsstunden"),
        QStringLiteral("t_bstd"), true,
        make_button(QStringLiteral("cmd_resetbstd"), 11017, QStringLiteral("Zurücksetzen")),
        make_button(QStringLiteral("cmd_setbstd"), 11018, QStringLiteral("Setzen")));
    add(QStringLiteral("lbl_Restzeit"), 11019, QStringLiteral("Restzeit"),
        QStringLiteral("t_Restzeit"), true,
        make_button(QStringLiteral("cmd_Restzeit"), 11020, QStringLiteral("Setzen")));
    add(QStringLiteral("lbl_datetime"), 11021, QStringLiteral("Datum/Uhrzeit"),
        QStringLiteral("t_datetime"), true,
        make_button(QStringLiteral("cmd_setdatetime"), 11022,
                    QStringLiteral("PC-Zeit übernehmen")));
    // Says when the device's clock is off the PC's, right under the button
    // that sets it; its text is made whenever the device record changes.
    auto* clock_note = new QLabel;
    clock_note->setObjectName(QStringLiteral("lbl_uhrabweichung"));
    clock_note->setWordWrap(true);
    clock_note->setStyleSheet(QStringLiteral("color: rgb(200, 0, 0); font-weight: bold;"));
    clock_note->hide();
    grid->addWidget(clock_note, row++, 0, 1, 4);
    const QString flow_captions[] = {QStringLiteral("Volumenstrom U"),
                                     QStringLiteral("Volumenstrom O")};
    for (int i = 0; i < 2; ++i) {
        QLabel* label = make_label(QStringLiteral("lbl_vs"), 11023 + i, flow_captions[i]);
        set_index(label, i);
        QComboBox* box = make_selector(QStringLiteral("cb_vs"), i);
        fill_flow_list(box);
        grid->addWidget(label, row, 0);
        grid->addWidget(box, row, 1);
        ++row;
    }
    // The serial-number button appears only while t_sn differs from the device.
    frame->findChild<QPushButton*>(QStringLiteral("cmd_setsn"))->hide();
    grid->setRowStretch(row, 1);
    return frame;
}

QGroupBox* values_frame() {
    QGroupBox* frame =
        make_frame(QStringLiteral("frm_messwerte"), 11025, QStringLiteral("Messwerte"));
    auto* grid = new QGridLayout(frame);
    // Each box is as wide as the widest value its field can take: the byte
    // and 16-bit ranges of the live status, which hold every value the
    // simulated families send (pressure up to 2200 hPa on the 7x family,
    // the speed of sound above 340 m/s, openings and sensors up to 100 %).
    struct Row {
        const char* label;
        int tag;
        const char* caption;
        const char* box;
        const char* widest;
    };
    static const Row rows[] = {
        {"lbl_o2", 11026, "O2 (%)", "t_o2", "888"},
        {"lbl_volumenstrom", 11027, "Volumenstrom (l/min)", "t_volumenstrom", "888.8"},
        {"lbl_sollvolumenstrom", 11028, "Soll-Volumenstrom (l/min)", "t_sollvolumenstrom", "888.8"},
        {"lbl_druck", 11029, "Druck (hPa)", "t_druck", "88888"},
        {"lbl_c", 11030, "Schallgeschwindigkeit (m/s)", "t_c", "8888.8"},
        // The compressor's temperature before the gas's: the longest
        // captions share the first column, which keeps the box narrow.
        {"lbl_kompressortemp", 11032, "Kompressortemperatur (°C)", "t_kompressortemp", "88888"},
        {"lbl_gastemp", 11031, "Gastemperatur (°C)", "t_gastemp", "-888.8"},
        {"lbl_spannung", 11033, "Spannung (V)", "t_spannung", "-888.8"},
        {"lbl_ventiloeffnung", 11034, "Ventilöffnung (%)", "t_ventiloeffnung", "888.8"},
        {"lbl_sensor1", 11035, "Sensor 1", "t_sensor1", "888.8"},
        {"lbl_sensor2", 11036, "Sensor 2", "t_sensor2", "888.8"},
    };
    // Two columns of six, so that the box sits under the identity and leaves
    // the height of the page to the diagram: the whole page fits 1024 x 768.
    constexpr int per_column = 6;
    int row = 0;
    for (const Row& r : rows) {
        const int column = row / per_column * 2;
        grid->addWidget(make_label(QLatin1String(r.label), r.tag, QString::fromUtf8(r.caption)),
                        row % per_column, column);
        QLineEdit* box = make_box(QLatin1String(r.box), true);
        box->setAlignment(Qt::AlignRight);
        fit_to_text(box, QLatin1String(r.widest));
        grid->addWidget(box, row % per_column, column + 1);
        ++row;
    }
    grid->addWidget(make_label(QStringLiteral("lbl_Phasetext"), 11037, QStringLiteral("Phase")),
                    row % per_column, 2);
    QLabel* phase = make_label(QStringLiteral("lbl_Phase"), 0, QString());
    // Framed like the value boxes above it, and as high.
    phase->setFrameShape(QFrame::Box);
    phase->setFrameShadow(QFrame::Plain);
    phase->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    phase->setMargin(2);
    phase->setMinimumHeight(QLineEdit().sizeHint().height());
    fit_to_text(phase, QStringLiteral("888"));
    grid->addWidget(phase, row % per_column, 3);
    grid->setRowStretch(per_column, 1);
    // Room the window grows by goes to the captions; the boxes keep their width.
    grid->setColumnStretch(0, 1);
    grid->setColumnStretch(2, 1);
    return frame;
}

QLabel* acoustic_picture(const QString& name) {
    QLabel* pic = make_lamp(name, 0, QString());
    // Room for the note it shows while the alarm sounds, in whatever face
    // the desktop draws that sign with.
    QLabel note(QString(QChar(0x266A)));
    note.setFrameShape(QFrame::Box);
    pic->setFixedSize(note.sizeHint().expandedTo(QSize(18, 18)));
    pic->setCursor(Qt::PointingHandCursor);
    return pic;
}

QGroupBox* valves_frame() {
    QGroupBox* valves = make_frame(QStringLiteral("frm_ventile"), 11038, QStringLiteral("Ventile"));
    auto* vgrid = new QGridLayout(valves);
    const char* valve_names[] = {"lbl_VentilE1", "lbl_VentilE2", "lbl_VentilA1", "lbl_VentilA2",
                                 "lbl_VentilSP"};
    const char* valve_captions[] = {"E1", "E2", "A1", "A2", "SP"};
    // Two rows, so that the box is no wider than the alarms above it.
    for (int i = 0; i < 5; ++i)
        vgrid->addWidget(
            make_lamp(QLatin1String(valve_names[i]), 11039 + i, QLatin1String(valve_captions[i])),
            i / 3, i % 3);
    return valves;
}

QGroupBox* alarms_frame() {
    QGroupBox* alarms = make_frame(QStringLiteral("frm_alarme"), 11044, QStringLiteral("Alarme"));
    auto* agrid = new QGridLayout(alarms);
    struct Alarm {
        const char* name;
        int tag;
        const char* caption;
        const char* picture;
    };
    static const Alarm rows[] = {
        {"lbl_AlarmT", 11045, "Temperatur", nullptr},
        {"lbl_AlarmO21", 11046, "O2 Alarm 1", "pic_akustO21"},
        {"lbl_AlarmO22", 11047, "O2 Alarm 2", "pic_akustO22"},
        {"lbl_AlarmRest", 11048, "Restzeit", nullptr},
        {"lbl_AlarmVollo", 11049, "Flow zu niedrig", "pic_akustvollo"},
        {"lbl_AlarmNetz", 11050, "Netzausfall", nullptr},
        {"lbl_AlarmSens", 11051, "Sensorfehler", nullptr},
        {"lbl_AlarmVolhi", 11052, "Flow zu hoch", nullptr},
    };
    int row = 0;
    for (const Alarm& a : rows) {
        agrid->addWidget(make_lamp(QLatin1String(a.name), a.tag, QString::fromUtf8(a.caption)), row,
                         0);
        if (a.picture)
            agrid->addWidget(acoustic_picture(QLatin1String(a.picture)), row, 1);
        ++row;
    }
    agrid->setRowStretch(row, 1);
    return alarms;
}

QGroupBox* alarm_level_frame() {
    QGroupBox* level =
        make_frame(QStringLiteral("frm_alarmstufe"), 11053, QStringLiteral("Alarmstufe"));
    auto* lgrid = new QGridLayout(level);
    lgrid->addWidget(make_lamp(QStringLiteral("lbl_Alarmlow"), 11054, QStringLiteral("niedrig")), 0,
                     0);
    lgrid->addWidget(make_lamp(QStringLiteral("lbl_Alarmmid"), 11055, QStringLiteral("mittel")), 0,
                     1);
    lgrid->addWidget(make_lamp(QStringLiteral("lbl_Alarmhigh"), 11056, QStringLiteral("hoch")), 0,
                     2);
    return level;
}

QGroupBox* timings_frame() {
    QGroupBox* frame = make_frame(QStringLiteral("frmZeiten"), 11057, QStringLiteral("Zeiten"));
    auto* grid = new QGridLayout(frame);
    const char* captions[] = {"Vorlauf (s)",     "1-Länge (s)",  "2-Länge (s)",    "1-öffnen (s)",
                              "1-schließen (s)", "2-öffnen (s)", "2-schließen (s)"};
    for (int i = 0; i < 14; ++i) {
        if (i < 7) {
            QLabel* label =
                make_label(QStringLiteral("lbl_t"), 11058 + i, QString::fromUtf8(captions[i]));
            set_index(label, i);
            grid->addWidget(label, i, 0);
        }
        QComboBox* box = make_selector(QStringLiteral("cb_t"), i);
        fill_timing_list(box);
        // Indexes 7 to 13 have no caption; they stand in a second column.
        grid->addWidget(box, i < 7 ? i : i - 7, i < 7 ? 1 : 2);
    }
    grid->addWidget(
        make_button(QStringLiteral("cmd_t_reset"), 11065, QStringLiteral("Werkseinstellung")), 7, 0,
        1, 3);

    QGroupBox* presets =
        make_frame(QStringLiteral("frm_zeiten_preset"), 11066, QStringLiteral("Voreinstellungen"));
    auto* pgrid = new QGridLayout(presets);
    pgrid->addWidget(make_label(QStringLiteral("lblkl2l"), 11067, QStringLiteral("<2l")), 0, 0);
    pgrid->addWidget(make_label(QStringLiteral("lblgr2l"), 11068, QStringLiteral(">=2l")), 0, 2);
    for (int n = 1; n <= 3; ++n) {
        // The captions come from the preset files once the device family is known.
        QPushButton* button =
            make_button(QStringLiteral("cmdPresetZeiten"), 0, QStringLiteral("---"));
        set_index(button, n);
        button->setEnabled(false);
        pgrid->addWidget(button, 1, n - 1);
    }
    grid->addWidget(presets, 8, 0, 1, 3);
    grid->setRowStretch(9, 1);
    return frame;
}

} // namespace

QWidget* build_page_geraet() {
    // Every box fits a 1024 x 768 screen without scrolling, in every language
    // and for every model, whichever sans-serif face the desktop has. Left:
    // the identity and the measured values under it; right: the lamps (the
    // alarms, the valves, the alarm level) and the timings, and under them
    // the diagram, which takes all the room the window grows by.
    auto* page = new QWidget;
    page->setObjectName(QStringLiteral("page_geraet"));
    auto* columns = new QHBoxLayout(page);
    auto* left = new QVBoxLayout;
    left->addWidget(identity_frame());
    left->addWidget(values_frame());
    left->addStretch(1);
    columns->addLayout(left);
    auto* right = new QVBoxLayout;
    auto* boxes = new QHBoxLayout;
    auto* lamps = new QVBoxLayout;
    lamps->addWidget(alarms_frame());
    lamps->addWidget(valves_frame());
    lamps->addWidget(alarm_level_frame());
    lamps->addStretch(1);
    boxes->addLayout(lamps);
    boxes->addWidget(timings_frame());
    boxes->addStretch(1);
    right->addLayout(boxes);
    right->addWidget(new LiveChart, 1);
    columns->addLayout(right, 1);
    return page;
}

} // namespace veltrako::ui
