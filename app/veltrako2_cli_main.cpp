// veltrako2-cli: the headless front end for service scripts and automation.
// main() only sets up the context and hands over to the command named on the
// command line (cli/command_table.cpp).

#include "app_context.h"
#include "archive/archive_hooks.h"
#include "archive/archive_service.h"
#include "cli_command.h"
#include "cli_session.h"
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

#include <memory>

using namespace veltrako;

namespace {

QString help_text() {
    QString text =
        QStringLiteral("Talks to one oxygen concentrator without a window.\n\nCommands:");
    for (const cli::CliCommand& c : cli::cli_commands()) {
        for (const QString& line : c.help.split(QLatin1Char('\n')))
            text += QStringLiteral("\n  ") + line;
    }
    return text;
}

QStringList command_names() {
    QStringList names;
    for (const cli::CliCommand& c : cli::cli_commands())
        names << c.name;
    return names;
}

// Commands that draw need a QGuiApplication; the others stay free of any
// display. Which one it is must be known before the application exists, so
// the command line is parsed once on its own first.
std::unique_ptr<QCoreApplication> make_application(int& argc, char** argv,
                                                   QCommandLineParser& parser) {
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments << QString::fromLocal8Bit(argv[i]);
    bool gui = false;
    if (parser.parse(arguments)) {
        const QStringList args = parser.positionalArguments();
        if (const cli::CliCommand* c = cli::find_command(args.value(0)); c && c->needs_gui)
            gui = c->needs_gui(parser);
    }
    if (!gui)
        return std::make_unique<QCoreApplication>(argc, argv);
    // A script has no screen to draw on; a PDF needs none.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

} // namespace

int main(int argc, char** argv) {
    QCommandLineParser parser;
    parser.setApplicationDescription(help_text());
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption link_opt(
        QStringLiteral("link"),
        QStringLiteral("ftdi, serial:PATH or sim[:SCENARIO] (default ftdi)"),
        QStringLiteral("link"), QStringLiteral("ftdi"));
    const QCommandLineOption log_opt(QStringLiteral("log"),
                                     QStringLiteral("save the communication log to FILE on exit"),
                                     QStringLiteral("file"));
    const QCommandLineOption lang_opt(QStringLiteral("lang"),
                                      QStringLiteral("language code of the messages (default en)"),
                                      QStringLiteral("code"), QStringLiteral("en"));
    const QCommandLineOption verbose_opt(QStringLiteral("verbose"),
                                         QStringLiteral("show the developer messages on stderr"));
    const QCommandLineOption yes_opt(
        QStringLiteral("yes"),
        QStringLiteral("answer every yes/no or OK/Cancel question with yes"));
    const QCommandLineOption no_opt(
        QStringLiteral("no"), QStringLiteral("answer every yes/no or OK/Cancel question with no"));
    const QCommandLineOption input_opt(QStringLiteral("input"),
                                       QStringLiteral("the answer to an input question"),
                                       QStringLiteral("text"));
    const QCommandLineOption file_opt(QStringLiteral("file"),
                                      QStringLiteral("the file a file question asks for"),
                                      QStringLiteral("path"));
    const QCommandLineOption archive_opt(
        QStringLiteral("archive"),
        QStringLiteral("the archive file (default: ARCHIV, else archive.sqlite where the settings"
                       " rule puts it); none turns the archive off"),
        QStringLiteral("path"));
    parser.addOptions({link_opt, log_opt, lang_opt, verbose_opt, yes_opt, no_opt, input_opt,
                       file_opt, archive_opt});
    // The same option may serve several commands (--out); it is added once.
    QStringList known;
    for (const cli::CliCommand& c : cli::cli_commands()) {
        if (!c.options)
            continue;
        for (const QCommandLineOption& o : c.options()) {
            if (known.contains(o.names().first()))
                continue;
            known << o.names();
            parser.addOption(o);
        }
    }
    parser.addPositionalArgument(QStringLiteral("command"),
                                 command_names().join(QStringLiteral(", ")));

    const auto app = make_application(argc, argv, parser);
    // Numbers shown to people follow the environment (LC_ALL, LC_NUMERIC,
    // LANG), as a script's caller expects: LC_ALL=de_DE.UTF-8 gives "37,3".
    QLocale::setDefault(QLocale::system());
    QCoreApplication::setApplicationName(QStringLiteral("veltrako2-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELTRAKO_VERSION));
    parser.process(*app);
    // Qt's own words in the chosen language; the help above stays in the
    // language of the options themselves.
    QTranslator qt_words;
    if (config::load_qt_translation(qt_words, parser.value(lang_opt)))
        QCoreApplication::installTranslator(&qt_words);

    const QStringList args = parser.positionalArguments();
    const QString name = args.value(0);
    const cli::CliCommand* command = cli::find_command(name);
    if (!command) {
        cli::print_error(name.isEmpty() ? QStringLiteral("no command given: %1")
                                              .arg(command_names().join(QStringLiteral(", ")))
                                        : QStringLiteral("unknown command \"%1\"").arg(name));
        return cli::exit_usage;
    }

    QString error;
    const auto option = link::parse_link_option(parser.value(link_opt), &error);
    if (!option) {
        cli::print_error(error);
        return cli::exit_usage;
    }
    SystemClock clock;
    cli::ConsoleUi ui;
    ui.verbose = parser.isSet(verbose_opt);
    if (parser.isSet(yes_opt) && parser.isSet(no_opt)) {
        cli::print_error(QStringLiteral("--yes and --no exclude each other"));
        return cli::exit_usage;
    }
    if (parser.isSet(yes_opt) || parser.isSet(no_opt))
        ui.preset_answer = parser.isSet(yes_opt);
    if (parser.isSet(input_opt))
        ui.preset_input = parser.value(input_opt);
    if (parser.isSet(file_opt))
        ui.preset_file = parser.value(file_opt);
    auto backend = link::make_link(*option, clock, sim::make_concentrator, &error);
    if (!backend) {
        cli::print_error(error);
        return cli::exit_usage;
    }
    AppContext ctx(clock, ui, std::move(backend));
    status::install_status_memory(ctx);
    ctx.program_dir = config::program_folder(QCoreApplication::applicationDirPath());
    // The same settings file as the desktop program: beside the program, or
    // with the user when the program's folder is read-only.
    const config::ConfigLocation location = config::locate_config(ctx.program_dir);
    ctx.config_path = location.config_path;
    ctx.user_dir = location.user_dir;
    config::set_config_defaults(ctx.config, ctx.user_dir);
    // A script runs fine on the defaults; only a file that is there is read.
    if (QFileInfo::exists(ctx.config_path))
        config::load_config(ctx.config, ctx.config_path, ctx.user_dir, ui);
    ctx.archive_path = config::archive_path(location, ctx.config.ARCHIV, parser.value(archive_opt));
    ctx.timer1.set_interval(ctx.config.TIMERINTERVAL);
    ctx.language.words = config::language_locale(parser.value(lang_opt));
    const QString lang = ctx.program_dir + QStringLiteral("lang%1.txt").arg(parser.value(lang_opt));
    if (QFileInfo::exists(lang))
        config::load_language(ctx.language, lang, ui);

    cli::install_interrupt_handler();
    cli::CliSession session(ctx, ui);
    // Every job of the command lands in the archive as it ends; waiting for
    // the file does no harm here, so it is written on this thread.
    archive::ArchiveService archive(ctx.archive_path, archive::ArchiveService::Mode::inline_jobs);
    archive::install_archive(ctx, archive);
    cli::CommandEnv env{ctx, ui, session, parser, args.mid(1), archive};
    int code = command->run(env);

    if (ctx.link.device_handle != 0)
        link::close_device(ctx);
    if (parser.isSet(log_opt) &&
        !config::write_text_lines(parser.value(log_opt), {ctx.comm_log.comm_log})) {
        cli::print_error(
            QStringLiteral("could not write the log to %1").arg(parser.value(log_opt)));
        code = code == cli::exit_ok ? cli::exit_device : code;
    }
    return code;
}
