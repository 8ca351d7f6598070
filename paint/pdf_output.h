#pragma once
// Printouts straight to a PDF file (A4, portrait, no dialog) and onto an
// image, through the same drawing surface as the printer.

#include "print/drawing_surface.h"

#include <QImage>
#include <QSize>
#include <QString>

#include <functional>

namespace veltrako::paint {

// Draws a whole document; it may call surface.new_page() to start another
// page.
using DocumentDrawer = std::function<void(print::DrawingSurface& surface)>;
// Draws page `page` (0 upwards) of a document with a known page count.
using PageDrawer = std::function<void(print::DrawingSurface& surface, int page)>;

// The margin of a PDF page, in millimetres: what a printer typically cannot
// print on, so a PDF shows the page as paper would.
inline constexpr double pdf_margin_mm = 5.0;
// Device resolution of the PDF, in dots per inch.
inline constexpr int pdf_resolution = 1200;

// Writes the document to `path`, replacing the file. On failure returns
// false and, when `error` is given, says why there.
bool print_to_pdf(const QString& path, const DocumentDrawer& draw, QString* error = nullptr);
bool print_pages_to_pdf(const QString& path, int pages, const PageDrawer& draw,
                        QString* error = nullptr);

// Runs `draw` once per page, with a page break between pages.
void draw_pages(print::DrawingSurface& surface, int pages, const PageDrawer& draw);

// An image of `size` pixels at `dpi`, white, with the drawing on it.
QImage render_to_image(QSize size, int dpi, const DocumentDrawer& draw);

} // namespace veltrako::paint
