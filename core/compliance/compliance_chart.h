#pragma once
// The monthly usage chart, drawn on any drawing surface (the page's picture
// box, a printer page, a PDF, a test's recording): one column per day, the
// hours of the day upwards, a green bar for every stretch of use. Also the
// printed page: a title line, the chart of the shown month and the month's
// summary under it.

#include "compliance/compliance_memory.h"
#include "compliance/compliance_month.h"
#include "print/drawing_surface.h"

#include <QLocale>

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::compliance {

inline constexpr print::Rgb bar_colour{0, 200, 0};
inline constexpr print::Rgb grid_colour{32, 32, 32};

struct ChartTexts {
    QString hour_axis; // turned, along the left edge
    QString day_axis;  // under the day numbers
    QLocale locale;    // month names
};

ChartTexts chart_texts(const config::LanguageTables& language, const QLocale& locale);

// "mmmm yyyy": the month's name and the four-digit year in `locale`.
QString month_title(Stamp month, const QLocale& locale);

// Draws the month of state.shown_month (choosing it first when it is 0) into
// the rectangle, with text sizes from `fontsize` points, and updates the
// state's month, flags and total as the chart's pass does. Nothing is
// cleared first. Returns the month drawn.
Month compliance_draw(print::DrawingSurface& surface, double left, double top, double width,
                      double height, double fontsize, ComplianceState& state,
                      const ComplianceRecords& records, const ChartTexts& texts, Stamp now);

// The printed page: the title line, the chart of the shown month across the
// page, and the summary line under it.
void compliance_print_page(print::DrawingSurface& surface, ComplianceState& state,
                           const ComplianceRecords& records, const config::LanguageTables& language,
                           const QLocale& locale, Stamp now);

} // namespace veltrako::compliance
