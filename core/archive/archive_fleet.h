#pragma once
// The fleet: every device of an archive with its last visit and why it is
// due. The same list for `veltrako2-cli fleet` on the server's archive and
// for the Verlauf page on the laptop's copy of it.
//
// A device is due for
// - `visit`: its last visit (or report filed outside a visit) lies more than
//   WARTUNG_MONATE months back (default 6), or it was never visited;
// - `hours`: only with WARTUNG_STUNDEN set: it has run past the next
//   multiple of those hours above its operating hours at the last visit.
//   The hours it ran since are those of the usage periods archived after
//   that visit;
// - `adherence`: its last usage readout's 30-day rule was not met (judged
//   then, against the prescription the readout was made with);
// - `o2`: the oxygen concentration measured at its last inspection failed
//   its limit (a worn sieve bed shows there first).

#include "archive/archive_store.h"

#include <QDate>
#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

namespace veltrako::archive {

struct MaintenanceRules {
    int months = 6;
    std::optional<double> hours; // none: hours make no device due
};

// The rules from WARTUNG_MONATE and WARTUNG_STUNDEN as the ini holds them
// (empty: the default). Nothing when one of them is no positive whole
// number; `bad` then names the key and its text.
std::optional<MaintenanceRules> maintenance_rules(const QString& months, const QString& hours,
                                                  QString* bad);

struct FleetRow {
    DeviceRow device;             // with its last visit and the BSTD it saw
    double hours_since_visit = 0; // of the usage periods archived after it
    QString last_adherence;       // the last usage readout's "30d|…" line
    QString last_o2_verdict;      // the last report's O2 verdict: "pass", "fail" or empty
    QStringList reasons;          // "visit", "hours", "adherence", "o2", in that order
};

// The reasons of `row` (whatever it holds of them already is not read).
QStringList due_reasons(const FleetRow& row, const MaintenanceRules& rules, const QDate& today);

// Every device of the store, sorted by serial number, with its reasons.
std::optional<std::vector<FleetRow>> read_fleet(ArchiveStore& store, const MaintenanceRules& rules,
                                                const QDate& today, QString* error);

// "SN|last visit yyyy-mm-dd|BSTD at it|reasons", the reasons separated by ",".
QString fleet_line(const FleetRow& row);

} // namespace veltrako::archive
