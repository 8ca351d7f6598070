// veltrako2: the desktop service and inspection tool.

#include "app_context.h"
#include "frm_main.h"
#include "link/link_factory.h"
#include "sim/concentrator.h"
#include "startup.h"
#include "status/status_readout.h"

#include <QApplication>
#include <QCommandLineParser>
#include <QMessageBox>

using namespace veltrako;

int main(int argc, char** argv) {
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("veltrako2"));
    QApplication::setApplicationVersion(QStringLiteral(VELTRAKO_VERSION));

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
    parser.process(app);

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
