#include "compliance_chart_widget.h"

#include "app_context.h"
#include "compliance/compliance_chart.h"
#include "painter_surface.h"

#include <QPainter>

namespace veltrako::ui {

ComplianceChartWidget::ComplianceChartWidget(QWidget* parent) : QWidget(parent) {
    setObjectName(QStringLiteral("p_compliance"));
    setAutoFillBackground(true);
    QPalette p = palette();
    p.setColor(QPalette::Window, Qt::white);
    setPalette(p);
    setMinimumSize(300, 200);
}

void ComplianceChartWidget::paintEvent(QPaintEvent*) {
    if (!ctx_ || !ctx_->compliance.page.chart_shown)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::TextAntialiasing);
    paint::PainterSurface surface(painter);
    compliance::ComplianceMemory& m = ctx_->compliance;
    compliance::compliance_draw(surface, 0, 0, surface.scale_width(), surface.scale_height(),
                                font_points, m.state, m.records,
                                compliance::chart_texts(ctx_->language, QLocale()),
                                compliance::to_stamp(ctx_->clock.now()));
}

} // namespace veltrako::ui

#include "moc_compliance_chart_widget.cpp"
