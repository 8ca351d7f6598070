#include "device/parameter_values.h"

namespace veltrako::device {

namespace {
QString number(const QLocale& locale, double v) {
    // Shortest text that reads back to the same value, without grouping.
    QLocale l(locale);
    l.setNumberOptions(QLocale::OmitGroupSeparator);
    return l.toString(v, 'g', QLocale::FloatingPointShortest);
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
        return number(locale, r.O2);
    if (key == QLatin1String("VOLUMENSTROM"))
        return number(locale, r.VOLUMENSTROM);
    if (key == QLatin1String("SOLL_VOLUMENSTROM"))
        return number(locale, r.SOLL_VOLUMENSTROM);
    if (key == QLatin1String("GASTEMP"))
        return number(locale, r.GASTEMP);
    if (key == QLatin1String("KOMPRESSORTEMP"))
        return number(locale, r.KOMPRESSORTEMP);
    if (key.startsWith(QLatin1String("ZEITEN"))) {
        bool ok = false;
        const int i = key.mid(6).toInt(&ok);
        if (ok && i >= 0 && i <= 13)
            return QString::number(r.zeiten[static_cast<std::size_t>(i)]);
    }
    return {};
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
