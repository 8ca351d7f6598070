#pragma once
// What every fuzz target needs: a clock that stands still, a user interface
// that shows nothing, and one application context for all inputs.

#include "app_context.h"
#include "clock.h"
#include "null_user_interface.h"

#include <QByteArray>

#include <cstddef>
#include <cstdint>

namespace veltrako::fuzz {

class StillClock final : public Clock {
public:
    QDateTime now() const override { return QDateTime(QDate(2026, 1, 1), QTime(12, 0), Qt::UTC); }
    qint64 elapsed_ms() const override { return 0; }
    void wait_ms(int) override {}
};

// Shows nothing: the benchmarks' user interface serves here as well.
using SilentUi = bench::NullUserInterface;

inline QByteArray input_bytes(const std::uint8_t* data, std::size_t size) {
    return QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
}

// One application context for every input of a target. A new one per input
// costs far more than the parsers do with most inputs: its language tables
// alone are 20,001 texts, half a megabyte that the sanitizers map, clear and
// unmap again each time. fresh() puts back every record that parsing and
// interpreting write, so that each input starts from what a new context
// holds and a reproducer replays alone as it ran in the loop.
class ReusedContext {
public:
    AppContext& fresh() {
        ctx_.link.device_handle = 0;
        ctx_.protocol = {};
        ctx_.comm_log.comm_log.clear();
        ctx_.timer1.set_enabled(false);
        ctx_.device = {};
        ctx_.live_history = {};
        ctx_.presets = {};
        ctx_.status = {};
        ctx_.compliance = {};
        ctx_.report = {};
        ctx_.hooks = {};
        return ctx_;
    }

private:
    StillClock clock_;
    SilentUi ui_;
    AppContext ctx_{clock_, ui_, nullptr};
};

} // namespace veltrako::fuzz
