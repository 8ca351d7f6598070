#include "compliance_ring.h"

#include "bytes.h"

#include <algorithm>

namespace veltrako::sim {

namespace {
constexpr int slot_bytes = 8;
}

ComplianceRing::ComplianceRing(int size)
    : size_(std::max(1, size)), slots_(size_ * slot_bytes, static_cast<char>(0xFF)) {}

void ComplianceRing::append(ComplianceRecord r) {
    const int slot = static_cast<int>(count_ % static_cast<std::uint32_t>(size_));
    QByteArray bytes;
    append_be32(bytes, r.start);
    append_be32(bytes, r.end);
    slots_.replace(slot * slot_bytes, slot_bytes, bytes);
    count_ = std::min<std::uint32_t>(count_ + 1, 0xFFFF);
}

void ComplianceRing::erase() {
    slots_.fill(static_cast<char>(0xFF));
    count_ = 0;
}

ComplianceRecord ComplianceRing::record(std::uint32_t n, ComplianceRecord running) const {
    const auto size = static_cast<std::uint32_t>(size_);
    const std::uint32_t slot = n % size;
    if (slot == count_ % size)
        return running;
    const QByteArray bytes = slots_.mid(static_cast<qsizetype>(slot) * slot_bytes, slot_bytes);
    return {be32_at(bytes, 1), be32_at(bytes, 5)};
}

} // namespace veltrako::sim
