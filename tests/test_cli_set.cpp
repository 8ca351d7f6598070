// "veltrako2-cli set" and "reset" against the in-process simulated
// concentrator: each change prints the value the device reports after the
// read-back; an invalid value, a setting the model does not have, or a
// question before an irreversible change left unanswered ends with exit code
// 2 before anything is written; a value the device does not take ends with 1
// and a message naming both values.

#include "cli_program.h"
#include "table.h"

#include <QDate>
#include <QFile>

using veltrako::testing::Table;

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
    using Rows = Table<QString, QStringList, int, QString, QStringList>;
private slots:
    // Each change prints what the device reports after the read-back. The
    // default device: SN "VO2-0012345", hours 1234:50, LP "LP1240010077",
    // remaining time 500, U 4, O 10, acoustic 1, factory timings.
    void set_and_reset_data() {
        const Rows table; // link, arguments, exit code, stdout, said on stderr
        const auto ok = [&](const char* name, const char* link, QStringList args, QString out) {
            table(name, link, args, 0, out, {});
        };
        // Refused with exit 2 before anything is written.
        const auto refused = [&](const char* name, const char* link, QStringList args,
                                 const char* m) { table(name, link, args, 2, "", {m}); };
        ok("sn", "sim", {"--yes", "set", "sn", "VO2-0099999"}, "SN|VO2-0099999 \n");
        ok("hours", "sim", {"--yes", "set", "hours", "004321:2"}, "BSTD|004321:20\n");
        ok("hours as shown", "sim", {"--yes", "set", "hours", "004321:20"}, "BSTD|004321:20\n");
        ok("reset hours", "sim", {"--yes", "reset", "hours"}, "BSTD|000000:00\n");
        ok("lp", "sim", {"set", "lp"}, "LP|LP1250010077\n");
        ok("rest", "sim", {"set", "rest", "250"}, "rest_text|250\n");
        ok("flow u", "sim", {"set", "flow", "u", "7"}, "wert_u|7\n");
        ok("flow o", "sim", {"set", "flow", "o", "0"}, "wert_o|0\n");
        ok("timing", "sim", {"set", "timing", "3", "30"}, "ZEITEN3|30\n");
        ok("alarm", "sim", {"set", "alarm", "o21"}, "wert_x|3\n");
        // An older device keeps all 14 timings: 7..13 written and shown.
        ok("timing 13, older device", "sim:old_timings", {"set", "timing", "13", "200"},
           "ZEITEN13|200\n");
        // Its timings differ from the factory values.
        ok("timing reset", "sim:old_timings", {"--yes", "set", "timing", "reset"},
           "ZEITEN0|100\nZEITEN1|144\nZEITEN2|144\nZEITEN3|27\nZEITEN4|134\nZEITEN5|27\n"
           "ZEITEN6|134\n");
        // The shipped Zeiten_1.txt on a model with the rinse valve, whose
        // record keeps indexes 0..6.
        ok("preset", "sim:family7x", {"--yes", "set", "preset", "1"},
           "ZEITEN0|100\nZEITEN1|175\nZEITEN2|175\nZEITEN3|30\nZEITEN4|160\nZEITEN5|30\n"
           "ZEITEN6|160\n");
        refused("rest 1000", "sim", {"set", "rest", "1000"}, "0 to 999");
        // A negative number follows "--", or the option parser takes it for options.
        refused("rest -1", "sim", {"set", "rest", "--", "-1"}, "0 to 999");
        refused("hours tens 6", "sim", {"set", "hours", "001234:6"}, "HHHHHH:M");
        refused("flow 256", "sim", {"set", "flow", "u", "256"}, "0 to 255");
        refused("timing index 14", "sim", {"set", "timing", "14", "3"}, "0 to 13");
        refused("preset 4", "sim", {"set", "preset", "4"}, "1 to 3");
        refused("alarm unknown", "sim", {"set", "alarm", "temp"}, "o21|o22|vollo");
        refused("serial number beyond one byte", "sim", {"set", "sn", "VO2-€"}, "cannot store");
        refused("set what", "sim", {"set", "speed", "3"}, "set what");
        // Known only once the device has said who it is.
        refused("timing 9 on a device that keeps 0..6", "sim", {"set", "timing", "9", "5"},
                "not used by this device");
        refused("preset without rinse valve", "sim", {"set", "preset", "1"}, "rinse valve");
        refused("o22 switch on a 7x model", "sim:family7x", {"set", "alarm", "o22"},
                "no acoustic switch");
        refused("flow on an old device", "sim:old_timings", {"set", "flow", "u", "3"},
                "no flow selectors");
        // Changes that cannot be undone want an answer.
        refused("serial number unanswered", "sim", {"set", "sn", "X"}, "--yes or --no");
        refused("hours reset unanswered", "sim", {"reset", "hours"}, "000000:00");
        refused("preset unanswered", "sim:family7x", {"set", "preset", "1"}, "--yes or --no");
        // A device that keeps its value: printed as the device has it, exit
        // 1, and stderr names what was written and what the device reports.
        const char* keeps = "sim:" VELTRAKO2_TEST_DATA "/ignores_writes.scn";
        table("remaining time kept", keeps, {"set", "rest", "250"}, 1, "rest_text|500\n",
              {"250", "500"});
        table("serial number kept", keeps, {"--yes", "set", "sn", "VO2-1"}, 1, "SN|VO2-0012345 \n",
              {"VO2-1,", "VO2-0012345"});
        table("answered no", "sim", {"--no", "reset", "hours"}, 0, "", {"nothing written"});
    }
    void set_and_reset() {
        const auto [link, arguments, exit_code, out, said] = Rows::fetch();
        const Run r = run_cli(link, arguments);
        QVERIFY2(r.exit_code == exit_code, qPrintable(r.err));
        QCOMPARE(r.out, out);
        for (const QString& s : said)
            QVERIFY2(r.err.contains(s), qPrintable(r.err));
        if (!out.isEmpty())
            return;
        // Reads only: no payload that changes anything.
        for (const QString& hex : sent_payloads(r.log)) {
            const QChar letter(hex.left(2).toInt(nullptr, 16));
            QVERIFY2(!QString("tsEwuoxC").contains(letter), qPrintable(hex));
        }
    }

    void clock_takes_the_pc_time() {
        const QString today = QDate::currentDate().toString("dd.MM.yyyy");
        const Run r = run_cli("sim", {"set", "clock"});
        QVERIFY2(r.exit_code == 0, qPrintable(r.err));
        // The simulated clock starts on 02.03.2026; the PC's date comes back.
        QVERIFY2(r.out.startsWith("geraetezeit|" + today), qPrintable(r.out));
    }
};

QTEST_GUILESS_MAIN(TestCliSet)
#include "test_cli_set.moc"
