#pragma once
// The page of the printed report: margins, the move to a further page with
// its continuation line, and the pieces the report is made of (bands,
// fields to fill in, check boxes, boxes of typed text, rows of captions and
// values). Drawn through the drawing surface, so it knows no printer.

#include "config/language.h"
#include "print/drawing_surface.h"
#include "print/markup.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <utility>
#include <vector>

namespace veltrako::report {

using CaptionRows = std::vector<std::pair<QString, QString>>;

namespace layout {

inline constexpr print::Rgb rule_grey{150, 150, 150};
inline constexpr print::Rgb band_grey{232, 232, 232};
inline constexpr print::Rgb row_grey{215, 215, 215};
inline const QString body_font = QStringLiteral("Arial");
// Remarks are broken into lines by character count: a fixed pitch keeps
// them inside their box.
inline const QString remark_font = QStringLiteral("Courier New");

// A language text inside a markup line: a single quote would open a tag and
// a tab start a column, so they become a typographic apostrophe and a blank.
QString markup_safe(QString text);
void use_font(print::DrawingSurface& s, double points, bool bold = false,
              const QString& name = body_font);
// Text typed by a person, printed as it stands at (x, y).
void plain(print::DrawingSurface& s, double x, double y, const QString& text,
           print::Alignment alignment = print::Alignment::left);
// One line of text, the line breaks of typed text made blanks.
QString one_line(QString text);

class PageLayout {
public:
    PageLayout(print::DrawingSurface& s, const config::LanguageTables& language);

    QString text(int n) const { return language_.text(n); }

    // Moves to the next page when `needed` twips do not fit above `limit`.
    void need(double needed, double limit);

    // A markup line at y.
    void markup(const QString& line, const print::TabStops& stops);

    // A band with the caption; `keep_with` twips of what follows must fit
    // under it, so a caption never ends a page alone.
    void heading(const QString& caption, double keep_with = 500);

    // Caption, then the value on a line to fill in, from x to x_end.
    void field(double x, double caption_width, double x_end, int caption, const QString& value);

    // A check box with its caption; ticked when `checked`.
    void check(double x, double row_y, const QString& caption, bool checked);

    // Typed text broken into lines of a fixed number of characters inside a
    // box of at least `min_lines` lines.
    void text_box(const QString& value, int min_lines);
    // Two such texts side by side, each under its caption in one band, when
    // both take at most `max_lines` lines at half the width; otherwise
    // nothing is drawn and the result is false.
    bool text_boxes_side_by_side(const QString& left_caption, const QString& left_value,
                                 const QString& right_caption, const QString& right_value,
                                 int min_lines, int max_lines);
    // How many characters of the boxes' fixed pitch fit a box `width` wide.
    int box_characters(double width) const;
    // A grey frame from (x1, y1) to (x2, y2).
    void frame(double x1, double y1, double x2, double y2);

    // Height of a caption-and-value row in the present font.
    double row_height() const { return s_.text_height(QStringLiteral("X")) + 50; }

    // One row from x to x_end at row_y: the caption, the value in bold at
    // the right, a thin line under it. A row without a value is a title,
    // its caption in bold.
    void row(const QString& caption, const std::optional<QString>& value, double x, double x_end,
             double row_y);

    // Caption and value rows in a column, with a thin line under each.
    double rows(const CaptionRows& data, double x, double x_end, double top, double points = 9.5);

    // Two columns of rows side by side, from `left` to x_mid_end and from
    // x_mid to `right`, the right one under its title. More than seven right
    // rows stand in two halves side by side, so that fourteen valve timings
    // take no more lines than seven. Rows go line by line: a line that does
    // not fit above the foot of the page goes on the next one, where the
    // right column's title comes again if it has rows left. The last line
    // goes on only with `tail` twips of room under it, so that what follows
    // (the signature) is never left on a page of its own.
    void paired_rows(const CaptionRows& left_rows, double x_mid_end, const QString& right_title,
                     const CaptionRows& right_rows, double x_mid, double tail);

    print::DrawingSurface& s_;
    const config::LanguageTables& language_;
    double left = 0;
    double right = 0;
    double bottom = 0;
    double y = 0;
    // The line at the top of every further page.
    QString continuation;
};

} // namespace layout
} // namespace veltrako::report
