#include "cli_command.h"

#include "commands.h"

namespace veltrako::cli {

const std::vector<CliCommand>& cli_commands() {
    static const std::vector<CliCommand> table = {
        info_command(),     watch_command(), send_command(),    status_command(),
        firmware_command(), set_command(),   reset_command(),   compliance_command(),
        report_command(),   visit_command(), history_command(), archive_command(),
        fleet_command(),
    };
    return table;
}

const CliCommand* find_command(const QString& name) {
    for (const CliCommand& c : cli_commands())
        if (c.name == name)
            return &c;
    return nullptr;
}

} // namespace veltrako::cli
