#pragma once
// Which printer the print dialog opens on: the one chosen last in this run,
// or the system's default before the first choice. The dialog itself lives
// with the window; this is the part that needs no display.

#include <QString>

namespace veltrako::print {

struct PrinterChoice {
    // The system's default printer when the last choice began.
    QString printer_default;
    // The printer chosen last; empty until the first choice, and empty while
    // the last choice was printing to a file.
    QString printer_chosen;
    // Printing to a PDF file was the last choice. Which file is not kept:
    // each printout proposes its own name, so printing the report after the
    // chart never offers to overwrite the chart's PDF.
    bool to_file = false;
};

// Before the dialog: notes the system default and returns the printer the
// dialog opens on (empty: open on printing to a file).
QString begin_printer_choice(PrinterChoice& choice, const QString& system_default);

// After a confirmed dialog: remembers a printer, or printing to a file when
// `printer_name` is empty.
void end_printer_choice(PrinterChoice& choice, const QString& printer_name);

// Copies to print for the count a dialog reports: at least one.
int copies_to_print(int dialog_copies);

} // namespace veltrako::print
