#pragma once
// What the technician measured during the inspection, judged against limits:
// the oxygen concentration by an analyser, the delivered flow by a flow
// meter, the protective earth and the leakage current by a safety tester.
// Plain functions over the report record and the limits, so that every rule
// is checked without widgets, files or a device.

#include "report/report_limits.h"
#include "report/report_record.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <optional>

namespace veltrako::report {

// The report keys of the measured values, as the file and the command line
// spell them (also the names of their controls).
inline constexpr auto key_o2 = "m_O2";
inline constexpr auto key_flow = "m_Flow";
inline constexpr auto key_protection_class = "t_Schutzklasse";
inline constexpr auto key_earth = "m_Schutzleiter";
inline constexpr auto key_leakage = "m_Ableitstrom";
inline constexpr auto key_instruments = "t_Messgeraet";
// The result in the file, in machine words: pass, fail, incomplete.
inline constexpr auto key_result = "ERGEBNIS";

// A measured value as typed: digits with a decimal comma or point, blanks
// around it allowed. Nothing for anything else, an empty text included.
std::optional<double> parse_measurement(const QString& text);
// Whether `text` is a value a measurement box may hold while it is typed:
// empty, or a number, or the start of one ("80," on the way to "80,5").
bool could_become_measurement(const QString& text);

enum class ProtectionClass { unknown, i, ii };
// "I" or "II", blanks and case aside; unknown for anything else.
ProtectionClass parse_protection_class(const QString& text);
// Whether `text` is a protection class or the start of one.
bool could_become_protection_class(const QString& text);

enum class Verdict { none, pass, fail }; // none: nothing typed, or nothing to judge it by
enum class Result { pass, fail, incomplete };

// One judged value: the number typed and the limit it was judged by.
struct Judged {
    std::optional<double> value;
    // At least `low` and at most `high`; the O2 has only a lower limit, the
    // electrical values only an upper one, the flow both.
    std::optional<double> low;
    std::optional<double> high;
    Verdict verdict = Verdict::none;
};

struct Judgement {
    Judged o2;
    Judged flow;
    Judged earth; // protection class I only
    Judged leakage;
    ProtectionClass protection_class = ProtectionClass::unknown;
    std::optional<double> set_flow;  // l/min, the device's, as the report shows it
    std::optional<double> device_o2; // %, the device's own reading, as the report shows it
    Result result = Result::incomplete;
    // Percentage points between analyser and device, when more than
    // o2_sensor_points: a warning about the device's sensor, not a fail.
    std::optional<double> o2_deviation;
};

// Judges the report's measured values against `limits`:
// - O2 passes at or above its limit;
// - the flow passes within the set flow plus or minus the larger of
//   flow_percent of it and flow_tolerance_floor; without a set flow (no
//   device data) it is not judged;
// - the protective earth passes at or below its limit, and is not judged for
//   protection class II;
// - the leakage current passes at or below the limit of the protection
//   class, and is not judged while the class is not given.
// A value exactly on its limit passes. The result is fail when any judged
// value fails, pass when O2, flow, leakage current and (class I) protective
// earth all pass, incomplete otherwise.
Judgement judge_report(const ReportRecord& report, const Limits& limits);

// The machine words of the file and the command line.
QString result_word(Result result);
QString verdict_word(Verdict verdict); // empty for none

// Numbers as the report shows them: the user's decimal separator, no
// grouping, no trailing zeros, at most three decimals.
QString measurement_text(double value, const QLocale& locale);
// The limit as the command line prints it: "82", "1,8–2,2", "0,3"; empty
// when there is none to judge by (no set flow, no protection class, the
// protective earth of class II).
QString limit_text(const Judged& judged, const QLocale& locale);
// The same with the sense spelt out for a reader: "≥ 82", "1,8–2,2", "≤ 0,3".
QString limit_caption(const Judged& judged, const QLocale& locale);

// The lines `report` prints after writing the file: "KEY|value|limit|pass"
// (or "|fail") for every judged value, then "ERGEBNIS|<result>".
QStringList judgement_lines(const Judgement& judgement, const QLocale& locale);

// Language texts of the verdicts and the result, for the form and the printout.
QString verdict_text(Verdict verdict, const config::LanguageTables& language);
QString result_text(Result result, const config::LanguageTables& language);
// The same for a result's machine word; empty for anything else (a report
// of an older program has no result).
QString result_text_of(const QString& word, const config::LanguageTables& language);
// "O2-Sensor des Geräts weicht um X Prozentpunkte ab"; empty without a deviation.
QString o2_sensor_note(const Judgement& judgement, const config::LanguageTables& language,
                       const QLocale& locale);

} // namespace veltrako::report
