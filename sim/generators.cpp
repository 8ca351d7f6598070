#include "generators.h"

#include "bytes.h"
#include "device_time.h"
#include "noise.h"

#include <algorithm>
#include <cmath>

namespace veltrako::sim {

namespace {

enum Stream { temp_stream = 11, flow_stream, o2_stream, alarm_stream, start_stream, length_stream };

int around(int centre, double spread, std::uint64_t seed, int stream, int i) {
    return std::clamp(static_cast<int>(std::lround(centre + spread * noise(seed, stream, i))), 1,
                      254);
}

} // namespace

QList<QByteArray> generate_status_records(int count, StatusLayout layout, std::uint64_t seed) {
    QList<QByteArray> records;
    for (int i = 0; i < count; ++i) {
        QByteArray r(22, '\0');
        put_byte(r, 1, 200 + i);
        // Every fifth block was cut short by switching off.
        put_be16(r, 2, i % 5 == 4 ? 1200u : 1800u);
        const bool alarm = noise(seed, alarm_stream, i) > 0.5;
        const int temp_min = around(148, 2, seed, temp_stream, i); // 0.25 degrees
        const int temp_max = temp_min + 3;
        const int flow = around(20, 1, seed, flow_stream, i);   // 0.1 l/min
        const int o2_mean = around(180, 4, seed, o2_stream, i); // 75 % + 0.1 %
        if (layout == StatusLayout::basic) {
            put_be16(r, 4, alarm ? 0x0002u : 0u);
            put_byte(r, 7, alarm ? 45 : 0); // alarm time 2: coded, 84 s
            put_byte(r, 14, flow);
            put_byte(r, 15, temp_min + 1);
            put_byte(r, 16, temp_min);
            put_byte(r, 17, temp_max);
        } else {
            put_byte(r, 4, alarm ? 0x02 : 0);
            put_byte(r, 5, alarm ? 0x04 : 0);
            put_byte(r, 6, alarm ? 45 : 0);
            put_byte(r, 11, 204); // 80 %
            put_byte(r, 12, 178);
            put_byte(r, 13, 12);
            put_byte(r, 14, 3);
            put_byte(r, 15, flow);
            put_byte(r, 16, temp_min);
            put_byte(r, 17, temp_max);
        }
        put_byte(r, 18, 135); // 5.40 s
        put_byte(r, 19, 135);
        put_byte(r, 20, o2_mean);
        put_byte(r, 21, o2_mean - 10);
        put_byte(r, 22, std::min(o2_mean + 7, 254));
        records << r;
    }
    return records;
}

QList<ComplianceRecord> generate_compliance_records(int count, const QDateTime& from,
                                                    const QDateTime& to, std::uint64_t seed) {
    QList<ComplianceRecord> records;
    if (count <= 0)
        return records;
    const qint64 first = device_seconds(from);
    const double slot = static_cast<double>(device_seconds(to) - first) / count;
    for (int i = 0; i < count; ++i) {
        // Switched on 10..30 % into its slot, running 30..60 % of it.
        const double on = slot * (0.2 + 0.1 * noise(seed, start_stream, i));
        const double length = slot * (0.45 + 0.15 * noise(seed, length_stream, i));
        const qint64 start = first + static_cast<qint64>(i * slot + on);
        const qint64 end = start + std::max<qint64>(60, static_cast<qint64>(length));
        records << ComplianceRecord{static_cast<std::uint32_t>(start),
                                    static_cast<std::uint32_t>(end)};
    }
    return records;
}

} // namespace veltrako::sim
