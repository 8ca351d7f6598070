#include "command_line.h"

#include "cli_texts.h"

#include <QCommandLineParser>

namespace veltrako::cli {

namespace {

constexpr int text_usage = 9200;          // "Usage: %1 [options] command [arguments]"
constexpr int text_purpose = 9201;        // "Talks to one oxygen concentrator without a window."
constexpr int text_commands = 9202;       // "Commands:"
constexpr int text_options = 9203;        // "Options:"
constexpr int text_unknown_option = 9225; // "unknown option %1"
constexpr int text_needs_value = 9226;    // "%1 needs a value"
constexpr int text_takes_no_value = 9227; // "%1 takes no value"
constexpr int text_unreadable = 9235;     // "the command line cannot be read: %1"

// Value names in --help.
constexpr int value_file = 9204; // "FILE"
constexpr int value_path = 9205; // "PATH"
constexpr int value_text = 9206; // "TEXT"
constexpr int value_code = 9207; // "CODE"
constexpr int value_link = 9209; // "L"

// Where the meaning of a command's line begins.
constexpr qsizetype command_column = 21;
// Options longer than this put their meaning on a line of its own.
constexpr qsizetype option_column = 20;
const QString indent = QStringLiteral("  ");

// Every option once, the common ones first, then the commands' in table order.
QList<CliOption> all_options() {
    QList<CliOption> options = common_options();
    QStringList known;
    for (const CliOption& o : options)
        known << o.name;
    for (const CliCommand& c : cli_commands()) {
        for (const CliOption& o : c.options) {
            if (known.contains(o.name))
                continue;
            known << o.name;
            options << o;
        }
    }
    return options;
}

const CliOption* find_option(const QList<CliOption>& options, const QString& name) {
    for (const CliOption& o : options)
        if (o.name == name || (!o.letter.isEmpty() && o.letter == name))
            return &o;
    return nullptr;
}

QString dashed(const QString& name) {
    return (name.size() == 1 ? QStringLiteral("-") : QStringLiteral("--")) + name;
}

// "form" padded to `column`, then "meaning"; a longer form gets the meaning
// on the next line.
void add_columns(QStringList& lines, const QString& form, const QString& meaning,
                 qsizetype column) {
    if (meaning.isEmpty()) {
        lines << indent + form;
    } else if (form.size() >= column) {
        lines << indent + form << indent + QString(column, QLatin1Char(' ')) + meaning;
    } else {
        lines << indent + form.leftJustified(column) + meaning;
    }
}

} // namespace

const QList<CliOption>& common_options() {
    static const QList<CliOption> options = {
        {QStringLiteral("link"), value_link, 9210},    // ftdi, serial:PATH or sim[:SCENARIO] ...
        {QStringLiteral("log"), value_file, 9211},     // save the communication log ...
        {QStringLiteral("lang"), value_code, 9212},    // language code of the messages ...
        {QStringLiteral("verbose"), 0, 9213},          // show the developer messages on stderr
        {QStringLiteral("yes"), 0, 9214},              // answer every question with yes
        {QStringLiteral("no"), 0, 9215},               // ... with no
        {QStringLiteral("input"), value_text, 9216},   // the answer to an input question
        {QStringLiteral("file"), value_path, 9217},    // the file a file question asks for
        {QStringLiteral("archive"), value_path, 9241}, // the archive file (default: ARCHIV ...)
        {QStringLiteral("help"), 0, 9218, QStringLiteral("h")},
        {QStringLiteral("version"), 0, 9219, QStringLiteral("v")},
    };
    return options;
}

void add_options(QCommandLineParser& parser) {
    for (const CliOption& o : all_options()) {
        QStringList names;
        if (!o.letter.isEmpty())
            names << o.letter;
        names << o.name;
        // The descriptions are ours (help_text); the parser only reads.
        parser.addOption(
            QCommandLineOption(names, QString(), o.value ? QStringLiteral("value") : QString()));
    }
}

QString language_argument(const QStringList& arguments) {
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& a = arguments[i];
        if (a == QLatin1String("--"))
            break;
        if (a == QLatin1String("--lang") && i + 1 < arguments.size())
            return arguments[i + 1];
        if (a.startsWith(QLatin1String("--lang=")))
            return a.mid(7);
    }
    return QStringLiteral("en");
}

QString parse_error_text(const QCommandLineParser& parser, const QStringList& arguments,
                         const config::LanguageTables& language) {
    if (const QStringList unknown = parser.unknownOptionNames(); !unknown.isEmpty())
        return cli_text(language, text_unknown_option, {dashed(unknown.first())});
    const QList<CliOption> options = all_options();
    for (qsizetype i = 0; i < arguments.size(); ++i) {
        const QString& a = arguments[i];
        if (a == QLatin1String("--"))
            break;
        if (a.size() < 2 || !a.startsWith(QLatin1Char('-')))
            continue;
        const QString bare = a.mid(a.startsWith(QLatin1String("--")) ? 2 : 1);
        const qsizetype eq = bare.indexOf(QLatin1Char('='));
        const QString name = eq < 0 ? bare : bare.left(eq);
        const CliOption* o = find_option(options, name);
        if (!o)
            continue;
        if (eq >= 0 && o->value == 0)
            return cli_text(language, text_takes_no_value, {dashed(name)});
        if (eq < 0 && o->value != 0 && i + 1 == arguments.size())
            return cli_text(language, text_needs_value, {dashed(name)});
    }
    return cli_text(language, text_unreadable, {parser.errorText()});
}

QString help_text(const config::LanguageTables& language, const QString& program) {
    QStringList lines{cli_text(language, text_usage, {program}), cli_text(language, text_purpose),
                      QString(), cli_text(language, text_commands)};
    for (const CliCommand& c : cli_commands()) {
        for (const HelpLine& h : c.help)
            add_columns(lines, h.form ? cli_text(language, h.form) : QString(),
                        h.meaning ? cli_text(language, h.meaning) : QString(), command_column);
    }
    lines << QString() << cli_text(language, text_options);
    for (const CliOption& o : all_options()) {
        QString form = (o.letter.isEmpty() ? QString() : dashed(o.letter) + QStringLiteral(", ")) +
                       dashed(o.name);
        if (o.value)
            form += QStringLiteral(" <") + cli_text(language, o.value) + QLatin1Char('>');
        add_columns(lines, form, cli_text(language, o.meaning), option_column);
    }
    return lines.join(QLatin1Char('\n')) + QLatin1Char('\n');
}

QList<int> help_text_numbers() {
    QList<int> numbers{text_usage, text_purpose, text_commands, text_options};
    for (const CliCommand& c : cli_commands())
        for (const HelpLine& h : c.help)
            numbers << h.form << h.meaning;
    for (const CliOption& o : all_options())
        numbers << o.value << o.meaning;
    numbers.removeAll(0);
    return numbers;
}

} // namespace veltrako::cli
