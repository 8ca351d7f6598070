// veltrako2-sim: one simulated concentrator on a pseudo-terminal. The first
// line on stdout is the terminal's path; open it like a serial port.
//   veltrako2-sim [--scenario NAME_OR_FILE] [--verbose]
// SIGINT or SIGTERM stops it cleanly (exit code 0).

#include "sim/concentrator.h"
#include "sim/pty_server.h"
#include "sim/scenario.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>
#include <sys/signalfd.h>
#include <unistd.h>

using namespace veltrako;

int main(int argc, char** argv) {
    // The stop signals arrive as readable bytes on a descriptor the event loop
    // watches. They are blocked before Qt starts any thread, so that every
    // thread inherits the block and none of them is killed by the signal.
    sigset_t stop_signals;
    sigemptyset(&stop_signals);
    sigaddset(&stop_signals, SIGINT);
    sigaddset(&stop_signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &stop_signals, nullptr);
    const int signal_fd = signalfd(-1, &stop_signals, SFD_NONBLOCK | SFD_CLOEXEC);
    if (signal_fd < 0) {
        std::perror("veltrako2-sim: signalfd");
        return 1;
    }

    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("veltrako2-sim"));

    QCommandLineParser options;
    options.setApplicationDescription(
        QStringLiteral("Serves a simulated oxygen concentrator on a pseudo-terminal. The first "
                       "line printed is the terminal's path. Sample scenarios: %1.")
            .arg(sim::sample_scenario_names().join(QStringLiteral(", "))));
    options.addHelpOption();
    const QCommandLineOption scenario_option(
        QStringLiteral("scenario"),
        QStringLiteral("A sample scenario by name, or a scenario file (default: default)."),
        QStringLiteral("NAME_OR_FILE"), QStringLiteral("default"));
    const QCommandLineOption verbose_option(
        QStringLiteral("verbose"),
        QStringLiteral("One line on stderr for every request answered."));
    options.addOption(scenario_option);
    options.addOption(verbose_option);
    options.process(app);

    QString error;
    const auto scenario = sim::load_scenario(options.value(scenario_option), &error);
    if (!scenario) {
        std::fprintf(stderr, "veltrako2-sim: %s\n", qPrintable(error));
        return 2;
    }

    sim::Concentrator device(*scenario);
    sim::PtyServer server(device);
    if (!server.open(&error)) {
        std::fprintf(stderr, "veltrako2-sim: %s\n", qPrintable(error));
        return 1;
    }
    if (options.isSet(verbose_option)) {
        server.set_log([](const QString& line) {
            std::fprintf(stderr, "%s\n", qPrintable(line));
            std::fflush(stderr);
        });
    }

    std::printf("%s\n", qPrintable(server.slave_path()));
    std::fflush(stdout);

    QSocketNotifier stop(signal_fd, QSocketNotifier::Read);
    QObject::connect(&stop, &QSocketNotifier::activated, [&] {
        signalfd_siginfo info{};
        while (read(signal_fd, &info, sizeof info) == static_cast<ssize_t>(sizeof info)) {
        }
        QCoreApplication::quit();
    });

    const int code = QCoreApplication::exec();
    close(signal_fd);
    return code;
}
