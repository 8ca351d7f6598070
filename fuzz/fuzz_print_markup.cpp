// Printed lines carry texts typed by the technician and read from files, so
// any text must print without a crash or a hang, whatever quotes, tabs and
// tags it holds.

#include "print/fixed_text.h"
#include "print/markup.h"
#include "print/recording_surface.h"

#include <QString>

#include <cstdint>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const QString line =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    print::RecordingSurface surface;
    surface.move_to(0, 1000);
    print::print_line(surface, line, {0, 2000, 4000, 6000}, 15);
    print::print_line(surface, line, {0}, 0);
    const int width = size > 0 ? data[0] % 40 : 0;
    print::wrap_fixed(line, width, width / 2);
    print::pad_to(line, width);
    return 0;
}
