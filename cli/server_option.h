#pragma once
// The team archive's server for the commands that talk to it: --server URI,
// else ARCHIV_SERVER of veltrako2.ini. A URI holding a password is refused
// before anything connects, with a message that never repeats it.

#include "archive/server_address.h"
#include "cli_command.h"

#include <optional>

namespace veltrako::cli {

struct CommandEnv;

CliOption server_option();

// The server, or nothing after saying on stderr why not.
std::optional<archive::ServerAddress> take_server(const CommandEnv& env);

} // namespace veltrako::cli
