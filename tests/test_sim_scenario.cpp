// Scenario files: what they set, the errors that name their line, and the
// sample scenarios built into the program.

#include "sim_helpers.h"
#include "table.h"

#include <QTemporaryDir>

using namespace veltrako;
using namespace veltrako::testing;

namespace {

const char* const samples[] = {"default",        "old_timings",      "family7x", "status_full",
                               "status_example", "compliance_large", "flaky"};

} // namespace

class TestSimScenario : public QObject {
    Q_OBJECT
private slots:
    void errors_name_the_line_data() {
        Table<QByteArray, QString> row; // text, error
        row("unknown key", "SW=5121\n\n# note\nCOLOUR=red\n", "line 4: unknown key COLOUR");
        row("no equals sign", "SW=5121\nSN VO2\n", "line 2: expected KEY=VALUE");
        row("twice", "SW=5121\nSN=A\nSW=5122\n", "line 3: SW was already given on line 1");
        row("number out of range", "REMAINING=70000\n",
            "line 1: REMAINING: 70000 is outside 0..65535");
        row("not a number", "\nO2=lots\n", "line 2: O2: \"lots\" is not a whole number");
        row("13 timings", "TIMINGS=1 2 3 4 5 6 7 8 9 10 11 12 13\n",
            "line 1: TIMINGS: expected 14 values, found 13");
        row("bad date", "CLOCK=2026-02-30 10:00\n",
            "line 1: CLOCK: \"2026-02-30 10:00\" is not a date and time (yyyy-mm-dd hh:mm:ss)");
        row("generate without range", "SW=5121\nCOMPLIANCE_GENERATE=5\n",
            "line 2: COMPLIANCE_GENERATE needs COMPLIANCE_FROM and COMPLIANCE_TO");
        row("range of a date and a distance",
            "COMPLIANCE_GENERATE=5\nCOMPLIANCE_FROM=-60d\nCOMPLIANCE_TO=2026-01-02\n",
            "line 3: COMPLIANCE_FROM and COMPLIANCE_TO are both dates or both relative to CLOCK");
        row("range too short",
            "COMPLIANCE_GENERATE=5000\nCOMPLIANCE_FROM=2026-01-01\nCOMPLIANCE_TO=2026-01-02\n",
            "line 3: the range leaves less than two minutes per usage period");
    }
    void errors_name_the_line() {
        const auto [text, error] = Table<QByteArray, QString>::fetch();
        // Read from a file, as the simulator does, so the error names the file too.
        QTemporaryDir dir;
        QFile file(dir.filePath(QStringLiteral("mine.scn")));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write(text) == text.size());
        file.close();
        QString got;
        QVERIFY(!sim::load_scenario(file.fileName(), &got));
        QCOMPARE(got, file.fileName() + ": " + error);
    }

    // Values reach the device as they were written, in files from any editor:
    // the device's bytes are Latin-1 whichever encoding the file had.
    void values_reach_the_device_data() {
        Table<QByteArray, QByteArray> row; // serial number line, line end
        row("UTF-8, CR LF", "sn=VO2 M\xC3\xBC", "\r\n");
        row("Windows-1252, CR alone", "sn=VO2 M\xFC", "\r");
    }
    void values_reach_the_device() {
        const auto [serial_line, line_end] = Table<QByteArray, QByteArray>::fetch();
        const QList<QByteArray> lines{
            "# a comment",       "  SW = 2141  ",   "INFO=\"-no \\\"info\\\"\\x01\\r\\n\"",
            serial_line,         "HOURS=999999:50", "REMAINING=0x1F4",
            "ACOUSTIC_ALARM=255"};
        DirectDevice d(lines.join(line_end) + line_end);
        QCOMPARE(d.answer("?"), QByteArray("?2141"));
        QCOMPARE(d.answer("!"), QByteArray("!-no \"info\"\x01\r\n"));
        QCOMPARE(d.answer(bytes_of({'e', 0, 0xF0, 12})).mid(4), QByteArray("VO2 M\xFC      "));
        QCOMPARE(d.answer(bytes_of({'e', 0, 0x80, 7})).mid(4), bytes_of({9, 9, 9, 9, 9, 9, 5}));
        QCOMPARE(d.answer("S"), bytes_of({'S', 0x01, 0xF4}));
        QCOMPARE(d.answer("X"), bytes_of({'X', 255}));
    }

    // Every sample loads and answers; its newest stored usage period ends
    // before the device was switched on, whatever day that is.
    void every_sample_loads_data() {
        Table<QString> row;
        for (const char* name : samples)
            row(name, QString::fromLatin1(name));
    }
    void every_sample_loads() {
        const auto [name] = Table<QString>::fetch();
        QVERIFY(sim::sample_scenario_names().contains(name));
        QString error;
        const auto s = sim::load_scenario(name, &error);
        QVERIFY2(s, qPrintable(error));
        QCOMPARE(DirectDevice(*s).answer("?").left(1), QByteArray("?"));
        const QDateTime on = s->power_on_clock(QDateTime(QDate(2031, 7, 9), QTime(8, 0), Qt::UTC));
        const auto records = s->stored_compliance_records(on);
        if (!records.isEmpty())
            QVERIFY(records.last().end < device_seconds(on.date(), on.time()));
    }

    // The default device looks like one in the field: its clock starts at the
    // PC's time and its usage lies in the two months before; a scenario that
    // fixes the clock keeps its dates.
    void default_sample_starts_on_the_pc_day() {
        const auto sample = sim::load_scenario("default");
        QVERIFY(sample);
        const QDateTime present(QDate(2026, 11, 23), QTime(14, 7), Qt::UTC);
        const quint32 on = device_seconds(present.date(), present.time());
        DirectDevice d(*sample, present);
        QCOMPARE(be_at(d.answer("T"), 2, 4), on + 1); // asked 1 s after power-on
        const auto records = sample->stored_compliance_records(present);
        QCOMPARE(records.size(), 60);
        QVERIFY(records.first().start >= on - 60 * 86400);
        QVERIFY(records.last().end < on && records.last().end > on - 2 * 86400);
        DirectDevice fixed(scenario_from("CLOCK=2026-03-12 09:30:00\n"), present);
        QCOMPARE(be_at(fixed.answer("T"), 2, 4),
                 device_seconds(QDate(2026, 3, 12), QTime(9, 30)) + 1);
    }
};

QTEST_GUILESS_MAIN(TestSimScenario)
#include "test_sim_scenario.moc"
