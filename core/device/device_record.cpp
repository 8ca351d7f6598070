#include "device/device_record.h"

namespace veltrako::device {

void clear_device_record(DeviceRecord& record) {
    record = DeviceRecord{};
}

namespace {
bool in_range(const QString& code, const char* low, const char* high) {
    return code >= QLatin1String(low) && code <= QLatin1String(high);
}
} // namespace

void detect_device_type(DeviceRecord& r) {
    const QString& f = r.family_code;
    // Every identified device keeps a clock and a remaining-time counter.
    r.clock_supported = !r.SW.isEmpty();
    r.remaining_supported = !r.SW.isEmpty();
    r.o22_source = f >= QLatin1String("70") || f == QLatin1String("66") || f == QLatin1String("56");
    r.special_model =
        r.SW == QLatin1String("628") || r.SW == QLatin1String("528") ||
        (f > QLatin1String("70") && r.SW.size() >= 3 && r.SW.at(2) == QLatin1Char('8'));
    r.alarm_at_47 = f == QLatin1String("AA") || in_range(f, "A8", "A9") ||
                    in_range(f, "7C", "7F") || in_range(f, "8C", "8F");
    r.valve_layout = f == QLatin1String("AA") || f == QLatin1String("A9") ||
                     f == QLatin1String("A8") || f == QLatin1String("7F") ||
                     f == QLatin1String("7E");
}

const QStringList& parameter_keys() {
    static const QStringList keys = [] {
        QStringList k{QString(),
                      QStringLiteral("SN"),
                      QStringLiteral("LP"),
                      QStringLiteral("VEEPROM"),
                      QStringLiteral("SW"),
                      QStringLiteral("SW_NUM"),
                      QStringLiteral("GSMSW"),
                      QStringLiteral("GSMSN"),
                      QStringLiteral("SIMID"),
                      QStringLiteral("BSTD"),
                      QStringLiteral("O2"),
                      QStringLiteral("VOLUMENSTROM"),
                      QStringLiteral("SOLL_VOLUMENSTROM"),
                      QStringLiteral("MIN_VOLUMENSTROM"),
                      QStringLiteral("MAX_VOLUMENSTROM"),
                      QStringLiteral("GASTEMP"),
                      QStringLiteral("KOMPRESSORTEMP"),
                      QStringLiteral("ALARMSIGNAL")};
        for (int i = 0; i <= 13; ++i)
            k << QStringLiteral("ZEITEN%1").arg(i);
        return k;
    }();
    return keys;
}

} // namespace veltrako::device
