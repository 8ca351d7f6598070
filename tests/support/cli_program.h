#pragma once
// A program of the build run as a script runs it, from a program folder of
// its own, made of hard links where the file system allows, else of copies,
// and gone with the object. Its veltrako2.ini is a file of its own: the
// build's settings in bytes no program writes (LF line ends, a line of a key
// no program knows), and every run fails the test when it changed them: a
// script's run must leave the technician's settings as they are.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include <unistd.h>

namespace veltrako::testing {

struct ProgramRun {
    int exit_code = -1; // -1: crashed or did not finish
    QString out;
    QString err;
};

class ProgramCopy {
public:
    // `program`: the path of the built program; its folder's language files,
    // presets and settings come along.
    explicit ProgramCopy(const QString& program) {
        const QFileInfo built(program);
        path_ = dir_.filePath(built.fileName());
        const QDir from = built.absoluteDir();
        ok_ = dir_.isValid() && place(built.absoluteFilePath(), path_);
        const QStringList beside = from.entryList(
            {QStringLiteral("lang*.txt"), QStringLiteral("Zeiten_*.txt")}, QDir::Files);
        for (const QString& name : beside)
            ok_ = ok_ && place(from.filePath(name), dir_.filePath(name));
        QFile built_ini(from.filePath(QStringLiteral("veltrako2.ini")));
        QFile ini(file(QStringLiteral("veltrako2.ini")));
        ok_ = ok_ && built_ini.open(QIODevice::ReadOnly) && ini.open(QIODevice::WriteOnly) &&
              ini.write(built_ini.readAll().replace("\r\n", "\n") + "KEPT|as it was\n") > 0;
    }

    bool ok() const { return ok_; }
    QString folder() const { return dir_.path(); }
    QString file(const QString& name) const { return dir_.filePath(name); }

    // Runs the copy. `environment` entries are set over the test's own
    // environment (an empty value removes the variable).
    ProgramRun run(const QStringList& arguments, int timeout_ms = 60000,
                   const QList<std::pair<QString, QString>>& environment = {}) const {
        QProcess p;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        for (const auto& [name, value] : environment) {
            if (value.isEmpty())
                env.remove(name);
            else
                env.insert(name, value);
        }
        p.setProcessEnvironment(env);
        const QByteArray settings = this->settings();
        p.start(path_, arguments);
        ProgramRun r;
        if (!p.waitForFinished(timeout_ms)) {
            p.kill();
            p.waitForFinished();
            r.err = QStringLiteral("did not finish");
            return r;
        }
        r.exit_code = p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1;
        r.out = QString::fromUtf8(p.readAllStandardOutput());
        r.err = QString::fromUtf8(p.readAllStandardError());
        if (this->settings() != settings)
            QTest::qFail(qPrintable(QStringLiteral("veltrako2.ini changed by: ") +
                                    arguments.join(QLatin1Char(' '))),
                         __FILE__, __LINE__);
        return r;
    }

    // The bytes of the copy's veltrako2.ini.
    QByteArray settings() const {
        QFile ini(file(QStringLiteral("veltrako2.ini")));
        return ini.open(QIODevice::ReadOnly) ? ini.readAll() : QByteArray();
    }

private:
    static bool place(const QString& from, const QString& to) {
        return ::link(QFile::encodeName(from).constData(), QFile::encodeName(to).constData()) ==
                   0 ||
               QFile::copy(from, to);
    }

    QTemporaryDir dir_;
    QString path_;
    bool ok_ = false;
};

// The text of a PDF as pdftotext reads it, blanks run together; empty when
// pdftotext is missing.
inline QString pdf_text(const QString& pdf) {
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("pdftotext"));
    if (tool.isEmpty())
        return {};
    QProcess p;
    p.start(tool, {pdf, QStringLiteral("-")});
    p.waitForFinished(30000);
    return QString::fromUtf8(p.readAllStandardOutput()).simplified();
}

#ifdef VELTRAKO2_CLI_PATH
// veltrako2-cli run from a program folder of its own.
inline ProgramRun run_cli(const QStringList& arguments, int timeout_ms = 60000,
                          const QList<std::pair<QString, QString>>& environment = {}) {
    const ProgramCopy cli(QStringLiteral(VELTRAKO2_CLI_PATH));
    if (!cli.ok())
        qFatal("cannot copy the program");
    return cli.run(arguments, timeout_ms, environment);
}
#endif

} // namespace veltrako::testing
