// Printed pages by what they really hold: a page written straight to PDF and
// one printed on a printer set to a PDF file are read back with pdftotext
// and must show their words in order; drawn on an image, text lands inside
// the box its measures give; the remembered printer and copy count reach the
// printer.

#include "config/language.h"
#include "painter_surface.h"
#include "pdf_output.h"
#include "print/markup.h"
#include "printing.h"
#include "report_harness.h"
#include "table.h"

#include <QApplication>
#include <QPrinter>
#include <QRegularExpression>

using namespace veltrako;
using print::DrawingSurface;
using print::TabStops;

namespace {

const TabStops columns{0, 3000, 6000};

// A page as a printout writes it: a centred title, an empty line, columns,
// a size change within a line, and a line with an unclosed quote.
void draw_sample_page(DrawingSurface& surface) {
    print::MarkupPrinter printer(surface);
    printer.page_left = 15;
    surface.set_font_name(QStringLiteral("Arial"));
    surface.move_to(0, 600);
    const TabStops title{0, surface.scale_width() / 2};
    printer.print_line(QStringLiteral("\t'center''size 16''b'Inspection report'/b''size 11'"),
                       title);
    printer.print_line(QString(), columns);
    printer.print_line(QStringLiteral("Serial\t'b'A123'/b'\t'right'4711"), columns);
    printer.print_line(QStringLiteral("'size 14'Large'size 9'small\tafter"), columns);
    printer.print_line(QStringLiteral("Remarks\tnone'here"), columns);
    printer.print_line(QStringLiteral("'u'Signature'/u'"), columns);
}

// The page's words, each after the one before.
const QRegularExpression sample_words(
    QStringLiteral(
        "Inspection.*report.*Serial.*A123.*4711.*Large.*small.*after.*Remarks.*Signature"),
    QRegularExpression::DotMatchesEverythingOption);

// Bounding box of the pixels darker than white, inside `where`.
QRect ink(const QImage& image, const QRect& where) {
    QRect box;
    for (int y = where.top(); y <= where.bottom(); ++y)
        for (int x = where.left(); x <= where.right(); ++x)
            if (image.valid(x, y) && qGray(image.pixel(x, y)) < 200)
                box |= QRect(x, y, 1, 1);
    return box;
}

} // namespace

class TestPrintPdf : public QObject {
    Q_OBJECT
private slots:
    void page_read_back_data() {
        testing::Table<bool>()("straight to PDF", false)("printer printing to a file", true);
    }

    // (A folder that is not there is named in the error.)
    void page_read_back() {
        const auto [through_printer] = testing::Table<bool>::fetch();
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("page.pdf"));
        QString error;
        const QString missing = dir.filePath(QStringLiteral("missing/page.pdf"));
        QVERIFY(!paint::print_to_pdf(missing, draw_sample_page, &error));
        QVERIFY2(error.contains(missing), qPrintable(error));
        if (through_printer) {
            QPrinter printer;
            printer.setOutputFormat(QPrinter::PdfFormat);
            printer.setOutputFileName(path);
            QVERIFY2(
                ui::print_on_printer(printer, draw_sample_page, config::LanguageTables{}, &error),
                qPrintable(error));
        } else {
            QVERIFY2(paint::print_to_pdf(path, draw_sample_page, &error), qPrintable(error));
        }
        const QString text = testing::pdf_layout_text(path);
        QVERIFY2(text.contains(sample_words), qPrintable(text));
        QCOMPARE(text.count(QLatin1Char('\f')), 1); // one page
        // The unclosed quote hid the rest of its column.
        QVERIFY2(!text.contains(QLatin1String("here")), qPrintable(text));
    }

    void pages_in_order() {
        QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("pages.pdf"));
        QVERIFY(paint::print_pages_to_pdf(path, 3, [](DrawingSurface& surface, int page) {
            print::print_line(surface, QStringLiteral("Page\t%1").arg(page + 1), columns, 0);
            QCOMPARE(surface.current_y(), surface.text_height(QStringLiteral("X")));
        }));
        for (int page = 1; page <= 3; ++page) {
            const QString text = testing::pdf_layout_text(path, page).simplified();
            QCOMPARE(text, QStringLiteral("Page %1").arg(page));
        }
    }

    void text_inside_its_measures() {
        // At 144 dpi one pixel is 10 twips. A bold run, text reading upwards from
        // (500, 5000), and a box given by its corners in reverse order.
        QRectF run;
        QRectF turned;
        const QImage image = paint::render_to_image(QSize(800, 600), 144, [&](DrawingSurface& s) {
            s.set_font_size(20);
            s.set_bold(true);
            s.move_to(500, 400);
            const QString text = QStringLiteral("HgMW");
            run = QRectF(500, 400, s.text_width(text), s.text_height(text));
            print::print_run(s, text, print::Alignment::left);
            s.move_to(500, 5000);
            turned =
                QRectF(500, 5000 - s.text_width(text), s.text_height(text), s.text_width(text));
            print::print_rotated(s, 90, text);
            s.fill_box(6000, 4000, 5000, 3000, {0, 200, 0});
        });
        const auto px = [](const QRectF& twips) {
            return QRectF(twips.topLeft() / 10, twips.size() / 10).toAlignedRect();
        };
        for (const QRect& box : {px(run), px(turned)}) {
            const QRect drawn = ink(image, box.adjusted(-30, -30, 30, 30));
            QVERIFY(!drawn.isEmpty());
            QVERIFY(box.adjusted(-2, -2, 2, 2).contains(drawn));
            // The text fills most of its length: measures and drawing agree.
            QVERIFY(std::max(drawn.width(), drawn.height()) * 4 >
                    std::max(box.width(), box.height()) * 3);
        }
        QVERIFY(ink(image, px(turned)).height() > ink(image, px(turned)).width());
        QCOMPARE(image.pixelColor(550, 350), QColor(0, 200, 0));
    }

    void choice_reaches_printer_data() {
        testing::Table<int, int>()("three copies", 3, 3)("no count means one", 0, 1);
    }

    void choice_reaches_printer() {
        const auto [dialog_copies, copies] = testing::Table<int, int>::fetch();
        QTemporaryDir dir;
        const QString chart = dir.filePath(QStringLiteral("Compliance_VO2_2026-02.pdf"));
        const QString report = dir.filePath(QStringLiteral("Pruefprotokoll_VO2_20260302.pdf"));
        print::PrinterChoice choice;
        QPrinter printer;
        ui::apply_printer_choice(choice, printer, {QString(), chart, dialog_copies});
        QCOMPARE(printer.copyCount(), copies);
        // The next printout opens on a file again, but its own: never the
        // chart's PDF for the report.
        QPrinter next;
        ui::prepare_printer(choice, next, QStringLiteral("Office"), report);
        QCOMPARE(next.outputFormat(), QPrinter::PdfFormat);
        QCOMPARE(next.outputFileName(), report);
        QCOMPARE(ui::read_selection(next).output_file, report);
    }
};

QTEST_MAIN(TestPrintPdf)
#include "test_print_pdf.moc"
