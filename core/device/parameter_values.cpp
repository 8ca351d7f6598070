#include "device/parameter_values.h"

#include "device/device_view.h"

namespace veltrako::device {

namespace {
// A value as the "Gerät" page shows it in the box `control`.
QString shown(const DeviceRecord& r, const char* control, const QLocale& locale) {
    return value_text(r, QLatin1String(control), locale);
}
} // namespace

QString parameter_value(const DeviceRecord& r, const QString& key, const QLocale& locale) {
    if (key == QLatin1String("SN"))
        return r.SN;
    if (key == QLatin1String("LP"))
        return r.LP;
    if (key == QLatin1String("SW"))
        return r.SW;
    if (key == QLatin1String("SW_NUM"))
        return r.sw_num;
    if (key == QLatin1String("BSTD"))
        return r.BSTD;
    if (key == QLatin1String("O2"))
        return shown(r, "t_o2", locale);
    if (key == QLatin1String("VOLUMENSTROM"))
        return shown(r, "t_volumenstrom", locale);
    if (key == QLatin1String("SOLL_VOLUMENSTROM"))
        return shown(r, "t_sollvolumenstrom", locale);
    if (key == QLatin1String("GASTEMP"))
        return shown(r, "t_gastemp", locale);
    if (key == QLatin1String("KOMPRESSORTEMP"))
        return shown(r, "t_kompressortemp", locale);
    if (key.startsWith(QLatin1String("ZEITEN"))) {
        bool ok = false;
        const int i = key.mid(6).toInt(&ok);
        if (ok && i >= 0 && i <= 13)
            return QString::number(r.zeiten[static_cast<std::size_t>(i)]);
    }
    return {};
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
