// veltrako2-cli report: a report file written from the simulated device with
// fields from the command line, printed again to PDF without a device, and
// the usage errors that leave everything untouched.

#include "cli_program.h"
#include "table.h"

#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

using veltrako::testing::ProgramCopy;
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
        QCOMPARE(bytes.count("\r\n"), 62);
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

    // After writing, one line per judged value and the result, numbers in
    // the user's locale; written whatever the result (exit 0). The limits
    // are veltrako2.ini's; the simulated device is set to 2.0 l/min.
    void judged_lines_data() {
        // locale, veltrako2.ini lines added, fields, lines printed
        Table<QString, QByteArray, QStringList, QString> row;
        row("the example, German", "de_DE.UTF-8", "",
            {"m_O2=80,5", "m_Flow=2,1", "t_Schutzklasse=II", "m_Ableitstrom=0,05"},
            "m_O2|80,5|82|fail\nm_Flow|2,1|1,8–2,2|pass\nm_Ableitstrom|0,05|0,1|pass\n"
            "ERGEBNIS|fail\n");
        row("passed, class I, a limit of the configuration", "C.UTF-8",
            "GRENZE_O2|88\r\nGRENZE_SCHUTZLEITER|0,2\r\n",
            {"m_O2=88", "m_Flow=1.8", "t_Schutzklasse=I", "m_Schutzleiter=0.2", "m_Ableitstrom=0.5",
             "t_Messgeraet=Oxy 3"},
            "m_O2|88|88|pass\nm_Flow|1.8|1.8–2.2|pass\nm_Schutzleiter|0.2|0.2|pass\n"
            "m_Ableitstrom|0.5|0.5|pass\nERGEBNIS|pass\n");
        row("nothing measured", "C.UTF-8", "", {"t_Patient=Erika"}, "ERGEBNIS|incomplete\n");
        // A usage error: nothing is written.
        row("a limit of the configuration that is no number", "C.UTF-8", "GRENZE_FLOW|viel\r\n",
            {"m_O2=90"}, "");
    }
    void judged_lines() {
        const auto [locale, ini, fields, printed] =
            Table<QString, QByteArray, QStringList, QString>::fetch();
        const ProgramCopy cli(QStringLiteral(VELTRAKO2_CLI_PATH));
        // The copy's settings may be a hard link to the build's: a file of
        // its own is written in their place.
        const QString ini_path = cli.file(QStringLiteral("veltrako2.ini"));
        QFile shipped(ini_path);
        QVERIFY(shipped.open(QIODevice::ReadOnly));
        const QByteArray settings = shipped.readAll() + ini;
        shipped.close();
        QVERIFY(QFile::remove(ini_path));
        QFile own(ini_path);
        QVERIFY(own.open(QIODevice::WriteOnly) && own.write(settings) == settings.size());
        own.close();
        QTemporaryDir dir;
        const QString file = dir.filePath(QStringLiteral("r.txt"));
        const Run r = cli.run(QStringList{"--link", "sim", "report", "--out", file} + fields, 60000,
                              {{"LC_ALL", locale}});
        if (printed.isEmpty()) {
            QCOMPARE(r.exit_code, 2);
            QVERIFY2(r.err.contains("GRENZE_FLOW") && r.err.contains("viel"), qPrintable(r.err));
            QVERIFY(!QFile::exists(file));
            return;
        }
        QVERIFY2(r.exit_code == 0, qPrintable(r.err));
        QCOMPARE(r.out, printed);
        QFile written(file);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QVERIFY(written.readAll().endsWith(
            ("ERGEBNIS|" + printed.section('|', -1)).toUtf8().replace("\n", "\r\n")));
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
        row("a measured value that is no number", {"--out", "OUT", "m_O2=8O"}, "m_O2");
        row("two decimal separators", {"--out", "OUT", "m_Flow=1.000,5"}, "1.000,5");
        row("protection class III", {"--out", "OUT", "t_Schutzklasse=III"}, "III");
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
