#pragma once
// The commands of the command-line front end, run against one context:
// connect, drive the poll timer in an event loop, and report.

#include <QByteArray>
#include <QList>

namespace veltrako {
class AppContext;
}

namespace veltrako::cli {

class ConsoleUi;

enum ExitCode { exit_ok = 0, exit_device = 1, exit_usage = 2 };

class CliSession {
public:
    CliSession(AppContext& ctx, ConsoleUi& ui) : ctx_(ctx), ui_(ui) {}

    // Connects, waits for the first live status and the rest of the initial
    // requests, prints the device record as KEY|VALUE lines.
    int info();
    // One line of live values per live status; seconds < 0 runs until
    // interrupted.
    int watch(int seconds);
    // Sends each payload (after asking the device who it is) and prints every
    // answer as a hex dump.
    int send(const QList<QByteArray>& payloads);

private:
    bool connect();
    // Runs the poll timer until `done` says so (0), the link is lost (1) or
    // the process is interrupted (0).
    template <typename Done> int run_until(Done done);

    AppContext& ctx_;
    ConsoleUi& ui_;
};

// SIGINT and SIGTERM end a running command cleanly (its log is still saved).
void install_interrupt_handler();

} // namespace veltrako::cli
