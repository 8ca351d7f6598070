#pragma once
// What a finished job hands on through FeatureHooks: plain records of what
// happened, with no idea where they go. Whoever keeps the device's history
// installs the hooks; a feature only fills a record and calls its hook.

#include "compliance/compliance_memory.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>

#include <vector>

namespace veltrako::jobs {

// The usage memory as one readout found it.
struct UsageReadout {
    QString sn; // trimmed
    QString lp;
    QDateTime at; // the PC's time the readout ended
    // Stamps of the device's clock; erased records are left in and skipped
    // by whoever keeps them.
    std::vector<compliance::ComplianceRecord> periods;
    // Start of the period still running at the readout (its end is the
    // readout's provisional one); 0 when none is.
    compliance::Stamp running_start = 0;
    // The prescription the readout was judged against (0: none) and the
    // share of the best 30 days that must reach it, in percent.
    double prescribed_hours = 0;
    double adherence_share = config::default_adherence_share;
};

// The status memory as one readout found it.
struct StatusReadout {
    QString sn;
    QString lp;
    QString sw;
    QDateTime at;
    bool extended = false;           // the second record layout
    std::vector<QByteArray> records; // 22 bytes each, in the order read
};

// An inspection report written to a file or printed.
struct ReportFiled {
    QString sn;
    QDateTime at;
    QString path; // the file written or printed to; empty for a printer
    bool printed = false;
    QStringList lines; // the report file's KEY|VALUE lines
};

enum class VisitResult { written, failed, cancelled };

// A service visit at its end, whatever the end was.
struct VisitDone {
    QString sn;
    QDateTime at; // when the visit began
    QString folder;
    VisitResult result = VisitResult::written;
    QString reason;       // why it failed or stopped
    QStringList snapshot; // the device's KEY|VALUE lines at the visit
};

// A firmware update at its end.
struct FirmwareUpdate {
    QString sn;
    QDateTime at;
    QString old_version;
    QString new_version;
    bool ok = false;
    QString reason; // why it failed
};

// A write the device confirmed by its read-back.
struct DeviceWrite {
    QString sn;
    QDateTime at;
    QString setting; // its name as the technician reads it
    QString old_value;
    QString new_value;
    QString inspector; // the report's inspector, when one is typed
};

} // namespace veltrako::jobs
