#pragma once
// The device side of the in-process link: whatever stands at the far end of
// the cable. The simulated concentrator implements it; tests may put a small
// scripted peer there instead. Time is passed in, so the peer is a pure
// function of what it was sent and when.

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
    virtual void receive(const QByteArray& bytes, qint64 now_ms) = 0;
    // Bytes the device puts on the wire up to `now_ms`, in order. Each byte is
    // handed out once.
    virtual QByteArray transmit(qint64 now_ms) = 0;
    // When transmit() will next have something to hand out; nothing_pending
    // when the device has nothing to say.
    virtual qint64 next_transmit_ms() const = 0;

    static constexpr qint64 nothing_pending = std::numeric_limits<qint64>::max();
};

} // namespace veltrako::link
