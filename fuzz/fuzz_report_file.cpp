// Report files come back from anywhere a technician keeps them: any content
// must load into a report without a crash, and what loaded must write again.

#include "config/text_file.h"
#include "fuzz_support.h"
#include "report/report_file.h"

#include <QString>
#include <QStringList>

#include <cstdint>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    report::ReportRecord record;
    // The same decoding as a file's bytes get, without the file.
    report::read_report_lines(record, config::decode_text_lines(fuzz::input_bytes(data, size)));
    record.report_device.live_valid = true;
    const QStringList lines = report::report_file_lines(record, QLocale::c());
    // One line per key whatever was read: no value may add a line or a column.
    if (lines.size() != 50)
        __builtin_trap();
    for (const QString& line : lines)
        if (line.count(QLatin1Char('|')) != 1 || line.contains(QLatin1Char('\n')) ||
            line.contains(QLatin1Char('\r')))
            __builtin_trap();
    return 0;
}
