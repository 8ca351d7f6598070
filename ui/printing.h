#pragma once
// Printing on paper: the system's print dialog, opening on the printer chosen
// last in this run, and a document drawn onto the chosen printer through the
// same drawing surface as the screen and PDF files. Without any installed
// printer the dialog still offers printing to a PDF file.

#include "pdf_output.h"
#include "print/printer_choice.h"

class QPrinter;
class QWidget;

namespace veltrako::ui {

// What a confirmed print dialog left on the printer.
struct PrinterSelection {
    QString printer_name; // empty when printing to a file
    QString output_file;
    int copies = 1;
};

// Opens the print dialog on the printer chosen last (the first time: the
// system default). False when the dialog was cancelled; then nothing is to
// be printed. On true, `printer` is set up for the choice and its copies.
bool choose_printer(print::PrinterChoice& choice, QPrinter& printer, QWidget* parent);

// Points `printer` at the printer (or file) the dialog should open on.
void prepare_printer(print::PrinterChoice& choice, QPrinter& printer,
                     const QString& system_default);
// What the dialog left on `printer`.
PrinterSelection read_selection(const QPrinter& printer);
// Remembers the selection for the next dialog and applies its copy count.
void apply_printer_choice(print::PrinterChoice& choice, QPrinter& printer,
                          const PrinterSelection& selection);

// Draws the document on `printer`. False, with the reason in `error`, when
// the printer cannot be started.
bool print_on_printer(QPrinter& printer, const paint::DocumentDrawer& draw,
                      QString* error = nullptr);

} // namespace veltrako::ui
