#include "device/parameter_values.h"

#include "device/device_view.h"

#include <cmath>
#include <optional>

namespace veltrako::device {

namespace {
QString number(const QLocale& locale, double v) {
    // Shortest text that reads back to the same value, without grouping.
    QLocale l(locale);
    l.setNumberOptions(QLocale::OmitGroupSeparator);
    return l.toString(v, 'g', QLocale::FloatingPointShortest);
}

// The live numbers under their keys, with the decimals of their boxes on the
// "Gerät" page.
struct NumberField {
    const char* key;
    double DeviceRecord::*field;
    int decimals;
};
constexpr NumberField number_fields[] = {
    {"O2", &DeviceRecord::O2, 0},
    {"VOLUMENSTROM", &DeviceRecord::VOLUMENSTROM, 1},
    {"SOLL_VOLUMENSTROM", &DeviceRecord::SOLL_VOLUMENSTROM, 1},
    {"GASTEMP", &DeviceRecord::GASTEMP, 1},
    {"KOMPRESSORTEMP", &DeviceRecord::KOMPRESSORTEMP, 0},
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

QString parameter_value(const DeviceRecord& r, const QString& key, const QLocale& locale,
                        NumberForm form) {
    for (const TextField& f : text_fields)
        if (key == QLatin1String(f.key))
            return r.*f.field;
    for (const NumberField& f : number_fields)
        if (key == QLatin1String(f.key))
            return form == NumberForm::exact ? number(locale, r.*f.field)
                                             : format_value(r.*f.field, f.decimals, locale);
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
    const auto n = [&](double v) { return number(locale, v); };
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
        {QStringLiteral("live_time"), n(r.live_time)},
        {QStringLiteral("schall"), n(r.schall)},
        {QStringLiteral("druck"), n(r.druck)},
        {QStringLiteral("spannung"), n(r.spannung)},
        {QStringLiteral("ventiloeffnung"), n(r.ventiloeffnung)},
        {QStringLiteral("sensor1"), n(r.sensor1)},
        {QStringLiteral("sensor2"), n(r.sensor2)},
        {QStringLiteral("ventile"), QString::number(r.ventile)},
        {QStringLiteral("alarmstufe"), QString::number(r.alarmstufe)},
        {QStringLiteral("alarme"), QString::number(r.alarme)},
        {QStringLiteral("alarme2"), QString::number(r.alarme2)},
        {QStringLiteral("phase"), QString::number(r.phase)},
        {QStringLiteral("wert26"), QString::number(r.wert26)},
    };
}

} // namespace veltrako::device
