#pragma once
// Talking to the simulated concentrator from a test: frames in, frames out,
// with time moved by hand, directly or through the in-process link.

#include "app_context.h"
#include "fake_user_interface.h"
#include "link/device_connection.h"
#include "link/sim_link.h"
#include "manual_clock.h"
#include "protocol/frame_codec.h"
#include "protocol/frames.h"
#include "sim/concentrator.h"
#include "sim/scenario.h"
#include "test_bytes.h"

#include <QDateTime>
#include <QList>

namespace veltrako::testing {

// Payloads of the valid frames in `bytes`, in order; frames that fail their
// length or CRC check are counted in `bad`.
inline QList<QByteArray> frame_payloads(QByteArray bytes, int* bad = nullptr) {
    QList<QByteArray> payloads;
    for (;;) {
        const protocol::FrameStep step = protocol::scan_frame(bytes);
        if (step.kind == protocol::FrameStep::need_more)
            return payloads;
        const bool frame = step.kind == protocol::FrameStep::frame;
        if (frame)
            payloads << protocol::frame_payload(bytes, step);
        else if (bad)
            ++*bad;
        bytes.remove(0, frame ? step.frame_size : 1);
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

// Byte `position` of a payload, counted from 1 as the protocol does; -1 when
// the payload is shorter.
inline int byte_at(const QByteArray& p, int position) {
    return position <= p.size() ? static_cast<unsigned char>(p.at(position - 1)) : -1;
}
// `size` bytes from `position` on, most significant first.
inline quint32 be_at(const QByteArray& p, int position, int size) {
    quint32 v = 0;
    for (int i = 0; i < size; ++i)
        v = v << 8 | static_cast<quint32>(byte_at(p, position + i) & 0xFF);
    return v;
}
inline QByteArray be32(quint32 v) {
    return bytes_of({int(v >> 24), int(v >> 16) & 0xFF, int(v >> 8) & 0xFF, int(v & 0xFF)});
}
// The device's time: seconds since 2000-01-01 00:00 UTC.
inline quint32 device_seconds(QDate date, QTime time) {
    return static_cast<quint32>(
        QDateTime(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC).secsTo(QDateTime(date, time, Qt::UTC)));
}

// The device driven directly: frames are handed to it at `now`, and what it
// sends within the next `wait` ms is collected.
struct DirectDevice {
    explicit DirectDevice(const sim::Scenario& s) : device(s) {}
    // Switched on when the PC's clock reads `present`.
    DirectDevice(const sim::Scenario& s, const QDateTime& present) : device(s, present) {}
    explicit DirectDevice(const QByteArray& scenario_text) : device(scenario_from(scenario_text)) {}

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
    QByteArray answer(const QByteArray& payload) { return ask(payload).value(0); }

    sim::Concentrator device;
    qint64 now = 1000;
};

// The device behind the in-process link, opened as the program opens it.
struct LinkedDevice {
    explicit LinkedDevice(const sim::Scenario& scenario,
                          link::SimLink::WireTiming timing = link::SimLink::WireTiming::instant)
        // The device is switched on at the test's PC time.
        : device(std::make_shared<sim::Concentrator>(scenario, clock.now())),
          ctx(clock, ui, std::make_unique<link::SimLink>(clock, device, timing)) {
        if (!link::open_device(ctx, true))
            qFatal("the simulated link does not open");
    }
    ManualClock clock;
    FakeUserInterface ui;
    std::shared_ptr<sim::Concentrator> device;
    AppContext ctx;
};

} // namespace veltrako::testing
