#pragma once
// The one drawing surface every printout and chart draws on: a font, text
// measurement, a current position in twips (1440 to the inch, y downwards
// from the top left of the surface), text runs, lines, filled boxes and
// turned text. The layout code is written once against this interface and
// does not know whether it lands on a widget, a printer page, a PDF, an
// image or a test's recording.

#include <QString>

namespace veltrako::print {

inline constexpr double twips_per_inch = 1440.0;
inline constexpr double twips_per_point = 20.0;

struct Rgb {
    int red = 0;
    int green = 0;
    int blue = 0;
    friend bool operator==(const Rgb&, const Rgb&) = default;
};

inline constexpr Rgb black{0, 0, 0};
inline constexpr Rgb white{255, 255, 255};

// A font as plain data. `angle` turns the text anticlockwise, in degrees:
// 90 reads upwards.
struct FontSpec {
    QString name = QStringLiteral("Arial");
    double points = 10;
    bool bold = false;
    bool underline = false;
    double angle = 0;
    friend bool operator==(const FontSpec&, const FontSpec&) = default;
};

class DrawingSurface {
public:
    virtual ~DrawingSurface() = default;

    const FontSpec& font() const { return font_; }
    void set_font(const FontSpec& font) { font_ = font; }
    void set_font_name(const QString& name) { font_.name = name; }
    void set_font_size(double points) { font_.points = points; }
    void set_bold(bool on) { font_.bold = on; }
    void set_underline(bool on) { font_.underline = on; }

    // Colour of printed text.
    Rgb fore_colour() const { return fore_colour_; }
    void set_fore_colour(Rgb colour) { fore_colour_ = colour; }

    // Size of `text` in the current font, in twips. The height is that of a
    // whole line (leading included), times the number of lines in `text`.
    virtual double text_width(const QString& text) const = 0;
    virtual double text_height(const QString& text) const = 0;

    double current_x() const { return x_; }
    double current_y() const { return y_; }
    void set_current_x(double twips) { x_ = twips; }
    void set_current_y(double twips) { y_ = twips; }
    void move_to(double x, double y) {
        x_ = x;
        y_ = y;
    }

    // Prints `text` with its top left corner at the current position. Without
    // a line end the position moves right by the text's width, so the next
    // run continues on the same line; with a line end it moves to the left
    // edge (x 0) one line further down. A line break inside `text` also
    // continues at the left edge of the next line.
    void print(const QString& text, bool line_end);

    virtual void draw_line(double x1, double y1, double x2, double y2, Rgb colour) = 0;
    // A box filled with `colour`, corners in any order.
    virtual void fill_box(double x1, double y1, double x2, double y2, Rgb colour) = 0;
    // `text` in `font`, turned by `font.angle` about (x, y), the top left
    // corner of the unturned text, in the fore colour. The current position
    // does not move.
    virtual void draw_turned_text(double x, double y, const FontSpec& font,
                                  const QString& text) = 0;

    // The drawable area in twips.
    virtual double scale_width() const = 0;
    virtual double scale_height() const = 0;

    // Ends the page and starts the next one at position (0, 0); the font is
    // kept. False on a surface that has only one page (widget, image).
    virtual bool new_page() { return false; }

    // Lines of `text`: one more than its line breaks (CR LF, CR or LF).
    static int line_count(const QString& text);

protected:
    // `text` (one line, not empty) with its top left corner at (x, y) in the
    // current font and fore colour.
    virtual void draw_text(double x, double y, const QString& text) = 0;

    // Called by new_page() implementations.
    void reset_position() { move_to(0, 0); }

private:
    FontSpec font_;
    Rgb fore_colour_ = black;
    double x_ = 0;
    double y_ = 0;
};

// `text` cut to `width` in the surface's current font, with "…" where it was
// cut, so that a long value stays inside its column or on the page.
QString fitted_text(const DrawingSurface& s, const QString& text, double width);

} // namespace veltrako::print
