#include "printing.h"

#include "painter_surface.h"

#include <QPainter>
#include <QPrintDialog>
#include <QPrinter>
#include <QPrinterInfo>

namespace veltrako::ui {

void prepare_printer(print::PrinterChoice& choice, QPrinter& printer,
                     const QString& system_default) {
    const QString name = print::begin_printer_choice(choice, system_default);
    if (!name.isEmpty()) {
        printer.setOutputFormat(QPrinter::NativeFormat);
        printer.setPrinterName(name);
    } else if (!choice.output_file.isEmpty()) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(choice.output_file);
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
    print::end_printer_choice(choice, selection.printer_name, selection.output_file);
    printer.setCopyCount(print::copies_to_print(selection.copies));
}

bool choose_printer(print::PrinterChoice& choice, QPrinter& printer, QWidget* parent) {
    prepare_printer(choice, printer, QPrinterInfo::defaultPrinterName());
    QPrintDialog dialog(&printer, parent);
    // No selection, no page range; printing to a file stays offered, which
    // is the only choice on a machine without printers.
    dialog.setOptions(QAbstractPrintDialog::PrintToFile | QAbstractPrintDialog::PrintCollateCopies |
                      QAbstractPrintDialog::PrintShowPageSize);
    if (dialog.exec() != QDialog::Accepted)
        return false;
    apply_printer_choice(choice, printer, read_selection(printer));
    return true;
}

bool print_on_printer(QPrinter& printer, const paint::DocumentDrawer& draw, QString* error) {
    QPainter painter;
    if (!painter.begin(&printer)) {
        if (error)
            *error =
                printer.outputFileName().isEmpty()
                    ? QStringLiteral("cannot print on %1").arg(printer.printerName())
                    : QStringLiteral("cannot write the PDF file %1").arg(printer.outputFileName());
        return false;
    }
    paint::PainterSurface surface(painter);
    draw(surface);
    return painter.end();
}

} // namespace veltrako::ui
