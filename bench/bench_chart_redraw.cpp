// How long one redraw of the live diagram takes with a full history: ten
// minutes of live values at five per second, drawn into 800 x 400 pixels.
// The diagram is redrawn on every live answer, so this must stay well below
// the poll interval.
//
//   bench_chart_redraw [redraws]   (default 500)

#include "live_chart.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>

#include <cmath>
#include <cstdio>

using namespace veltrako;

int main(int argc, char** argv) {
    // Fonts need a platform; none needs a screen.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int redraws = argc > 1 ? std::max(1, std::atoi(argv[1])) : 500;

    device::LiveHistory history;
    for (int i = 0; i < 3000; ++i) {
        const double t = i * 0.2;
        history.add({t, 90 + 3 * std::sin(t / 5), 2 + 0.3 * std::sin(t / 2), 2.0,
                     1000 + 300 * std::sin(t * 1.7)});
    }

    QImage image(800, 400, QImage::Format_ARGB32_Premultiplied);
    const ui::ChartTexts texts;
    const auto draw = [&](bool pressure_only) {
        QPainter p(&image);
        ui::draw_live_chart(p, image.rect(), history.samples(), pressure_only, texts);
    };
    draw(false); // warm up fonts and caches

    for (const bool pressure_only : {false, true}) {
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < redraws; ++i)
            draw(pressure_only);
        const double ms = static_cast<double>(timer.nsecsElapsed()) / 1e6 / redraws;
        std::printf("%-12s %zu samples, 800x400, %d redraws: %.3f ms per redraw\n",
                    pressure_only ? "pressure" : "all curves", history.samples().size(), redraws,
                    ms);
    }
    return 0;
}
