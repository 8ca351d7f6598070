#pragma once
// The printed compliance page: a title line, the chart of the shown month
// across the page, the month's summary (and with a prescription the best 30
// days), the lines that say whose usage it is
// (device, month, hours, print date, patient) and, at the foot, the lines to
// sign on as on the inspection report. A printed month must be told apart
// from another device's without the screen beside it.

#include "compliance/compliance_chart.h"
#include "config/config.h"

#include <QLocale>
#include <QString>

#include <utility>
#include <vector>

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::compliance {

// What the page says about whose usage it shows, beyond the table itself.
struct PrintedFor {
    QString patient;   // t_Patient of the report form; empty when none was typed
    Stamp printed = 0; // the print date
    // The prescription the month is measured against (hours a day); 0: none.
    double prescribed_hours = 0;
    // The share of days, in percent, the best 30 days must meet it on.
    double adherence_share = config::default_adherence_share;
};

// The title line's text: "Compliance", and for "Testdaten" that it shows
// test data rather than a device's usage.
QString print_title(const ComplianceState& state, const config::LanguageTables& language);

// The identity lines as caption and value, in print order: serial number, LP
// number, the loaded file, the month, its total hours, the print date and the
// patient. Serial number, LP number, file and patient only when known.
std::vector<std::pair<QString, QString>> identity_lines(const ComplianceState& state,
                                                        const config::LanguageTables& language,
                                                        const QLocale& locale,
                                                        const PrintedFor& printed_for);

// The whole page. `locale` writes the numbers, language.words the month and
// the date; `now` chooses the month when the table has none.
void compliance_print_page(print::DrawingSurface& surface, ComplianceState& state,
                           const ComplianceRecords& records, const config::LanguageTables& language,
                           const QLocale& locale, Stamp now, const PrintedFor& printed_for);

// The PDF name the print dialog proposes: "Compliance_<SN>_<yyyy-mm>.pdf" for
// the month the page shows ("Testdaten" in place of the serial number for
// test data; nothing there when the serial number is unknown).
QString compliance_pdf_name(const ComplianceState& state, const ComplianceRecords& records,
                            Stamp now);

} // namespace veltrako::compliance
