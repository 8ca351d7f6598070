#pragma once
// The stand-alone simulator started as its own process; `path` is the
// pseudo-terminal it names on its first line. Killed if still running at
// the end.

#include <QElapsedTimer>
#include <QProcess>

namespace veltrako::testing {

struct SimServerProcess {
    QProcess process;
    QByteArray path;

    bool start(const QString& program, const QStringList& arguments = {}) {
        process.setProgram(program);
        process.setArguments(arguments);
        process.start();
        if (!process.waitForStarted(5000))
            return false;
        QElapsedTimer t;
        t.start();
        while (!process.canReadLine() && t.elapsed() < 5000)
            process.waitForReadyRead(100);
        // A script reads the path as the first line: it has to end with one.
        if (!process.canReadLine())
            return false;
        path = process.readLine().trimmed();
        return path.startsWith("/dev/");
    }
    ~SimServerProcess() {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished(5000);
        }
    }
};

} // namespace veltrako::testing
