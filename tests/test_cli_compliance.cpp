// The compliance command as a script uses it, against the in-process
// simulator: the month lines, the progress on stderr, the file and the PDF,
// the same lines again from the saved file, and the erase question.

#include "cli_program.h"
#include "table.h"
#include "terminal_stderr.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace {

using namespace veltrako::testing;
using Run = ProgramRun;
using Refusals = Table<QStringList, int, QString>;
using Deletes = Table<QStringList, int, bool>;

QString write_file(const QTemporaryDir& dir, const QString& name, const QByteArray& content) {
    QFile f(dir.filePath(name));
    if (!f.open(QIODevice::WriteOnly) || f.write(content) != content.size())
        qFatal("cannot write %s", qPrintable(f.fileName()));
    return f.fileName();
}

} // namespace

class TestCliCompliance : public QObject {
    Q_OBJECT
private slots:
    // The device's clock stands at 12.03.2026 09:30, months behind the PC's:
    // the period still running ends there, not at the PC's time, so no month
    // after March is made up; the one line on stderr says how far off it is.
    void read_save_print_and_load_again() {
        QTemporaryDir dir;
        const QString scenario =
            write_file(dir, "behind.scn",
                       "CLOCK=2026-03-12 09:30:00\nCOMPLIANCE_GENERATE=60\n"
                       "COMPLIANCE_FROM=2026-01-01\nCOMPLIANCE_TO=2026-03-01\n");
        const QString file = dir.filePath("c.txt");
        const QString pdf = dir.filePath("c.pdf");
        const Run device = run_cli({"--lang", "en", "--link", "sim:" + scenario, "compliance",
                                    "--out", file, "--pdf", pdf, "--month", "2026-02"});
        QCOMPARE(device.exit_code, 0);
        const QStringList months = device.out.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(months.size(), 3);
        QVERIFY2(months.first().startsWith("2026-01|") && months.last().startsWith("2026-03|"),
                 qPrintable(device.out));
        static const QRegularExpression line(R"(^\d{4}-\d{2}\|\d+\.\d\|\d{1,2}\|\d+\.\d$)");
        for (const QString& m : months)
            QVERIFY2(line.match(m).hasMatch(), qPrintable(m));
        // Not on a terminal: no progress, nothing but what a script reads and
        // the one warning.
        QStringList err = device.err.split('\n', Qt::SkipEmptyParts);
        err.removeIf([](const QString& l) { return l.startsWith("QStandardPaths:"); }); // Qt's own
        QVERIFY2(err.size() == 1 && err.first().startsWith("Device clock is ") &&
                     err.first().contains(" behind"),
                 qPrintable(device.err));
        QFile saved(file);
        QVERIFY(saved.open(QIODevice::ReadOnly));
        const QByteArray records = saved.readAll();
        QCOMPARE(records.count("\r\n"), 61);
        QVERIFY2(records.contains("|12.03.2026 09:30:00-12.03.2026 09:3"), records.constData());
        if (!QStandardPaths::findExecutable("pdftotext").isEmpty()) {
            const QString text = pdf_text(pdf);
            QVERIFY2(text.contains("February 2026"), qPrintable(text));
            QVERIFY2(text.contains(": 28 "), qPrintable(text)); // days with use
        }

        const Run loaded = run_cli({"compliance", "--load", file});
        QCOMPARE(loaded.exit_code, 0);
        QCOMPARE(loaded.out, device.out);
    }

    // Month names follow --lang, whatever the language of the system, while
    // numbers stay in the system's locale; the printout names the device of
    // the file it was loaded from. With a prescription each month line gets a
    // fifth field: the days that reached it.
    void month_in_the_chosen_language_data() {
        // --lang, the system's language, the month's title, the month line
        const Table<QString, QString, QString, QString> row;
        const QString best = "30d|2026-03-02|2026-03-02|1|1|met\n";
        row("de on an English system", "de", "en_US.UTF-8", "März 2026",
            "2026-03|4.5|1|4.5|1|1\n" + best);
        row("en on a German system", "en", "de_DE.UTF-8", "March 2026",
            "2026-03|4,5|1|4,5|1|1\n" + best);
    }
    void month_in_the_chosen_language() {
        const auto [lang, lc_all, title, line] = Table<QString, QString, QString, QString>::fetch();
        QTemporaryDir dir;
        const QString file = write_file(dir, "Compliance_VO2-0012345_20260402_093000.txt",
                                        "0|02.03.2026 08:00:00-02.03.2026 12:30:00\r\n");
        const QString pdf = dir.filePath("c.pdf");
        const Run r = run_cli({"--lang", lang, "compliance", "--load", file, "--pdf", pdf,
                               "--month", "2026-03", "--prescribed-hours", "4"},
                              60000, {{"LC_ALL", lc_all}, {"LANG", lc_all}});
        QVERIFY2(r.exit_code == 0, qPrintable(r.err));
        QCOMPARE(r.out, line);
        if (QStandardPaths::findExecutable("pdftotext").isEmpty())
            QSKIP("pdftotext is not installed");
        const QString text = pdf_text(pdf);
        QVERIFY2(text.contains(title) && text.contains("VO2-0012345"), qPrintable(text));
        QVERIFY2(text.contains(lc_all.startsWith("de") ? "4,5" : "4.5"), qPrintable(text));
    }

    // The figures of a loaded file as an insurer reads them, in the C
    // locale: each moment once, days counted from the first record's day,
    // and the best 30 days against the share asked for.
    void figures_of_a_file_data() {
        // file content, arguments after it, the lines
        const Table<QByteArray, QStringList, QString> row;
        const QByteArray example = "0|03.02.2021 22:00:00-05.02.2021 06:00:00\r\n"
                                   "1|05.02.2021 08:00:00-05.02.2021 09:30:00\r\n";
        row("prescription of 6 h", example, {"--prescribed-hours", "6"},
            "2021-02|33.5|3|11.2|2|3\n30d|2021-02-03|2021-02-05|2|3|not met\n");
        row("a share of 60 %", example, {"--prescribed-hours", "6", "--adherence-share", "60"},
            "2021-02|33.5|3|11.2|2|3\n30d|2021-02-03|2021-02-05|2|3|met\n");
        row("no prescription", example, {}, "2021-02|33.5|3|11.2\n");
        // --month without --pdf chooses nothing, but December is a month.
        row("the last month of a year", "0|31.12.2020 20:00:00-01.01.2021 08:00:00\r\n",
            {"--prescribed-hours", "6", "--month", "2020-12"},
            "2020-12|4.0|1|4.0|0|1\n2021-01|8.0|1|8.0|1|1\n30d|2020-12-31|2021-01-01|1|2|not "
            "met\n");
        row("overlapping records",
            "0|01.02.2021 08:00:00-01.02.2021 12:00:00\r\n"
            "1|01.02.2021 09:00:00-01.02.2021 13:00:00\r\n",
            {"--prescribed-hours", "6"},
            "2021-02|5.0|1|5.0|0|1\n30d|2021-02-01|2021-02-01|0|1|not met\n");
    }
    void figures_of_a_file() {
        const auto [content, arguments, lines] = Table<QByteArray, QStringList, QString>::fetch();
        QTemporaryDir dir;
        const QString file = write_file(dir, "c.txt", content);
        const Run r = run_cli(QStringList{"compliance", "--load", file} + arguments, 60000,
                              {{"LC_ALL", "C"}});
        QVERIFY2(r.exit_code == 0, qPrintable(r.err));
        QCOMPARE(r.out, lines);
    }

    // A record that never comes: status 1 well within half a minute, one
    // line on stderr naming it, and the file asked for left as it was.
    void record_never_read_fails() {
        QTemporaryDir dir;
        const QString scenario = write_file(dir, "withheld.scn",
                                            "COMPLIANCE_GENERATE=20\nCOMPLIANCE_FROM=-30d\n"
                                            "COMPLIANCE_TO=-1d\nWITHHELD_RECORD=12\n");
        const QString out = write_file(dir, "c.txt", "kept\r\n");
        QElapsedTimer took;
        took.start();
        const Run r = run_cli({"--lang", "en", "--link", "sim:" + scenario, "compliance", "--out",
                               out, "--pdf", dir.filePath("c.pdf")});
        QVERIFY(took.elapsed() < 30000);
        QCOMPARE(r.exit_code, 1);
        QVERIFY(r.out.isEmpty());
        QStringList err = r.err.split('\n', Qt::SkipEmptyParts);
        err.removeIf([](const QString& l) { return l.startsWith("QStandardPaths:"); }); // Qt's own
        QCOMPARE(err, QStringList{"The compliance memory was not read completely: no valid "
                                  "answer for record 12 (records 0 to 20)."});
        QFile kept(out);
        QVERIFY(kept.open(QIODevice::ReadOnly));
        QCOMPARE(kept.readAll(), QByteArray("kept\r\n"));
        QVERIFY(!QFile::exists(dir.filePath("c.pdf")));
    }

    // On a terminal, a readout's progress is one line rewritten in place,
    // ending with all records read; stdout is as without it.
    void progress_line_on_a_terminal_data() {
        // arguments, the progress line's last state
        const Table<QStringList, QByteArray> row;
        row("compliance", {"--link", "sim", "compliance"}, "\rrecords 61 / 61, 100%\x1b[K\n");
        row("status", {"--link", "sim:status_example", "status"}, "\rrecords 3 / 3, 100%\x1b[K\n");
    }
    void progress_line_on_a_terminal() {
        const auto [arguments, last] = Table<QStringList, QByteArray>::fetch();
        const TerminalRun r =
            run_with_terminal_stderr(QStringLiteral(VELTRAKO2_CLI_PATH), arguments);
        QCOMPARE(r.exit_code, 0);
        QVERIFY2(r.terminal.endsWith(last), r.terminal.right(200).constData());
        QCOMPARE(r.terminal.count('\n'), 1);
        QVERIFY(r.terminal.startsWith("\rrecords 0"));
        const Run plain = run_cli(arguments);
        QCOMPARE(r.out.count('\n'), plain.out.count('\n'));
        QVERIFY(r.out.count('\n') >= 2);
    }

    void refuses_what_it_cannot_do_data() {
        // arguments, exit code, a part of the message on stderr
        const Refusals row;
        row("month 13", {"compliance", "--month", "2026-13"}, 2, "--month takes yyyy-mm");
        row("delete with output", {"compliance", "--delete", "--pdf", "x.pdf"}, 2, "--delete");
        row("saving loaded data", {"compliance", "--load", "in.txt", "--out", "x.txt"}, 2, "--out");
        row("faulty file", {"compliance", "--load", "bad.txt"}, 1, "(1|02.01.2026)");
        row("prescription above a day",
            {"compliance", "--load", "bad.txt", "--prescribed-hours", "25"}, 2,
            "--prescribed-hours takes a number from 0 to 24");
        row("a share above all days",
            {"compliance", "--load", "bad.txt", "--prescribed-hours", "6", "--adherence-share",
             "101"},
            2, "--adherence-share takes a share from 0 to 100");
        row("visit without a folder", {"visit"}, 2, "--out DIR");
        row("visit with a measured value that is no number",
            {"visit", "--out", "v", "m_Ableitstrom=0,0,5"}, 2, "m_Ableitstrom");
        row("visit with an unknown field", {"visit", "--out", "v", "t_Name=x"}, 2,
            "unknown report field");
        row("visit with a prescription that is no number",
            {"visit", "--out", "v", "--prescribed-hours", "viel"}, 2, "--prescribed-hours");
    }
    void refuses_what_it_cannot_do() {
        auto [arguments, exit_code, message] = Refusals::fetch();
        QTemporaryDir dir;
        write_file(dir, "bad.txt", "1|02.01.2026\r\n");
        for (QString& a : arguments)
            if (a.endsWith(".txt") || a.endsWith(".pdf") || a == "v")
                a = dir.filePath(a);
        const Run r = run_cli(QStringList{"--link", "sim"} + arguments);
        QCOMPARE(r.exit_code, exit_code);
        QVERIFY2(r.err.contains(message), qPrintable(r.err));
        QVERIFY(r.out.isEmpty());
        QVERIFY(!QFile::exists(dir.filePath("x.pdf")) && !QFile::exists(dir.filePath("x.txt")));
        QVERIFY(!QFile::exists(dir.filePath("v")));
    }

    // The whole visit from the command line, with the device's dates fixed:
    // its chart holds the two latest months asked for, not January.
    void visit_writes_the_folder() {
        QTemporaryDir dir;
        const Run r =
            run_cli({"--link", "sim:" VELTRAKO2_TEST_DATA "/visit.scn", "visit", "--out", dir.path(),
                     "--months", "2", "--prescribed-hours", "15", "t_Patient=Erika"});
        QVERIFY2(r.exit_code == 0, qPrintable(r.err));
        const QStringList lines = r.out.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 7);
        QVERIFY2(lines[0].startsWith(dir.path() + "/VO2-0012345_"), qPrintable(lines[0]));
        for (const QString& file : lines.mid(1))
            QVERIFY2(file.startsWith(lines[0] + '/') && QFileInfo(file).size() > 0,
                     qPrintable(file));
        if (QStandardPaths::findExecutable("pdftotext").isEmpty())
            return;
        const QString chart = pdf_text(lines[0] + "/Compliance_VO2-0012345.pdf");
        for (const char* seen : {"VO2-0012345", "February 2026", "Erika", "Days ≥ 15 h: 0 of 28",
                                 "Best 30 days: 5 Jan–3 Feb 2026: 1 of 30 days ≥ 15 h – not met"})
            QVERIFY2(chart.contains(QString::fromUtf8(seen)), qPrintable(chart));
        QVERIFY2(!chart.contains("January 2026"), qPrintable(chart));
        const QString report = pdf_text(lines[5]);
        QVERIFY2(report.contains("Erika") && report.contains("VO2-0012345"), qPrintable(report));
    }

    void delete_sends_the_erase_only_when_confirmed_data() {
        // the answer given, exit code, whether the erase went out
        const Deletes row;
        row("no answer", {}, 2, false);
        row("--no", {"--no"}, 0, false);
        row("--yes", {"--yes"}, 0, true);
    }
    void delete_sends_the_erase_only_when_confirmed() {
        const auto [answer, exit_code, sent] = Deletes::fetch();
        QTemporaryDir dir;
        const QString log = dir.filePath("log.txt");
        const Run r = run_cli(QStringList{"--link", "sim", "--log", log} + answer +
                              QStringList{"compliance", "--delete"});
        QCOMPARE(r.exit_code, exit_code);
        QFile f(log);
        QVERIFY(f.open(QIODevice::ReadOnly));
        // "Z" goes out as the hex byte 5A on an OUT line of its own.
        static const QRegularExpression erase(R"(^OUT .*\s5A \r?$)",
                                              QRegularExpression::MultilineOption);
        QCOMPARE(erase.match(QString::fromLatin1(f.readAll())).hasMatch(), sent);
    }
};

QTEST_MAIN(TestCliCompliance)
#include "test_cli_compliance.moc"
