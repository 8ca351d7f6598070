// The live diagram by what it really paints: which curves for an empty
// history, one sample, a full plot and "Nur Druck"; a restarted time axis;
// and the widget, which stays empty until live data is valid.

#include "live_chart.h"
#include "window_harness.h"

#include <QPainter>

using namespace veltrako;
using namespace veltrako::ui;
using device::LiveHistory;
using device::LiveSample;
using veltrako::testing::Table;

namespace {

const QColor unpainted(255, 0, 255);

struct Drawing {
    QImage image;
    QRect plot; // inside the frame
};

Drawing draw(const std::deque<LiveSample>& samples, bool pressure_only) {
    Drawing d{QImage(640, 320, QImage::Format_RGB32), {}};
    d.image.fill(unpainted);
    QPainter p(&d.image);
    const QRect area(0, 0, 640, 320);
    d.plot = live_chart_plot_area(p.fontMetrics(), area, chart_ranges(samples), pressure_only)
                 .adjusted(1, 1, -1, -1);
    draw_live_chart(p, area, samples, pressure_only, ChartTexts{});
    return d;
}

int count(const QImage& image, const QColor& colour, const QRect& where) {
    int n = 0;
    for (int y = where.top(); y <= where.bottom(); ++y)
        for (int x = where.left(); x <= where.right(); ++x)
            n += image.pixel(x, y) == colour.rgb();
    return n;
}

// Five samples a second from 0 to `seconds`; none for a negative length.
std::deque<LiveSample> ramp(double seconds) {
    std::deque<LiveSample> s;
    for (int i = 0; i <= seconds * 5; ++i) {
        const double t = i / 5.0;
        s.push_back(
            {t, 90 + 3 * std::sin(t), 2 + std::sin(t / 7), 2.0, 1000 + 80 * std::sin(t / 3)});
    }
    return s;
}

} // namespace

class TestLiveChart : public QObject {
    Q_OBJECT
private slots:
    void curves_data() {
        // O2, flow, set flow, pressure: y drawn, n not drawn, ? not checked.
        Table<double, bool, QString> row;
        row("empty history", -1.0, false, "nnnn")("one sample is marked", 0.0, false, "y??y");
        row("all curves", 120.0, false, "yyyy")("Nur Druck", 120.0, true, "nnny");
    }
    void curves() {
        const auto [seconds, pressure_only, drawn] = Table<double, bool, QString>::fetch();
        const Drawing d = draw(ramp(seconds), pressure_only);
        QVERIFY(d.plot.width() > 400 && d.plot.height() > 200);
        QCOMPARE(count(d.image, unpainted, d.image.rect()), 0);
        QVERIFY(count(d.image, QColor(225, 225, 225), d.plot) > 100); // grid
        // With "Nur Druck" not even the legend shows another colour.
        const QRect absent_in = pressure_only ? d.image.rect() : d.plot;
        const QColor colours[] = {chart_colour::o2, chart_colour::flow, chart_colour::set_flow,
                                  chart_colour::pressure};
        for (int i = 0; i < 4; ++i) {
            if (drawn[i] == 'y')
                QVERIFY2(count(d.image, colours[i], d.plot) >= 9, qPrintable(QString::number(i)));
            if (drawn[i] == 'n')
                QCOMPARE(count(d.image, colours[i], absent_in), 0);
        }
        // The newest sample stands at the right edge.
        if (seconds > 0)
            QVERIFY(count(d.image, chart_colour::pressure,
                          d.plot.adjusted(d.plot.width() - 3, 0, 0, 0)) > 0);
    }

    void restarted_time_axis_starts_a_fresh_plot() {
        LiveHistory history;
        for (const LiveSample& s : ramp(300))
            history.add(s);
        QCOMPARE(chart_ranges(history.samples()).time.high, 300.0);
        history.add({0, 90, 2, 2, 1000});
        history.add({0.2, 90, 2, 2, 1000});
        const ChartRanges r = chart_ranges(history.samples());
        QCOMPARE(r.time.low, 0.0);
        QCOMPARE(r.time.high, 60.0); // a short history still shows a minute
        // Only the new samples: a short stroke at the left edge.
        const Drawing d = draw(history.samples(), true);
        QVERIFY(count(d.image, chart_colour::pressure,
                      d.plot.adjusted(0, 0, 10 - d.plot.width(), 0)) > 0);
        QCOMPARE(count(d.image, chart_colour::pressure, d.plot.adjusted(10, 0, 0, 0)), 0);
    }

    void widget_draws_once_data_is_valid() {
        LiveHistory history;
        for (const LiveSample& s : ramp(30))
            history.add(s);
        LiveChart chart;
        chart.resize(640, 320);
        chart.set_source(&history, nullptr); // the designed texts
        const QRect plot =
            live_chart_plot_area(chart.fontMetrics(), chart.rect(), chart_ranges({}), false);
        for (bool valid : {false, true}) {
            chart.set_data_valid(valid);
            const QImage image = chart.grab().toImage().convertToFormat(QImage::Format_RGB32);
            const int n = count(image, chart_colour::pressure, plot.adjusted(1, 1, -1, -1));
            QVERIFY2(valid ? n > 50 : n == 0, qPrintable(QString::number(n)));
        }
    }
};

QTEST_MAIN(TestLiveChart)
#include "test_live_chart.moc"
