#pragma once
// Talking to the simulated concentrator from a test: frames in, frames out,
// with time moved by hand.

#include "protocol/frame_codec.h"
#include "sim/concentrator.h"
#include "sim/scenario.h"
#include "test_bytes.h"

#include <QList>
#include <QTest>

namespace veltrako::testing {

// Payloads of the valid frames in `bytes`, in order; frames that fail their
// length or CRC check are counted in `bad`.
inline QList<QByteArray> frame_payloads(QByteArray bytes, int* bad = nullptr) {
    QList<QByteArray> payloads;
    for (;;) {
        const protocol::FrameStep step = protocol::scan_frame(bytes);
        if (step.kind == protocol::FrameStep::need_more)
            return payloads;
        if (step.kind == protocol::FrameStep::frame) {
            payloads << protocol::frame_payload(bytes, step);
            bytes.remove(0, step.frame_size);
        } else {
            if (bad)
                ++*bad;
            bytes.remove(0, 1);
        }
    }
}

// A scenario from text that must parse.
inline sim::Scenario scenario_from(const QByteArray& text) {
    QString error;
    const auto s = sim::parse_scenario(text, &error);
    if (!s)
        qFatal("test scenario does not parse: %s", qPrintable(error));
    return *s;
}

// The device driven directly: frames are handed to it at `now`, and what it
// sends within the next `wait` ms is collected.
struct DirectDevice {
    explicit DirectDevice(const sim::Scenario& s) : device(s) {}

    // Raw bytes the device sent between `now` and now + wait_ms.
    QByteArray send_raw(const QByteArray& bytes, qint64 wait_ms = 50) {
        device.receive(bytes, now);
        now += wait_ms;
        return device.transmit(now);
    }
    QList<QByteArray> ask(const QByteArray& payload, qint64 wait_ms = 50) {
        return frame_payloads(send_raw(protocol::build_frame(payload), wait_ms));
    }
    // The one answer to `payload`, or an empty payload when there is none.
    QByteArray answer(const QByteArray& payload) {
        const QList<QByteArray> all = ask(payload);
        return all.isEmpty() ? QByteArray() : all.first();
    }

    sim::Concentrator device;
    qint64 now = 1000;
};

} // namespace veltrako::testing
