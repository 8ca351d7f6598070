// The poll cycle against the simulated concentrator with real wire timing:
//  - time from opening the device to the first live value, against its floor
//    (the "I" request is the 26th of the initial sequence: about 27 ticks);
//  - CPU time of idle polling (target: below 1 % of one core);
//  - CPU time of one wait_ms(1000), which must not spin.
//
//   build/bin/bench_poll [seconds of idle polling, default 60]

#include "app_context.h"
#include "link/sim_link.h"
#include "null_user_interface.h"
#include "protocol/poll_cycle.h"
#include "sim/concentrator.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <cstdio>
#include <sys/resource.h>

using namespace veltrako;

namespace {

double cpu_seconds() {
    rusage u{};
    getrusage(RUSAGE_SELF, &u);
    return u.ru_utime.tv_sec + u.ru_utime.tv_usec / 1e6 + u.ru_stime.tv_sec +
           u.ru_stime.tv_usec / 1e6;
}

std::unique_ptr<AppContext> connected_context(Clock& clock, UserInterface& ui) {
    QString error;
    auto device = sim::make_concentrator(QStringLiteral("default"), &error);
    auto ctx = std::make_unique<AppContext>(
        clock, ui,
        std::make_unique<link::SimLink>(clock, device, link::SimLink::WireTiming::realistic));
    ctx->timer1.set_interval(ctx->config.TIMERINTERVAL);
    ctx->timer1.on_tick = [c = ctx.get()] { protocol::timer1_tick(*c); };
    return ctx;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const int idle_seconds = argc > 1 ? QByteArray(argv[1]).toInt() : 60;
    SystemClock clock;
    bench::NullUserInterface ui;

    // 1. Open to first live value.
    const int interval = 50;
    const double floor_ms = 27.0 * interval;
    double total_ms = 0;
    const int rounds = 5;
    for (int round = 0; round < rounds; ++round) {
        auto ctx = connected_context(clock, ui);
        QEventLoop loop;
        QElapsedTimer t;
        QTimer poll;
        QObject::connect(&poll, &QTimer::timeout, [&] {
            if (ctx->device.live_valid)
                loop.quit();
        });
        poll.start(1);
        t.start();
        protocol::connect_routine(*ctx);
        loop.exec();
        const double ms = t.nsecsElapsed() / 1e6;
        total_ms += ms;
        std::printf("open to first live value: %7.1f ms  (floor %.0f ms, ratio %.2f)\n", ms,
                    floor_ms, ms / floor_ms);
    }
    std::printf("mean: %.1f ms, ratio to floor %.2f\n", total_ms / rounds,
                total_ms / rounds / floor_ms);

    // 2. Idle polling.
    {
        auto ctx = connected_context(clock, ui);
        protocol::connect_routine(*ctx);
        clock.wait_ms(3000); // past the initial sequence
        const double cpu0 = cpu_seconds();
        QElapsedTimer t;
        t.start();
        const int answers0 = ctx->protocol.tick_count;
        clock.wait_ms(idle_seconds * 1000);
        const double cpu = cpu_seconds() - cpu0;
        const double wall = t.elapsed() / 1000.0;
        std::printf(
            "idle polling: %.1f s wall, %.3f s CPU = %.2f %% of one core (%d ticks, link %s)\n",
            wall, cpu, 100.0 * cpu / wall, ctx->protocol.tick_count - answers0,
            ctx->link.device_handle ? "up" : "DOWN");
    }

    // 3. One wait_ms(1000) with nothing to do.
    {
        const double cpu0 = cpu_seconds();
        QElapsedTimer t;
        t.start();
        clock.wait_ms(1000);
        std::printf("wait_ms(1000): %lld ms wall, %.4f s CPU\n",
                    static_cast<long long>(t.elapsed()), cpu_seconds() - cpu0);
    }
    return 0;
}
