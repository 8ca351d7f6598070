#pragma once
// The report on a drawing surface: the device data of the snapshot (the
// picture on the "Protokoll" page and a block of the printout) and the
// printed report, one A4 page a technician fills in, checks and signs.

#include "report/print_layout.h"
#include "report/report_record.h"

#include <QLocale>

#include <utility>
#include <vector>

namespace veltrako::config {
struct LanguageTables;
}
namespace veltrako::print {
class DrawingSurface;
}

namespace veltrako::report {

// Identity, hours, remaining time and the live values with their units, as
// caption and value; settings the device family lacks are left out.
CaptionRows device_data_rows(const ReportRecord& report, const config::LanguageTables& language,
                             const QLocale& locale);
// The valve timings in seconds; families that keep only seven have seven.
CaptionRows timing_rows(const ReportRecord& report, const config::LanguageTables& language,
                        const QLocale& locale);

// The device data in one column from (left, top), `width` wide, in the
// size of the surface's font; nothing without valid device data. Returns the y below it.
double draw_device_data(print::DrawingSurface& surface, const ReportRecord& report,
                        const config::LanguageTables& language, const QLocale& locale, double left,
                        double top, double width);

// The printed report on the surface's page(s). Text typed into the report is
// printed as it stands: it never goes through the print markup, where a
// quote would be taken for a tag.
void print_report(print::DrawingSurface& surface, const ReportRecord& report,
                  const config::LanguageTables& language, const QLocale& locale);

} // namespace veltrako::report
