// veltrako2-cli report: a report file written from the simulated device with
// fields from the command line, printed again to PDF without a device, and
// the usage errors that leave everything untouched.

#include "cli_program.h"
#include "table.h"

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

using veltrako::testing::run_cli;
using veltrako::testing::Table;
using Run = veltrako::testing::ProgramRun;

class TestCliReport : public QObject {
    Q_OBJECT
private slots:
    void out_then_print() {
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("report.txt"));
        const Run r = run_cli({"--link", "sim", "report", "--out", file, "t_Patient=Jürgen Müller",
                               "ck_stk=1", "T_ORT=Bonn", "t_Bemerkungen=a|b"});
        QVERIFY2(r.exit_code == 0, qPrintable(r.err));
        QFile f(file);
        QVERIFY(f.open(QIODevice::ReadOnly));
        const QByteArray bytes = f.readAll();
        QCOMPARE(bytes.count("\r\n"), 50);
        for (const char* line :
             {"t_Patient|J\xC3\xBCrgen M\xC3\xBCller\r\n", "ck_stk|1\r\n", "t_Ort|Bonn\r\n",
              "t_Bemerkungen|a/b\r\n", "ck_Leistung|\r\n", "VEEPROM|\r\n"})
            QVERIFY2(bytes.contains(line), line);
        // The device was read: serial number and hours are there.
        QVERIFY(bytes.contains("\r\nSN|VO2-"));
        QVERIFY(!bytes.contains("\r\nBSTD|\r\n"));
        QVERIFY(bytes.contains("\r\nt_Datum|"));

        if (QStandardPaths::findExecutable(QStringLiteral("pdftotext")).isEmpty())
            QSKIP("pdftotext is not installed");
        // The same report as a Windows program saves it: Windows-1252, CR
        // alone at each line end.
        QFile ansi(dir.filePath(QStringLiteral("ansi.txt")));
        QVERIFY(ansi.open(QIODevice::WriteOnly));
        ansi.write(QString::fromUtf8(bytes)
                       .replace(QStringLiteral("\r\n"), QStringLiteral("\r"))
                       .toLatin1());
        ansi.close();
        const QString pdf = dir.filePath(QStringLiteral("report.pdf"));
        const Run printed =
            run_cli({"--lang", "de", "report", "--print", ansi.fileName(), "--pdf", pdf});
        QVERIFY2(printed.exit_code == 0, qPrintable(printed.err));
        const QString text = veltrako::testing::pdf_text(pdf);
        const QString sn = QString::fromUtf8(bytes)
                               .section(QStringLiteral("\r\nSN|"), 1)
                               .section(QLatin1Char('\r'), 0, 0);
        const QString hours = QString::fromUtf8(bytes)
                                  .section(QStringLiteral("\r\nBSTD|"), 1)
                                  .section(QLatin1Char('\r'), 0, 0);
        for (const QString& expected : {QStringLiteral("Jürgen Müller"), sn.trimmed(), hours,
                                        QStringLiteral("Prüfprotokoll")})
            QVERIFY2(text.contains(expected), qPrintable(expected));
    }

    // Usage errors come before the device: a link that cannot open is never
    // tried, and no file appears.
    void usage_errors_data() {
        Table<QStringList, QString> row; // arguments, said
        row("unknown key", {"--out", "OUT", "t_Name=x"}, "t_Name");
        row("no equals sign", {"--out", "OUT", "t_Patient"}, "t_Patient");
        row("check box takes 0 or 1", {"--out", "OUT", "ck_stk=ja"}, "ja");
        row("neither form", {}, "--out");
        row("both forms", {"--out", "OUT", "--print", "IN"}, "--print");
        row("print without pdf", {"--print", "IN"}, "--pdf");
        row("print of a missing file", {"--print", "IN", "--pdf", "OUT"}, "missing.txt");
    }
    void usage_errors() {
        auto [arguments, message] = Table<QStringList, QString>::fetch();
        QTemporaryDir dir;
        const QString out = dir.filePath(QStringLiteral("out.file"));
        const QString in = dir.filePath(QStringLiteral("missing.txt"));
        arguments.replaceInStrings(QStringLiteral("OUT"), out);
        arguments.replaceInStrings(QStringLiteral("IN"), in);
        const Run r =
            run_cli(QStringList{"--link", "serial:/dev/veltrako2-none", "report"} + arguments);
        QCOMPARE(r.exit_code, 2);
        QVERIFY2(r.err.contains(message), qPrintable(r.err));
        QVERIFY(!QFile::exists(out));
    }
};

QTEST_GUILESS_MAIN(TestCliReport)
#include "test_cli_report.moc"
