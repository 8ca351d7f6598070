#pragma once
// The system status records as read from the device, and where a readout
// stands. Records are kept as the device sent them, 22 bytes each.

#include "progress/progress.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace veltrako::status {

enum class ReadoutMark { idle = 0, pending = 1, due = 2 };

struct StatusMemory {
    // Index 0 stays empty; records 1..32 in the order read.
    std::vector<QByteArray> records = std::vector<QByteArray>(1);
    ReadoutMark mark = ReadoutMark::idle; // a readout for saving: pending, then due
    // A readout the technician started: records read of the 32 the memory
    // can hold.
    progress::Progress readout;

    // The last automatic save of this run: device key and file name without
    // ".txt". One automatic file per device and software version per run.
    QString last_auto_key;
    QString last_auto_base;

    int record_count() const { return static_cast<int>(records.size()) - 1; }
    void restart() { records.assign(1, QByteArray()); }
};

} // namespace veltrako::status
