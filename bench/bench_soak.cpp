// Hours of the poll cycle against the simulated concentrator on a bad cable
// (the "flaky" sample: answers dropped, damaged, split and mixed with line
// noise), with the cable pulled for ten seconds every hour so that the
// program gives up and reconnects by itself. Time is driven by hand, so a
// simulated day takes as long as the work it holds, not a day. Wire timing
// is the real one at 115200 baud, measured on the driven clock.
//
// A second run does the same on a healthy link (the "default" sample, cable
// in), for comparison.
//
// Should the send queue ever fill ("Outbuffer overflow"), the link resets and
// Timer1 stays off, as it does for the technician; the soak then waits ten
// seconds and chooses "Verbindung initialisieren", as the technician would.
// Periodic requests are not queued twice, so on either link that count
// should be 0.
//
// Prints for each run the answers handled (in all and per simulated hour),
// time-outs, queue overflows, reconnections, the resident memory at the
// start, middle and end, whether the device record agrees with the simulator
// after the last answer, and last "memory: flat" (end within 2 % of middle)
// or "memory: grew N %". After HOURS it runs on only until every field of
// the record has been answered since the last reset. Exits with 1 when a
// run lost state or its queue overflowed.
//
//   build/bin/bench_soak HOURS

#include "app_context.h"
#include "link/sim_link.h"
#include "manual_clock.h"
#include "null_user_interface.h"
#include "protocol/poll_cycle.h"
#include "protocol/response_interpreter.h"
#include "sim/concentrator.h"
#include "sim/memory_image.h"
#include "sim/scenario.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QSet>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unistd.h>
#include <vector>

using namespace veltrako;

namespace {

constexpr qint64 hour_ms = 3600 * 1000;
// Where in every hour the cable is out, and for how long.
constexpr qint64 pull_at_ms = hour_ms / 2;
constexpr qint64 pull_for_ms = 10 * 1000;

long resident_kb() {
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return -1;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields[1].toLong() * (sysconf(_SC_PAGESIZE) / 1024) : -1;
}

// Shows nothing, counts the repetitions the poll cycle reports.
class CountingUi final : public bench::NullUserInterface {
public:
    void show_msg(const QString& text, MsgIcon, const QString&) override {
        if (text == QLatin1String("Outbuffer overflow"))
            ++overflows;
    }
    void append_out(const QString& text) override {
        if (text.contains(QLatin1String(" Timeout Nr ")))
            ++timeouts;
    }

    long timeouts = 0;
    long overflows = 0;
};

QString hours_text(const sim::OperatingHours& h) {
    return QStringLiteral("%1:%2").arg(h.hours, 6, 10, QLatin1Char('0')).arg(h.tens_of_minutes) +
           QLatin1Char('0');
}

// What the simulator held when the answers that fill time-dependent fields
// were handled.
struct AtAnswer {
    QString hours;
    qint64 clock_seconds = 0;
};

// The answers the record is filled from; the check waits for all of them
// since the last reset.
const QList<QByteArray>& record_answers() {
    static const QList<QByteArray> keys{"?",
                                        QByteArray("e\x00\xF0", 3),
                                        QByteArray("e\x00\xE0", 3),
                                        QByteArray("e\x00\x80", 3),
                                        "S",
                                        "T",
                                        "I",
                                        "r0",
                                        "r1",
                                        "r2",
                                        "r3",
                                        "r4",
                                        "r5",
                                        "r6"};
    return keys;
}

QByteArray answer_key(const QByteArray& payload) {
    if (payload.startsWith('e') || payload.startsWith('r'))
        return payload.left(payload.startsWith('e') ? 3 : 2);
    return payload.left(1);
}

// The fields of the device record that differ from what the simulator holds.
QStringList lost_state(const AppContext& ctx, const sim::Concentrator& device,
                       const AtAnswer& at_answer, qint64 axis_ms) {
    const device::DeviceRecord& d = ctx.device;
    const sim::DeviceState& s = device.state();
    QStringList lost;
    const auto expect = [&](bool same, const char* field) {
        if (!same)
            lost << QString::fromLatin1(field);
    };
    expect(ctx.link.device_handle != 0, "link");
    expect(d.SW == QString::fromLatin1(s.sw), "SW");
    expect(d.SN == QString::fromLatin1(s.memory.read(sim::addr::serial, sim::field::serial)), "SN");
    expect(d.LP == QString::fromLatin1(s.memory.read(sim::addr::board, sim::field::board)), "LP");
    expect(d.BSTD == at_answer.hours, "BSTD");
    expect(d.rest_text == QString::number(s.remaining), "rest_text");
    // This family takes ZEITEN0..6 from the device.
    for (std::size_t i = 0; i <= 6; ++i)
        expect(d.zeiten[i] == s.zeiten[i], "zeiten");
    const QDateTime device_clock =
        QDateTime(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC).addSecs(at_answer.clock_seconds);
    // The answer left the device up to one second tick before it was handled.
    expect(std::abs(d.geraetezeit.secsTo(device_clock)) <= 1, "geraetezeit");
    expect(d.SOLL_VOLUMENSTROM == sim::flow_raw(s.live.flow_setpoint_lpm) * sim::flow_unit_lpm,
           "SOLL_VOLUMENSTROM");
    expect(d.spannung == sim::supply_voltage_raw(s.live.supply_voltage) * 24.0 / 820.0, "spannung");
    expect(d.KOMPRESSORTEMP == s.live.compressor_temperature, "KOMPRESSORTEMP");
    // The time axis has run since the first live answer of this connection,
    // including any wrap of the device's 16-bit tick counter in between.
    expect(d.live_valid && std::abs(d.live_time - axis_ms / 1000.0) < 0.2, "live_time");
    return lost;
}

// One soak: HOURS on the named sample, the cable pulled every hour or not.
// Prints its lines; false when the record lost state or the queue overflowed.
bool soak(const QString& sample, bool pull_cable, double hours) {
    QString error;
    const auto scenario = sim::load_scenario(sample, &error);
    if (!scenario) {
        std::fprintf(stderr, "bench_soak: %s\n", qPrintable(error));
        return false;
    }

    QElapsedTimer wall;
    wall.start();
    testing::ManualClock clock;
    CountingUi ui;
    auto device = std::make_shared<sim::Concentrator>(*scenario);
    AppContext ctx(
        clock, ui,
        std::make_unique<link::SimLink>(clock, device, link::SimLink::WireTiming::realistic));

    long answers = 0;
    std::vector<long> answers_per_hour; // one entry per simulated hour begun
    long reconnects = 0;                // the program found the device again by itself
    long menu_reconnects = 0;           // "Verbindung initialisieren" after an overflow
    qint64 axis_start_ms = 0;           // first live answer since the record was cleared
    qint64 last_live_ms = 0;
    QSet<QByteArray> answered; // record_answers() handled since the last reset
    AtAnswer at_answer;
    ctx.payload_handler = [&](const QByteArray& payload) {
        ++answers;
        const auto hour = static_cast<std::size_t>(clock.elapsed_ms() / hour_ms);
        if (answers_per_hour.size() <= hour)
            answers_per_hour.resize(hour + 1, 0);
        ++answers_per_hour[hour];
        const bool restarts = !ctx.device.live_valid;
        protocol::dispatch_response(ctx, payload);
        const QByteArray key = answer_key(payload);
        if (record_answers().contains(key))
            answered.insert(key);
        if (key == record_answers().at(3) && device->state().memory.hours())
            at_answer.hours = hours_text(*device->state().memory.hours());
        if (key == "T")
            at_answer.clock_seconds = device->state().clock_seconds(clock.elapsed_ms());
        if (key == "I" && ctx.device.live_valid) {
            if (restarts)
                axis_start_ms = clock.elapsed_ms();
            last_live_ms = clock.elapsed_ms();
        }
    };
    ctx.hooks.device_found = [&] { ++reconnects; };
    ctx.hooks.link_reset = [&] { answered.clear(); };

    const qint64 total_ms = std::llround(hours * hour_ms);
    const int interval = ctx.config.TIMERINTERVAL;
    protocol::connect_routine(ctx);
    const long start_kb = resident_kb();
    long middle_kb = -1;
    qint64 stopped_since_ms = -1;
    // Past HOURS, on until the record is whole again, for at most an hour.
    const auto done = [&] {
        const qint64 t = clock.elapsed_ms();
        return t >= total_ms &&
               (answered.size() == record_answers().size() || t >= total_ms + hour_ms);
    };
    while (!done()) {
        clock.advance_ms(interval);
        if (ctx.timer1.enabled()) {
            protocol::timer1_tick(ctx);
            stopped_since_ms = -1;
        } else if (stopped_since_ms < 0) {
            stopped_since_ms = clock.elapsed_ms();
        } else if (clock.elapsed_ms() - stopped_since_ms >= 10 * 1000) {
            ++menu_reconnects;
            protocol::connect_routine(ctx);
        }
        const bool pulled = pull_cable && clock.elapsed_ms() % hour_ms >= pull_at_ms &&
                            clock.elapsed_ms() % hour_ms < pull_at_ms + pull_for_ms;
        if (pulled != device->faults().unplug) {
            sim::Faults f = device->faults();
            f.unplug = pulled;
            device->set_faults(f);
        }
        if (middle_kb < 0 && clock.elapsed_ms() >= total_ms / 2)
            middle_kb = resident_kb();
    }
    const long end_kb = resident_kb();
    const QStringList lost = lost_state(ctx, *device, at_answer, last_live_ms - axis_start_ms);

    // Whole simulated hours only: the run-on past HOURS is not one.
    const auto whole_hours = std::min<std::size_t>(answers_per_hour.size(),
                                                   static_cast<std::size_t>(total_ms / hour_ms));
    std::printf("simulated hours: %g (ran on %.1f s for the record to fill)\n", hours,
                (clock.elapsed_ms() - total_ms) / 1000.0);
    std::printf("answers handled: %ld\n", answers);
    if (whole_hours > 0) {
        const auto first = answers_per_hour.begin();
        const auto last = first + static_cast<std::ptrdiff_t>(whole_hours);
        std::printf("answers per hour: first %ld, last %ld, lowest %ld, highest %ld\n", *first,
                    *(last - 1), *std::min_element(first, last), *std::max_element(first, last));
    }
    std::printf("time-outs: %ld\n", ui.timeouts);
    std::printf("queue overflows: %ld\n", ui.overflows);
    std::printf("reconnects: %ld by the program itself, %ld by the menu\n", reconnects,
                menu_reconnects);
    std::printf("resident memory: start %ld kB, middle %ld kB, end %ld kB\n", start_kb, middle_kb,
                end_kb);
    std::printf("wall time: %.1f s\n", wall.elapsed() / 1000.0);
    if (lost.isEmpty())
        std::printf("state: the device record equals the simulator after the last answer\n");
    else
        std::printf("state: LOST: %s\n", qPrintable(lost.join(QStringLiteral(", "))));
    const double growth = 100.0 * (end_kb - middle_kb) / middle_kb;
    if (std::abs(growth) <= 2.0)
        std::printf("memory: flat\n");
    else
        std::printf("memory: grew %.1f %%\n", growth);
    return lost.isEmpty() && ui.overflows == 0;
}

} // namespace

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    const double hours = argc > 1 ? QByteArray(argv[1]).toDouble() : 0;
    if (hours <= 0) {
        std::fprintf(stderr, "usage: bench_soak HOURS\n");
        return 2;
    }
    std::printf("== bad cable: the \"flaky\" sample, pulled for %lld s every hour\n",
                pull_for_ms / 1000);
    const bool flaky_ok = soak(QStringLiteral("flaky"), true, hours);
    std::printf("== healthy link: the \"default\" sample\n");
    const bool healthy_ok = soak(QStringLiteral("default"), false, hours);
    return flaky_ok && healthy_ok ? 0 : 1;
}
