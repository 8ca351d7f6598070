#pragma once
// How far a long job has come, told to whoever watches it: a page's progress
// row, the command line's status line, a dialog that runs several jobs one
// after the other, a test. The job (a readout, say) owns one Progress and
// moves it on with the time from the context's clock; the watcher is called
// after every change and reads the standing.

#include <QString>
#include <QtGlobal>

#include <functional>
#include <optional>

namespace veltrako::progress {

enum class Phase {
    idle, // not started, or its data was thrown away
    running,
    finished,  // ran to its end
    cancelled, // stopped by the person watching
    failed,    // gave up: the device did not give what the job needed
};

struct Standing {
    Phase phase = Phase::idle;
    int done = 0;  // units finished (records read, say)
    int total = 0; // units the job expects; 0 while it does not know yet
    qint64 elapsed_ms = 0;
    // Estimated from the pace so far; none until a unit is done and the
    // total is known.
    std::optional<qint64> remaining_ms;

    // Whole percent done, rounded down so that 100 means done; 0 while the
    // total is unknown.
    int percent() const;
};

class Progress {
public:
    // A new run: nothing done, the clock starts at `now_ms`.
    void start(qint64 now_ms, int total = 0);
    // The job learnt how much there is (a count announced by the device).
    void set_total(int total, qint64 now_ms);
    // `done` units are finished.
    void advance(int done, qint64 now_ms);
    // The job has ended; what was done becomes the total.
    void finish(qint64 now_ms);
    void cancel(qint64 now_ms);
    // The job gave up; what was done stays as it is.
    void fail(qint64 now_ms);
    // Back to idle, as after start-up.
    void reset();

    Phase phase() const { return phase_; }
    bool running() const { return phase_ == Phase::running; }
    Standing standing() const;

    // Called after every change of the standing.
    std::function<void()> changed;

private:
    void notify();

    Phase phase_ = Phase::idle;
    int done_ = 0;
    int total_ = 0;
    qint64 start_ms_ = 0;
    qint64 last_ms_ = 0;
};

// Minutes and seconds, "m:ss", rounded up to the next second so that a time
// left never reads 0:00 while something is still to do.
QString minutes_seconds(qint64 ms);

} // namespace veltrako::progress
