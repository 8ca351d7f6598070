// veltrako2-cli: the headless front end for service scripts and automation.

#include "app_context.h"
#include "cli_session.h"
#include "config/config.h"
#include "config/language.h"
#include "config/text_file.h"
#include "console_ui.h"
#include "link/device_connection.h"
#include "link/link_factory.h"
#include "payload_text.h"
#include "sim/concentrator.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QFileInfo>

using namespace veltrako;

int main(int argc, char** argv) {
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("veltrako2-cli"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELTRAKO_VERSION));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "Talks to one oxygen concentrator without a window.\n\n"
        "Commands:\n"
        "  info                 connect, read the device, print KEY|VALUE lines\n"
        "  watch [--seconds N]  one line of live values per live status\n"
        "  send PAYLOAD...      send payloads (hex bytes \"65 00 80 07\" or text \"I\";\n"
        "                       \"hex:\"/\"text:\" in front decides) and print each answer"));
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
    const QCommandLineOption seconds_opt(QStringLiteral("seconds"),
                                         QStringLiteral("watch: stop after N seconds"),
                                         QStringLiteral("n"));
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
    parser.addOptions({link_opt, log_opt, lang_opt, seconds_opt, verbose_opt, yes_opt, no_opt,
                       input_opt, file_opt});
    parser.addPositionalArgument(QStringLiteral("command"), QStringLiteral("info, watch or send"));
    parser.process(app);

    const QStringList args = parser.positionalArguments();
    const QString command = args.value(0);
    if (command != QLatin1String("info") && command != QLatin1String("watch") &&
        command != QLatin1String("send")) {
        cli::print_error(command.isEmpty() ? QStringLiteral("no command given: info, watch or send")
                                           : QStringLiteral("unknown command \"%1\"").arg(command));
        return cli::exit_usage;
    }
    QList<QByteArray> payloads;
    for (const QString& arg : args.mid(1)) {
        const auto payload = cli::parse_payload_argument(arg);
        if (!payload) {
            cli::print_error(QStringLiteral("not a payload: \"%1\"").arg(arg));
            return cli::exit_usage;
        }
        payloads << *payload;
    }
    if (command == QLatin1String("send") && payloads.isEmpty()) {
        cli::print_error(QStringLiteral("send: no payload given"));
        return cli::exit_usage;
    }
    int seconds = -1;
    if (parser.isSet(seconds_opt)) {
        bool ok = false;
        seconds = parser.value(seconds_opt).toInt(&ok);
        if (!ok || seconds < 0) {
            cli::print_error(QStringLiteral("--seconds takes a whole number of seconds"));
            return cli::exit_usage;
        }
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
    ctx.program_dir = config::program_folder(QCoreApplication::applicationDirPath());
    config::set_config_defaults(ctx.config, ctx.program_dir);
    // A script runs fine on the defaults; only a file that is there is read.
    const QString ini = ctx.program_dir + QLatin1String(config::config_file_name);
    if (QFileInfo::exists(ini))
        config::load_config(ctx.config, ini, ctx.program_dir, ui);
    ctx.timer1.set_interval(ctx.config.TIMERINTERVAL);
    const QString lang = ctx.program_dir + QStringLiteral("lang%1.txt").arg(parser.value(lang_opt));
    if (QFileInfo::exists(lang))
        config::load_language(ctx.language, lang, ui);

    cli::install_interrupt_handler();
    cli::CliSession session(ctx, ui);
    int code = cli::exit_ok;
    if (command == QLatin1String("info"))
        code = session.info();
    else if (command == QLatin1String("watch"))
        code = session.watch(seconds);
    else
        code = session.send(payloads);

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
