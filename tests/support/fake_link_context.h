#pragma once
// The program's context on a scripted link and a hand-driven clock, for tests
// that drive the protocol layer without a device.

#include "app_context.h"
#include "fake_link.h"
#include "fake_user_interface.h"
#include "manual_clock.h"

#include <QList>

namespace veltrako::testing {

struct FakeLinkContext {
    ManualClock clock;
    FakeUserInterface ui;
    FakeLink* link = new FakeLink; // owned by ctx
    AppContext ctx{clock, ui, std::unique_ptr<link::DeviceLink>(link)};
};

// The commands waiting in the send queue, in the order they go out.
inline QList<QByteArray> queued(const AppContext& ctx) {
    QList<QByteArray> q;
    for (int i = 1; i <= ctx.protocol.queue_count; ++i)
        q << ctx.protocol.send_queue[static_cast<std::size_t>(i)];
    return q;
}

} // namespace veltrako::testing
