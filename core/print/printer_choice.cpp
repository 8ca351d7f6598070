#include "print/printer_choice.h"

#include <algorithm>

namespace veltrako::print {

QString begin_printer_choice(PrinterChoice& choice, const QString& system_default) {
    choice.printer_default = system_default;
    if (choice.printer_chosen.isEmpty() && choice.output_file.isEmpty())
        choice.printer_chosen = choice.printer_default;
    return choice.printer_chosen;
}

void end_printer_choice(PrinterChoice& choice, const QString& printer_name,
                        const QString& output_file) {
    choice.printer_chosen = printer_name;
    choice.output_file = printer_name.isEmpty() ? output_file : QString();
}

int copies_to_print(int dialog_copies) {
    return std::max(dialog_copies, 1);
}

} // namespace veltrako::print
