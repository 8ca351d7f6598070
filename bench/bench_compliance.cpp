// The usage memory:
//  - readout of a full memory, 4097 records, from the simulated concentrator
//    with real wire timing and a device latency of 1 ms, against its wire
//    floor: every byte of the readout's requests and answers at 10,473
//    bytes/s (115200 baud, 11 bits a byte) plus the latency of each answer
//    (targets on a quiet machine: at most 20,000 ms, ratio at most 1.3);
//  - the same readout paced as it used to be, each record request followed
//    by a 20 ms wait, against its floor of 4097 x 20 ms: the gain;
//  - the same readout from a slow device (25 ms latency): every record read,
//    and read as in the first run;
//  - redraw of the monthly chart with 4097 records onto an image the size of
//    the page's picture box (target: under 5 ms): a day's use each, and, as
//    the worst case, all of them in the shown month.
//
//   build/bin/bench_compliance [redraws, default 200]   (about four minutes)

#include "app_context.h"
#include "compliance/compliance_chart.h"
#include "compliance/compliance_readout.h"
#include "link/sim_link.h"
#include "null_user_interface.h"
#include "painter_surface.h"
#include "print/recording_surface.h"
#include "protocol/frame_codec.h"
#include "protocol/poll_cycle.h"
#include "sim/concentrator.h"
#include "sim/scenario.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QTimer>

#include <cstdio>

using namespace veltrako;

namespace {

// Runs the event loop until `done` holds, looking every millisecond.
void run_until(const std::function<bool()>& done) {
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, [&] {
        if (done())
            loop.quit();
    });
    poll.start(1);
    loop.exec();
}

// Bytes on the wire at 115200 baud with 8 data bits, 2 stop bits and a start bit.
constexpr double wire_bytes_per_s = 115200.0 / 11.0;

struct Readout {
    int records = 0;
    double ms = 0;
    double wire_floor_ms = 0;
    compliance::ComplianceRecords table{};
};

Readout readout(int latency_ms, bool paced) {
    SystemClock clock;
    bench::NullUserInterface ui;
    QString error;
    auto scenario = sim::load_scenario(QStringLiteral("compliance_large"), &error);
    if (!scenario) {
        std::printf("no scenario: %s\n", qPrintable(error));
        return {};
    }
    scenario->latency_ms = latency_ms;
    auto device = std::make_shared<sim::Concentrator>(*scenario);
    // What the readout puts on the wire, both ways.
    bool reading = false;
    qint64 bytes = 0;
    int answers = 0;
    device->set_observer([&](const sim::Concentrator::Event& e) {
        if (!reading || e.boot_loader || !(e.request.startsWith('k') || e.request.startsWith('K')))
            return;
        bytes += protocol::build_frame(e.request).size();
        if (!e.answer.isEmpty()) {
            bytes += protocol::build_frame(e.answer).size();
            ++answers;
        }
    });
    AppContext ctx(
        clock, ui,
        std::make_unique<link::SimLink>(clock, device, link::SimLink::WireTiming::realistic));
    compliance::install_compliance(ctx);
    ctx.timer1.set_interval(ctx.config.TIMERINTERVAL);
    ctx.timer1.on_tick = [&ctx] { protocol::timer1_tick(ctx); };
    protocol::connect_routine(ctx);
    run_until([&] { return ctx.device.live_valid && ctx.protocol.queue_count == 0; });

    reading = true;
    QElapsedTimer t;
    t.start();
    compliance::cmd_complianceread_Click(ctx);
    ctx.protocol.paced_reads = paced;
    run_until([&] { return ctx.compliance.state.has_data || ctx.link.device_handle == 0; });
    Readout r;
    r.ms = t.nsecsElapsed() / 1e6;
    r.records = ctx.compliance.state.has_data ? ctx.compliance.state.last_index + 1 : 0;
    r.wire_floor_ms = bytes * 1000.0 / wire_bytes_per_s + answers * double(latency_ms);
    r.table = ctx.compliance.records;
    return r;
}

// The slow device's table holds what the quick one's does; only the period
// still running has ended later.
bool same_records(const Readout& a, const Readout& b) {
    if (a.records != b.records)
        return false;
    int later_end = 0;
    for (std::size_t i = 0; i < a.table.size(); ++i) {
        if (a.table[i].start != b.table[i].start)
            return false;
        later_end += a.table[i].end != b.table[i].end ? 1 : 0;
    }
    return later_end <= 1;
}

void bench_readout() {
    const Readout fast = readout(1, false);
    std::printf("readout: %d records in %.0f ms (wire floor %.0f ms, ratio %.2f)\n", fast.records,
                fast.ms, fast.wire_floor_ms, fast.ms / fast.wire_floor_ms);
    std::fflush(stdout);

    const Readout paced = readout(1, true);
    const double paced_floor_ms = paced.records * 20.0;
    std::printf("readout paced by 20 ms a record: %d records in %.0f ms (floor %.0f ms, ratio "
                "%.3f); the readout above takes %.1f %% of it\n",
                paced.records, paced.ms, paced_floor_ms, paced.ms / paced_floor_ms,
                100.0 * fast.ms / paced.ms);
    std::fflush(stdout);

    const Readout slow = readout(25, false);
    std::printf("readout from a slow device (25 ms): %d records in %.0f ms (wire floor %.0f ms, "
                "ratio %.2f), the same records as above: %s\n",
                slow.records, slow.ms, slow.wire_floor_ms, slow.ms / slow.wire_floor_ms,
                same_records(slow, fast) ? "yes" : "NO");
}

// `spacing` seconds from one record's start to the next, each running
// `length` seconds, from 1 March 2021 on; the chart shows March 2021.
void bench_redraw(int redraws, const char* what, compliance::Stamp spacing,
                  compliance::Stamp length) {
    compliance::ComplianceMemory m;
    const compliance::Stamp first = compliance::make_stamp(2021, 3, 1);
    for (int i = 0; i <= compliance::table_upper; ++i) {
        const compliance::Stamp start = first + i * spacing;
        m.records[std::size_t(i)] = {start, start + length};
    }
    m.state.shown_month = first;
    m.state.last_index = compliance::table_upper;
    config::LanguageTables language;
    language.language_text[6001] = QStringLiteral("Uhrzeit (h)");
    language.language_text[6002] = QStringLiteral("Tag");
    const compliance::ChartTexts texts = compliance::chart_texts(language, QLocale());

    QImage image(1000, 640, QImage::Format_RGB32);
    QElapsedTimer t;
    t.start();
    for (int i = 0; i < redraws; ++i) {
        image.fill(Qt::white);
        QPainter painter(&image);
        paint::PainterSurface surface(painter);
        compliance::compliance_draw(surface, 0, 0, surface.scale_width(), surface.scale_height(), 8,
                                    m.state, m.records, texts, 0);
    }
    const double image_ms = t.nsecsElapsed() / 1e6 / redraws;

    t.restart();
    for (int i = 0; i < redraws; ++i) {
        print::RecordingSurface surface;
        compliance::compliance_draw(surface, 0, 0, 15000, 9600, 8, m.state, m.records, texts, 0);
    }
    const double layout_ms = t.nsecsElapsed() / 1e6 / redraws;
    std::printf("chart redraw, 4097 records, %s: %.2f ms on a 1000x640 image, "
                "%.2f ms layout alone (mean of %d)\n",
                what, image_ms, layout_ms, redraws);
}

} // namespace

int main(int argc, char** argv) {
    // Offscreen unless a platform is set: the chart needs fonts, not a screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int redraws = argc > 1 ? QByteArray(argv[1]).toInt() : 200;
    const int n = redraws > 0 ? redraws : 200;
    // One use a day for eleven years, as a device in daily use holds them.
    bench_redraw(n, "one a day (31 in the month)", 86400, 8 * 3600);
    // The worst case: all of them in the shown month, 5 minutes every 650 s.
    bench_redraw(n, "all in the month", 650, 300);
    std::fflush(stdout);
    bench_readout();
    return 0;
}
