#pragma once
// The live diagram on the "Gerät" page (`Chart`): a rolling plot, against
// the device's live time axis, of O2 (%), flow and set flow (l/min) on two
// left axes and pressure (hPa) on a right axis, with a legend. "Nur Druck"
// reduces it to the pressure curve. It draws from the context's live history
// and is cheap enough to redraw on every live answer.

#include "device/live_history.h"

#include <QColor>
#include <QString>
#include <QWidget>

#include <deque>

class QFontMetrics;
class QPainter;

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::ui {

namespace chart_colour {
inline const QColor o2{0, 80, 220};
inline const QColor flow{0, 150, 0};
inline const QColor set_flow{230, 130, 0};
inline const QColor pressure{210, 0, 0};
} // namespace chart_colour

// Legend and axis texts, designed in German.
struct ChartTexts {
    QString o2 = QStringLiteral("O2 (%)");
    QString flow = QStringLiteral("Flow (l/min)");
    QString set_flow = QStringLiteral("Soll-Flow (l/min)");
    QString pressure = QStringLiteral("Druck (hPa)");
    QString time = QStringLiteral("Zeit (s)");
};
// The texts from the language tables; an empty entry keeps the designed text.
ChartTexts chart_texts(const config::LanguageTables& language);

// One axis: its range and the distance between labelled ticks.
struct AxisRange {
    double low = 0;
    double high = 1;
    double step = 1;
};

struct ChartRanges {
    AxisRange time;
    AxisRange o2;
    AxisRange flow;
    AxisRange pressure;
};

// The axes for a history: time from the first sample over at least a minute,
// O2 0..100, flow from 0, pressure around its data; each rounded to readable ticks.
ChartRanges chart_ranges(const std::deque<device::LiveSample>& samples);

// The rectangle of the curves inside `area`, given the font the diagram is
// drawn with; axes, labels and legend lie outside it. A narrow diagram puts
// its legend on more lines, and the plot starts lower.
QRect live_chart_plot_area(const QFontMetrics& fm, const QRect& area, const ChartRanges& ranges,
                           bool pressure_only, const ChartTexts& texts = {});

// Draws the whole diagram into `area`.
void draw_live_chart(QPainter& painter, const QRect& area,
                     const std::deque<device::LiveSample>& samples, bool pressure_only,
                     const ChartTexts& texts);

class LiveChart : public QWidget {
    Q_OBJECT
public:
    explicit LiveChart(QWidget* parent = nullptr);

    // Where the samples and texts come from; both may be null (empty plot,
    // designed texts).
    void set_source(const device::LiveHistory* history, const config::LanguageTables* language);
    // False while no live status has arrived since the record was cleared:
    // the plot stays empty until the new time axis starts.
    void set_data_valid(bool valid);
    void set_pressure_only(bool on);
    bool pressure_only() const { return pressure_only_; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    const device::LiveHistory* history_ = nullptr;
    const config::LanguageTables* language_ = nullptr;
    bool data_valid_ = false;
    bool pressure_only_ = false;
};

} // namespace veltrako::ui
