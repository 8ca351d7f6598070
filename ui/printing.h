#pragma once
// Printing on paper: the system's print dialog, opening on the printer chosen
// last in this run (the first time: the system default), and a document drawn
// onto the chosen printer through the same drawing surface as the screen and
// PDF files. Without any installed printer the dialog still offers printing
// to a PDF file; that file is always proposed under the printout's own name
// in the remembered folder (INITDIR).

#include "pdf_output.h"
#include "print/printer_choice.h"

class QPrinter;
class QWidget;

namespace veltrako {
class AppContext;
}
namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::ui {

// What a confirmed print dialog left on the printer.
struct PrinterSelection {
    QString printer_name; // empty when printing to a file
    QString output_file;
    int copies = 1;
};

// Opens the print dialog for a printout whose PDF would be `pdf_name`. False
// when the dialog was cancelled; then nothing is to be printed. On true,
// `printer` is set up for the choice and its copies, and a PDF file's folder
// has become INITDIR, as after any confirmed file dialog.
bool choose_printer(AppContext& ctx, QPrinter& printer, QWidget* parent, const QString& pdf_name);

// Points `printer` at the printer the dialog should open on, or at
// `proposed_pdf` when printing to a file was the last choice or there is no
// printer.
void prepare_printer(print::PrinterChoice& choice, QPrinter& printer, const QString& system_default,
                     const QString& proposed_pdf);
// What the dialog left on `printer`.
PrinterSelection read_selection(const QPrinter& printer);
// Remembers the selection for the next dialog and applies its copy count.
void apply_printer_choice(print::PrinterChoice& choice, QPrinter& printer,
                          const PrinterSelection& selection);

// Draws the document on `printer`. False, with the reason in `error` (words
// from `language`), when the printer cannot be started.
bool print_on_printer(QPrinter& printer, const paint::DocumentDrawer& draw,
                      const config::LanguageTables& language, QString* error = nullptr);

} // namespace veltrako::ui
