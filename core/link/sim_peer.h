#pragma once
// The device side of the in-process link: whatever stands at the far end of
// the cable. The simulated concentrator implements it; tests may put a small
// scripted peer there instead. Time is passed in, so the peer is a pure
// function of what it was sent and when. Times are milliseconds with a
// fraction: a byte takes less than a tenth of one on the wire.

#include <QByteArray>
#include <QtGlobal>

#include <limits>

namespace veltrako::link {

class SimPeer {
public:
    virtual ~SimPeer() = default;

    // False while the cable is pulled: the link counts no device then.
    virtual bool plugged_in() const = 0;
    // Bytes from the host arrive at the device at `now_ms`.
    virtual void receive(const QByteArray& bytes, double now_ms) = 0;
    // Bytes the device puts on the wire up to `now_ms`, in order. Each byte is
    // handed out once.
    virtual QByteArray transmit(double now_ms) = 0;
    // When transmit() will next have something to hand out; nothing_pending
    // when the device has nothing to say.
    virtual double next_transmit_ms() const = 0;

    static constexpr double nothing_pending = std::numeric_limits<double>::infinity();
};

} // namespace veltrako::link
