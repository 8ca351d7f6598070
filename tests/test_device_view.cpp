// The live page's rules, headless: valve, alarm and alarm-level colours
// (r red, g green, w white, u unchanged) for both valve layouts and alarm
// sources, the low-power button, value texts in the user's locale and the
// model-dependent controls. The blanked page is the window's work and is
// checked on the window.

#include "config/language.h"
#include "device/device_record.h"
#include "device/device_view.h"
#include "device/parameter_values.h"
#include "table.h"

using namespace veltrako::device;
using veltrako::testing::Table;

namespace {

DeviceRecord live_record() {
    DeviceRecord r;
    r.live_valid = true;
    return r;
}

const QLocale german(QLocale::German, QLocale::Germany);
using Shades = Table<int, int, int, int, int, QString>;
using Models = Table<QString, QString, QString>;

} // namespace

class TestDeviceView : public QObject {
    Q_OBJECT
private slots:
    void shades_data() {
        // Source 1: second valve layout, 2: O22 from alarme2. Expected in the
        // order of the controls in shades().
        Shades row;
        row("all clear: inlet E1 open", 0, 0, 0, 0, 0, "rwwwu gggugggg ggg ggg");
        row("E2; T, Volhi; level 1", 0, 1, 0x81, 0, 1, "wrwwu rggugggr rgg ggg");
        row("A1, A2; O21; level 2", 0, 6, 0x02, 0, 2, "rwrru grgugggg grg rgg");
        row("higher valve bits; O22; level 3", 0, 0xF8, 0x04, 0, 3, "rwwwu ggrugggg ggr grg");
        row("Vollo, Netz, Sens, bit 64; level 200", 0, 0, 0x78, 0, 200, "rwwwu gggurrrg ggr ggr");
        row("alarme2 ignored", 0, 0, 0, 0x04, 0, "rwwwu gggugggg ggg ggg");
        row("second layout: bit 1 unused, A2", 1, 3, 0, 0, 0, "wwwrw gggugggg ggg ggg");
        row("second layout: E1", 1, 4, 0, 0, 0, "rwwww gggugggg ggg ggg");
        row("second layout: E2", 1, 8, 0, 0, 0, "wrwww gggugggg ggg ggg");
        row("second layout: A1", 1, 16, 0, 0, 0, "wwrww gggugggg ggg ggg");
        row("second layout: SP", 1, 32, 0, 0, 0, "wwwwr gggugggg ggg ggg");
        row("O22 source: bit 4 is Rest; level 0", 2, 0, 0x04, 0, 0, "rwwwu gggrgggg ugg gug");
        row("O22 source: O22 from alarme2; level 1", 2, 0, 0, 0x04, 1, "rwwwu ggrggggg urg gug");
        row("O22 source: other alarme2 bits; level 2", 2, 0, 0, 0xFB, 2, "rwwwu gggggggg ugr gug");
        row("O22 source: level 3 leaves the labels", 2, 0, 0, 0, 3, "rwwwu gggggggg uuu gug");
    }
    void shades() {
        const auto [source, ventile, alarme, alarme2, level, expected] = Shades::fetch();
        DeviceRecord r = live_record();
        r.valve_layout = source == 1;
        r.o22_source = source == 2;
        r.ventile = static_cast<std::uint8_t>(ventile);
        r.alarme = static_cast<std::uint8_t>(alarme);
        r.alarme2 = static_cast<std::uint8_t>(alarme2);
        r.alarmstufe = static_cast<std::uint8_t>(level);
        const DeviceTabView view = make_device_tab_view(r, QLocale::c(), QLocale::c());
        QString got;
        for (const char* c :
             {"lbl_VentilE1", "lbl_VentilE2", "lbl_VentilA1", "lbl_VentilA2", "lbl_VentilSP",
              "lbl_AlarmT", "lbl_AlarmO21", "lbl_AlarmO22", "lbl_AlarmRest", "lbl_AlarmVollo",
              "lbl_AlarmNetz", "lbl_AlarmSens", "lbl_AlarmVolhi", "lbl_Alarmlow", "lbl_Alarmmid",
              "lbl_Alarmhigh", "pic_akustO21", "pic_akustO22", "pic_akustvollo"}) {
            const Shade x = view.shade(c);
            got += x == Shade::red ? 'r' : x == Shade::green ? 'g' : x == Shade::white ? 'w' : 'u';
        }
        QCOMPARE(got, QString(expected).remove(' '));
    }

    void low_power_button_data() {
        Table<QString, bool> row;
        row("12344", "12344", true)("12345", "12345", true)("12346", "12346", false)("4", "4",
                                                                                     false);
    }
    void low_power_button() {
        const auto [lp, enabled] = Table<QString, bool>::fetch();
        DeviceRecord r = live_record();
        r.LP = lp;
        QCOMPARE(make_device_tab_view(r, QLocale::c(), QLocale::c()).togglelp_enabled, enabled);
    }

    void value_texts_data() {
        Table<bool, QString> row; // the texts in the order value_texts() lists the boxes
        row("filled", true,
            "001234:50|999|3/2/2026 14:05:09|343,3|1013|37,3|46|12345|95|12,5|0,0|SN 0815|24,0|"
            "7012|100,0|0,3|2,0|7");
        row("empty record, zero date", false, "|||0,0|0|0,0|0||0|0,0|0,0||0,0||0,0|0,0|0,0|0");
    }
    void value_texts() {
        const auto [filled, texts] = Table<bool, QString>::fetch();
        DeviceRecord r = live_record();
        if (filled) {
            r.BSTD = "001234:50";
            r.rest_text = "999";
            r.geraetezeit = QDateTime(QDate(2026, 3, 2), QTime(14, 5, 9), Qt::UTC);
            r.schall = 343.25; // halves round away from zero
            r.druck = 1013;    // no group separator
            r.GASTEMP = 37.25;
            r.KOMPRESSORTEMP = 45.5;
            r.LP = "12345";
            r.O2 = 94.5;
            r.sensor1 = 28 / 2.24;
            r.sensor2 = -0.04; // no "-0,0"
            r.SN = "SN 0815";
            r.spannung = 24;
            r.SW = "7012";
            r.ventiloeffnung = 255 / 2.55;
            r.VOLUMENSTROM = 20 * 0.0125;
            r.SOLL_VOLUMENSTROM = 160 * 0.0125;
            r.phase = 7;
        }
        // Numbers in the user's German locale, the clock in the program's
        // English: an English window on a German PC.
        const DeviceTabView view =
            make_device_tab_view(r, german, veltrako::config::language_locale("en"));
        QStringList got;
        for (const char* box :
             {"t_bstd", "t_Restzeit", "t_datetime", "t_c", "t_druck", "t_gastemp",
              "t_kompressortemp", "t_lp", "t_o2", "t_sensor1", "t_sensor2", "t_sn", "t_spannung",
              "t_sw", "t_ventiloeffnung", "t_volumenstrom", "t_sollvolumenstrom", "lbl_Phase"})
            got << view.text(box);
        QCOMPARE(got.join('|'), texts);
    }

    void model_controls_data() {
        // SP-valve, Rest alarm, low level, acoustic, acoustic O22, flow selectors, timings 7-13
        Models row;
        row("old family 21", "21", "212", "0010001");
        row("family 50", "50", "501", "0011100");
        row("family 51 has flow selectors", "51", "7112", "0011110");
        row("family 66: O22 from alarme2", "66", "661", "0101010");
        row("family 7F: second valve layout", "7F", "7F1", "1101010");
    }
    void model_controls() {
        const auto [family, sw, shown] = Models::fetch();
        DeviceRecord r = live_record();
        r.family_code = family;
        r.SW = sw;
        detect_device_type(r);
        const ModelControls m = make_device_tab_view(r, QLocale::c(), QLocale::c()).model;
        QString got;
        for (bool f : {m.valve_sp, m.alarm_rest, m.alarm_low, m.acoustic, m.acoustic_o22,
                       m.flow_selectors, m.extra_timings})
            got += f ? '1' : '0';
        QCOMPARE(got, shown);
    }

    // What the report and the command line's info print for a value is what
    // the page's box shows, never the binary fraction behind it.
    void parameter_values_read_as_the_page() {
        DeviceRecord r = live_record();
        r.GASTEMP = 25.249999999999996;
        r.O2 = 94.5; // half up
        r.VOLUMENSTROM = 20 * 0.0125;
        r.KOMPRESSORTEMP = 45.5;
        r.schall = 343.25;
        r.spannung = 820 * 24.0 / 820;
        r.live_time = 301 * 0.04;
        QStringList got;
        for (const char* key : {"GASTEMP", "O2", "VOLUMENSTROM", "KOMPRESSORTEMP", "schall",
                                "spannung", "live_time"}) {
            got << parameter_value(r, key, german);
            for (const auto& [name, value] : live_fields(r, german))
                if (name == key)
                    got.last() = value;
        }
        QCOMPARE(got.join('|'), QString("25,2|95|0,3|46|343,3|24,0|12,04"));
    }
};

QTEST_GUILESS_MAIN(TestDeviceView)
#include "test_device_view.moc"
