#pragma once
// The drawing surface over a QPainter: whatever the painter is active on (a
// widget, a printer page, a PDF writer, an image) is drawn in twips,
// converted with that device's own resolution, and measured with its own
// font metrics, so a layout looks the same on screen, paper and PDF.

#include "print/drawing_surface.h"

#include <QFont>
#include <QFontMetricsF>

#include <optional>

class QPainter;

namespace veltrako::paint {

class PainterSurface final : public print::DrawingSurface {
public:
    // `painter` must be active on its device for the life of the surface.
    explicit PainterSurface(QPainter& painter);

    double text_width(const QString& text) const override;
    double text_height(const QString& text) const override;
    void draw_line(double x1, double y1, double x2, double y2, print::Rgb colour) override;
    void fill_box(double x1, double y1, double x2, double y2, print::Rgb colour) override;
    void draw_turned_text(double x, double y, const print::FontSpec& font,
                          const QString& text) override;
    double scale_width() const override;
    double scale_height() const override;
    // Pages on a printer or PDF writer; false elsewhere.
    bool new_page() override;

    // Device pixels per inch the surface converts with.
    double dpi_x() const { return dpi_x_; }
    double dpi_y() const { return dpi_y_; }

    QFont qfont(const print::FontSpec& font) const;

protected:
    void draw_text(double x, double y, const QString& text) override;

private:
    double px_x(double twips) const { return twips * dpi_x_ / print::twips_per_inch; }
    double px_y(double twips) const { return twips * dpi_y_ / print::twips_per_inch; }
    const QFontMetricsF& metrics() const;

    QPainter& painter_;
    double dpi_x_;
    double dpi_y_;
    mutable std::optional<print::FontSpec> measured_font_;
    mutable std::optional<QFontMetricsF> metrics_;
};

} // namespace veltrako::paint
