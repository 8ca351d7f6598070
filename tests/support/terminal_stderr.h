#pragma once
// A program run as from a technician's shell, with its stderr on a terminal
// (a pseudo-terminal the test reads), stdout captured as usual. It runs from
// a program folder of its own: whatever the program writes beside itself
// (its archive) stays out of the build's.

#include "cli_program.h"

#include <QElapsedTimer>
#include <QProcess>

#include <fcntl.h>
#include <pty.h>
#include <termios.h>
#include <unistd.h>

namespace veltrako::testing {

struct TerminalRun {
    int exit_code = -1;
    QByteArray out;
    QByteArray terminal; // what went to stderr, byte for byte
};

inline TerminalRun run_with_terminal_stderr(const QString& program, const QStringList& arguments,
                                            int timeout_ms = 60000) {
    TerminalRun r;
    int master = -1;
    int slave = -1;
    char name[128] = {};
    if (openpty(&master, &slave, name, nullptr, nullptr) != 0)
        return r;
    // Raw: the terminal passes "\r" and "\n" as written.
    termios raw{};
    tcgetattr(slave, &raw);
    cfmakeraw(&raw);
    tcsetattr(slave, TCSANOW, &raw);
    fcntl(master, F_SETFL, fcntl(master, F_GETFL) | O_NONBLOCK);
    const auto drain = [&] {
        char chunk[4096];
        for (ssize_t n; (n = ::read(master, chunk, sizeof chunk)) > 0;)
            r.terminal.append(chunk, n);
    };
    const ProgramCopy copy(program);
    QProcess p;
    p.setStandardErrorFile(QString::fromLocal8Bit(name));
    p.start(copy.file(QFileInfo(program).fileName()), arguments);
    QElapsedTimer t;
    t.start();
    while (!p.waitForFinished(20) && t.elapsed() < timeout_ms)
        drain();
    if (p.state() != QProcess::NotRunning) {
        p.kill();
        p.waitForFinished();
    } else {
        r.exit_code = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
    }
    drain();
    r.out = p.readAllStandardOutput();
    ::close(slave);
    ::close(master);
    return r;
}

} // namespace veltrako::testing
