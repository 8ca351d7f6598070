#include "pdf_output.h"

#include "painter_surface.h"

#include <QMarginsF>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <QSaveFile>

#include <cmath>

namespace veltrako::paint {

bool print_to_pdf(const QString& path, const DocumentDrawer& draw, QString* error) {
    const auto failed = [&] {
        if (error)
            *error = QStringLiteral("cannot write the PDF file %1").arg(path);
        return false;
    };
    // Whole or not at all, like every other file the program writes: the
    // pages go to a temporary file that replaces `path` only once complete.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return failed();
    {
        QPdfWriter writer(&file);
        writer.setResolution(pdf_resolution);
        writer.setCreator(QStringLiteral("veltrako2"));
        writer.setPageLayout(
            QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait,
                        QMarginsF(pdf_margin_mm, pdf_margin_mm, pdf_margin_mm, pdf_margin_mm),
                        QPageLayout::Millimeter));
        QPainter painter;
        if (!painter.begin(&writer))
            return failed();
        PainterSurface surface(painter);
        draw(surface);
        painter.end();
    }
    if (file.size() == 0 || !file.commit())
        return failed();
    return true;
}

void draw_pages(print::DrawingSurface& surface, int pages, const PageDrawer& draw) {
    for (int page = 0; page < pages; ++page) {
        if (page > 0)
            surface.new_page();
        draw(surface, page);
    }
}

bool print_pages_to_pdf(const QString& path, int pages, const PageDrawer& draw, QString* error) {
    return print_to_pdf(
        path, [&](print::DrawingSurface& surface) { draw_pages(surface, pages, draw); }, error);
}

QImage render_to_image(QSize size, int dpi, const DocumentDrawer& draw) {
    QImage image(size, QImage::Format_RGB32);
    const int dots_per_metre = static_cast<int>(std::lround(dpi / 0.0254));
    image.setDotsPerMeterX(dots_per_metre);
    image.setDotsPerMeterY(dots_per_metre);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    PainterSurface surface(painter);
    draw(surface);
    return image;
}

} // namespace veltrako::paint
