#pragma once
// How long a job waits for the device before it gives up: armed when the job
// asks, armed again whenever something it can use arrives, expired once the
// limit passed without. One rule for every wait that must end: the usage
// readout gives a record the answer time-out four times over (its request
// and three repetitions), a service visit gives each step ten seconds.

#include <QtGlobal>

namespace veltrako::progress {

class Deadline {
public:
    void arm(qint64 now_ms, qint64 limit_ms) {
        due_ms_ = now_ms + limit_ms;
        armed_ = true;
    }
    void disarm() { armed_ = false; }
    bool armed() const { return armed_; }
    bool expired(qint64 now_ms) const { return armed_ && now_ms >= due_ms_; }

private:
    qint64 due_ms_ = 0;
    bool armed_ = false;
};

} // namespace veltrako::progress
