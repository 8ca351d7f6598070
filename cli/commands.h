#pragma once
// The commands of veltrako2-cli, one source file each (cmd_<name>.cpp).

#include "cli_command.h"

namespace veltrako::cli {

CliCommand info_command();
CliCommand watch_command();
CliCommand send_command();
CliCommand status_command();
CliCommand firmware_command();
CliCommand set_command();
CliCommand reset_command();
CliCommand compliance_command();
CliCommand report_command();
CliCommand visit_command();
CliCommand history_command();
CliCommand archive_command();
CliCommand fleet_command();

} // namespace veltrako::cli
