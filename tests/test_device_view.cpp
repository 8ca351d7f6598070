// The live page's rules, headless: value texts in the user's locale, valve
// and alarm colours for both layouts and alarm sources, the alarm levels,
// the low-power button, the blanked page and the model-dependent controls.

#include "device/device_record.h"
#include "device/device_view.h"

#include <QTest>

using namespace veltrako::device;

namespace {

// One character per control: r red, g green, w white, u unchanged.
QString shades(const DeviceTabView& view, const QStringList& controls) {
    QString s;
    for (const QString& c : controls) {
        switch (view.shade(c)) {
        case Shade::red:
            s += 'r';
            break;
        case Shade::green:
            s += 'g';
            break;
        case Shade::white:
            s += 'w';
            break;
        case Shade::unchanged:
            s += 'u';
            break;
        }
    }
    return s;
}

DeviceRecord live_record() {
    DeviceRecord r;
    r.live_valid = true;
    return r;
}

const QLocale german(QLocale::German, QLocale::Germany);
const QLocale english(QLocale::English, QLocale::UnitedStates);

const QStringList valve_labels{"lbl_VentilE1", "lbl_VentilE2", "lbl_VentilA1", "lbl_VentilA2",
                               "lbl_VentilSP"};
const QStringList alarm_labels{"lbl_AlarmT",     "lbl_AlarmO21",  "lbl_AlarmO22",  "lbl_AlarmRest",
                               "lbl_AlarmVollo", "lbl_AlarmNetz", "lbl_AlarmSens", "lbl_AlarmVolhi",
                               "pic_akustO21",   "pic_akustO22",  "pic_akustvollo"};
const QStringList level_labels{"lbl_Alarmlow", "lbl_Alarmmid", "lbl_Alarmhigh"};

} // namespace

class TestDeviceView : public QObject {
    Q_OBJECT
private slots:
    void valves_data() {
        QTest::addColumn<bool>("second_layout");
        QTest::addColumn<int>("ventile");
        QTest::addColumn<QString>("expected"); // E1 E2 A1 A2 SP
        QTest::newRow("first layout, all clear: inlet E1 open") << false << 0 << "rwwwu";
        QTest::newRow("first layout, bit 1 switches to E2") << false << 1 << "wrwwu";
        QTest::newRow("first layout, A1 and A2") << false << 6 << "rwrru";
        QTest::newRow("first layout ignores higher bits") << false << 0xF8 << "rwwwu";
        QTest::newRow("second layout, all clear") << true << 0 << "wwwww";
        QTest::newRow("second layout, bit 1 unused") << true << 1 << "wwwww";
        QTest::newRow("second layout, A2") << true << 2 << "wwwrw";
        QTest::newRow("second layout, E1") << true << 4 << "rwwww";
        QTest::newRow("second layout, E2") << true << 8 << "wrwww";
        QTest::newRow("second layout, A1") << true << 16 << "wwrww";
        QTest::newRow("second layout, SP") << true << 32 << "wwwwr";
        QTest::newRow("second layout, all") << true << 0x3E << "rrrrr";
    }
    void valves() {
        QFETCH(bool, second_layout);
        QFETCH(int, ventile);
        QFETCH(QString, expected);
        DeviceRecord r = live_record();
        r.valve_layout = second_layout;
        r.ventile = static_cast<std::uint8_t>(ventile);
        QCOMPARE(shades(make_device_tab_view(r, english), valve_labels), expected);
    }

    void alarms_data() {
        QTest::addColumn<bool>("o22_source");
        QTest::addColumn<int>("alarme");
        QTest::addColumn<int>("alarme2");
        // T O21 O22 Rest Vollo Netz Sens Volhi, pictures O21 O22 vollo
        QTest::addColumn<QString>("expected");
        QTest::newRow("none") << false << 0 << 0
                              << "gggugggg"
                                 "ggg";
        QTest::newRow("0x81: T and Volhi") << false << 0x81 << 0
                                           << "rggugggr"
                                              "ggg";
        QTest::newRow("O21 with its picture") << false << 0x02 << 0
                                              << "grgugggg"
                                                 "rgg";
        QTest::newRow("O22 with its picture") << false << 0x04 << 0
                                              << "ggrugggg"
                                                 "grg";
        QTest::newRow("Vollo with its picture") << false << 0x08 << 0
                                                << "gggurggg"
                                                   "ggr";
        QTest::newRow("Netz") << false << 0x10 << 0
                              << "gggugrgg"
                                 "ggg";
        QTest::newRow("Netz, Sens") << false << 0x30 << 0
                                    << "gggugrrg"
                                       "ggg";
        QTest::newRow("bit 64 has no label") << false << 0x40 << 0
                                             << "gggugggg"
                                                "ggg";
        QTest::newRow("alarme2 ignored") << false << 0 << 0x04
                                         << "gggugggg"
                                            "ggg";
        QTest::newRow("o22 source: bit 4 is Rest") << true << 0x04 << 0
                                                   << "gggrgggg"
                                                      "gug";
        QTest::newRow("o22 source: O22 from alarme2") << true << 0 << 0x04
                                                      << "ggrggggg"
                                                         "gug";
        QTest::newRow("o22 source: other alarme2 bits") << true << 0 << 0xFB
                                                        << "gggggggg"
                                                           "gug";
        QTest::newRow("o22 source: all") << true << 0xFF << 0x04
                                         << "rrrrrrrr"
                                            "rur";
    }
    void alarms() {
        QFETCH(bool, o22_source);
        QFETCH(int, alarme);
        QFETCH(int, alarme2);
        QFETCH(QString, expected);
        DeviceRecord r = live_record();
        r.o22_source = o22_source;
        r.alarme = static_cast<std::uint8_t>(alarme);
        r.alarme2 = static_cast<std::uint8_t>(alarme2);
        QCOMPARE(shades(make_device_tab_view(r, english), alarm_labels), expected);
    }

    void alarm_levels_data() {
        QTest::addColumn<bool>("o22_source");
        QTest::addColumn<int>("level");
        QTest::addColumn<QString>("expected"); // low mid high
        QTest::newRow("three labels, 0") << false << 0 << "ggg";
        QTest::newRow("three labels, 1") << false << 1 << "rgg";
        QTest::newRow("three labels, 2") << false << 2 << "grg";
        QTest::newRow("three labels, 3") << false << 3 << "ggr";
        QTest::newRow("three labels, 200") << false << 200 << "ggr";
        QTest::newRow("two labels, 0") << true << 0 << "ugg";
        QTest::newRow("two labels, 1") << true << 1 << "urg";
        QTest::newRow("two labels, 2") << true << 2 << "ugr";
        QTest::newRow("two labels, 3 leaves both") << true << 3 << "uuu";
        QTest::newRow("two labels, 255 leaves both") << true << 255 << "uuu";
    }
    void alarm_levels() {
        QFETCH(bool, o22_source);
        QFETCH(int, level);
        QFETCH(QString, expected);
        DeviceRecord r = live_record();
        r.o22_source = o22_source;
        r.alarmstufe = static_cast<std::uint8_t>(level);
        QCOMPARE(shades(make_device_tab_view(r, english), level_labels), expected);
    }

    void low_power_button_data() {
        QTest::addColumn<QString>("lp");
        QTest::addColumn<bool>("enabled");
        QTest::newRow("12344") << "12344" << true;
        QTest::newRow("12345") << "12345" << true;
        QTest::newRow("12346") << "12346" << false;
        QTest::newRow("4") << "4" << false;
        QTest::newRow("empty") << "" << false;
        QTest::newRow("long board number") << "ABCD5FGHIJKL" << true;
    }
    void low_power_button() {
        QFETCH(QString, lp);
        QFETCH(bool, enabled);
        DeviceRecord r = live_record();
        r.LP = lp;
        QCOMPARE(make_device_tab_view(r, english).togglelp_enabled, enabled);
    }

    void value_texts_data() {
        QTest::addColumn<QLocale>("locale");
        QTest::addColumn<QString>("control");
        QTest::addColumn<QString>("expected");
        // The record filled in value_texts(): every box, in two locales.
        const QList<std::pair<const char*, std::pair<const char*, const char*>>> rows = {
            {"t_c", {"343,3", "343.3"}},
            {"t_druck", {"1013", "1013"}},
            {"t_gastemp", {"37,3", "37.3"}},
            {"t_kompressortemp", {"46", "46"}},
            {"t_o2", {"95", "95"}},
            {"t_sensor1", {"12,5", "12.5"}},
            {"t_sensor2", {"0,0", "0.0"}},
            {"t_spannung", {"24,0", "24.0"}},
            {"t_ventiloeffnung", {"100,0", "100.0"}},
            {"t_volumenstrom", {"0,3", "0.3"}},
            {"t_sollvolumenstrom", {"2,0", "2.0"}},
            {"t_bstd", {"001234:50", "001234:50"}},
            {"t_Restzeit", {"999", "999"}},
            {"t_lp", {"12345", "12345"}},
            {"t_sn", {"SN 0815", "SN 0815"}},
            {"t_sw", {"7012", "7012"}},
            {"t_datetime", {"02.03.2026 14:05:09", "3/2/2026 14:05:09"}},
            {"lbl_Phase", {"7", "7"}},
        };
        for (const auto& [control, texts] : rows) {
            QTest::addRow("de %s", control) << german << QString(control) << QString(texts.first);
            QTest::addRow("en %s", control) << english << QString(control) << QString(texts.second);
        }
    }
    void value_texts() {
        QFETCH(QLocale, locale);
        QFETCH(QString, control);
        QFETCH(QString, expected);
        DeviceRecord r = live_record();
        r.schall = 343.25; // halves round away from zero
        r.druck = 1013;    // no group separator
        r.GASTEMP = 37.25;
        r.KOMPRESSORTEMP = 45.5;
        r.O2 = 94.5;
        r.sensor1 = 28 / 2.24;
        r.sensor2 = -0.04; // no "-0,0"
        r.spannung = 820 * 24 / 820.0;
        r.ventiloeffnung = 255 / 2.55;
        r.VOLUMENSTROM = 20 * 0.0125;
        r.SOLL_VOLUMENSTROM = 160 * 0.0125;
        r.BSTD = "001234:50";
        r.rest_text = "999";
        r.LP = "12345";
        r.SN = "SN 0815";
        r.SW = "7012";
        r.geraetezeit = QDateTime(QDate(2026, 3, 2), QTime(14, 5, 9), Qt::UTC);
        r.phase = 7;
        const DeviceTabView view = make_device_tab_view(r, locale);
        QVERIFY(view.has_text(control));
        QCOMPARE(view.text(control), expected);
    }

    void zero_date_shows_empty() {
        DeviceRecord r = live_record();
        const DeviceTabView view = make_device_tab_view(r, german);
        QVERIFY(view.has_text("t_datetime"));
        QCOMPARE(view.text("t_datetime"), QString());
        // Numbers of an empty record show as zero, texts as empty.
        QCOMPARE(view.text("t_o2"), QString("0"));
        QCOMPARE(view.text("t_c"), QString("0,0"));
        QCOMPARE(view.text("t_sn"), QString());
    }

    void rows_are_written_in_table_order() {
        const DeviceTabView view = make_device_tab_view(live_record(), english);
        QStringList order;
        for (const TextRow& row : view.texts)
            order << row.control;
        QCOMPARE(order, (QStringList{"t_bstd", "t_Restzeit", "t_datetime", "t_c", "t_druck",
                                     "t_gastemp", "t_kompressortemp", "t_lp", "t_o2", "t_sensor1",
                                     "t_sensor2", "t_sn", "t_spannung", "t_sw", "t_ventiloeffnung",
                                     "t_volumenstrom", "t_sollvolumenstrom", "lbl_Phase"}));
    }

    void selectors_follow_the_record() {
        DeviceRecord r = live_record();
        for (std::size_t i = 0; i < r.zeiten.size(); ++i)
            r.zeiten[i] = static_cast<std::uint8_t>(10 * i + 1);
        r.wert_u = 3;
        r.wert_o = 250;
        const DeviceTabView view = make_device_tab_view(r, english);
        for (std::size_t i = 0; i < r.zeiten.size(); ++i)
            QCOMPARE(view.timing_positions[i], int(10 * i + 1));
        QCOMPARE(view.flow_positions[0], 3);
        QCOMPARE(view.flow_positions[1], 250);
    }

    void blanked_without_live_status() {
        DeviceRecord r;
        r.live_valid = false;
        r.SN = "SN 0815";
        r.O2 = 93;
        r.phase = 4;
        r.ventile = 0x3F;
        r.alarme = 0xFF;
        r.alarmstufe = 1;
        r.LP = "12345";
        const DeviceTabView view = make_device_tab_view(r, german);
        QVERIFY(view.blank);
        QCOMPARE(view.texts.size(), value_box_names().size());
        for (const TextRow& row : view.texts)
            QVERIFY2(row.text.isEmpty(), qPrintable(row.control));
        QVERIFY(!view.has_text("lbl_Phase"));
        QCOMPARE(view.shades.size(), shaded_control_names().size());
        for (const ShadeRow& row : view.shades)
            QVERIFY2(row.shade == Shade::white, qPrintable(row.control));
    }

    void model_controls_data() {
        QTest::addColumn<QString>("family");
        QTest::addColumn<QString>("sw");
        // SP-valve, Rest alarm, low level, acoustic, acoustic O22, flow selectors, timings 7-13
        QTest::addColumn<QString>("shown");
        QTest::newRow("old family 21") << "21"
                                       << "212"
                                       << "0010001";
        QTest::newRow("family 50") << "50"
                                   << "501"
                                   << "0011100";
        QTest::newRow("family 51 has flow selectors") << "51"
                                                      << "7112"
                                                      << "0011110";
        QTest::newRow("family 66: O22 from alarme2") << "66"
                                                     << "661"
                                                     << "0101010";
        QTest::newRow("family 7F: second valve layout") << "7F"
                                                        << "7F1"
                                                        << "1101010";
    }
    void model_controls() {
        QFETCH(QString, family);
        QFETCH(QString, sw);
        QFETCH(QString, shown);
        DeviceRecord r = live_record();
        r.family_code = family;
        r.SW = sw;
        detect_device_type(r);
        const ModelControls m = make_device_tab_view(r, english).model;
        const bool flags[] = {m.valve_sp,     m.alarm_rest,     m.alarm_low,    m.acoustic,
                              m.acoustic_o22, m.flow_selectors, m.extra_timings};
        QString got;
        for (bool f : flags)
            got += f ? '1' : '0';
        QCOMPARE(got, shown);
    }
};

QTEST_GUILESS_MAIN(TestDeviceView)
#include "test_device_view.moc"
