#pragma once
// p_compliance: the picture box of the monthly usage chart. It draws the
// chart of the shown month whenever the page says one is shown, filling the
// box, so a resized window redraws at its new size.

#include <QWidget>

namespace veltrako {
class AppContext;
}

namespace veltrako::ui {

class ComplianceChartWidget : public QWidget {
    Q_OBJECT
public:
    explicit ComplianceChartWidget(QWidget* parent = nullptr);

    void set_source(AppContext* ctx) { ctx_ = ctx; }

    // Base font size of the chart's texts on screen, in points.
    static constexpr double font_points = 8;

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    AppContext* ctx_ = nullptr;
};

} // namespace veltrako::ui
