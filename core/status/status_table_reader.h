#pragma once
// Reads a saved status table back (the file the "System Status" page and the
// visit write): the device's identity and the time from its four heading
// lines, and each record's line as it stands. The record bytes themselves
// cannot be had back from the formatted columns; the lines are what is kept.

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <optional>

namespace veltrako::status {

struct SavedStatusTable {
    QString sn;
    QString lp;
    QString sw;
    QDateTime at; // the time in the heading (local)
    bool extended = false;
    QStringList record_lines; // as written, without line ends
};

// Nothing when the lines are no status table: fewer than the eight heading
// lines, no date in the fourth, or a record line that is not one record of
// either layout (20 or 21 columns, a block number and a duration first).
std::optional<SavedStatusTable> read_status_table(const QStringList& lines);

} // namespace veltrako::status
