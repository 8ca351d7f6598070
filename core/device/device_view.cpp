#include "device/device_view.h"

#include "device/settings.h"

#include <cmath>

namespace veltrako::device {

namespace {

const QString valve_e1 = QStringLiteral("lbl_VentilE1");
const QString valve_e2 = QStringLiteral("lbl_VentilE2");
const QString valve_a1 = QStringLiteral("lbl_VentilA1");
const QString valve_a2 = QStringLiteral("lbl_VentilA2");
const QString valve_sp = QStringLiteral("lbl_VentilSP");
const QString alarm_t = QStringLiteral("lbl_AlarmT");
const QString alarm_o21 = QStringLiteral("lbl_AlarmO21");
const QString alarm_o22 = QStringLiteral("lbl_AlarmO22");
const QString alarm_rest = QStringLiteral("lbl_AlarmRest");
const QString alarm_vollo = QStringLiteral("lbl_AlarmVollo");
const QString alarm_netz = QStringLiteral("lbl_AlarmNetz");
const QString alarm_sens = QStringLiteral("lbl_AlarmSens");
const QString alarm_volhi = QStringLiteral("lbl_AlarmVolhi");
const QString level_low = QStringLiteral("lbl_Alarmlow");
const QString level_mid = QStringLiteral("lbl_Alarmmid");
const QString level_high = QStringLiteral("lbl_Alarmhigh");
const QString pic_o21 = QStringLiteral("pic_akustO21");
const QString pic_o22 = QStringLiteral("pic_akustO22");
const QString pic_vollo = QStringLiteral("pic_akustvollo");

Shade valve(bool open) {
    return open ? Shade::red : Shade::white;
}
Shade alarm(bool active) {
    return active ? Shade::red : Shade::green;
}

class ShadeSetter {
public:
    explicit ShadeSetter(std::vector<ShadeRow>& rows) : rows_(rows) {}
    void operator()(const QString& control, Shade shade) {
        for (ShadeRow& row : rows_) {
            if (row.control == control) {
                row.shade = shade;
                return;
            }
        }
    }

private:
    std::vector<ShadeRow>& rows_;
};

void set_valves(const DeviceRecord& r, ShadeSetter& set) {
    const auto bit = [&r](int value) { return (r.ventile & value) != 0; };
    if (!r.valve_layout) {
        // Bit 1 says which of the two inlet valves is open; one of them always is.
        set(valve_e1, valve(!bit(1)));
        set(valve_e2, valve(bit(1)));
        set(valve_a1, valve(bit(2)));
        set(valve_a2, valve(bit(4)));
        return;
    }
    set(valve_a2, valve(bit(2)));
    set(valve_e1, valve(bit(4)));
    set(valve_e2, valve(bit(8)));
    set(valve_a1, valve(bit(16)));
    set(valve_sp, valve(bit(32)));
}

void set_alarms(const DeviceRecord& r, ShadeSetter& set) {
    const auto bit = [&r](int value) { return (r.alarme & value) != 0; };
    set(alarm_t, alarm(bit(1)));
    set(alarm_o21, alarm(bit(2)));
    set(pic_o21, alarm(bit(2)));
    if (r.o22_source) {
        set(alarm_rest, alarm(bit(4)));
        set(alarm_o22, alarm((r.alarme2 & 4) != 0));
    } else {
        set(alarm_o22, alarm(bit(4)));
        set(pic_o22, alarm(bit(4)));
    }
    set(alarm_vollo, alarm(bit(8)));
    set(pic_vollo, alarm(bit(8)));
    set(alarm_netz, alarm(bit(16)));
    set(alarm_sens, alarm(bit(32)));
    set(alarm_volhi, alarm(bit(128)));
}

void set_alarm_level(const DeviceRecord& r, ShadeSetter& set) {
    const int level = r.alarmstufe;
    if (r.o22_source) {
        // Two levels only; an unknown level leaves both labels as they are.
        if (level > 2)
            return;
        set(level_mid, alarm(level == 1));
        set(level_high, alarm(level == 2));
        return;
    }
    // One red label for the current level, the others green; every level
    // above the third lights the highest label.
    set(level_low, alarm(level == 1));
    set(level_mid, alarm(level == 2));
    set(level_high, alarm(level >= 3));
}

} // namespace

QString value_text(const DeviceRecord& r, const QString& control, const QLocale& loc,
                   const QLocale& words) {
    struct Row {
        const char* name;
        double (*value)(const DeviceRecord&);
        int decimals;
    };
    static const Row numbers[] = {
        {"t_c", [](const DeviceRecord& d) { return d.schall; }, 1},
        {"t_druck", [](const DeviceRecord& d) { return d.druck; }, 0},
        {"t_gastemp", [](const DeviceRecord& d) { return d.GASTEMP; }, 1},
        {"t_kompressortemp", [](const DeviceRecord& d) { return d.KOMPRESSORTEMP; }, 0},
        {"t_o2", [](const DeviceRecord& d) { return d.O2; }, 0},
        {"t_sensor1", [](const DeviceRecord& d) { return d.sensor1; }, 1},
        {"t_sensor2", [](const DeviceRecord& d) { return d.sensor2; }, 1},
        {"t_spannung", [](const DeviceRecord& d) { return d.spannung; }, 1},
        {"t_ventiloeffnung", [](const DeviceRecord& d) { return d.ventiloeffnung; }, 1},
        {"t_volumenstrom", [](const DeviceRecord& d) { return d.VOLUMENSTROM; }, 1},
        {"t_sollvolumenstrom", [](const DeviceRecord& d) { return d.SOLL_VOLUMENSTROM; }, 1},
    };
    for (const Row& row : numbers) {
        if (control == QLatin1String(row.name))
            return format_value(row.value(r), row.decimals, loc);
    }
    if (control == QLatin1String("t_bstd"))
        return r.BSTD;
    if (control == QLatin1String("t_Restzeit"))
        return r.rest_text;
    if (control == QLatin1String("t_datetime"))
        return format_device_time(r.geraetezeit, words);
    if (control == QLatin1String("t_lp"))
        return r.LP;
    if (control == QLatin1String("t_sn"))
        return r.SN;
    if (control == QLatin1String("t_sw"))
        return r.SW;
    return {};
}

const std::vector<QString>& value_box_names() {
    static const std::vector<QString> names = {
        QStringLiteral("t_bstd"),
        QStringLiteral("t_Restzeit"),
        QStringLiteral("t_datetime"),
        QStringLiteral("t_c"),
        QStringLiteral("t_druck"),
        QStringLiteral("t_gastemp"),
        QStringLiteral("t_kompressortemp"),
        QStringLiteral("t_lp"),
        QStringLiteral("t_o2"),
        QStringLiteral("t_sensor1"),
        QStringLiteral("t_sensor2"),
        QStringLiteral("t_sn"),
        QStringLiteral("t_spannung"),
        QStringLiteral("t_sw"),
        QStringLiteral("t_ventiloeffnung"),
        QStringLiteral("t_volumenstrom"),
        QStringLiteral("t_sollvolumenstrom"),
    };
    return names;
}

const std::vector<QString>& shaded_control_names() {
    static const std::vector<QString> names = {
        valve_e1,  valve_e2,   valve_a1,    valve_a2,   valve_sp,   alarm_t,     alarm_o21,
        alarm_o22, alarm_rest, alarm_vollo, alarm_netz, alarm_sens, alarm_volhi, level_low,
        level_mid, level_high, pic_o21,     pic_o22,    pic_vollo,
    };
    return names;
}

QString DeviceTabView::text(const QString& control) const {
    for (const TextRow& row : texts) {
        if (row.control == control)
            return row.text;
    }
    return {};
}

bool DeviceTabView::has_text(const QString& control) const {
    for (const TextRow& row : texts) {
        if (row.control == control)
            return true;
    }
    return false;
}

Shade DeviceTabView::shade(const QString& control) const {
    for (const ShadeRow& row : shades) {
        if (row.control == control)
            return row.shade;
    }
    return Shade::unchanged;
}

QString format_value(double value, int decimals, const QLocale& locale) {
    const double scale = std::pow(10.0, decimals);
    double rounded = std::round(value * scale) / scale;
    if (rounded == 0)
        rounded = 0; // no "-0.0"
    QLocale plain = locale;
    plain.setNumberOptions(plain.numberOptions() | QLocale::OmitGroupSeparator);
    return plain.toString(rounded, 'f', decimals);
}

QString format_device_time(const QDateTime& t, const QLocale& locale) {
    if (t.isNull())
        return {};
    QString date_format = locale.dateFormat(QLocale::ShortFormat);
    // A service report wants the full year; short formats often carry two digits.
    if (!date_format.contains(QLatin1String("yyyy")))
        date_format.replace(QLatin1String("yy"), QLatin1String("yyyy"));
    return locale.toString(t.date(), date_format) + QLatin1Char(' ') +
           t.time().toString(QStringLiteral("HH:mm:ss"));
}

ModelControls model_controls(const DeviceRecord& r) {
    const QString& f = r.family_code;
    ModelControls m;
    m.valve_sp = r.valve_layout;
    m.alarm_rest = r.o22_source;
    m.alarm_low = !r.o22_source;
    m.acoustic = f >= QLatin1String("30");
    m.acoustic_o22 = m.acoustic && !r.o22_source;
    m.flow_selectors = f >= QLatin1String("51");
    m.extra_timings = f < QLatin1String("30");
    return m;
}

DeviceTabView make_device_tab_view(const DeviceRecord& r, const QLocale& locale,
                                   const QLocale& words) {
    DeviceTabView view;
    for (const QString& name : shaded_control_names())
        view.shades.push_back({name, r.live_valid ? Shade::unchanged : Shade::white});

    view.blank = !r.live_valid;
    if (view.blank) {
        for (const QString& name : value_box_names())
            view.texts.push_back({name, QString()});
        return view;
    }

    for (const QString& name : value_box_names())
        view.texts.push_back({name, value_text(r, name, locale, words)});
    view.texts.push_back({QStringLiteral("lbl_Phase"), QString::number(r.phase)});

    // The low-power toggle exists only for boards whose fifth LP character is 4 or 5.
    view.togglelp_enabled =
        r.LP.size() >= 5 && (r.LP.at(4) == QLatin1Char('4') || r.LP.at(4) == QLatin1Char('5'));
    for (int i = 0; i < timing_count; ++i)
        view.timing_positions[static_cast<std::size_t>(i)] = r.zeiten[static_cast<std::size_t>(i)];
    view.flow_positions = {r.wert_u, r.wert_o};
    const auto sounds = [&r](AcousticAlarm a) { return (r.wert_x & acoustic_bit(a)) != 0; };
    view.acoustic_on = {sounds(AcousticAlarm::o21), sounds(AcousticAlarm::o22),
                        sounds(AcousticAlarm::vollo)};

    ShadeSetter set(view.shades);
    set_valves(r, set);
    set_alarms(r, set);
    set_alarm_level(r, set);

    view.model = model_controls(r);
    return view;
}

} // namespace veltrako::device
