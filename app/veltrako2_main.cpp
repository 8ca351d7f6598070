// veltrako2: the desktop service and inspection tool.

#include "app_context.h"
#include "archive/archive_hooks.h"
#include "archive/archive_service.h"
#include "config/qt_translation.h"
#include "frm_main.h"
#include "history_page.h"
#include "link/link_factory.h"
#include "sim/concentrator.h"
#include "startup.h"
#include "status/status_readout.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QMessageBox>
#include <QTranslator>

#include <cstdio>
#include <cstdlib>

using namespace veltrako;

namespace {

void name_application() {
    QCoreApplication::setApplicationName(QStringLiteral("veltrako2"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VELTRAKO_VERSION));
}

// --help and --version answer before any window system is asked for, so
// that they work over ssh and in scripts. Qt's own options for the window
// (-platform, -display) are not known here and are not an error yet.
void answer_without_display(int& argc, char** argv, QCommandLineParser& parser) {
    const QCoreApplication probe(argc, argv);
    name_application();
    parser.parse(QCoreApplication::arguments());
    if (parser.isSet(QStringLiteral("help")) || parser.isSet(QStringLiteral("help-all")))
        parser.showHelp(0);
    if (parser.isSet(QStringLiteral("version")))
        parser.showVersion();
}

// While the window system is being opened. Without a display Qt ends the
// program with abort() and the advice to reinstall it; whoever started it
// (a technician over a remote shell, a script, a display that went away) is
// told instead what is missing, and the program ends as any failed start
// does, with status 1 and no core dump. Exiting at once is the only safe
// way out: Qt is half set up and nothing of ours exists yet.
void explain_start_failure(QtMsgType type, const QMessageLogContext& context,
                           const QString& message) {
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, message)));
    if (type != QtFatalMsg)
        return;
    const QByteArray display = qgetenv("DISPLAY");
    std::fprintf(stderr,
                 "veltrako2: the window cannot be shown: no display could be opened (DISPLAY=%s)."
                 " Start it on a desktop, or use veltrako2-cli.\n",
                 display.isEmpty() ? "not set" : display.constData());
    std::fflush(stderr);
    std::_Exit(1);
}

} // namespace

int main(int argc, char** argv) {
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("Service and inspection tool for an oxygen concentrator."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption link_opt(
        QStringLiteral("link"),
        QStringLiteral("ftdi (default), serial:PATH, or sim[:SCENARIO] for the simulated device"),
        QStringLiteral("link"), QStringLiteral("ftdi"));
    const QCommandLineOption lang_opt(QStringLiteral("lang"),
                                      QStringLiteral("two-letter language code (default de)"),
                                      QStringLiteral("code"), QStringLiteral("de"));
    const QCommandLineOption archive_opt(
        QStringLiteral("archive"),
        QStringLiteral("the archive file (default: ARCHIV in veltrako2.ini, else archive.sqlite"
                       " where the settings rule puts it); none turns the archive off"),
        QStringLiteral("path"));
    parser.addOptions({link_opt, lang_opt, archive_opt});
    answer_without_display(argc, argv, parser);

    qInstallMessageHandler(explain_start_failure);
    QApplication app(argc, argv);
    qInstallMessageHandler(nullptr);
    name_application();
    parser.process(app);

    // Qt's own dialogs and buttons speak the program's language.
    QTranslator qt_words;
    if (config::load_qt_translation(qt_words, parser.value(lang_opt)))
        QApplication::installTranslator(&qt_words);

    QString error;
    const auto option = link::parse_link_option(parser.value(link_opt), &error);
    SystemClock clock;
    std::unique_ptr<link::DeviceLink> backend;
    if (option)
        backend = link::make_link(*option, clock, sim::make_concentrator, &error);
    if (!backend) {
        QMessageBox::critical(nullptr, QStringLiteral("veltrako2"), error);
        return 2;
    }

    ui::FrmMain form;
    AppContext ctx(clock, form, std::move(backend));
    status::install_status_memory(ctx);
    form.bind(ctx);
    ui::StartupOptions startup;
    startup.application_dir = QApplication::applicationDirPath();
    startup.language_code = parser.value(lang_opt);
    startup.archive_option = parser.value(archive_opt);
    form.show();
    ui::form_load(form, ctx, startup);
    // The archive works on a thread of its own: no merge or query holds the window.
    archive::ArchiveService archive(ctx.archive_path, archive::ArchiveService::Mode::own_thread);
    archive::install_archive(ctx, archive);
    ui::bind_page_verlauf(form, ctx, archive);
    return app.exec();
}
