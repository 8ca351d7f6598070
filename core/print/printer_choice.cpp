#include "print/printer_choice.h"

#include <algorithm>

namespace veltrako::print {

QString begin_printer_choice(PrinterChoice& choice, const QString& system_default) {
    choice.printer_default = system_default;
    if (choice.printer_chosen.isEmpty() && !choice.to_file)
        choice.printer_chosen = choice.printer_default;
    return choice.printer_chosen;
}

void end_printer_choice(PrinterChoice& choice, const QString& printer_name) {
    choice.printer_chosen = printer_name;
    choice.to_file = printer_name.isEmpty();
}

int copies_to_print(int dialog_copies) {
    return std::max(dialog_copies, 1);
}

} // namespace veltrako::print
