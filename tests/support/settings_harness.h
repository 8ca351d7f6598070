#pragma once
// A program connected to the simulated concentrator over the in-process
// link, with a hand-driven clock: the initial requests are answered and the
// first live status is in, so a setting can be changed as from the page.

#include "app_context.h"
#include "device/read_back.h"
#include "fake_user_interface.h"
#include "link/sim_link.h"
#include "manual_clock.h"
#include "protocol/poll_cycle.h"
#include "sim/concentrator.h"
#include "sim/scenario.h"

#include <QList>

#include <memory>

namespace veltrako::testing {

struct Connected {
    explicit Connected(const QByteArray& scenario_text = {}, const QString& program_dir = {}) {
        QString error;
        const auto scenario = sim::parse_scenario("NOISE=off\n" + scenario_text, &error);
        if (!scenario)
            qFatal("scenario: %s", qPrintable(error));
        // Switched on at the test's PC time.
        device = std::make_shared<sim::Concentrator>(*scenario, clock.now());
        device->set_observer([this](const sim::Concentrator::Event& e) {
            if (!e.boot_loader)
                received << e.request;
        });
        ctx =
            std::make_unique<AppContext>(clock, ui, std::make_unique<link::SimLink>(clock, device));
        ctx->program_dir = program_dir;
        for (int n = 110; n <= 117; ++n)
            ctx->language.language_text[static_cast<std::size_t>(n)] =
                QStringLiteral("text%1").arg(n);
        for (int n = 8000; n <= 8099; ++n)
            ctx->language.language_text[static_cast<std::size_t>(n)] =
                QStringLiteral("text%1").arg(n);
        protocol::connect_routine(*ctx);
        ctx->timer1.set_enabled(false); // ticks come from settle() only
        settle();
        if (!ctx->device.live_valid)
            qFatal("the simulated device sent no live status");
    }

    // Ticks until every queued command is answered.
    void settle(int max_ticks = 400) {
        for (int i = 0; i < max_ticks; ++i) {
            clock.advance_ms(50);
            protocol::timer1_tick(*ctx);
            const protocol::ProtocolState& p = ctx->protocol;
            if (ctx->device.live_valid && p.queue_count == 0 && !p.waiting_reply)
                return;
        }
    }

    // From now on the program runs as with Timer1 on: every 50 ms of a wait
    // is a poll tick, so a setting's wait for its read-back is answered.
    void serve() {
        ctx->timer1.set_enabled(true);
        clock.on_step = [this] {
            if (ctx->timer1.enabled())
                protocol::timer1_tick(*ctx);
        };
    }
    // Writes among the requests the device took (read requests and the
    // poll's own requests left out).
    QList<QByteArray> writes() const {
        QList<QByteArray> out;
        for (const QByteArray& p : received)
            if (!p.isEmpty() && QByteArrayView("tsECwuoxZ").contains(p.at(0)))
                out << p;
        return out;
    }

    // The payloads waiting in the send queue, oldest first.
    QList<QByteArray> queued() const {
        QList<QByteArray> out;
        for (int i = 1; i <= ctx->protocol.queue_count; ++i)
            out << ctx->protocol.send_queue[static_cast<std::size_t>(i)];
        return out;
    }
    void clear_queue() { ctx->protocol.queue_count = 0; }

    ManualClock clock;
    FakeUserInterface ui;
    std::shared_ptr<sim::Concentrator> device;
    std::unique_ptr<AppContext> ctx;
    QList<QByteArray> received; // every request the device took, in order
    // What the last setting procedure a test ran returned.
    device::WriteOutcome outcome = device::WriteOutcome::not_written;
};

} // namespace veltrako::testing
