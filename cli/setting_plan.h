#pragma once
// The shape of a command that changes one stored setting (set, reset):
// check the device, make the change as the window's button does (its
// question answered by --yes or --no, its read-back awaited), print what the
// device now reports.

#include "cli_command.h"
#include "device/read_back.h"

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
    // The change as the window's button makes it, up to its read-back.
    std::function<device::WriteOutcome(AppContext&)> change;
    // After the read-back: the KEY|VALUE lines to print.
    std::function<Lines(const AppContext&)> result;
};

// Connects, reads the record, applies the plan, prints. Exit code 2 when a
// question was left unanswered, 0 with "nothing written" when it was
// answered No, 1 when the device did not confirm the value (the message on
// stderr names what was written and what the device reports).
int run_setting_plan(CommandEnv& env, const SettingPlan& plan);

} // namespace veltrako::cli
