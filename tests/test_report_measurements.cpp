// The measured values of the inspection report judged against their limits:
// each verdict at and around its limit, the result of a whole report, the
// note about the device's O2 sensor, what a measurement box takes, and the
// limits the configuration sets.

#include "config/config.h"
#include "inspected_device.h"
#include "report/report_measurements.h"
#include "table.h"

using namespace veltrako;
using namespace veltrako::report;
using veltrako::testing::Table;

namespace {

// A report of the inspected device (O2 shown as 95 %) with the set flow
// `set_flow` (0: a report without device data) and the fields "KEY=VALUE;...".
ReportRecord report_with(const QString& fields, double set_flow = 2.0) {
    ReportRecord r;
    r.report_device = testing::inspected_device();
    r.report_device.SOLL_VOLUMENSTROM = set_flow;
    r.report_device.live_valid = set_flow > 0;
    for (const QString& field : fields.split(QLatin1Char(';'), Qt::SkipEmptyParts))
        r.set_value(field.section(QLatin1Char('='), 0, 0), field.section(QLatin1Char('='), 1));
    return r;
}

// The command line's line for `key`, empty when the value was not judged.
QString line_of(const Judgement& j, const QString& key) {
    for (const QString& line : judgement_lines(j, QLocale()))
        if (line.startsWith(key + QLatin1Char('|')))
            return line;
    return {};
}

// fields, set flow, key, the line judging it ("" when not judged)
using Verdicts = Table<QString, double, QString, QString>;
// fields, set flow, result
using Results = Table<QString, double, QString>;
// analyser O2, device O2, note ("" for none)
using Notes = Table<QString, double, QString>;
// text, its number (-1: none), whether a box may hold it while typing
using Typed = Table<QString, double, bool>;

} // namespace

class TestReportMeasurements : public QObject {
    Q_OBJECT
private slots:
    void initTestCase() { QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany)); }

    // Exactly on its limit a value passes; a hundredth beyond it fails. The
    // flow may be 10 % from the set flow, never less than 0.2 l/min; the
    // protective earth counts for class I only, the leakage current by class.
    void verdicts_at_the_limits_data() {
        const Verdicts row;
        row("O2 on the limit", "m_O2=82", 2.0, "m_O2", "m_O2|82|82|pass");
        row("O2 just below", "m_O2=81,99", 2.0, "m_O2", "m_O2|81,99|82|fail");
        row("O2 above, point", "m_O2=93.5", 2.0, "m_O2", "m_O2|93,5|82|pass");
        row("flow on the lower limit", "m_Flow=1,8", 2.0, "m_Flow", "m_Flow|1,8|1,8–2,2|pass");
        row("flow on the upper limit", "m_Flow=2.2", 2.0, "m_Flow", "m_Flow|2,2|1,8–2,2|pass");
        row("flow below", "m_Flow=1,79", 2.0, "m_Flow", "m_Flow|1,79|1,8–2,2|fail");
        row("flow above", "m_Flow=2,21", 2.0, "m_Flow", "m_Flow|2,21|1,8–2,2|fail");
        row("10 % of 5 l/min", "m_Flow=5,5", 5.0, "m_Flow", "m_Flow|5,5|4,5–5,5|pass");
        row("10 % of 5 l/min, beyond", "m_Flow=4,49", 5.0, "m_Flow", "m_Flow|4,49|4,5–5,5|fail");
        row("0.2 l/min at 1 l/min", "m_Flow=0,8", 1.0, "m_Flow", "m_Flow|0,8|0,8–1,2|pass");
        row("0.2 l/min at 1 l/min, beyond", "m_Flow=1,21", 1.0, "m_Flow",
            "m_Flow|1,21|0,8–1,2|fail");
        row("flow without device data", "m_Flow=2", 0.0, "m_Flow", "");
        row("earth class I on the limit", "t_Schutzklasse=I;m_Schutzleiter=0,3", 2.0,
            "m_Schutzleiter", "m_Schutzleiter|0,3|0,3|pass");
        row("earth class I above", "t_Schutzklasse=I;m_Schutzleiter=0.31", 2.0, "m_Schutzleiter",
            "m_Schutzleiter|0,31|0,3|fail");
        row("earth class II: not judged", "t_Schutzklasse=II;m_Schutzleiter=5", 2.0,
            "m_Schutzleiter", "");
        row("leakage class I on the limit", "t_Schutzklasse=I;m_Ableitstrom=0,5", 2.0,
            "m_Ableitstrom", "m_Ableitstrom|0,5|0,5|pass");
        row("leakage class I above", "t_Schutzklasse=I;m_Ableitstrom=0,51", 2.0, "m_Ableitstrom",
            "m_Ableitstrom|0,51|0,5|fail");
        row("leakage class II on the limit", "t_Schutzklasse=II;m_Ableitstrom=0.1", 2.0,
            "m_Ableitstrom", "m_Ableitstrom|0,1|0,1|pass");
        row("leakage class II above", "t_Schutzklasse=ii;m_Ableitstrom=0,11", 2.0, "m_Ableitstrom",
            "m_Ableitstrom|0,11|0,1|fail");
        row("leakage without a class", "m_Ableitstrom=0,05", 2.0, "m_Ableitstrom", "");
        row("no number", "m_O2=8O", 2.0, "m_O2", "");
    }
    void verdicts_at_the_limits() {
        const auto [fields, set_flow, key, line] = Verdicts::fetch();
        const ReportRecord r = report_with(fields, set_flow);
        QCOMPARE(line_of(judge_report(r, Limits{}), key), line);
    }

    // pass needs O2, flow, leakage current and, for class I, the protective
    // earth within their limits; any value outside fails the report; the
    // rest is incomplete.
    void result_of_a_report_data() {
        const Results row;
        const QString passing = QStringLiteral("m_O2=93;m_Flow=2;m_Ableitstrom=0,05");
        row("class II, all within", passing + ";t_Schutzklasse=II", 2.0, "pass");
        row("class I with earth", passing + ";t_Schutzklasse=I;m_Schutzleiter=0,1", 2.0, "pass");
        row("class I without earth", passing + ";t_Schutzklasse=I", 2.0, "incomplete");
        row("class II, earth out of limit but not judged",
            passing + ";t_Schutzklasse=II;m_Schutzleiter=9", 2.0, "pass");
        row("no class", passing, 2.0, "incomplete");
        row("nothing typed", "", 2.0, "incomplete");
        row("one value out, the rest missing", "m_O2=80", 2.0, "fail");
        row("earth out while the class is open", "m_Schutzleiter=0,4", 2.0, "fail");
        row("no device data: flow not judged", passing + ";t_Schutzklasse=II", 0.0, "incomplete");
        row("a value that is no number", "m_O2=viel;m_Flow=2;m_Ableitstrom=0,05;t_Schutzklasse=II",
            2.0, "incomplete");
        // The example a technician would meet: low O2 on a class II device.
        row("example", "m_O2=80,5;m_Flow=2,1;t_Schutzklasse=II;m_Ableitstrom=0,05", 2.0, "fail");
    }
    void result_of_a_report() {
        const auto [fields, set_flow, result] = Results::fetch();
        const Judgement j = judge_report(report_with(fields, set_flow), Limits{});
        QCOMPARE(result_word(j.result), result);
        QCOMPARE(judgement_lines(j, QLocale()).constLast(), QStringLiteral("ERGEBNIS|") + result);
    }

    // More than 3 percentage points between the analyser and the device's
    // own reading (shown as 95 %) is a note, never a fail.
    void note_about_the_o2_sensor_data() {
        const Notes row;
        row("3 points: none", "92", 95.0, "");
        row("3.1 points below", "91,9", 95.0, "O2 3,1");
        row("3.1 points above", "98.1", 95.0, "O2 3,1");
        row("far off", "80,5", 95.0, "O2 14,5");
        row("no device data", "80", 0.0, "");
        row("nothing measured", "", 95.0, "");
    }
    void note_about_the_o2_sensor() {
        const auto [measured, device_o2, note] = Notes::fetch();
        config::LanguageTables language;
        language.language_text[8905] = QStringLiteral("O2 %1");
        ReportRecord r = report_with(QStringLiteral("m_O2=") + measured, device_o2 > 0 ? 2.0 : 0);
        r.report_device.O2 = device_o2;
        const Judgement j = judge_report(r, Limits{});
        QCOMPARE(o2_sensor_note(j, language, QLocale()), note);
    }

    // A measurement is digits with a comma or a point; a box refuses at once
    // what can never become one.
    void typed_values_data() {
        const Typed row;
        row("comma", "80,5", 80.5, true)("point", "80.5", 80.5, true);
        row("blanks around", " 0,05 ", 0.05, true)("whole", "82", 82.0, true);
        row("on the way to a decimal", "80,", 80.0, true)("leading separator", ",5", 0.5, true);
        row("empty", "", -1.0, true)("separator alone", ",", -1.0, true);
        row("letter O for zero", "8O", -1.0, false)("two separators", "1.000,5", -1.0, false);
        row("sign", "-1", -1.0, false)("exponent", "1e3", -1.0, false);
        row("unit typed along", "93 %", -1.0, false);
    }
    void typed_values() {
        const auto [text, number, may_hold] = Typed::fetch();
        QCOMPARE(parse_measurement(text).value_or(-1.0), number);
        QCOMPARE(could_become_measurement(text), may_hold);
    }

    // The configuration sets limits one by one, with a comma or a point;
    // one that is no number keeps its default and is named.
    void limits_from_the_configuration() {
        config::Config c;
        QCOMPARE(configured_limits(c), Limits{});
        c.GRENZE_O2 = QStringLiteral("85");
        c.GRENZE_SCHUTZLEITER = QStringLiteral("0.2");
        c.GRENZE_ABLEITSTROM_II = QStringLiteral("viel");
        const Limits l = configured_limits(c);
        QCOMPARE(l.o2_min, 85.0);
        QCOMPARE(l.earth_max, 0.2);
        QCOMPARE(l.leakage_max_ii, Limits{}.leakage_max_ii);
        QCOMPARE(l.flow_percent, Limits{}.flow_percent);
        QCOMPARE(limit_problems(c).size(), 1);
        QCOMPARE(limit_problems(c).first().first, QStringLiteral("GRENZE_ABLEITSTROM_II"));
        // Judged by them: 84 % fails at 85.
        QCOMPARE(line_of(judge_report(report_with(QStringLiteral("m_O2=84")), l), "m_O2"),
                 QStringLiteral("m_O2|84|85|fail"));
    }
};

QTEST_GUILESS_MAIN(TestReportMeasurements)
#include "test_report_measurements.moc"
