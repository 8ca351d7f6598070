#pragma once
// A command of veltrako2-cli: its name, its help lines, the options only it
// takes, and what it does. main() parses the command line with every
// command's options and hands the chosen one what it needs; a command file
// never parses arguments that are not its own. Its words are language texts
// (cli_texts.h says how a command gets them).

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>
#include <utility>
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

// One line of --help: the text numbers of the command's form ("status
// [--out FILE]") and of what it does; 0 leaves a side empty.
struct HelpLine {
    int form = 0;
    int meaning = 0;
};

// An option: its name, the text number naming its value in --help (0: the
// option takes no value), the text number of its description, and a
// one-letter name beside the long one, if it has one.
struct CliOption {
    CliOption(QString name_, int value_, int meaning_, QString letter_ = {})
        : name(std::move(name_)), value(value_), meaning(meaning_), letter(std::move(letter_)) {}
    QString name;
    int value = 0;
    int meaning = 0;
    QString letter;
};

struct CliCommand {
    QString name;
    // Its lines for --help, in order.
    QList<HelpLine> help;
    // Options this command takes besides the common ones (--link, --yes, ...).
    // Two commands may declare an option of the same name; it is added once.
    QList<CliOption> options;
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
