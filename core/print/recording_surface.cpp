#include "print/recording_surface.h"

#include <QStringList>

#include <algorithm>

namespace veltrako::print {

RecordingSurface::RecordingSurface(double width, double height) : width_(width), height_(height) {}

double RecordingSurface::width_in(const FontSpec& font, const QString& text) {
    const double share = font.bold ? 0.6 : 0.5;
    return static_cast<double>(text.size()) * font.points * twips_per_point * share;
}

double RecordingSurface::height_in(const FontSpec& font, const QString& text) {
    return static_cast<double>(line_count(text)) * font.points * twips_per_point * 1.2;
}

double RecordingSurface::base_line_of(const RecordedRun& run) {
    return run.y + 0.8 * height_in(run.font, QStringLiteral("m"));
}

void RecordingSurface::draw_text(double x, double y, const QString& text) {
    runs.push_back({x, y, text, font(), fore_colour(), page});
}

void RecordingSurface::draw_turned_text(double x, double y, const FontSpec& turned,
                                        const QString& text) {
    runs.push_back({x, y, text, turned, fore_colour(), page});
}

void RecordingSurface::draw_line(double x1, double y1, double x2, double y2, Rgb colour) {
    lines.push_back({x1, y1, x2, y2, colour, page});
}

void RecordingSurface::fill_box(double x1, double y1, double x2, double y2, Rgb colour) {
    boxes.push_back(
        {std::min(x1, x2), std::min(y1, y2), std::max(x1, x2), std::max(y1, y2), colour, page});
}

bool RecordingSurface::new_page() {
    ++page;
    reset_position();
    return true;
}

const RecordedRun* RecordingSurface::find_run(const QString& text) const {
    const auto it = std::find_if(runs.begin(), runs.end(),
                                 [&](const RecordedRun& run) { return run.text == text; });
    return it == runs.end() ? nullptr : &*it;
}

QStringList RecordingSurface::run_texts() const {
    QStringList texts;
    for (const RecordedRun& run : runs)
        texts << run.text;
    return texts;
}

} // namespace veltrako::print
