#pragma once
// The usage memory: one record per usage period (switched on, switched off),
// kept in a ring of fixed size. Record n lives in slot n mod size, so once more
// records were written than the ring holds, the oldest are overwritten and a
// request for record `size` returns slot 0 again: that is how the program
// notices the wrap. The period still running is record number `count`.

#include <QByteArray>

#include <cstdint>

namespace veltrako::sim {

struct ComplianceRecord {
    // Seconds since 2000-01-01. An erased slot holds 0xFF in every byte.
    std::uint32_t start = erased;
    std::uint32_t end = erased;

    static constexpr std::uint32_t erased = 0xFFFFFFFFu;
    friend bool operator==(const ComplianceRecord&, const ComplianceRecord&) = default;
};

class ComplianceRing {
public:
    static constexpr int default_size = 4096;

    explicit ComplianceRing(int size = default_size);

    int size() const { return size_; }
    // Records written since the last erase; the number "K" reports (at most 65535).
    std::uint32_t count() const { return count_; }

    // Stores the next record in slot count mod size and counts it.
    void append(ComplianceRecord record);
    // All slots erased, count 0.
    void erase();

    // What a request for record `n` returns: slot n mod size, where slot
    // count mod size holds `running` (the period in progress).
    ComplianceRecord record(std::uint32_t n, ComplianceRecord running) const;

private:
    int size_;
    std::uint32_t count_ = 0;
    QByteArray slots_; // 8 bytes a slot: start and end, most significant byte first
};

} // namespace veltrako::sim
