// The command-line front end as a script uses it: against the stand-alone
// simulator over a pseudo-terminal, and against the in-process simulator.

#include "cli_program.h"
#include "command_line.h"
#include "config/language.h"
#include "fake_user_interface.h"
#include "payload_text.h"
#include "protocol_harness.h"
#include "sim_server_process.h"

#include <QElapsedTimer>
#include <QFile>
#include <QRegularExpression>
#include <QTemporaryDir>

using veltrako::testing::Table;

namespace {

using Run = veltrako::testing::ProgramRun;

Run run_cli(const QStringList& arguments, int timeout_ms = 20000,
            const QString& lc_all = QStringLiteral("C.UTF-8")) {
    return veltrako::testing::run_cli(arguments, timeout_ms, {{QStringLiteral("LC_ALL"), lc_all}});
}

// A firmware file whose data lines the simulated loader takes.
QString firmware_file(const QString& dir, const QString& hardware) {
    QStringList lines{QStringLiteral("VERSION=5122"), QStringLiteral("HARDWARE=") + hardware};
    for (int i = 0; i < 3; ++i)
        lines << QString::fromLatin1(
            veltrako::testing::loader_line(16 * i, QByteArray(16, 'x')).toHex());
    QFile file(dir + QStringLiteral("/fw.ae6"));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("cannot write the firmware file");
    file.write(lines.join(QStringLiteral("\r\n")).toLatin1() + "\r\n");
    return file.fileName();
}

} // namespace

class TestCli : public QObject {
    Q_OBJECT
private slots:
    void info_over_a_pseudo_terminal() {
        veltrako::testing::SimServerProcess server;
        QVERIFY(server.start(QStringLiteral(VELTRAKO2_SIM_PATH),
                             {QStringLiteral("--scenario"), QStringLiteral("family7x")}));
        const Run r = run_cli({QStringLiteral("--link"),
                               QStringLiteral("serial:") + QString::fromUtf8(server.path),
                               QStringLiteral("info")});
        QCOMPARE(r.exit_code, 0);
        for (const char* line : {"SN|VO2-7E00042", "\nLP|LP1550300042\n", "\nSW|7E5\n",
                                 "\nBSTD|000412:10\n", "\nalarme|129\n"})
            QVERIFY2(r.out.contains(line), qPrintable(line + (" not in:\n" + r.out)));
        // A reading with a point, whatever the caller's locale.
        QVERIFY2(QRegularExpression("\nO2\\|[^,\n]+\n").match(r.out).hasMatch(), qPrintable(r.out));
        // Scripts find a value by its key, and some by its line: the order
        // of the keys is part of the output.
        QStringList keys;
        for (const QString& line : r.out.split('\n', Qt::SkipEmptyParts))
            keys << line.section('|', 0, 0);
        QCOMPARE(keys.join(' '),
                 QString("SN LP VEEPROM SW SW_NUM GSMSW GSMSN SIMID BSTD O2 VOLUMENSTROM "
                         "SOLL_VOLUMENSTROM MIN_VOLUMENSTROM MAX_VOLUMENSTROM GASTEMP "
                         "KOMPRESSORTEMP ALARMSIGNAL ZEITEN0 ZEITEN1 ZEITEN2 ZEITEN3 ZEITEN4 "
                         "ZEITEN5 ZEITEN6 ZEITEN7 ZEITEN8 ZEITEN9 ZEITEN10 ZEITEN11 ZEITEN12 "
                         "ZEITEN13 family_code rest_text geraetezeit info_text text_40 text_58 "
                         "text_d0 wert_o wert_u wert_x device_ticks live_time schall druck "
                         "spannung ventiloeffnung sensor1 sensor2 ventile alarmstufe alarme "
                         "alarme2 phase wert26"));
    }

    void send_prints_each_answer() {
        QTemporaryDir dir;
        const QString log = dir.filePath("log.txt");
        const Run r =
            run_cli({QStringLiteral("--link"), QStringLiteral("sim"), QStringLiteral("--log"), log,
                     QStringLiteral("send"), QStringLiteral("65 00 F0 0C"), QStringLiteral("X")});
        QCOMPARE(r.exit_code, 0);
        const QStringList lines = r.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 2);
        QVERIFY2(lines[0].startsWith("65 00 F0 0C 56 4F 32 2D"), qPrintable(lines[0])); // "VO2-"
        QCOMPARE(lines[1], QString("58 01"));
        QFile file(log);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray text = file.readAll();
        QVERIFY(text.contains("OUT 0"));
        QVERIFY(text.contains("58 \r\n"));
    }

    // A device that delivers 2.25 l/min of the 3 set: each field where
    // scripts look for it.
    void watch_prints_live_lines() {
        QTemporaryDir dir;
        const QString scenario = dir.filePath("flow.scn");
        QFile file(scenario);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("NOISE=off\nO2=93\nFLOW_SETPOINT=3\nLIVE_OVERRIDE=10: 00 B4\n");
        file.close();
        const Run r = run_cli({"--link", "sim:" + scenario, "watch", "--seconds", "3"});
        QCOMPARE(r.exit_code, 0);
        const QStringList lines = r.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        // A line about every 0.3 s, for the 3 s asked (10 s would be 33).
        QVERIFY2(lines.size() >= 3 && lines.size() < 20, qPrintable(r.out));
        QVERIFY2(lines.first().startsWith("t=0.00 O2=93 flow=2.25 set=3.00 p="),
                 qPrintable(lines.first()));
    }

    // The table on stdout and in the file, numbers in the caller's locale
    // (which need not be installed: the name in the environment is enough).
    void status_table_in_the_environment_locale_data() {
        Table<QString, QString> row; // LC_ALL, numbers
        row("German", "de_DE.UTF-8", "  37,3  37,8  5,40  5,40   6,0");
        row("C", "C.UTF-8", "  37.3  37.8  5.40  5.40   6.0");
    }
    void status_table_in_the_environment_locale() {
        const auto [lc_all, numbers] = Table<QString, QString>::fetch();
        QTemporaryDir dir;
        const QString out = dir.filePath("status.txt");
        const Run r =
            run_cli({"--link", "sim:status_example", "status", "--out", out}, 20000, lc_all);
        QCOMPARE(r.exit_code, 0);
        const QStringList lines = r.out.split('\n', Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 8 + 3);
        QCOMPARE(lines[8],
                 "   227  1800  0002     -     -    51     -     -     -     -     -   ---" +
                     numbers +
                     QString(lc_all.startsWith('d') ? "  83,8  87,2  85,6" : "  83.8  87.2  85.6"));
        QFile file(out);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(QString::fromUtf8(file.readAll()), lines.join("\r\n") + "\r\n");
    }

    // Always something said on stderr, and nothing on stdout.
    void failures_data() {
        Table<QStringList, int, QString> row; // arguments, exit code, said
        const QString silent = "sim:" VELTRAKO2_TEST_DATA "/silent.scn";
        row("no device", {"--link", "serial:/dev/veltrako2-none", "info"}, 1, "");
        row("silent device", {"--link", silent, "info"}, 1, "");
        row("device falls silent while watched", {"--link", silent, "watch", "--seconds", "10"}, 1,
            "no longer answers");
        row("unknown link", {"--link", "usb", "info"}, 2, "unknown link");
        row("unknown scenario", {"--link", "sim:nosuch", "info"}, 2, "nosuch");
        row("no command", {"--link", "sim"}, 2, "no command");
        row("bad payload", {"send", "hex:4G"}, 2, "not a payload");
        // "!" is not for version codes below "53"; the default device is "512".
        row("withheld command", {"--link", "sim", "send", "!"}, 1, "not sent");
        row("status from a silent device", {"--link", silent, "status"}, 1, "");
        row("status argument", {"--link", "sim", "status", "x"}, 2, "no arguments");
        row("firmware without a file", {"--link", "sim", "firmware"}, 2, "the .ae6 file");
    }
    void failures() {
        const auto [arguments, exit_code, message] = Table<QStringList, int, QString>::fetch();
        const Run r = run_cli(arguments);
        QCOMPARE(r.exit_code, exit_code);
        QVERIFY(r.out.isEmpty());
        QVERIFY(!r.err.trimmed().isEmpty());
        QVERIFY2(r.err.contains(message), qPrintable(r.err));
    }

    // A device found waiting in its boot loader is programmed without an
    // identity; a loader that does not name its hardware only with
    // --force-hardware, and a warning.
    void firmware_data() {
        // device (scenario lines; none: the default device), hardware,
        // options, exit, said in order
        Table<QByteArray, QString, QStringList, int, QStringList> row;
        row("programmed", "", "AE60|AE61", {"--yes"}, 0,
            {"block 1/3, eta 0:01", "block 3/3, eta 0:01", "The software update is complete."});
        row("another board", "", "AE60", {"--yes"}, 1,
            {"does not fit", "device: AE61", "file: 5122"});
        // Nothing is sent before the question is answered.
        row("no answer", "", "AE61", {}, 2, {"Now: 5121", "New: 5122", "--yes or --no"});
        const QByteArray loader = "BOOT_LOADER=on\nSW_AFTER_UPDATE=5122\n";
        row("in its boot loader", loader + "BOOT_LOADER_GREETING=\"ae60000 BL1.3 AE61\\r\\n\"\n",
            "AE61", {"--yes", "--verbose"}, 0,
            {"Device waiting in its boot loader", "block 3/3", "The software update is complete.",
             "software version 5122"});
        row("in a loader that names no hardware", loader, "AE61", {"--yes"}, 2,
            {"Device waiting in its boot loader", "does not say which hardware", "file: AE61",
             "--force-hardware programs the file"});
        row("forced", loader, "AE61", {"--yes", "--force-hardware"}, 0,
            {"does not say which hardware", "block 3/3", "The software update is complete."});
    }
    void firmware() {
        const auto [device, hardware, options, exit_code, said] =
            Table<QByteArray, QString, QStringList, int, QStringList>::fetch();
        QTemporaryDir dir;
        QString link = "sim";
        if (!device.isEmpty()) {
            QFile scenario(dir.filePath("device.scn"));
            QVERIFY(scenario.open(QIODevice::WriteOnly) && scenario.write(device) > 0);
            link += ':' + scenario.fileName();
        }
        const Run r = run_cli(
            QStringList{"--link", link, "firmware", firmware_file(dir.path(), hardware)} + options);
        QCOMPARE(r.exit_code, exit_code);
        qsizetype at = 0;
        for (const QString& s : said) {
            at = r.err.indexOf(s, at);
            QVERIFY2(at >= 0, qPrintable(s + " not in:\n" + r.err));
        }
        QCOMPARE(r.err.contains("block"), exit_code == 0);
    }

    // Over ssh or in a script there is no display: the programs still
    // explain themselves and say which version they are. A start that needs
    // the display says so and fails as any failed start does: status 1, not
    // an abort with a core dump.
    void without_a_display_data() {
        Table<QString, QStringList, int, QString> row; // program, arguments, exit code, said
        row("veltrako2 --help", VELTRAKO2_PATH, {"--help"}, 0, "--link");
        row("veltrako2 --version", VELTRAKO2_PATH, {"--version"}, 0, "veltrako2 ");
        row("veltrako2-cli --help", VELTRAKO2_CLI_PATH, {"--help"}, 0, "compliance");
        row("veltrako2 started", VELTRAKO2_PATH, {"--link", "sim"}, 1,
            "no display could be opened (DISPLAY=:4242)");
    }
    void without_a_display() {
        const auto [program, arguments, exit_code, said] =
            Table<QString, QStringList, int, QString>::fetch();
        const veltrako::testing::ProgramCopy copy(program);
        QVERIFY(copy.ok());
        const Run r =
            copy.run(arguments, 20000,
                     {{"DISPLAY", ":4242"}, {"WAYLAND_DISPLAY", ""}, {"QT_QPA_PLATFORM", "xcb"}});
        QVERIFY2(r.exit_code == exit_code, qPrintable(r.err));
        // Help and version on stdout; the failure on stderr.
        const QString& text = exit_code == 0 ? r.out : r.err;
        QVERIFY2(text.contains(said), qPrintable(text));
    }

    // Every word in the language of --lang: the refusals, the question the
    // command line leaves open, --help. German words never come out in
    // English, nor the other way round.
    void speaks_the_language_of_lang_data() {
        Table<QStringList, int, QString, QString> row; // arguments, exit code, English, German
        row("unknown option", {"--bogus", "info"}, 2, "unknown option --bogus",
            "unbekannte Option --bogus");
        row("option without its value", {"info", "--log"}, 2, "--log needs a value",
            "--log braucht einen Wert");
        row("unknown link", {"--link", "usb", "info"}, 2, "unknown link \"usb\"",
            "unbekannte Verbindung „usb“");
        row("arguments refused", {"--link", "sim", "status", "x"}, 2, "status takes no arguments",
            "status nimmt keine Argumente");
        row("value refused", {"--link", "sim", "set", "rest", "x"}, 2, "usage: set rest N",
            "Aufruf: set rest N");
        row("question left open", {"--link", "sim", "reset", "hours"}, 2,
            "(no answer given: use --yes or --no)",
            "(keine Antwort angegeben: --yes oder --no verwenden)");
        row("help", {"--help"}, 0, "\nCommands:\n  info  ", "\nBefehle:\n  info  ");
    }
    void speaks_the_language_of_lang() {
        const auto [arguments, exit_code, english, german] =
            Table<QStringList, int, QString, QString>::fetch();
        for (const auto& [lang, said, unsaid] :
             {std::tuple{"en", english, german}, std::tuple{"de", german, english}}) {
            const Run r = run_cli(QStringList{"--lang", lang} + arguments);
            QCOMPARE(r.exit_code, exit_code);
            const QString& text = exit_code == 0 ? r.out : r.err;
            QVERIFY2(text.contains(said) && !text.contains(unsaid),
                     qPrintable(lang + (":\n" + text)));
        }
    }

    // --help shows a text for every number it names, in both languages.
    void help_has_every_text_in_both_files_data() {
        Table<QString>()("English", "langen.txt")("German", "langde.txt");
    }
    void help_has_every_text_in_both_files() {
        veltrako::config::LanguageTables tables;
        veltrako::testing::FakeUserInterface ui;
        QVERIFY(veltrako::config::load_language(tables,
                                                QCoreApplication::applicationDirPath() + '/' +
                                                    std::get<0>(Table<QString>::fetch()),
                                                ui));
        const QList<int> numbers = veltrako::cli::help_text_numbers();
        QVERIFY(numbers.size() > 50);
        for (const int n : numbers)
            QVERIFY2(!tables.text(n).isEmpty(), qPrintable(QString::number(n)));
    }

    void payload_arguments_data() {
        // Text and hex pairs go end to end in send_prints_each_answer.
        Table<QString, QByteArray> row; // argument, payload
        row("one pair stays text", "AA", "AA");
        row("forced hex", "hex:AA", QByteArray::fromHex("AA"));
        row("forced text", "text:65 00", "65 00");
        row("bad forced hex", "hex:6", {});
    }
    void payload_arguments() {
        const auto [argument, payload] = Table<QString, QByteArray>::fetch();
        const auto parsed = veltrako::cli::parse_payload_argument(argument);
        QCOMPARE(parsed.value_or(QByteArray()), payload);
    }
};

QTEST_GUILESS_MAIN(TestCli)
#include "test_cli.moc"
