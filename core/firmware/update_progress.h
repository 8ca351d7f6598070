#pragma once
// What a person watching a firmware update sees while the data lines are
// written: which block goes out, how long it has taken and how long it will
// still take. The window shows a modal dialog that cannot be closed, the
// command line a line on stderr, tests record the steps.

#include "progress/progress.h"

#include <QString>
#include <QtGlobal>

namespace veltrako::firmware {

struct ProgressStep {
    int block = 0;  // counted from 1
    int blocks = 0; // the file's data lines
    qint64 elapsed_ms = 0;
    qint64 remaining_ms = 0; // estimated from the blocks done so far

    // "Software Update Block i/n"
    QString caption() const;
};

using progress::minutes_seconds;

class UpdateProgress {
public:
    virtual ~UpdateProgress() = default;
    // The device is about to be switched into its loader: from here until
    // end() the update must not be interrupted.
    virtual void begin(int blocks) = 0;
    // Block `step.block` is about to be written.
    virtual void block(const ProgressStep& step) = 0;
    // Writing is over, done or failed; the closing message follows.
    virtual void end() = 0;
};

// Keeps the time of a running update and turns it into steps.
class ProgressClock {
public:
    // The least a block takes: the first wait for its acknowledgement. Used
    // as the estimate until a block has been done.
    static constexpr qint64 block_floor_ms = 40;

    ProgressClock(int blocks, qint64 start_ms) : blocks_(blocks), start_ms_(start_ms) {}
    ProgressStep step(int block, qint64 now_ms) const;

private:
    int blocks_;
    qint64 start_ms_;
};

} // namespace veltrako::firmware
