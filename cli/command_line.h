#pragma once
// The command line of veltrako2-cli as a whole: the options every command
// shares, reading the arguments (a fault in them said in the chosen
// language), and the text of --help, built from the language files as
// cli_texts.h describes.

#include "cli_command.h"

#include <QList>
#include <QString>
#include <QStringList>

class QCommandLineParser;

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::cli {

// The options every command takes: --link, --log, --lang, --verbose, --yes,
// --no, --input, --file, --help and --version.
const QList<CliOption>& common_options();

// Adds the common options and every command's own, each name once.
void add_options(QCommandLineParser& parser);

// The language code of --lang in `arguments` (without the program's name),
// read without the parser, for a command line the parser refused; "en"
// when there is none.
QString language_argument(const QStringList& arguments);

// What is wrong with `arguments` (without the program's name) after the
// parser refused them: an unknown option, an option without its value, or
// a value given to an option that takes none.
QString parse_error_text(const QCommandLineParser& parser, const QStringList& arguments,
                         const config::LanguageTables& language);

// The whole of --help: usage, the commands with their lines, the options.
QString help_text(const config::LanguageTables& language, const QString& program);

// Every text number --help shows; each must have a text in both files.
QList<int> help_text_numbers();

} // namespace veltrako::cli
