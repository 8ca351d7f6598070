// veltrako2-cli: the headless front end for service scripts and automation.
// main() only sets up the context and hands over to the command named on the
// command line (cli/command_table.cpp).

#include "app_context.h"
#include "archive/archive_hooks.h"
#include "archive/archive_service.h"
#include "cli_command.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "command_line.h"
#include "config/config.h"
#include "config/config_location.h"
#include "config/language.h"
#include "config/qt_translation.h"
#include "config/text_file.h"
#include "console_ui.h"
#include "link/device_connection.h"
#include "link/link_factory.h"
#include "sim/concentrator.h"
#include "status/status_readout.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>
#include <QGuiApplication>
#include <QLocale>
#include <QTranslator>

#include <cstdio>
#include <memory>

using namespace veltrako;

namespace {

// Words of the program itself (cli/cli_texts.h).
constexpr int text_no_command = 9220;      // "no command given: %1"
constexpr int text_unknown_command = 9221; // "unknown command \"%1\""
constexpr int text_unknown_link = 9222;    // "unknown link \"%1\": use ftdi, ..."
constexpr int text_yes_and_no = 9223;      // "--yes and --no exclude each other"
constexpr int text_log_not_written = 9224; // "could not write the log to %1"
constexpr int text_no_sim = 9228;          // "the simulated device cannot be started: %1"

QStringList command_names() {
    QStringList names;
    for (const cli::CliCommand& c : cli::cli_commands())
        names << c.name;
    return names;
}

// Commands that draw need a QGuiApplication; the others stay free of any
// display. Which one it is must be known before the application exists, so
// the command line is parsed before it.
std::unique_ptr<QCoreApplication> make_application(int& argc, char** argv, bool gui) {
    if (!gui)
        return std::make_unique<QCoreApplication>(argc, argv);
    // A script has no screen to draw on; a PDF needs none.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

} // namespace

int main(int argc, char** argv) {
    QStringList arguments;
    for (int i = 1; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    QCommandLineParser parser;
    cli::add_options(parser);
    const bool parsed = parser.parse(QStringList{QString::fromLocal8Bit(argv[0])} + arguments);
    const QStringList args = parsed ? parser.positionalArguments() : QStringList();
    const cli::CliCommand* command = cli::find_command(args.value(0));
    const bool gui = parsed && command && command->needs_gui && command->needs_gui(parser);

    const auto app = make_application(argc, argv, gui);
    // Numbers shown to people follow the environment (LC_ALL, LC_NUMERIC,
    // LANG), as a script's caller expects: LC_ALL=de_DE.UTF-8 gives "37,3".
    QLocale::setDefault(QLocale::system());
    QCoreApplication::setApplicationName(QStringLiteral("veltrako2-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELTRAKO_VERSION));
    const QString program_dir = config::program_folder(QCoreApplication::applicationDirPath());

    // Every word from here on is in the language of --lang, a refused
    // command line included.
    cli::ConsoleUi ui;
    const QString code =
        parsed ? parser.value(QStringLiteral("lang")) : cli::language_argument(arguments);
    const QString lang_code = code.isEmpty() ? QStringLiteral("en") : code;
    config::LanguageTables words;
    words.words = config::language_locale(lang_code);
    const QString lang = program_dir + QStringLiteral("lang%1.txt").arg(lang_code);
    if (QFileInfo::exists(lang))
        config::load_language(words, lang, ui);
    ui.language = &words;
    // Qt's own words in the chosen language.
    QTranslator qt_words;
    if (config::load_qt_translation(qt_words, lang_code))
        QCoreApplication::installTranslator(&qt_words);

    if (!parsed) {
        cli::print_error(cli::parse_error_text(parser, arguments, words));
        return cli::exit_usage;
    }
    if (parser.isSet(QStringLiteral("help"))) {
        std::fputs(qUtf8Printable(cli::help_text(words, QCoreApplication::applicationName())),
                   stdout);
        return cli::exit_ok;
    }
    if (parser.isSet(QStringLiteral("version"))) {
        cli::print_line(QCoreApplication::applicationName() + QLatin1Char(' ') +
                        QCoreApplication::applicationVersion());
        return cli::exit_ok;
    }
    if (!command) {
        const QString name = args.value(0);
        cli::print_error(name.isEmpty()
                             ? cli::cli_text(words, text_no_command,
                                             {command_names().join(QStringLiteral(", "))})
                             : cli::cli_text(words, text_unknown_command, {name}));
        return cli::exit_usage;
    }

    const QString link_text = parser.isSet(QStringLiteral("link"))
                                  ? parser.value(QStringLiteral("link"))
                                  : QStringLiteral("ftdi");
    const auto option = link::parse_link_option(link_text, nullptr);
    if (!option) {
        cli::print_error(cli::cli_text(words, text_unknown_link, {link_text}));
        return cli::exit_usage;
    }
    SystemClock clock;
    ui.verbose = parser.isSet(QStringLiteral("verbose"));
    const bool yes = parser.isSet(QStringLiteral("yes"));
    const bool no = parser.isSet(QStringLiteral("no"));
    if (yes && no) {
        cli::print_error(cli::cli_text(words, text_yes_and_no));
        return cli::exit_usage;
    }
    if (yes || no)
        ui.preset_answer = yes;
    if (parser.isSet(QStringLiteral("input")))
        ui.preset_input = parser.value(QStringLiteral("input"));
    if (parser.isSet(QStringLiteral("file")))
        ui.preset_file = parser.value(QStringLiteral("file"));
    QString error;
    auto backend = link::make_link(*option, clock, sim::make_concentrator, &error);
    if (!backend) {
        cli::print_error(cli::cli_text(words, text_no_sim, {error}));
        return cli::exit_usage;
    }
    AppContext ctx(clock, ui, std::move(backend));
    // A script's run leaves the technician's settings as they are: a file
    // named on the command line is not a dialog's folder to remember.
    ctx.persist_config = false;
    status::install_status_memory(ctx);
    ctx.program_dir = program_dir;
    // The same settings as the desktop program: beside the program, or with
    // the user when the program's folder is read-only. Only read, never
    // made: a user without settings of his own runs on the shipped ones.
    const config::ConfigLocation location = config::find_config_location(ctx.program_dir);
    ctx.config_path = location.config_path;
    ctx.user_dir = location.user_dir;
    config::set_config_defaults(ctx.config, ctx.user_dir);
    // A script runs fine on the defaults; only a file that is there is read.
    if (const QString readable = config::readable_config(location); !readable.isEmpty())
        config::load_config(ctx.config, readable, ctx.user_dir, ui);
    ctx.archive_path =
        config::archive_path(location, ctx.config.ARCHIV, parser.value(QStringLiteral("archive")));
    ctx.timer1.set_interval(ctx.config.TIMERINTERVAL);
    ctx.language = std::move(words);
    ui.language = &ctx.language;

    cli::install_interrupt_handler();
    cli::CliSession session(ctx, ui);
    // Every job of the command lands in the archive as it ends; waiting for
    // the file does no harm here, so it is written on this thread.
    archive::ArchiveService archive(ctx.archive_path, archive::ArchiveService::Mode::inline_jobs);
    archive::install_archive(ctx, archive);
    cli::CommandEnv env{ctx, ui, session, parser, args.mid(1), archive};
    int code_out = command->run(env);

    if (ctx.link.device_handle != 0)
        link::close_device(ctx);
    if (const QString log = parser.value(QStringLiteral("log"));
        parser.isSet(QStringLiteral("log")) &&
        !config::write_text_lines(log, {ctx.comm_log.comm_log})) {
        cli::print_error(cli::cli_text(ctx.language, text_log_not_written, {log}));
        code_out = code_out == cli::exit_ok ? cli::exit_device : code_out;
    }
    return code_out;
}
