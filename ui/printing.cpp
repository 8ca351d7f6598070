#include "printing.h"

#include "app_context.h"
#include "painter_surface.h"

#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>

namespace veltrako::ui {

namespace {

constexpr int text_cannot_print = 8105;
constexpr int text_pdf_not_written = 8106;

// Qt's print dialog keeps the file of "Print to File" in a line edit named
// "filename". While a printer is chosen the dialog would fill it with
// "print.pdf" in the home folder when the user switches to the file; this
// printout's own name is put there instead. Should a Qt version name the box
// differently, the dialog keeps its own proposal and nothing else changes.
void propose_file_in_dialog(QPrintDialog& dialog, const QString& proposed_pdf) {
    if (auto* box = dialog.findChild<QLineEdit*>(QStringLiteral("filename")))
        box->setText(QDir::toNativeSeparators(proposed_pdf));
}

} // namespace

void prepare_printer(print::PrinterChoice& choice, QPrinter& printer, const QString& system_default,
                     const QString& proposed_pdf) {
    printer.setDocName(QFileInfo(proposed_pdf).completeBaseName());
    const QString name = print::begin_printer_choice(choice, system_default);
    if (!name.isEmpty()) {
        printer.setOutputFormat(QPrinter::NativeFormat);
        printer.setPrinterName(name);
    } else {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(proposed_pdf);
    }
}

PrinterSelection read_selection(const QPrinter& printer) {
    PrinterSelection selection;
    if (printer.outputFormat() == QPrinter::NativeFormat && printer.outputFileName().isEmpty())
        selection.printer_name = printer.printerName();
    else
        selection.output_file = printer.outputFileName();
    selection.copies = printer.copyCount();
    return selection;
}

void apply_printer_choice(print::PrinterChoice& choice, QPrinter& printer,
                          const PrinterSelection& selection) {
    print::end_printer_choice(choice, selection.printer_name);
    printer.setCopyCount(print::copies_to_print(selection.copies));
}

bool choose_printer(AppContext& ctx, QPrinter& printer, QWidget* parent, const QString& pdf_name) {
    const QString proposed_pdf = QDir(ctx.config.INITDIR).filePath(pdf_name);
    prepare_printer(ctx.printer_choice, printer, QPrinterInfo::defaultPrinterName(), proposed_pdf);
    QPrintDialog dialog(&printer, parent);
    // No selection, no page range; printing to a file stays offered, which
    // is the only choice on a machine without printers.
    dialog.setOptions(QAbstractPrintDialog::PrintToFile | QAbstractPrintDialog::PrintCollateCopies |
                      QAbstractPrintDialog::PrintShowPageSize);
    if (printer.outputFormat() == QPrinter::NativeFormat)
        propose_file_in_dialog(dialog, proposed_pdf);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    const PrinterSelection selection = read_selection(printer);
    apply_printer_choice(ctx.printer_choice, printer, selection);
    if (!selection.output_file.isEmpty())
        remember_dialog_folder(ctx, selection.output_file);
    return true;
}

bool print_on_printer(QPrinter& printer, const paint::DocumentDrawer& draw,
                      const config::LanguageTables& language, QString* error) {
    QPainter painter;
    if (!painter.begin(&printer)) {
        if (error)
            *error =
                printer.outputFileName().isEmpty()
                    ? language.text(text_cannot_print) + QLatin1Char(' ') + printer.printerName()
                    : language.text(text_pdf_not_written) + QLatin1Char(' ') +
                          QDir::toNativeSeparators(printer.outputFileName());
        return false;
    }
    paint::PainterSurface surface(painter);
    draw(surface);
    return painter.end();
}

} // namespace veltrako::ui
