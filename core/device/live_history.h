#pragma once
// The recent live values behind the rolling diagram: one sample per
// interpreted live status, the oldest dropped beyond the kept span.

#include <deque>

namespace veltrako::device {

struct LiveSample {
    double time = 0; // live_time, seconds
    double O2 = 0;
    double flow = 0;
    double set_flow = 0;
    double pressure = 0;
};

class LiveHistory {
public:
    // Ten minutes of live values are kept.
    static constexpr double kept_seconds = 600.0;

    void add(const LiveSample& s) {
        // A time axis that restarted begins a new plot.
        if (!samples_.empty() && s.time < samples_.back().time)
            samples_.clear();
        samples_.push_back(s);
        while (!samples_.empty() && samples_.back().time - samples_.front().time > kept_seconds)
            samples_.pop_front();
    }
    void clear() { samples_.clear(); }
    const std::deque<LiveSample>& samples() const { return samples_; }

private:
    std::deque<LiveSample> samples_;
};

} // namespace veltrako::device
