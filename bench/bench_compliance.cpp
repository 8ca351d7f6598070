// The usage memory:
//  - readout of 4097 records from the simulated concentrator with real wire
//    timing, as a ratio to its floor of 4097 x 20 ms, the fast path's wait
//    per record (target: at most 1.02);
//  - redraw of the monthly chart with 4097 records onto an image the size of
//    the page's picture box (target: under 5 ms): a day's use each, and, as
//    the worst case, all of them in the shown month.
//
//   build/bin/bench_compliance [redraws, default 200]

#include "app_context.h"
#include "compliance/compliance_chart.h"
#include "compliance/compliance_readout.h"
#include "link/sim_link.h"
#include "null_user_interface.h"
#include "painter_surface.h"
#include "print/recording_surface.h"
#include "protocol/poll_cycle.h"
#include "sim/concentrator.h"

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

void bench_readout() {
    SystemClock clock;
    bench::NullUserInterface ui;
    QString error;
    auto device = sim::make_concentrator(QStringLiteral("compliance_large"), &error);
    if (!device) {
        std::printf("no scenario: %s\n", qPrintable(error));
        return;
    }
    AppContext ctx(
        clock, ui,
        std::make_unique<link::SimLink>(clock, device, link::SimLink::WireTiming::realistic));
    compliance::install_compliance(ctx);
    ctx.timer1.set_interval(ctx.config.TIMERINTERVAL);
    ctx.timer1.on_tick = [&ctx] { protocol::timer1_tick(ctx); };
    protocol::connect_routine(ctx);
    run_until([&] { return ctx.device.live_valid && ctx.protocol.queue_count == 0; });

    QElapsedTimer t;
    t.start();
    compliance::cmd_complianceread_Click(ctx);
    run_until([&] { return ctx.compliance.state.has_data || ctx.link.device_handle == 0; });
    const double ms = t.nsecsElapsed() / 1e6;
    const int records = ctx.compliance.state.last_index + 1;
    const double floor_ms = records * 20.0;
    std::printf("readout: %d records in %.0f ms (floor %.0f ms), ratio %.3f\n", records, ms,
                floor_ms, ms / floor_ms);

    // What the fast path's wait itself costs: its share of the ratio above.
    const int waits = 500;
    t.restart();
    for (int i = 0; i < waits; ++i)
        clock.wait_ms(20);
    std::printf("wait_ms(20) alone: mean %.3f ms, ratio %.3f\n", t.nsecsElapsed() / 1e6 / waits,
                t.nsecsElapsed() / 1e6 / waits / 20.0);
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
    bench_readout();
    return 0;
}
