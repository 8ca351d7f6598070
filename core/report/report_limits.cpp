#include "report/report_limits.h"

#include "config/config.h"
#include "report/report_measurements.h"

namespace veltrako::report {

namespace {

struct LimitField {
    const char* key;
    double Limits::*limit;
    QString config::Config::*setting;
};
constexpr LimitField limit_fields[] = {
    {"GRENZE_O2", &Limits::o2_min, &config::Config::GRENZE_O2},
    {"GRENZE_FLOW", &Limits::flow_percent, &config::Config::GRENZE_FLOW},
    {"GRENZE_SCHUTZLEITER", &Limits::earth_max, &config::Config::GRENZE_SCHUTZLEITER},
    {"GRENZE_ABLEITSTROM_I", &Limits::leakage_max_i, &config::Config::GRENZE_ABLEITSTROM_I},
    {"GRENZE_ABLEITSTROM_II", &Limits::leakage_max_ii, &config::Config::GRENZE_ABLEITSTROM_II},
};

const LimitField* field_of(const QString& key) {
    for (const LimitField& f : limit_fields)
        if (key == QLatin1String(f.key))
            return &f;
    return nullptr;
}

} // namespace

const QStringList& limit_keys() {
    static const QStringList keys = [] {
        QStringList k;
        for (const LimitField& f : limit_fields)
            k << QLatin1String(f.key);
        return k;
    }();
    return keys;
}

double limit_value(const Limits& limits, const QString& key) {
    const LimitField* f = field_of(key);
    return f ? limits.*(f->limit) : 0;
}

void set_limit(Limits& limits, const QString& key, double value) {
    if (const LimitField* f = field_of(key))
        limits.*(f->limit) = value;
}

std::optional<double> parse_limit(const QString& text) {
    // The same form as a measured value: a limit is a number a person typed.
    return parse_measurement(text);
}

Limits configured_limits(const config::Config& config) {
    Limits limits;
    for (const LimitField& f : limit_fields)
        if (const std::optional<double> v = parse_limit(config.*(f.setting)))
            limits.*(f.limit) = *v;
    return limits;
}

QList<std::pair<QString, QString>> limit_problems(const config::Config& config) {
    QList<std::pair<QString, QString>> problems;
    for (const LimitField& f : limit_fields) {
        const QString& text = config.*(f.setting);
        if (!text.isEmpty() && !parse_limit(text))
            problems.append({QLatin1String(f.key), text});
    }
    return problems;
}

} // namespace veltrako::report
