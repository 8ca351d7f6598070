#pragma once
// archive init-server and archive sync: the two verbs of the archive
// command that talk to the team's server.

namespace veltrako::cli {

struct CommandEnv;

// Creates or migrates the server's archive and its roles.
int init_server_verb(CommandEnv& env);
// Sends what the server lacks, fetches what other laptops added:
// "sync: sent N, received M" on stdout; a run that stops says on stderr
// what was and was not sent and ends with exit status 1.
int sync_verb(CommandEnv& env);

} // namespace veltrako::cli
