// "veltrako2-cli set" and "reset" against the in-process simulated
// concentrator: each change prints the value the device reports after the
// read-back; an invalid value, a setting the model does not have, or a
// question before an irreversible change left unanswered ends with exit code
// 2 before anything is written; a value the device does not take ends with 1
// and a message naming both values.

#include "cli_program.h"

#include <QDate>
#include <QFile>
#include <QTest>

namespace {

struct Run : veltrako::testing::ProgramRun {
    QString log; // the communication log
};

Run run_cli(const QString& link, const QStringList& arguments) {
    const veltrako::testing::ProgramCopy cli(QStringLiteral(VELTRAKO2_CLI_PATH));
    if (!cli.ok())
        qFatal("cannot copy the program");
    const QString log = cli.file("log.txt");
    Run r;
    static_cast<veltrako::testing::ProgramRun&>(r) =
        cli.run(QStringList{"--link", link, "--log", log} + arguments, 30000);
    QFile f(log);
    if (f.open(QIODevice::ReadOnly))
        r.log = QString::fromLatin1(f.readAll());
    return r;
}

// Hex of the payloads sent, one "OUT" line each.
QStringList sent_payloads(const QString& log) {
    QStringList sent;
    for (const QString& line : log.split("\r\n")) {
        const QStringList parts = line.split(' ', Qt::SkipEmptyParts);
        if (parts.size() > 2 && parts[0] == "OUT") // tag, time, the payload's bytes
            sent << parts.mid(2).join(' ');
    }
    return sent;
}

} // namespace

class TestCliSet : public QObject {
    Q_OBJECT
private slots:
    // The default device: SN "VO2-0012345", hours 1234:50, LP "LP1240010077",
    // remaining time 500, U 4, O 10, acoustic 1, factory timings.
    void each_setting_reads_back_data() {
        QTest::addColumn<QString>("link");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("out");
        QTest::newRow("sn") << "sim" << QStringList{"--yes", "set", "sn", "VO2-0099999"}
                            << "SN|VO2-0099999 \n";
        QTest::newRow("hours") << "sim" << QStringList{"--yes", "set", "hours", "004321:2"}
                               << "BSTD|004321:20\n";
        QTest::newRow("hours as shown")
            << "sim" << QStringList{"--yes", "set", "hours", "004321:20"} << "BSTD|004321:20\n";
        QTest::newRow("reset hours")
            << "sim" << QStringList{"--yes", "reset", "hours"} << "BSTD|000000:00\n";
        QTest::newRow("lp") << "sim" << QStringList{"set", "lp"} << "LP|LP1250010077\n";
        QTest::newRow("rest") << "sim" << QStringList{"set", "rest", "250"} << "rest_text|250\n";
        QTest::newRow("flow u") << "sim" << QStringList{"set", "flow", "u", "7"} << "wert_u|7\n";
        QTest::newRow("flow o") << "sim" << QStringList{"set", "flow", "o", "0"} << "wert_o|0\n";
        QTest::newRow("timing") << "sim" << QStringList{"set", "timing", "3", "30"}
                                << "ZEITEN3|30\n";
        QTest::newRow("alarm") << "sim" << QStringList{"set", "alarm", "o21"} << "wert_x|3\n";
        // An older device keeps all 14 timings: 7..13 written and shown.
        QTest::newRow("timing 13, older device")
            << "sim:old_timings" << QStringList{"set", "timing", "13", "200"} << "ZEITEN13|200\n";
        // Its timings differ from the factory values.
        QTest::newRow("timing reset")
            << "sim:old_timings" << QStringList{"--yes", "set", "timing", "reset"}
            << "ZEITEN0|100\nZEITEN1|144\nZEITEN2|144\nZEITEN3|27\nZEITEN4|134\nZEITEN5|27\n"
               "ZEITEN6|134\n";
        // The shipped Zeiten_1.txt on a model with the rinse valve, whose
        // record keeps indexes 0..6.
        QTest::newRow("preset")
            << "sim:family7x" << QStringList{"--yes", "set", "preset", "1"}
            << "ZEITEN0|100\nZEITEN1|175\nZEITEN2|175\nZEITEN3|30\nZEITEN4|160\nZEITEN5|30\n"
               "ZEITEN6|160\n";
    }
    void each_setting_reads_back() {
        QFETCH(QString, link);
        QFETCH(QStringList, arguments);
        QFETCH(QString, out);
        const Run r = run_cli(link, arguments);
        QVERIFY2(r.exit_code == 0, qPrintable(r.err));
        QCOMPARE(r.out, out);
    }

    void clock_takes_the_pc_time() {
        const QString today = QDate::currentDate().toString("dd.MM.yyyy");
        const Run r = run_cli("sim", {"set", "clock"});
        QVERIFY2(r.exit_code == 0, qPrintable(r.err));
        // The simulated clock starts on 02.03.2026; the PC's date comes back.
        QVERIFY2(r.out.startsWith("geraetezeit|" + today), qPrintable(r.out));
    }

    void refused_before_anything_is_written_data() {
        QTest::addColumn<QString>("link");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        const auto row = [](const char* name, const char* link, QStringList args, const char* m) {
            QTest::newRow(name) << link << args << m;
        };
        row("rest 1000", "sim", {"set", "rest", "1000"}, "0 to 999");
        // A negative number follows "--", or the option parser takes it for options.
        row("rest -1", "sim", {"set", "rest", "--", "-1"}, "0 to 999");
        row("hours tens 6", "sim", {"set", "hours", "001234:6"}, "HHHHHH:M");
        row("flow 256", "sim", {"set", "flow", "u", "256"}, "0 to 255");
        row("timing index 14", "sim", {"set", "timing", "14", "3"}, "0 to 13");
        row("preset 4", "sim", {"set", "preset", "4"}, "1 to 3");
        row("alarm unknown", "sim", {"set", "alarm", "temp"}, "o21|o22|vollo");
        row("serial number beyond one byte", "sim", {"set", "sn", "VO2-€"}, "cannot store");
        row("set what", "sim", {"set", "speed", "3"}, "set what");
        // Known only once the device has said who it is.
        row("timing 9 on a device that keeps 0..6", "sim", {"set", "timing", "9", "5"},
            "not used by this device");
        row("preset without rinse valve", "sim", {"set", "preset", "1"}, "rinse valve");
        row("o22 switch on a 7x model", "sim:family7x", {"set", "alarm", "o22"},
            "no acoustic switch");
        row("flow on an old device", "sim:old_timings", {"set", "flow", "u", "3"},
            "no flow selectors");
        // Changes that cannot be undone want an answer.
        row("serial number unanswered", "sim", {"set", "sn", "X"}, "--yes or --no");
        row("hours reset unanswered", "sim", {"reset", "hours"}, "000000:00");
        row("preset unanswered", "sim:family7x", {"set", "preset", "1"}, "--yes or --no");
    }
    void refused_before_anything_is_written() {
        QFETCH(QString, link);
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        const Run r = run_cli(link, arguments);
        QCOMPARE(r.exit_code, 2);
        QVERIFY(r.out.isEmpty());
        QVERIFY2(r.err.contains(message), qPrintable(r.err));
        // Reads only: no payload that changes anything.
        for (const QString& hex : sent_payloads(r.log)) {
            const QChar letter(hex.left(2).toInt(nullptr, 16));
            QVERIFY2(!QString("tsEwuoxC").contains(letter), qPrintable(hex));
        }
    }

    // A device that keeps its value: printed as the device has it, exit 1,
    // and stderr names what was written and what the device reports. --no
    // writes nothing.
    void outcome_data() {
        QTest::addColumn<QString>("link");
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<int>("exit_code");
        QTest::addColumn<QString>("out");
        QTest::addColumn<QStringList>("said");
        const QString keeps = "sim:" VELTRAKO2_TEST_DATA "/ignores_writes.scn";
        QTest::newRow("remaining time kept")
            << keeps << QStringList{"set", "rest", "250"} << 1 << "rest_text|500\n"
            << QStringList{"250", "500"};
        QTest::newRow("serial number kept")
            << keeps << QStringList{"--yes", "set", "sn", "VO2-1"} << 1 << "SN|VO2-0012345 \n"
            << QStringList{"VO2-1,", "VO2-0012345"};
        QTest::newRow("answered no") << "sim" << QStringList{"--no", "reset", "hours"} << 0 << ""
                                     << QStringList{"nothing written"};
    }
    void outcome() {
        QFETCH(QString, link);
        QFETCH(QStringList, arguments);
        QFETCH(int, exit_code);
        QFETCH(QString, out);
        QFETCH(QStringList, said);
        const Run r = run_cli(link, arguments);
        QCOMPARE(r.exit_code, exit_code);
        QCOMPARE(r.out, out);
        for (const QString& s : said)
            QVERIFY2(r.err.contains(s), qPrintable(r.err));
    }
};

QTEST_GUILESS_MAIN(TestCliSet)
#include "test_cli_set.moc"
