#pragma once
// Printing of text lines written in a small inline markup, on any drawing
// surface.
//
// A line is split at tab characters into columns; column i starts at tab
// stop i plus the page's left offset. Inside a column text is literal except
// for tags between two single quotes:
//   'b' '/b'                    bold on / off
//   'u' '/u'                    underline on / off
//   'left' 'center' 'right'     how the following runs sit on the tab stop
//   'font NAME'                 font name (the rest of the tag, trimmed)
//   'size N'                    font size in points (the rest, trimmed)
// Tag names are case-sensitive; any other tag, the empty one included, is
// ignored, so there is no way to print a single quote. Font settings stay in
// force after the line; alignment starts as 'left' in every column.

#include "print/drawing_surface.h"

#include <QString>

#include <vector>

namespace veltrako::print {

enum class Alignment { left, center, right };

// X positions of the columns of a line, in twips, column 0 first.
using TabStops = std::vector<double>;

// What print_markup returns for a tag that is not closed.
inline const QString markup_error = QStringLiteral("ERROR");

// Prints one markup line and ends it. An empty line only moves down by half
// the height of "X". When there are more columns than tab stops, the columns
// that have a stop are printed and the routine stops there without ending
// the line, returning false; otherwise it returns true.
bool print_line(DrawingSurface& surface, const QString& text, const TabStops& tab_stops,
                int page_left);

// Prints one column at the current position. Returns an empty text, or
// markup_error when a quote is not closed before the end of the column; the
// text after that quote is not printed.
QString print_markup(DrawingSurface& surface, const QString& column);

// Prints plain text at the current position without ending the line. The
// current x is the left edge, the centre or the right edge of the text.
void print_run(DrawingSurface& surface, const QString& text, Alignment alignment);

// The font of the given size and face name, turned by `angle` degrees; not
// bold, not underlined.
FontSpec create_font(double points, const QString& face_name, double angle);

// `text` turned by `angle` degrees (90 reads upwards) at the current
// position, in the surface's font size and name (blanks removed from the
// name), not bold. The current position stays where it is.
void print_rotated(DrawingSurface& surface, double angle, const QString& text);

// A surface with the page's left offset, for printouts that print many lines.
class MarkupPrinter {
public:
    explicit MarkupPrinter(DrawingSurface& surface) : surface_(surface) {}

    // Twips added to every tab stop.
    int page_left = 0;

    bool print_line(const QString& text, const TabStops& tab_stops) {
        return print::print_line(surface_, text, tab_stops, page_left);
    }
    DrawingSurface& surface() const { return surface_; }

private:
    DrawingSurface& surface_;
};

} // namespace veltrako::print
