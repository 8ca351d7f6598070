#pragma once
// The shape of a command that changes one stored setting (set, reset):
// check the device, make the change as the window's button does, wait for
// every read-back, print what the device now reports.

#include "cli_command.h"

#include <QList>
#include <QString>

#include <functional>
#include <utility>

namespace veltrako::device {
struct DeviceRecord;
}

namespace veltrako::cli {

using Lines = QList<std::pair<QString, QString>>;

struct SettingPlan {
    // Once the device record is complete: a reason not to go on (exit code
    // 2, nothing sent), or an empty text.
    std::function<QString(const device::DeviceRecord&)> refuse;
    // The change, with its writes and read-backs queued.
    std::function<void(AppContext&)> change;
    // After the read-back: the KEY|VALUE lines to print and whether the
    // device took the change.
    std::function<std::pair<Lines, bool>(const AppContext&)> result;
};

// Connects, reads the record, applies the plan, drains the queue, prints.
int run_setting_plan(CommandEnv& env, const SettingPlan& plan);

} // namespace veltrako::cli
