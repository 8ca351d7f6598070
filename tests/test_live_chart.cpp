// The live diagram: what its axes span, and what it really paints for an
// empty history, one sample, a full plot, "Nur Druck", a restarted time axis
// and the widget on the page.

#include "config/language.h"
#include "live_chart.h"

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QTest>

#include <algorithm>

using namespace veltrako;
using namespace veltrako::ui;
using device::LiveHistory;
using device::LiveSample;

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
    const QRgb wanted = colour.rgb();
    int n = 0;
    for (int y = where.top(); y <= where.bottom(); ++y)
        for (int x = where.left(); x <= where.right(); ++x)
            n += image.pixel(x, y) == wanted;
    return n;
}

// Right-most column holding the colour inside `where`, or -1.
int right_most(const QImage& image, const QColor& colour, const QRect& where) {
    for (int x = where.right(); x >= where.left(); --x)
        for (int y = where.top(); y <= where.bottom(); ++y)
            if (image.pixel(x, y) == colour.rgb())
                return x;
    return -1;
}

std::deque<LiveSample> ramp(double seconds, double rate = 5) {
    std::deque<LiveSample> s;
    for (int i = 0; i <= seconds * rate; ++i) {
        const double t = i / rate;
        s.push_back(
            {t, 90 + 3 * std::sin(t), 2 + std::sin(t / 7), 2.0, 1000 + 80 * std::sin(t / 3)});
    }
    return s;
}

} // namespace

class TestLiveChart : public QObject {
    Q_OBJECT
private slots:
    void axes_data() {
        QTest::addColumn<double>("seconds");
        QTest::addColumn<double>("time_high");
        QTest::newRow("a short history shows a minute") << 10.0 << 60.0;
        QTest::newRow("a long one ends at its newest sample") << 300.0 << 300.0;
    }
    void axes() {
        QFETCH(double, seconds);
        QFETCH(double, time_high);
        const std::deque<LiveSample> samples = ramp(seconds);
        const ChartRanges r = chart_ranges(samples);
        QCOMPARE(r.time.low, 0.0);
        QCOMPARE(r.time.high, time_high);
        QCOMPARE(r.o2.low, 0.0);
        QCOMPARE(r.o2.high, 100.0);
        QCOMPARE(r.flow.low, 0.0);
        QVERIFY(r.flow.high >= 3.0 && r.flow.high <= 5.0);
        // Pressure: around its data, with room for readable ticks but not much more.
        const auto [low, high] = std::minmax_element(
            samples.begin(), samples.end(),
            [](const LiveSample& a, const LiveSample& b) { return a.pressure < b.pressure; });
        QVERIFY(r.pressure.low <= low->pressure);
        QVERIFY(r.pressure.high >= high->pressure);
        QVERIFY(r.pressure.high - r.pressure.low < 3 * (high->pressure - low->pressure));
    }

    void empty_history_draws_only_the_frame() {
        const Drawing d = draw({}, false);
        QVERIFY(d.plot.width() > 400 && d.plot.height() > 200);
        QCOMPARE(count(d.image, unpainted, d.image.rect()), 0); // the whole area is painted
        QCOMPARE(count(d.image, chart_colour::o2, d.plot), 0);
        QCOMPARE(count(d.image, chart_colour::flow, d.plot), 0);
        QCOMPARE(count(d.image, chart_colour::pressure, d.plot), 0);
        QVERIFY(count(d.image, QColor(225, 225, 225), d.plot) > 100); // grid
    }

    void one_sample_is_marked() {
        const Drawing d = draw({{0, 90, 3, 3, 1000}}, false);
        QVERIFY(count(d.image, chart_colour::o2, d.plot) >= 9);
        QVERIFY(count(d.image, chart_colour::pressure, d.plot) >= 9);
    }

    void all_curves_are_drawn() {
        const Drawing d = draw(ramp(120), false);
        QVERIFY(count(d.image, chart_colour::o2, d.plot) > 200);
        QVERIFY(count(d.image, chart_colour::flow, d.plot) > 200);
        QVERIFY(count(d.image, chart_colour::set_flow, d.plot) > 100);
        QVERIFY(count(d.image, chart_colour::pressure, d.plot) > 200);
        // The newest sample stands at the right edge.
        QVERIFY(right_most(d.image, chart_colour::pressure, d.plot) >= d.plot.right() - 2);
    }

    void pressure_only_draws_nothing_else() {
        const Drawing d = draw(ramp(120), true);
        QVERIFY(count(d.image, chart_colour::pressure, d.plot) > 200);
        const QRect all = d.image.rect();
        QCOMPARE(count(d.image, chart_colour::o2, all), 0);
        QCOMPARE(count(d.image, chart_colour::flow, all), 0);
        QCOMPARE(count(d.image, chart_colour::set_flow, all), 0);
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
        QCOMPARE(r.time.high, 60.0);
        const Drawing d = draw(history.samples(), true);
        // Only the new samples: a short stroke at the left edge.
        const int right = right_most(d.image, chart_colour::pressure, d.plot);
        QVERIFY(right >= d.plot.left());
        QVERIFY(right < d.plot.left() + 10);
    }

    void widget_draws_from_its_history_once_data_is_valid() {
        LiveHistory history;
        for (const LiveSample& s : ramp(30))
            history.add(s);
        config::LanguageTables language;
        language.language_text[4204] = "Pressure (hPa)";
        QCOMPARE(chart_texts(language).pressure, QString("Pressure (hPa)"));
        QCOMPARE(chart_texts(language).o2, ChartTexts{}.o2); // no entry: designed text

        LiveChart chart;
        chart.resize(640, 320);
        chart.set_source(&history, &language);
        const auto pressure_pixels = [&chart] {
            const QImage image = chart.grab().toImage().convertToFormat(QImage::Format_RGB32);
            const QRect plot =
                live_chart_plot_area(chart.fontMetrics(), chart.rect(), chart_ranges({}), false)
                    .adjusted(1, 1, -1, -1);
            return count(image, chart_colour::pressure, plot);
        };
        chart.set_data_valid(false);
        QCOMPARE(pressure_pixels(), 0);
        chart.set_data_valid(true);
        QVERIFY(pressure_pixels() > 50);
    }
};

QTEST_MAIN(TestLiveChart)
#include "test_live_chart.moc"
