// Scenario files: what they set, the errors that name their line, and the
// sample scenarios built into the program.

#include "sim_helpers.h"

#include <QTemporaryDir>
#include <QTest>

using namespace veltrako;
using namespace veltrako::testing;

class TestSimScenario : public QObject {
    Q_OBJECT
private slots:
    void errors_name_the_line_data() {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("error");
        QTest::newRow("unknown key")
            << QByteArray("SW=5121\n\n# note\nCOLOUR=red\n") << "line 4: unknown key COLOUR";
        QTest::newRow("no equals sign")
            << QByteArray("SW=5121\nSN VO2\n") << "line 2: expected KEY=VALUE";
        QTest::newRow("number out of range")
            << QByteArray("REMAINING=70000\n") << "line 1: REMAINING: 70000 is outside 0..65535";
        QTest::newRow("not a number")
            << QByteArray("\nO2=lots\n") << "line 2: O2: \"lots\" is not a whole number";
        QTest::newRow("serial too long") << QByteArray("SN=ABCDEFGHIJKLM\n")
                                         << "line 1: SN: longer than the 12 bytes the device keeps";
        QTest::newRow("hours form")
            << QByteArray("HOURS=12:34\n")
            << "line 1: HOURS: expected hours:minutes, e.g. 1234:50 (minutes 00, 10, ... 50)";
        QTest::newRow("13 timings") << QByteArray("TIMINGS=1 2 3 4 5 6 7 8 9 10 11 12 13\n")
                                    << "line 1: TIMINGS: expected 14 values, found 13";
        QTest::newRow("timing above 255")
            << QByteArray("TIMINGS=1 2 3 4 5 6 7 8 9 10 11 12 13 256\n")
            << "line 1: TIMINGS: 256 is outside 0..255";
        QTest::newRow("bad date")
            << QByteArray("CLOCK=2026-02-30 10:00\n")
            << "line 1: CLOCK: \"2026-02-30 10:00\" is not a date and time (yyyy-mm-dd hh:mm:ss)";
        QTest::newRow("before 2000") << QByteArray("CLOCK=1999-12-31 23:59:59\n")
                                     << "line 1: CLOCK: 1999-12-31T23:59:59Z is before 2000 or "
                                        "past the device's 31-bit seconds";
        QTest::newRow("status record length")
            << QByteArray("STATUS_RECORD=00 01 02\n")
            << "line 1: STATUS_RECORD: a status record has 22 bytes, found 3";
        QTest::newRow("status record hex") << QByteArray("STATUS_RECORD=zz\n")
                                           << "line 1: STATUS_RECORD: \"z\" is not hexadecimal";
        QTest::newRow("twice") << QByteArray("SW=5121\nSN=A\nSW=5122\n")
                               << "line 3: SW was already given on line 1";
        QTest::newRow("flag") << QByteArray("SILENT=maybe\n")
                              << "line 1: SILENT: \"maybe\" is neither on nor off";
        QTest::newRow("nak attempts")
            << QByteArray("NAK_ATTEMPTS=3\n") << "line 1: NAK_ATTEMPTS: expected 1, 2 or always";
        QTest::newRow("period backwards")
            << QByteArray("COMPLIANCE_RECORD=2026-01-02 / 2026-01-01\n")
            << "line 1: COMPLIANCE_RECORD: the period ends before it starts";
        QTest::newRow("period form")
            << QByteArray("COMPLIANCE_RECORD=2026-01-02\n")
            << "line 1: COMPLIANCE_RECORD: expected \"start / end\" or \"-\"";
        QTest::newRow("generate without range")
            << QByteArray("SW=5121\nCOMPLIANCE_GENERATE=5\n")
            << "line 2: COMPLIANCE_GENERATE needs COMPLIANCE_FROM and COMPLIANCE_TO";
        QTest::newRow("generate and records")
            << QByteArray("COMPLIANCE_RECORD=-\nCOMPLIANCE_FROM=2026-01-01\nCOMPLIANCE_TO=2026-02-"
                          "01\nCOMPLIANCE_GENERATE=5\n")
            << "line 4: COMPLIANCE_GENERATE and COMPLIANCE_RECORD exclude each other";
        QTest::newRow("range too short")
            << QByteArray("COMPLIANCE_GENERATE=5000\nCOMPLIANCE_FROM=2026-01-01\nCOMPLIANCE_TO="
                          "2026-01-02\n")
            << "line 3: the range leaves less than two minutes per usage period";
        QTest::newRow("33 status records")
            << QByteArray("STATUS_GENERATE=33\n") << "line 1: STATUS_GENERATE: 33 is outside 0..32";
        QTest::newRow("override outside")
            << QByteArray("LIVE_OVERRIDE=47: 01 02\n")
            << "line 1: LIVE_OVERRIDE: the bytes must lie within positions 2..47";
        QTest::newRow("unclosed quote")
            << QByteArray("INFO=\"abc\n") << "line 1: INFO: the closing quote is missing";
        QTest::newRow("bad escape")
            << QByteArray("INFO=\"a\\qb\"\n") << "line 1: INFO: unknown escape \\q";
        QTest::newRow("pressure order") << QByteArray("PRESSURE_LOW=2000\nPRESSURE_HIGH=1000\n")
                                        << "line 1: PRESSURE_LOW is above PRESSURE_HIGH";
    }
    void errors_name_the_line() {
        QFETCH(QByteArray, text);
        QFETCH(QString, error);
        QString got;
        QVERIFY(!sim::parse_scenario(text, &got));
        QCOMPARE(got, error);
    }

    // Values reach the device as they were written, CR LF files included.
    void values_reach_the_device() {
        const QByteArray text = "# a comment\r\n"
                                "  SW = 2141  \r\n"
                                "INFO=\"-no \\\"info\\\"\\x01\\r\\n\"\r\n"
                                "sn=VO2 1\r\n"
                                "HOURS=999999:50\r\n"
                                "REMAINING=0x1F4\r\n"
                                "ACOUSTIC_ALARM=255\r\n"
                                "SW_AFTER_UPDATE=2142\r\n";
        DirectDevice d(scenario_from(text));
        QCOMPARE(d.answer("?"), QByteArray("?2141"));
        QCOMPARE(d.answer("!"), QByteArray("!-no \"info\"\x01\r\n"));
        QCOMPARE(d.answer(bytes_of({'e', 0, 0xF0, 12})).mid(4), QByteArray("VO2 1       "));
        QCOMPARE(d.answer(bytes_of({'e', 0, 0x80, 7})).mid(4), bytes_of({9, 9, 9, 9, 9, 9, 5}));
        QCOMPARE(d.answer("S"), bytes_of({'S', 0x01, 0xF4}));
        QCOMPARE(d.answer("X"), bytes_of({'X', 255}));
    }

    void every_sample_loads_data() {
        QTest::addColumn<QString>("name");
        for (const char* name :
             {"default", "old_timings", "family7x", "status_full", "compliance_large", "flaky"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void every_sample_loads() {
        QFETCH(QString, name);
        QVERIFY(sim::sample_scenario_names().contains(name));
        QString error;
        const auto s = sim::load_scenario(name, &error);
        QVERIFY2(s, qPrintable(error));
        DirectDevice d(*s);
        QCOMPARE(d.answer("?").left(1), QByteArray("?"));
    }

    // What each sample is for.
    void samples_show_what_they_are_for() {
        const auto load = [](const char* name) {
            return *sim::load_scenario(QString::fromLatin1(name));
        };
        const sim::Scenario def = load("default");
        QCOMPARE(def.board.at(4), '4');
        QVERIFY(!def.stored_status_records().isEmpty());
        QVERIFY(!def.stored_compliance_records().isEmpty());
        QVERIFY(def.sw.left(2) >= "51");
        QVERIFY(load("old_timings").sw.left(3) < "30");
        const sim::Scenario f7 = load("family7x");
        QVERIFY(f7.sw.left(2) >= "70");
        QCOMPARE(f7.effective_status_layout(), sim::StatusLayout::extended);
        QCOMPARE(load("status_full").stored_status_records().size(), 32);
        const sim::Scenario large = load("compliance_large");
        QVERIFY(large.stored_compliance_records().size() > large.compliance_ring_size);
        QCOMPARE(large.compliance_ring_size, 4096);
        const sim::Faults flaky = load("flaky").faults;
        QVERIFY(flaky.drop_every > 0 && flaky.corrupt_crc_every > 0 && flaky.split_answers &&
                !flaky.garbage_between_frames.isEmpty());
        // The newest stored period ends before the device was switched on.
        for (const char* name :
             {"default", "old_timings", "family7x", "status_full", "compliance_large", "flaky"}) {
            const sim::Scenario s = load(name);
            const auto records = s.stored_compliance_records();
            if (!records.isEmpty())
                QVERIFY2(records.last().end <
                             QDateTime(QDate(2000, 1, 1), QTime(0, 0), Qt::UTC).secsTo(s.clock),
                         name);
        }
    }

    void files_and_names() {
        QTemporaryDir dir;
        QVERIFY(dir.isValid());
        const QString path = dir.filePath(QStringLiteral("mine.scn"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("SW=9991\nBROKEN\n");
        file.close();
        QString error;
        QVERIFY(!sim::load_scenario(path, &error));
        QCOMPARE(error, path + QStringLiteral(": line 2: expected KEY=VALUE"));
        QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write("SW=9991\n");
        file.close();
        const auto s = sim::load_scenario(path, &error);
        QVERIFY2(s, qPrintable(error));
        QCOMPARE(s->sw, QByteArray("9991"));

        QVERIFY(!sim::load_scenario(QStringLiteral("no_such_sample"), &error));
        QVERIFY(error.startsWith(QStringLiteral("no sample scenario \"no_such_sample\"")));
        QVERIFY(error.contains(QStringLiteral("default")));
        QVERIFY(!sim::load_scenario(dir.filePath(QStringLiteral("missing.scn")), &error));
        QVERIFY(error.startsWith(dir.filePath(QStringLiteral("missing.scn"))));
    }
};

QTEST_GUILESS_MAIN(TestSimScenario)
#include "test_sim_scenario.moc"
