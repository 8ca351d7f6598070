#include "report/report_measurements.h"

#include "config/language.h"
#include "device/parameter_values.h"

#include <QRegularExpression>

#include <cmath>

namespace veltrako::report {

namespace {

// Language texts of the verdicts and the result.
constexpr int text_pass = 8901;       // "bestanden"
constexpr int text_fail = 8902;       // "nicht bestanden"
constexpr int text_incomplete = 8903; // "unvollständig"
constexpr int text_o2_note = 8905;    // "O2-Sensor des Geräts weicht um %1 Prozentpunkte ab"

const QChar en_dash(0x2013);

// Values typed with a few decimals meet limits computed in binary floating
// point (2.0 - 0.2 is not exactly 1.8): a value this close to its limit is
// on it, and a value on its limit passes.
bool at_least(double value, double limit) {
    return value >= limit - 1e-9 * std::max(1.0, std::abs(limit));
}
bool at_most(double value, double limit) {
    return value <= limit + 1e-9 * std::max(1.0, std::abs(limit));
}

Verdict verdict_of(bool pass) {
    return pass ? Verdict::pass : Verdict::fail;
}

Judged judge_range(std::optional<double> value, std::optional<double> low,
                   std::optional<double> high) {
    Judged j;
    j.value = value;
    j.low = low;
    j.high = high;
    if (value && (low || high))
        j.verdict =
            verdict_of((!low || at_least(*value, *low)) && (!high || at_most(*value, *high)));
    return j;
}

// A device value as the report shows and files it (the O2 without decimals,
// the set flow with one), so that a report opened from its file is judged
// as it was when it was typed.
std::optional<double> shown_device_value(const ReportRecord& report, const char* key) {
    if (!report.device_valid())
        return std::nullopt;
    return parse_measurement(
        device::parameter_value(report.report_device, QLatin1String(key), QLocale::c()));
}

QLocale plain(const QLocale& locale) {
    QLocale l = locale;
    l.setNumberOptions(l.numberOptions() | QLocale::OmitGroupSeparator);
    return l;
}

} // namespace

std::optional<double> parse_measurement(const QString& text) {
    static const QRegularExpression number(QStringLiteral("^(\\d+([.,]\\d*)?|[.,]\\d+)$"));
    QString t = text.trimmed();
    if (!number.match(t).hasMatch())
        return std::nullopt;
    t.replace(QLatin1Char(','), QLatin1Char('.'));
    bool ok = false;
    const double v = QLocale::c().toDouble(t, &ok);
    if (!ok || !std::isfinite(v))
        return std::nullopt;
    return v;
}

bool could_become_measurement(const QString& text) {
    static const QRegularExpression start(QStringLiteral("^\\s*\\d*[.,]?\\d*\\s*$"));
    return start.match(text).hasMatch();
}

ProtectionClass parse_protection_class(const QString& text) {
    const QString t = text.trimmed().toUpper();
    if (t == QLatin1String("I"))
        return ProtectionClass::i;
    if (t == QLatin1String("II"))
        return ProtectionClass::ii;
    return ProtectionClass::unknown;
}

bool could_become_protection_class(const QString& text) {
    const QString t = text.trimmed().toUpper();
    return t.isEmpty() || t == QLatin1String("I") || t == QLatin1String("II");
}

Judgement judge_report(const ReportRecord& report, const Limits& limits) {
    const auto typed = [&](const char* key) {
        return parse_measurement(report.value(QLatin1String(key)));
    };
    Judgement j;
    j.protection_class = parse_protection_class(report.value(QLatin1String(key_protection_class)));
    j.device_o2 = shown_device_value(report, "O2");
    j.set_flow = shown_device_value(report, "SOLL_VOLUMENSTROM");
    if (j.set_flow && *j.set_flow <= 0)
        j.set_flow.reset(); // a device that delivers nothing sets no flow to judge against

    j.o2 = judge_range(typed(key_o2), limits.o2_min, std::nullopt);
    std::optional<double> low, high;
    if (j.set_flow) {
        const double tolerance =
            std::max(*j.set_flow * limits.flow_percent / 100.0, flow_tolerance_floor);
        low = std::max(0.0, *j.set_flow - tolerance);
        high = *j.set_flow + tolerance;
    }
    j.flow = judge_range(typed(key_flow), low, high);
    // Protection class II has no protective earth to measure.
    j.earth = j.protection_class == ProtectionClass::ii
                  ? Judged{typed(key_earth), std::nullopt, std::nullopt, Verdict::none}
                  : judge_range(typed(key_earth), std::nullopt, limits.earth_max);
    const std::optional<double> leakage_limit =
        j.protection_class == ProtectionClass::i    ? std::optional(limits.leakage_max_i)
        : j.protection_class == ProtectionClass::ii ? std::optional(limits.leakage_max_ii)
                                                    : std::nullopt;
    j.leakage = judge_range(typed(key_leakage), std::nullopt, leakage_limit);

    const bool failed = j.o2.verdict == Verdict::fail || j.flow.verdict == Verdict::fail ||
                        j.earth.verdict == Verdict::fail || j.leakage.verdict == Verdict::fail;
    const bool earth_done =
        j.protection_class == ProtectionClass::ii || j.earth.verdict == Verdict::pass;
    const bool all_passed = j.o2.verdict == Verdict::pass && j.flow.verdict == Verdict::pass &&
                            j.leakage.verdict == Verdict::pass && earth_done;
    j.result = failed ? Result::fail : all_passed ? Result::pass : Result::incomplete;

    if (j.o2.value && j.device_o2) {
        const double points = std::abs(*j.o2.value - *j.device_o2);
        if (!at_most(points, o2_sensor_points))
            j.o2_deviation = points;
    }
    return j;
}

QString result_word(Result result) {
    switch (result) {
    case Result::pass:
        return QStringLiteral("pass");
    case Result::fail:
        return QStringLiteral("fail");
    case Result::incomplete:
        break;
    }
    return QStringLiteral("incomplete");
}

QString verdict_word(Verdict verdict) {
    return verdict == Verdict::pass   ? QStringLiteral("pass")
           : verdict == Verdict::fail ? QStringLiteral("fail")
                                      : QString();
}

QString measurement_text(double value, const QLocale& locale) {
    double rounded = std::round(value * 1000.0) / 1000.0;
    if (rounded == 0)
        rounded = 0; // no "-0"
    return plain(locale).toString(rounded, 'f', QLocale::FloatingPointShortest);
}

QString limit_text(const Judged& judged, const QLocale& locale) {
    if (!judged.low && !judged.high)
        return {};
    if (judged.low && judged.high)
        return measurement_text(*judged.low, locale) + en_dash +
               measurement_text(*judged.high, locale);
    return measurement_text(judged.low ? *judged.low : *judged.high, locale);
}

QString limit_caption(const Judged& judged, const QLocale& locale) {
    const QString text = limit_text(judged, locale);
    if (text.isEmpty() || (judged.low && judged.high))
        return text;
    return (judged.low ? QStringLiteral("\u2265 ") : QStringLiteral("\u2264 ")) + text;
}

QStringList judgement_lines(const Judgement& judgement, const QLocale& locale) {
    QStringList lines;
    const std::pair<const char*, const Judged*> values[] = {{key_o2, &judgement.o2},
                                                            {key_flow, &judgement.flow},
                                                            {key_earth, &judgement.earth},
                                                            {key_leakage, &judgement.leakage}};
    for (const auto& [key, judged] : values)
        if (judged->verdict != Verdict::none)
            lines << QStringList{QLatin1String(key), measurement_text(*judged->value, locale),
                                 limit_text(*judged, locale), verdict_word(judged->verdict)}
                         .join(QLatin1Char('|'));
    lines << QLatin1String(key_result) + QLatin1Char('|') + result_word(judgement.result);
    return lines;
}

QString verdict_text(Verdict verdict, const config::LanguageTables& language) {
    return verdict == Verdict::pass   ? language.text(text_pass)
           : verdict == Verdict::fail ? language.text(text_fail)
                                      : QString();
}

QString result_text(Result result, const config::LanguageTables& language) {
    return language.text(result == Result::pass   ? text_pass
                         : result == Result::fail ? text_fail
                                                  : text_incomplete);
}

QString result_text_of(const QString& word, const config::LanguageTables& language) {
    for (const Result r : {Result::pass, Result::fail, Result::incomplete})
        if (word == result_word(r))
            return result_text(r, language);
    return {};
}

QString o2_sensor_note(const Judgement& judgement, const config::LanguageTables& language,
                       const QLocale& locale) {
    if (!judgement.o2_deviation)
        return {};
    const double points = std::round(*judgement.o2_deviation * 10.0) / 10.0;
    return language.text(text_o2_note).arg(measurement_text(points, locale));
}

} // namespace veltrako::report
