#pragma once
// Plausible stored data for scenarios that ask for "N records" rather than
// listing them: status records and usage periods, the same for the same seed.

#include "compliance_ring.h"

#include <QByteArray>
#include <QDateTime>
#include <QList>

#include <cstdint>

namespace veltrako::sim {

enum class StatusLayout {
    basic,    // 16-bit alarm word, eight alarm times, mean temperature
    extended, // two alarm bytes, five alarm times, levels and counters
};

// `count` status records of 22 bytes, oldest first.
QList<QByteArray> generate_status_records(int count, StatusLayout layout, std::uint64_t seed);

// `count` usage periods spread evenly over [from, to), one after the other.
QList<ComplianceRecord> generate_compliance_records(int count, const QDateTime& from,
                                                    const QDateTime& to, std::uint64_t seed);

} // namespace veltrako::sim
