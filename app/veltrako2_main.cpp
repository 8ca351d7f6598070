// veltrako2: the desktop service and inspection tool.

#include "app_context.h"
#include "config/qt_translation.h"
#include "frm_main.h"
#include "link/link_factory.h"
#include "sim/concentrator.h"
#include "startup.h"
#include "status/status_readout.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QMessageBox>
#include <QTranslator>

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
    parser.addOptions({link_opt, lang_opt});
    answer_without_display(argc, argv, parser);

    QApplication app(argc, argv);
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
    form.show();
    ui::form_load(form, ctx, startup);
    return app.exec();
}
