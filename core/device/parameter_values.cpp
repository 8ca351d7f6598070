#include "device/parameter_values.h"

#include "device/device_view.h"

#include <cmath>
#include <optional>

namespace veltrako::device {

namespace {
// A value as the "Gerät" page shows it in the box `control`.
QString shown(const DeviceRecord& r, const char* control, const QLocale& locale) {
    // None of these boxes shows a date.
    return value_text(r, QLatin1String(control), locale, locale);
}

// The live numbers under their keys, with the box of the "Gerät" page that
// shows them: a file or a script gets the number the technician saw.
struct NumberField {
    const char* key;
    double DeviceRecord::*field;
    const char* control;
};
constexpr NumberField number_fields[] = {
    {"O2", &DeviceRecord::O2, "t_o2"},
    {"VOLUMENSTROM", &DeviceRecord::VOLUMENSTROM, "t_volumenstrom"},
    {"SOLL_VOLUMENSTROM", &DeviceRecord::SOLL_VOLUMENSTROM, "t_sollvolumenstrom"},
    {"GASTEMP", &DeviceRecord::GASTEMP, "t_gastemp"},
    {"KOMPRESSORTEMP", &DeviceRecord::KOMPRESSORTEMP, "t_kompressortemp"},
};

struct TextField {
    const char* key;
    QString DeviceRecord::*field;
};
constexpr TextField text_fields[] = {
    {"SN", &DeviceRecord::SN},         {"LP", &DeviceRecord::LP},     {"SW", &DeviceRecord::SW},
    {"SW_NUM", &DeviceRecord::sw_num}, {"BSTD", &DeviceRecord::BSTD},
};

// The single-byte settings, and whether the device family has them.
struct SettingField {
    const char* key;
    std::uint8_t DeviceRecord::*field;
    bool ModelControls::*present;
};
constexpr SettingField setting_fields[] = {
    {"MIN_VOLUMENSTROM", &DeviceRecord::wert_u, &ModelControls::flow_selectors},
    {"MAX_VOLUMENSTROM", &DeviceRecord::wert_o, &ModelControls::flow_selectors},
    {"ALARMSIGNAL", &DeviceRecord::wert_x, &ModelControls::acoustic},
};

// Index of a "ZEITEN<n>" key, or nothing.
std::optional<std::size_t> timing_index(const QString& key) {
    if (!key.startsWith(QLatin1String("ZEITEN")))
        return std::nullopt;
    bool ok = false;
    const int i = key.mid(6).toInt(&ok);
    // "ZEITEN03" or "ZEITEN+3" are not keys.
    if (!ok || i < 0 || i > 13 || QString::number(i) != key.mid(6))
        return std::nullopt;
    return static_cast<std::size_t>(i);
}

std::optional<std::uint8_t> read_byte(const QString& value) {
    bool ok = false;
    const int v = value.trimmed().toInt(&ok);
    if (!ok || v < 0 || v > 255)
        return std::nullopt;
    return static_cast<std::uint8_t>(v);
}

} // namespace

QString parameter_value(const DeviceRecord& r, const QString& key, const QLocale& locale) {
    for (const TextField& f : text_fields)
        if (key == QLatin1String(f.key))
            return r.*f.field;
    for (const NumberField& f : number_fields)
        if (key == QLatin1String(f.key))
            return shown(r, f.control, locale);
    for (const SettingField& f : setting_fields)
        if (key == QLatin1String(f.key))
            return model_controls(r).*f.present ? QString::number(r.*f.field) : QString();
    if (const auto i = timing_index(key))
        return QString::number(r.zeiten[*i]);
    return {};
}

bool set_parameter_value(DeviceRecord& r, const QString& key, const QString& value) {
    for (const TextField& f : text_fields)
        if (key == QLatin1String(f.key)) {
            r.*f.field = value;
            return true;
        }
    for (const NumberField& f : number_fields)
        if (key == QLatin1String(f.key)) {
            // Written in the user's locale, possibly another one than ours:
            // both separators are taken as the decimal comma.
            QString text = value.trimmed();
            text.replace(QLatin1Char('.'), QLatin1Char(','));
            bool ok = false;
            const double v = QLocale(QLocale::German).toDouble(text, &ok);
            if (!ok || !std::isfinite(v))
                return false;
            r.*f.field = v;
            return true;
        }
    for (const SettingField& f : setting_fields)
        if (key == QLatin1String(f.key)) {
            const auto v = read_byte(value);
            if (v)
                r.*f.field = *v;
            return v.has_value();
        }
    if (const auto i = timing_index(key)) {
        const auto v = read_byte(value);
        if (v)
            r.zeiten[*i] = *v;
        return v.has_value();
    }
    return false;
}
QList<std::pair<QString, QString>> live_fields(const DeviceRecord& r, const QLocale& locale) {
    const QString clock = r.geraetezeit.isNull()
                              ? QString()
                              : r.geraetezeit.toString(QStringLiteral("dd.MM.yyyy HH:mm:ss"));
    return {
        {QStringLiteral("family_code"), r.family_code},
        {QStringLiteral("rest_text"), r.rest_text},
        {QStringLiteral("geraetezeit"), clock},
        {QStringLiteral("info_text"), r.info_text},
        {QStringLiteral("text_40"), r.text_40},
        {QStringLiteral("text_58"), r.text_58},
        {QStringLiteral("text_d0"), r.text_d0},
        {QStringLiteral("wert_o"), QString::number(r.wert_o)},
        {QStringLiteral("wert_u"), QString::number(r.wert_u)},
        {QStringLiteral("wert_x"), QString::number(r.wert_x)},
        {QStringLiteral("device_ticks"), QString::number(r.device_ticks)},
        // Ticks of 0.04 s: two decimals say it exactly.
        {QStringLiteral("live_time"), format_value(r.live_time, 2, locale)},
        {QStringLiteral("schall"), shown(r, "t_c", locale)},
        {QStringLiteral("druck"), shown(r, "t_druck", locale)},
        {QStringLiteral("spannung"), shown(r, "t_spannung", locale)},
        {QStringLiteral("ventiloeffnung"), shown(r, "t_ventiloeffnung", locale)},
        {QStringLiteral("sensor1"), shown(r, "t_sensor1", locale)},
        {QStringLiteral("sensor2"), shown(r, "t_sensor2", locale)},
        {QStringLiteral("ventile"), QString::number(r.ventile)},
        {QStringLiteral("alarmstufe"), QString::number(r.alarmstufe)},
        {QStringLiteral("alarme"), QString::number(r.alarme)},
        {QStringLiteral("alarme2"), QString::number(r.alarme2)},
        {QStringLiteral("phase"), QString::number(r.phase)},
        {QStringLiteral("wert26"), QString::number(r.wert26)},
    };
}

} // namespace veltrako::device
