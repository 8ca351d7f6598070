#pragma once
// The prescribed hours of use a day for the commands that measure usage
// against them: --prescribed-hours H, else VERORDNUNG of veltrako2.ini.

#include "cli_command.h"

namespace veltrako::cli {

struct CommandEnv;

CliOption prescribed_hours_option();

// Puts the prescription into the compliance memory. False, after saying on
// stderr which value is wrong, when it is no number from 0 to 24.
bool take_prescribed_hours(CommandEnv& env);

} // namespace veltrako::cli
