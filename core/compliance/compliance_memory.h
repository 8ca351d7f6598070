#pragma once
// The usage memory as read from the concentrator: one record per usage
// period (switched on, switched off), the state of a readout and of the
// monthly chart, and what the "Compliance" page shows. One instance lives in
// the application context.

#include "config/config.h"
#include "progress/deadline.h"
#include "progress/progress.h"

#include <QString>

#include <array>
#include <functional>

namespace veltrako::compliance {

// A point in time as whole seconds since 30 December 1899 00:00, the day
// count origin of the date values the files and the chart were designed
// around. 0 is the empty date: an erased or missing time stamp.
using Stamp = qint64;

inline constexpr Stamp seconds_per_day = 86400;
// 1 January 2000 00:00, where the device starts counting its seconds.
inline constexpr Stamp device_epoch = 36526 * seconds_per_day;

// Highest index of the record table.
inline constexpr int table_upper = 4096;

struct ComplianceRecord {
    Stamp start = 0;
    Stamp end = 0;
    friend bool operator==(const ComplianceRecord&, const ComplianceRecord&) = default;
};

using ComplianceRecords = std::array<ComplianceRecord, table_upper + 1>;

struct ComplianceState {
    qint32 last_index = 0;   // records 0..last_index are valid
    qint32 record_count = 0; // as announced by the device ("K")
    qint32 read_index = 0;   // the record requested last
    Stamp shown_month = 0;   // any moment of the month the chart shows; 0: the latest month
    bool has_data = false;
    bool from_device = false; // read from the device or made by "Testdaten": may be saved
    bool has_prev_month = false;
    bool has_next_month = false;
    double total_hours = 0; // usage in the shown month
    // Whose usage the table holds, for the printout and its file name.
    bool test_data = false; // made by "Testdaten": no device's usage
    QString serial_number;  // of the device read, or from the loaded file's name
    QString lp_number;      // of the device read
    QString file_name;      // the compliance file loaded, without its folder
};

// What the page's controls show; the window copies it onto its widgets
// whenever page_changed is called.
struct CompliancePage {
    bool read_enabled = false;   // cmd_complianceread
    bool delete_enabled = false; // cmd_compliancedelete
    bool save_enabled = false;   // cmd_compliancesave
    bool print_enabled = false;  // cmd_complianceprint
    bool prev_enabled = false;   // cmd_prevmonth
    bool next_enabled = false;   // cmd_nextmonth
    // cmd_complianceload and cmd_compliance_test: both replace the table.
    bool replace_enabled = true;
    QString dauer_text;     // t_compliancedauer
    QString record_caption; // l_recordnumber
    bool record_visible = false;
    bool chart_shown = false; // p_compliance holds the chart of shown_month
    QString summary_text;     // the month summary under the chart
    // The best 30 days against the prescription, under the summary; empty
    // without a prescription.
    QString adherence_text;
};

// What a running readout waits for: the count ("K") or one record ("k"),
// asked for last at asked_ms.
struct ReadoutWait {
    static constexpr int count = -1;
    int record = count;
    qint64 asked_ms = 0;
    int repetitions = 0; // asked again by the readout

    // Runs out when the count or the record has not come in the time of its
    // request and three repetitions.
    progress::Deadline give_up;
    // A failure is said in a message box (the page's button, the command
    // line); a visit says it in its own result instead.
    bool tell_failure = true;
};

struct ComplianceMemory {
    ComplianceRecords records{};
    ComplianceState state;
    CompliancePage page;
    // A readout from the device: records read of the records asked for.
    // Cancelled, it keeps the number read until the table is cleared.
    progress::Progress readout;
    ReadoutWait wait;
    // Why the last readout failed, in the user's language; empty when it
    // did not. Kept until the next readout starts.
    QString failure;
    // Called after the page's values changed.
    std::function<void()> page_changed;
    // Hours of use a day the patient is prescribed; 0: none. Set at start-up
    // from the configuration (or the command line) and kept while tables come
    // and go.
    double prescribed_hours = 0;
    // The share of days, in percent, that the best 30 days must meet the
    // prescription on (ADHERENZ_ANTEIL, --adherence-share).
    double adherence_share = config::default_adherence_share;
};

} // namespace veltrako::compliance
