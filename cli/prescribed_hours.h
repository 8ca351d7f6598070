#pragma once
// What the commands that measure usage measure it against: the prescribed
// hours of use a day (--prescribed-hours H, else VERORDNUNG of
// veltrako2.ini) and the share of days the best 30 must meet them on
// (--adherence-share P, else ADHERENZ_ANTEIL).

#include "cli_command.h"

namespace veltrako::cli {

struct CommandEnv;

CliOption prescribed_hours_option();
CliOption adherence_share_option();

// Puts the prescription and the share into the compliance memory. False,
// after saying on stderr which value is wrong, when the hours are no number
// from 0 to 24 or the share none from 0 to 100.
bool take_prescribed_hours(CommandEnv& env);

} // namespace veltrako::cli
