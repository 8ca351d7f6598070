#pragma once
// What every fuzz target needs: a clock that stands still and a user
// interface that shows nothing.

#include "clock.h"
#include "null_user_interface.h"

namespace veltrako::fuzz {

class StillClock final : public Clock {
public:
    QDateTime now() const override { return QDateTime(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC); }
    qint64 elapsed_ms() const override { return 0; }
    void wait_ms(int) override {}
};

// Shows nothing: the benchmarks' user interface serves here as well.
using SilentUi = bench::NullUserInterface;

} // namespace veltrako::fuzz
