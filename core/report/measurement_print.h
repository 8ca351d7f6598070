#pragma once
// The measured values on the printed report: a table of value, unit, limit
// and verdict under a band that names the columns, and the result in a
// framed line that stands above the signatures.

#include "report/print_layout.h"
#include "report/report_measurements.h"

#include <QLocale>

namespace veltrako::report {

// The table at the page's present line; the page moves on below it.
void print_measurements(layout::PageLayout& page, const ReportRecord& report,
                        const Judgement& judgement, const QLocale& locale);

// The framed result line, and the note about the device's O2 sensor in it
// when there is one: its height, and the frame drawn with its top at `top`.
double result_frame_height(print::DrawingSurface& s, const Judgement& judgement);
void print_result_frame(layout::PageLayout& page, double top, const Judgement& judgement,
                        const QLocale& locale);

} // namespace veltrako::report
