#pragma once
// Small helpers for the tests of files, reports and printouts: a data row on
// one line, whole files written and read back, a PDF read back as text, and
// a program context without a device whose folders are a temporary folder.

#include "app_context.h"
#include "fake_link.h"
#include "fake_user_interface.h"
#include "manual_clock.h"

#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

namespace veltrako::testing {

// One data row, its values in the order of the columns.
template <class... T> void row(const char* name, const T&... values) {
    (QTest::newRow(name) << ... << values);
}

inline bool write_file(const QString& path, const QByteArray& bytes) {
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// The file's bytes; "<missing>" when it cannot be read.
inline QByteArray read_file(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// The text of a PDF (or of one page of it, counted from 1) as pdftotext lays
// it out, form feeds between pages; empty when pdftotext is missing.
inline QString pdf_layout_text(const QString& pdf, int page = 0) {
    const QString tool = QStandardPaths::findExecutable(QStringLiteral("pdftotext"));
    if (tool.isEmpty())
        return {};
    QStringList args{QStringLiteral("-layout")};
    if (page > 0)
        args << QStringLiteral("-f") << QString::number(page) << QStringLiteral("-l")
             << QString::number(page);
    QProcess p;
    p.start(tool, args << pdf << QStringLiteral("-"));
    if (!p.waitForFinished(30000) || p.exitCode() != 0)
        return QStringLiteral("<pdftotext failed>");
    return QString::fromUtf8(p.readAllStandardOutput());
}

// The program without a device, at 2026-03-02 14:05:09 UTC, its program,
// user and start folders one temporary folder.
struct Desk {
    ManualClock clock{QDateTime(QDate(2026, 3, 2), QTime(14, 5, 9), Qt::UTC)};
    FakeUserInterface ui;
    AppContext ctx{clock, ui, std::make_unique<FakeLink>()};
    QTemporaryDir dir;
    Desk() {
        ctx.program_dir = dir.path() + QLatin1Char('/');
        ctx.user_dir = ctx.program_dir;
        ctx.config_path = ctx.program_dir + QStringLiteral("veltrako2.ini");
        ctx.config.INITDIR = ctx.program_dir;
    }
    QString path(const QString& name) const { return dir.filePath(name); }
};

} // namespace veltrako::testing
