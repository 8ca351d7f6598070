#pragma once
// What every command of the command-line front end needs to talk to the
// device: connect, drive the poll timer in an event loop until a condition
// holds, and print result lines.

#include <QString>

#include <functional>

namespace veltrako {
class AppContext;
}

namespace veltrako::cli {

class ConsoleUi;

enum ExitCode { exit_ok = 0, exit_device = 1, exit_usage = 2 };

class CliSession {
public:
    CliSession(AppContext& ctx, ConsoleUi& ui) : ctx_(ctx), ui_(ui) {}

    // The connect routine; true when a device answered the open.
    bool connect();
    // Runs the poll timer until `done` says so (exit_ok), the link is lost
    // (exit_device) or the process is interrupted (exit_ok).
    int run_until(const std::function<bool()>& done);
    // Connects and waits for the first live status and the rest of the
    // initial requests, so that the device record is complete.
    int connect_and_read_record();
    // Runs the poll timer until every queued command is answered.
    int drain_queue();
    // Runs `action` with the poll timer serving the device meanwhile, as in
    // the window: the waits inside the action let the ticks through.
    void serve_during(const std::function<void()>& action);
    // True once SIGINT or SIGTERM arrived.
    static bool interrupted();

private:
    AppContext& ctx_;
    ConsoleUi& ui_;
};

// One result line on stdout.
void print_line(const QString& line);

// SIGINT and SIGTERM end a running command cleanly (its log is still saved).
void install_interrupt_handler();

} // namespace veltrako::cli
