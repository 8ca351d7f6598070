// Report files come back from anywhere a technician keeps them, and a draft
// from wherever a crash left it: any content must load into a report without
// a crash, and what loaded must write again.

#include "config/text_file.h"
#include "fuzz_support.h"
#include "report/report_draft.h"
#include "report/report_file.h"
#include "report/report_measurements.h"

#include <QString>
#include <QStringList>

#include <cstdint>

using namespace veltrako;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    report::ReportRecord record;
    // The same decoding as a file's bytes get, without the file.
    const QStringList input = config::decode_text_lines(fuzz::input_bytes(data, size));
    // A draft left beside the configuration is read the same way, after its
    // own two lines; whatever it holds comes back unsaved.
    if (const auto draft = report::parse_draft_lines(input, {});
        draft && !draft->report.report_changed)
        __builtin_trap();
    report::read_report_lines(record, input);
    record.report_device.live_valid = true;
    const QStringList lines = report::report_file_lines(record, QLocale::c());
    // One line per key whatever was read: no value may add a line or a column.
    if (lines.size() != 62)
        __builtin_trap();
    for (const QString& line : lines)
        if (line.count(QLatin1Char('|')) != 1 || line.contains(QLatin1Char('\n')) ||
            line.contains(QLatin1Char('\r')))
            __builtin_trap();
    // Whatever the values and limits, the judged lines keep their form:
    // KEY|value|limit|verdict, then the result.
    const QStringList judged =
        report::judgement_lines(report::judge_report(record, record.limits), QLocale::c());
    for (qsizetype i = 0; i + 1 < judged.size(); ++i)
        if (judged[i].count(QLatin1Char('|')) != 3)
            __builtin_trap();
    if (!judged.constLast().startsWith(QLatin1String("ERGEBNIS|")))
        __builtin_trap();
    return 0;
}
