#pragma once
// A minimal device for link and poll tests: cuts the host's bytes into
// frames, records each payload, and answers with whatever the test's
// function returns (no answer for an empty result).

#include "link/sim_peer.h"
#include "protocol/frame_codec.h"

#include <QList>

#include <functional>

namespace veltrako::testing {

class ScriptedPeer final : public link::SimPeer {
public:
    std::function<QByteArray(const QByteArray& payload)> answer = [](const QByteArray& p) {
        return p.left(1);
    };
    double answer_delay_ms = 0;
    bool present = true;
    QList<QByteArray> received;

    bool plugged_in() const override { return present; }
    void receive(const QByteArray& bytes, double now_ms) override {
        buffer_ += bytes;
        for (;;) {
            const protocol::FrameStep step = protocol::scan_frame(buffer_);
            if (step.kind == protocol::FrameStep::need_more)
                break;
            if (step.kind != protocol::FrameStep::frame) {
                buffer_.remove(0, 1);
                continue;
            }
            const QByteArray payload = protocol::frame_payload(buffer_, step);
            buffer_.remove(0, step.frame_size);
            received << payload;
            const QByteArray reply = answer(payload);
            if (!reply.isEmpty())
                pending_.append({now_ms + answer_delay_ms, protocol::build_frame(reply)});
        }
    }
    QByteArray transmit(double now_ms) override {
        QByteArray out;
        while (!pending_.isEmpty() && pending_.first().due <= now_ms)
            out += pending_.takeFirst().bytes;
        return out;
    }
    double next_transmit_ms() const override {
        return pending_.isEmpty() ? nothing_pending : pending_.first().due;
    }

private:
    struct Pending {
        double due;
        QByteArray bytes;
    };
    QByteArray buffer_;
    QList<Pending> pending_;
};

} // namespace veltrako::testing
