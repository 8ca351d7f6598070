#pragma once
// A command of veltrako2-cli: its name, its help line, the options only it
// takes, and what it does. main() parses the command line with every
// command's options and hands the chosen one what it needs; a command file
// never parses arguments that are not its own.

#include <QCommandLineOption>
#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

class QCommandLineParser;

namespace veltrako {
class AppContext;
}
namespace veltrako::archive {
class ArchiveService;
}

namespace veltrako::cli {

class ConsoleUi;
class CliSession;

struct CommandEnv {
    AppContext& ctx;
    ConsoleUi& ui;
    CliSession& session;
    const QCommandLineParser& parser;
    // The positional arguments after the command's name.
    QStringList args;
    // The archive every job lands in (disabled with --archive none).
    archive::ArchiveService& archive;
};

struct CliCommand {
    QString name;
    // One or more lines for --help, e.g. "status [--out FILE]  print the status table".
    QString help;
    // Options this command takes besides the common ones (--link, --yes, ...).
    // Two commands may declare an option of the same name; it is added once.
    std::function<QList<QCommandLineOption>()> options;
    // Whether this run draws (a PDF), judged from the parsed command line: it
    // then runs under a QGuiApplication, on the offscreen platform unless
    // QT_QPA_PLATFORM says otherwise. Runs that do not draw stay free of any
    // display, so a script's stderr holds only our own messages.
    std::function<bool(const QCommandLineParser& parser)> needs_gui;
    // Checks what it was given before anything is sent: a usage error
    // returns exit_usage with a message and must leave the device alone.
    std::function<int(CommandEnv& env)> run;
};

// Every command, in the order --help lists them.
const std::vector<CliCommand>& cli_commands();
const CliCommand* find_command(const QString& name);

} // namespace veltrako::cli
