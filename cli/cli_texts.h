#pragma once
// The words of veltrako2-cli. Everything the command line says to a person
// (--help, usage errors, refusals, warnings, progress and outcomes) is a text
// of the language files lang/langen.txt and lang/langde.txt, in the language
// --lang chose (default en). Result lines on stdout (KEY|VALUE, tables, hex
// dumps, month lines) are data: their form is the same in every language.
//
// How a command gets its texts:
//
//  1. Numbers. The command line owns 9200..9699, a block per command:
//       9200-9249  the program itself: --help, the common options, parse
//                  errors, the console's questions, the progress line
//       9250-9269  info, watch          9270-9289  send
//       9290-9309  status               9310-9339  firmware
//       9340-9399  set, reset           9420-9459  compliance, --prescribed-hours
//       9460-9489  report               9490-9519  visit
//       9600-9699  history, archive     (the rest is free for new commands)
//     Every number goes into BOTH language files, English and German, in
//     the section "Befehlszeile". A text cannot hold "|" (the files' field
//     separator): write "¦" where the command line shows "|"; cli_text()
//     turns it back.
//
//  2. Messages. The command's file names each number once, with the English
//     text beside it:
//         constexpr int text_no_arguments = 9240; // "%1 takes no arguments"
//     and says it with
//         return usage_error(env, text_no_arguments, {name});  // stderr, exit 2
//         print_error(cli_text(env, text_x, {a, b}));          // stderr only
//     %1, %2 ... are filled from the list, in one pass.
//
//  3. Help. CliCommand::help lists the command's lines for --help as pairs
//     of text numbers {form, meaning}: {9290, 9291} prints
//         status [--out FILE]  read the status memory, print its table
//     with the meaning in a column of its own; {0, n} continues the meaning
//     on the next line, {n, 0} is a form alone.
//
//  4. Options. CliCommand::options lists the options only this command
//     takes as CliOption{name, value, meaning}: `value` names the text of
//     its value in --help ("FILE"; 0 for an option without a value),
//     `meaning` its description. An option several commands take is
//     declared by each; the first declaration is the one --help shows.
//
// test_cli checks that every number a command lists for --help has a text
// in both files, and test_language that both files hold the same numbers.

#include <QList>
#include <QString>
#include <QStringList>

namespace veltrako::config {
struct LanguageTables;
}

namespace veltrako::cli {

struct CommandEnv;

// Text n in the chosen language, "¦" shown as "|", %1, %2 ... filled from `args`.
QString cli_text(const config::LanguageTables& language, int n, const QStringList& args = {});
QString cli_text(const CommandEnv& env, int n, const QStringList& args = {});

// Says text n on stderr and returns the exit code of a usage error (2):
// what a command does with arguments it cannot take, before it touches the
// device.
int usage_error(const CommandEnv& env, int n, const QStringList& args = {});

// %1, %2 ... of `pattern` replaced by args[0], args[1] ... in one pass, so
// that a value holding "%2" stays as it is. A number without an argument
// stays too.
QString fill_in(const QString& pattern, const QStringList& args);

} // namespace veltrako::cli
