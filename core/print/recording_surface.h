#pragma once
// A drawing surface that draws nothing and records everything: every text
// run with its position, font and colour, every line and box, and page ends.
// Its font measures are simple and exact (each character half the font size
// wide, three fifths in bold; a line 1.2 times the font size high), so a
// layout can be checked by its numbers without pixels or a display.

#include "print/drawing_surface.h"

#include <QString>

#include <vector>

namespace veltrako::print {

struct RecordedRun {
    double x = 0; // top left corner of the (unturned) text, twips
    double y = 0;
    QString text;
    FontSpec font; // font.angle is set for turned text
    Rgb colour;
    int page = 0;
};

struct RecordedLine {
    double x1 = 0;
    double y1 = 0;
    double x2 = 0;
    double y2 = 0;
    Rgb colour;
    int page = 0;
};

struct RecordedBox {
    double left = 0; // corners sorted: left <= right, top <= bottom
    double top = 0;
    double right = 0;
    double bottom = 0;
    Rgb colour;
    int page = 0;
};

class RecordingSurface final : public DrawingSurface {
public:
    // An A4 page by default.
    explicit RecordingSurface(double width = 11906, double height = 16838);

    double text_width(const QString& text) const override { return width_in(font(), text); }
    double text_height(const QString& text) const override { return height_in(font(), text); }

    void draw_line(double x1, double y1, double x2, double y2, Rgb colour) override;
    void fill_box(double x1, double y1, double x2, double y2, Rgb colour) override;
    void draw_turned_text(double x, double y, const FontSpec& font, const QString& text) override;
    double scale_width() const override { return width_; }
    double scale_height() const override { return height_; }
    bool new_page() override;

    // The measures this surface uses, for any font.
    static double width_in(const FontSpec& font, const QString& text);
    static double height_in(const FontSpec& font, const QString& text);
    // Width of a recorded run in its own font.
    static double width_of(const RecordedRun& run) { return width_in(run.font, run.text); }
    // Where the run's base line lies: 0.8 of its line height below its top.
    static double base_line_of(const RecordedRun& run);

    // The first run whose text is `text`, or null.
    const RecordedRun* find_run(const QString& text) const;
    // The texts of all runs, in the order they were printed.
    QStringList run_texts() const;

    std::vector<RecordedRun> runs;
    std::vector<RecordedLine> lines;
    std::vector<RecordedBox> boxes;
    int page = 0; // pages ended so far

protected:
    void draw_text(double x, double y, const QString& text) override;

private:
    double width_;
    double height_;
};

} // namespace veltrako::print
