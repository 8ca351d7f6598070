#include "painter_surface.h"

#include <QColor>
#include <QPagedPaintDevice>
#include <QPaintDevice>
#include <QPainter>
#include <QPen>

#include <algorithm>

namespace veltrako::paint {

namespace {

// Lines are as wide as one pixel of a 96-dpi screen, on every device.
constexpr double line_width_twips = 15;

QColor qcolour(print::Rgb c) {
    return QColor(c.red, c.green, c.blue);
}

} // namespace

PainterSurface::PainterSurface(QPainter& painter)
    : painter_(painter), dpi_x_(painter.device()->logicalDpiX()),
      dpi_y_(painter.device()->logicalDpiY()) {}

QFont PainterSurface::qfont(const print::FontSpec& font) const {
    QFont f(font.name);
    f.setPointSizeF(font.points);
    f.setBold(font.bold);
    f.setUnderline(font.underline);
    return f;
}

const QFontMetricsF& PainterSurface::metrics() const {
    if (!metrics_ || measured_font_ != font()) {
        measured_font_ = font();
        metrics_.emplace(qfont(font()), painter_.device());
    }
    return *metrics_;
}

double PainterSurface::text_width(const QString& text) const {
    return metrics().horizontalAdvance(text) * print::twips_per_inch / dpi_x_;
}

double PainterSurface::text_height(const QString& text) const {
    return line_count(text) * metrics().lineSpacing() * print::twips_per_inch / dpi_y_;
}

void PainterSurface::draw_text(double x, double y, const QString& text) {
    painter_.setFont(qfont(font()));
    painter_.setPen(qcolour(fore_colour()));
    painter_.drawText(QPointF(px_x(x), px_y(y) + metrics().ascent()), text);
}

void PainterSurface::draw_turned_text(double x, double y, const print::FontSpec& font,
                                      const QString& text) {
    const QFont f = qfont(font);
    const QFontMetricsF fm(f, painter_.device());
    painter_.save();
    painter_.setFont(f);
    painter_.setPen(qcolour(fore_colour()));
    painter_.translate(px_x(x), px_y(y));
    // Angles count anticlockwise; the painter's y axis points down.
    painter_.rotate(-font.angle);
    painter_.drawText(QPointF(0, fm.ascent()), text);
    painter_.restore();
}

void PainterSurface::draw_line(double x1, double y1, double x2, double y2, print::Rgb colour) {
    QPen pen(qcolour(colour));
    pen.setWidthF(std::max(1.0, px_y(line_width_twips)));
    pen.setCapStyle(Qt::FlatCap);
    painter_.setPen(pen);
    painter_.drawLine(QPointF(px_x(x1), px_y(y1)), QPointF(px_x(x2), px_y(y2)));
}

void PainterSurface::fill_box(double x1, double y1, double x2, double y2, print::Rgb colour) {
    const QRectF box(QPointF(px_x(std::min(x1, x2)), px_y(std::min(y1, y2))),
                     QPointF(px_x(std::max(x1, x2)), px_y(std::max(y1, y2))));
    painter_.fillRect(box, qcolour(colour));
}

double PainterSurface::scale_width() const {
    return painter_.device()->width() * print::twips_per_inch / dpi_x_;
}

double PainterSurface::scale_height() const {
    return painter_.device()->height() * print::twips_per_inch / dpi_y_;
}

bool PainterSurface::new_page() {
    auto* paged = dynamic_cast<QPagedPaintDevice*>(painter_.device());
    if (!paged || !paged->newPage())
        return false;
    reset_position();
    return true;
}

} // namespace veltrako::paint
