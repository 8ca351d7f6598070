#include "live_chart.h"

#include "config/language.h"

#include <QFontMetrics>
#include <QLocale>
#include <QPaintEvent>
#include <QPainter>
#include <QPolygonF>
#include <QStringList>

#include <algorithm>
#include <climits>
#include <cmath>
#include <utility>
#include <vector>

namespace veltrako::ui {

namespace {

using device::LiveSample;
using Samples = std::deque<LiveSample>;

constexpr double minimum_time_span = 60.0; // seconds shown before the plot starts to roll
constexpr int gap = 4;

double nice_step(double span, int target_ticks) {
    if (!(span > 0))
        return 1;
    const double raw = span / target_ticks;
    const double magnitude = std::pow(10.0, std::floor(std::log10(raw)));
    const double f = raw / magnitude;
    const double nice = f <= 1 ? 1 : f <= 2 ? 2 : f <= 5 ? 5 : 10;
    return nice * magnitude;
}

AxisRange nice_range(double low, double high, int target_ticks) {
    if (high - low < 1e-9) {
        low -= 1;
        high += 1;
    }
    const double step = nice_step(high - low, target_ticks);
    return {std::floor(low / step) * step, std::ceil(high / step) * step, step};
}

QString axis_label(double value, const QLocale& locale) {
    // Steps are 1, 2 or 5 times a power of ten; below 1 one decimal suffices
    // for the ranges the device delivers.
    const bool whole = std::abs(value - std::round(value)) < 1e-9;
    return locale.toString(value, 'f', whole ? 0 : 1);
}

// Positions of the ticks of an axis, from its low end up.
template <class F> void for_each_tick(const AxisRange& a, F&& f) {
    const double first = std::ceil(a.low / a.step - 1e-9) * a.step;
    for (double v = first; v <= a.high + a.step * 1e-6; v += a.step)
        f(v);
}

class Mapper {
public:
    Mapper(const QRect& plot, const AxisRange& time) : plot_(plot), time_(time) {}
    double x(double t) const {
        return plot_.left() + (t - time_.low) / (time_.high - time_.low) * plot_.width();
    }
    double y(double v, const AxisRange& a) const {
        return plot_.bottom() - (v - a.low) / (a.high - a.low) * plot_.height();
    }

private:
    QRect plot_;
    AxisRange time_;
};

// The series as screen points. Several samples falling on one pixel column
// are reduced to the first, lowest, highest and last of them, which draws the
// same picture with at most four points per column.
QPolygonF series_points(const Samples& samples, double LiveSample::*field, const Mapper& map,
                        const AxisRange& axis) {
    QPolygonF points;
    points.reserve(static_cast<qsizetype>(std::min<std::size_t>(samples.size(), 4096)));
    int column = INT_MIN;
    double x = 0, first = 0, low = 0, high = 0, last = 0;
    const auto flush = [&] {
        if (column == INT_MIN)
            return;
        points << QPointF(x, first);
        if (low != first)
            points << QPointF(x, low);
        if (high != low)
            points << QPointF(x, high);
        if (last != high)
            points << QPointF(x, last);
    };
    for (const LiveSample& s : samples) {
        const double px = map.x(s.time);
        const double py = map.y(s.*field, axis);
        const int c = static_cast<int>(std::floor(px));
        if (c != column) {
            flush();
            column = c;
            x = px;
            first = low = high = last = py;
        } else {
            low = std::max(low, py); // screen y grows downwards: the lowest value has the largest y
            high = std::min(high, py);
            last = py;
        }
    }
    flush();
    return points;
}

void draw_series(QPainter& p, const QPolygonF& points, const QPen& pen) {
    p.setPen(pen);
    if (points.size() == 1) {
        // A single sample has no line to draw; mark it.
        p.fillRect(QRectF(points.front() - QPointF(2, 2), QSizeF(5, 5)), pen.color());
        return;
    }
    p.drawPolyline(points);
}

int widest_label(const QFontMetrics& fm, const AxisRange& a, const QLocale& locale) {
    int widest = 0;
    for_each_tick(a, [&](double v) {
        widest = std::max(widest, fm.horizontalAdvance(axis_label(v, locale)));
    });
    return widest;
}

// Labels of a vertical axis, right-aligned against `edge` (left axes) or
// left-aligned from it (right axis).
void draw_axis_labels(QPainter& p, const QFontMetrics& fm, const AxisRange& a, const Mapper& map,
                      int edge, bool on_left, const QColor& colour, const QLocale& locale) {
    p.setPen(colour);
    for_each_tick(a, [&](double v) {
        const QString text = axis_label(v, locale);
        const int w = fm.horizontalAdvance(text);
        const int y = static_cast<int>(std::lround(map.y(v, a)));
        const int x = on_left ? edge - w : edge;
        p.drawText(x, y + fm.ascent() / 2 - 1, text);
    });
}

QLocale axis_locale() {
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale;
}

// Where the legend's entries and the time axis title stand: from the plot's
// left edge, on as many lines as a narrow diagram needs, the time axis title
// at the right end of the last line. Nothing overlaps, in any language.
struct LegendItem {
    int x = 0; // the start of the entry's stroke, or of the title's text
    int line = 0;
};
struct Legend {
    std::vector<LegendItem> entries; // in the order of the entries given
    LegendItem time;
    int lines = 1;
};

constexpr int legend_stroke = 24; // the stroke of an entry and the room after it

Legend legend_layout(const QFontMetrics& fm, const QStringList& entries, const QString& time,
                     int left, int right) {
    Legend legend;
    int x = left;
    int line = 0;
    for (const QString& text : entries) {
        const int width = legend_stroke + fm.horizontalAdvance(text);
        if (x > left && x + width > right) {
            ++line;
            x = left;
        }
        legend.entries.push_back({x, line});
        x += width + 3 * gap;
    }
    const int time_width = fm.horizontalAdvance(time);
    if (x > left && x + time_width > right)
        ++line;
    legend.time = {std::max(left, right - time_width), line};
    legend.lines = line + 1;
    return legend;
}

QStringList legend_texts(const ChartTexts& texts, bool pressure_only) {
    if (pressure_only)
        return {texts.pressure};
    return {texts.o2, texts.flow, texts.set_flow, texts.pressure};
}

// The plot's left and right edges inside `area`: room for the axis labels.
std::pair<int, int> plot_sides(const QFontMetrics& fm, const QRect& area, const ChartRanges& r,
                               bool pressure_only) {
    const QLocale locale = axis_locale();
    const int o2_width = pressure_only ? 0 : widest_label(fm, r.o2, locale) + 2 * gap;
    const int flow_width = pressure_only ? 0 : widest_label(fm, r.flow, locale) + 2 * gap;
    const int pressure_width = widest_label(fm, r.pressure, locale) + 2 * gap;
    return {area.left() + gap + o2_width + flow_width, area.right() - (gap + pressure_width)};
}

} // namespace

QRect live_chart_plot_area(const QFontMetrics& fm, const QRect& area, const ChartRanges& r,
                           bool pressure_only, const ChartTexts& texts) {
    const auto [left, right] = plot_sides(fm, area, r, pressure_only);
    const Legend legend =
        legend_layout(fm, legend_texts(texts, pressure_only), texts.time, left, right);
    const int legend_height = legend.lines * fm.height() + 2 * gap;
    return QRect(QPoint(left, area.top() + legend_height),
                 QPoint(right, area.bottom() - (fm.height() + 2 * gap)));
}

ChartTexts chart_texts(const config::LanguageTables& language) {
    // A diagram without its legend cannot be read: where the language file
    // has no entry the designed text stays.
    ChartTexts t;
    const auto take = [](QString& target, const QString& text) {
        if (!text.isEmpty())
            target = text;
    };
    take(t.o2, language.text(4201));
    take(t.flow, language.text(4202));
    take(t.set_flow, language.text(4203));
    take(t.pressure, language.text(4204));
    take(t.time, language.text(4205));
    return t;
}

ChartRanges chart_ranges(const Samples& samples) {
    ChartRanges r;
    double t0 = 0;
    double t1 = minimum_time_span;
    if (!samples.empty()) {
        t0 = samples.front().time;
        t1 = std::max(samples.back().time, t0 + minimum_time_span);
    }
    // The time axis is not rounded outwards: the newest sample stays at the right edge.
    r.time = {t0, t1, nice_step(t1 - t0, 8)};
    r.o2 = {0, 100, 20};
    if (samples.empty()) {
        r.flow = {0, 5, 1};
        r.pressure = {0, 1000, 200};
        return r;
    }
    double flow_low = 0, flow_high = 1;
    double p_low = samples.front().pressure, p_high = p_low;
    for (const LiveSample& s : samples) {
        flow_low = std::min({flow_low, s.flow, s.set_flow});
        flow_high = std::max({flow_high, s.flow, s.set_flow});
        p_low = std::min(p_low, s.pressure);
        p_high = std::max(p_high, s.pressure);
    }
    r.flow = nice_range(flow_low, flow_high, 5);
    r.pressure = nice_range(p_low, p_high, 5);
    return r;
}

void draw_live_chart(QPainter& p, const QRect& area, const Samples& samples, bool pressure_only,
                     const ChartTexts& texts) {
    p.save();
    p.fillRect(area, Qt::white);
    const QLocale locale = axis_locale();
    const QFontMetrics fm = p.fontMetrics();
    const ChartRanges r = chart_ranges(samples);
    const QRect plot = live_chart_plot_area(fm, area, r, pressure_only, texts);
    const int o2_width = pressure_only ? 0 : widest_label(fm, r.o2, locale) + 2 * gap;
    if (plot.width() < 10 || plot.height() < 10) {
        p.restore();
        return;
    }
    const Mapper map(plot, r.time);
    const AxisRange& grid_axis = pressure_only ? r.pressure : r.o2;

    // Grid and frame.
    p.setPen(QColor(225, 225, 225));
    for_each_tick(grid_axis, [&](double v) {
        const int y = static_cast<int>(std::lround(map.y(v, grid_axis)));
        p.drawLine(plot.left(), y, plot.right(), y);
    });
    for_each_tick(r.time, [&](double t) {
        const int x = static_cast<int>(std::lround(map.x(t)));
        p.drawLine(x, plot.top(), x, plot.bottom());
    });
    p.setPen(QColor(120, 120, 120));
    p.drawRect(plot);

    // Time labels under the plot.
    p.setPen(Qt::black);
    for_each_tick(r.time, [&](double t) {
        const QString text = axis_label(t, locale);
        const int x = static_cast<int>(std::lround(map.x(t))) - fm.horizontalAdvance(text) / 2;
        p.drawText(x, plot.bottom() + gap + fm.ascent(), text);
    });

    // Axes.
    if (!pressure_only) {
        draw_axis_labels(p, fm, r.o2, map, plot.left() - gap, true, chart_colour::o2, locale);
        draw_axis_labels(p, fm, r.flow, map, plot.left() - o2_width - gap, true, chart_colour::flow,
                         locale);
    }
    draw_axis_labels(p, fm, r.pressure, map, plot.right() + gap, false, chart_colour::pressure,
                     locale);

    // Legend over the plot, the time axis title at the right end of its
    // last line.
    struct Entry {
        const QColor& colour;
        Qt::PenStyle style;
    };
    const QStringList entries = legend_texts(texts, pressure_only);
    const std::vector<Entry> strokes =
        pressure_only ? std::vector<Entry>{{chart_colour::pressure, Qt::SolidLine}}
                      : std::vector<Entry>{{chart_colour::o2, Qt::SolidLine},
                                           {chart_colour::flow, Qt::SolidLine},
                                           {chart_colour::set_flow, Qt::DashLine},
                                           {chart_colour::pressure, Qt::SolidLine}};
    const Legend legend = legend_layout(fm, entries, texts.time, plot.left(), plot.right());
    const auto baseline = [&](int line) {
        return area.top() + gap + line * fm.height() + fm.ascent();
    };
    for (std::size_t i = 0; i < strokes.size(); ++i) {
        const LegendItem& at = legend.entries[i];
        const int mid = area.top() + gap + at.line * fm.height() + fm.height() / 2;
        p.setPen(QPen(strokes[i].colour, 2, strokes[i].style));
        p.drawLine(at.x, mid, at.x + 20, mid);
        p.setPen(Qt::black);
        p.drawText(at.x + legend_stroke, baseline(at.line), entries[static_cast<qsizetype>(i)]);
    }
    p.drawText(legend.time.x, baseline(legend.time.line), texts.time);

    // Curves, clipped to the plot.
    if (!samples.empty()) {
        p.setClipRect(plot.adjusted(1, 1, 0, 0));
        if (!pressure_only) {
            draw_series(p, series_points(samples, &LiveSample::O2, map, r.o2),
                        QPen(chart_colour::o2, 1));
            draw_series(p, series_points(samples, &LiveSample::set_flow, map, r.flow),
                        QPen(chart_colour::set_flow, 1, Qt::DashLine));
            draw_series(p, series_points(samples, &LiveSample::flow, map, r.flow),
                        QPen(chart_colour::flow, 1));
        }
        draw_series(p, series_points(samples, &LiveSample::pressure, map, r.pressure),
                    QPen(chart_colour::pressure, 1));
    }
    p.restore();
}

LiveChart::LiveChart(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("Chart"));
    setMinimumSize(300, 150);
    setAttribute(Qt::WA_OpaquePaintEvent);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
}

void LiveChart::set_source(const device::LiveHistory* history,
                           const config::LanguageTables* language) {
    history_ = history;
    language_ = language;
    update();
}

void LiveChart::set_data_valid(bool valid) {
    data_valid_ = valid;
    update();
}

void LiveChart::set_pressure_only(bool on) {
    pressure_only_ = on;
    update();
}

void LiveChart::paintEvent(QPaintEvent*) {
    static const Samples none;
    QPainter p(this);
    const Samples& samples = history_ && data_valid_ ? history_->samples() : none;
    draw_live_chart(p, rect(), samples, pressure_only_,
                    language_ ? chart_texts(*language_) : ChartTexts{});
}

} // namespace veltrako::ui

// The meta-object code lives with its class, so that using one class of
// the library does not pull in all the others.
#include "moc_live_chart.cpp"
