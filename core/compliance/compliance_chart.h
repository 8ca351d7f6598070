#pragma once
// The monthly usage chart, drawn on any drawing surface (the page's picture
// box, a printer page, a PDF, a test's recording): one column per day, the
// hours of the day upwards, a green bar for every stretch of use. The printed
// page around it is in compliance_print.h.

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
    QLocale words;     // month names: the program's language
    QLocale numbers;   // hour and day labels: the user's locale
};

// The axis titles and month names of the program's language; numbers in
// `numbers`.
ChartTexts chart_texts(const config::LanguageTables& language, const QLocale& numbers);

// "mmmm yyyy": the month's name and the four-digit year in `locale`.
QString month_title(Stamp month, const QLocale& locale);

// Draws the month of state.shown_month (choosing it first when it is 0) into
// the rectangle, with text sizes from `fontsize` points, and updates the
// state's month, flags and total as the chart's pass does. Nothing is
// cleared first. Returns the month drawn.
Month compliance_draw(print::DrawingSurface& surface, double left, double top, double width,
                      double height, double fontsize, ComplianceState& state,
                      const ComplianceRecords& records, const ChartTexts& texts, Stamp now);

} // namespace veltrako::compliance
