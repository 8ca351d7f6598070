// A full status memory readout (32 records) against the simulated
// concentrator with real wire timing, as a ratio to its floor.
//
// Floor: one poll tick per record. Each record read leaves on a tick, its
// answer (about 3 ms on the wire at 115200 baud) is read on the next tick,
// and only then is the read of the following record queued and sent. So 32
// records cannot take fewer than 32 ticks (32 x TIMERINTERVAL = 1600 ms at
// the default 50 ms), however fast the device and the program are.
//
// Measured from a click just after a tick, the first request waits one more
// tick to leave, so a perfect run shows 33 ticks against the floor's 32.
//
// The poll schedule sends its own requests ("I" twice and "T" once every 8
// ticks, "S" every 40) in the same one-command-per-tick slots, so a readout
// also waits for those. The second ratio counts them in: ticks taken against
// 32 + the other requests sent meanwhile; 1.00 means no tick was wasted.
//
//   build/bin/bench_status_readout [rounds, default 5]

#include "app_context.h"
#include "link/sim_link.h"
#include "null_user_interface.h"
#include "protocol/commands.h"
#include "protocol/poll_cycle.h"
#include "sim/concentrator.h"
#include "sim/scenario.h"
#include "status/status_readout.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>

#include <cstdio>

using namespace veltrako;

namespace {

constexpr int records = 32;

struct Round {
    double ms = 0;
    int ticks = 0;
    int other_requests = 0;
    int record_count = 0;
};

Round one_readout(Clock& clock, UserInterface& ui) {
    const auto scenario = sim::load_scenario(QStringLiteral("status_full"));
    if (!scenario)
        qFatal("the status_full scenario does not load");
    auto device = std::make_shared<sim::Concentrator>(*scenario);
    AppContext ctx(
        clock, ui,
        std::make_unique<link::SimLink>(clock, device, link::SimLink::WireTiming::realistic));
    status::install_status_memory(ctx);
    ctx.timer1.set_interval(ctx.config.TIMERINTERVAL);

    bool started = false;
    bool reading = false;
    int other = 0;
    device->set_observer([&](const sim::Concentrator::Event& e) {
        if (reading && !e.request.startsWith('e'))
            ++other;
    });

    // Connect and let the initial requests finish first.
    QEventLoop loop;
    QElapsedTimer t;
    qint32 first_tick = 0;
    Round r;
    ctx.timer1.on_tick = [&] {
        protocol::timer1_tick(ctx);
        const protocol::ProtocolState& p = ctx.protocol;
        if (!started && ctx.device.live_valid && p.queue_count == 0 && !p.waiting_reply) {
            // Start right after a tick, as a click between two ticks would.
            started = reading = true;
            first_tick = p.tick_count;
            t.start();
            status::cmd_sysstatread_Click(ctx);
        }
    };
    ctx.hooks.status_readout_complete = [&] {
        r.ms = t.nsecsElapsed() / 1e6;
        r.ticks = ctx.protocol.tick_count - first_tick;
        reading = false;
        loop.quit();
    };
    protocol::connect_routine(ctx);
    loop.exec();
    ctx.timer1.set_enabled(false);
    r.other_requests = other;
    r.record_count = ctx.status.record_count();
    return r;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int rounds = argc > 1 ? std::max(1, QByteArray(argv[1]).toInt()) : 5;
    SystemClock clock;
    bench::NullUserInterface ui;
    const int interval = config::Config().TIMERINTERVAL;
    const double floor_ms = records * interval;
    std::printf("floor: %d records x %d ms tick = %.0f ms\n", records, interval, floor_ms);
    double total_ms = 0;
    double total_schedule_ratio = 0;
    for (int i = 0; i < rounds; ++i) {
        const Round r = one_readout(clock, ui);
        const double schedule_ratio = double(r.ticks) / (records + r.other_requests);
        std::printf("readout of %d records: %7.1f ms, %d ticks (ratio to floor %.2f); "
                    "%d other requests meanwhile, ticks / (32 + those) = %.2f\n",
                    r.record_count, r.ms, r.ticks, r.ms / floor_ms, r.other_requests,
                    schedule_ratio);
        total_ms += r.ms;
        total_schedule_ratio += schedule_ratio;
    }
    std::printf("mean: %.1f ms, ratio to floor %.2f, ticks per slot %.2f\n", total_ms / rounds,
                total_ms / rounds / floor_ms, total_schedule_ratio / rounds);
    return 0;
}
