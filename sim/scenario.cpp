#include "scenario.h"

#include "device_family.h"
#include "device_time.h"
#include "scenario_values.h"

#include "config/text_file.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <functional>
#include <limits>
#include <map>

namespace veltrako::sim {

StatusLayout Scenario::effective_status_layout() const {
    if (status_layout)
        return *status_layout;
    return device_family(sw).second_alarm_byte ? StatusLayout::extended : StatusLayout::basic;
}

QList<QByteArray> Scenario::stored_status_records() const {
    if (status_generate > 0)
        return generate_status_records(status_generate, effective_status_layout(), live.seed);
    return status_records;
}

QList<ComplianceRecord> Scenario::stored_compliance_records(const QDateTime& power_on_clock) const {
    if (compliance_generate <= 0)
        return compliance_records;
    return generate_compliance_records(compliance_generate, compliance_from.at(power_on_clock),
                                       compliance_to.at(power_on_clock), live.seed);
}

namespace {

using values::integer;

struct ParseState {
    Scenario s;
    std::map<QByteArray, int> seen; // key -> line it was last given on
};

using Handler = std::function<bool(ParseState&, const QByteArray& value, QString& why)>;

struct Key {
    Handler handle;
    bool repeatable = false;
};

template <typename T> Handler set_integer(T Scenario::*field, qint64 low, qint64 high) {
    return [=](ParseState& p, const QByteArray& v, QString& why) {
        const auto n = integer(v, low, high, why);
        if (n)
            p.s.*field = static_cast<T>(*n);
        return n.has_value();
    };
}

template <typename T> Handler set_live_integer(T LiveSettings::*field, qint64 low, qint64 high) {
    return [=](ParseState& p, const QByteArray& v, QString& why) {
        const auto n = integer(v, low, high, why);
        if (n)
            p.s.live.*field = static_cast<T>(*n);
        return n.has_value();
    };
}

Handler set_live_real(double LiveSettings::*field, double low, double high) {
    return [=](ParseState& p, const QByteArray& v, QString& why) {
        const auto n = values::real(v, low, high, why);
        if (n)
            p.s.live.*field = *n;
        return n.has_value();
    };
}

// A text of at most `width` bytes (0: any length).
Handler set_text(QByteArray Scenario::*field, int width) {
    return [=](ParseState& p, const QByteArray& v, QString& why) {
        const auto t = values::text(v, why);
        if (!t)
            return false;
        if (width > 0 && t->size() > width) {
            why = QStringLiteral("longer than the %1 bytes the device keeps").arg(width);
            return false;
        }
        p.s.*field = *t;
        return true;
    };
}

Handler set_fault_flag(bool Faults::*field) {
    return [=](ParseState& p, const QByteArray& v, QString& why) {
        const auto f = values::flag(v, why);
        if (f)
            p.s.faults.*field = *f;
        return f.has_value();
    };
}

Handler set_fault_count(int Faults::*field, int high) {
    return [=](ParseState& p, const QByteArray& v, QString& why) {
        const auto n = integer(v, 0, high, why);
        if (n)
            p.s.faults.*field = static_cast<int>(*n);
        return n.has_value();
    };
}

// A record number of the usage memory, or "off".
Handler set_fault_record(int Faults::*field) {
    return [=](ParseState& p, const QByteArray& v, QString& why) {
        if (v.trimmed().toLower() == "off") {
            p.s.faults.*field = Faults::no_record;
            return true;
        }
        const auto n = integer(v, 0, 32767, why);
        if (n)
            p.s.faults.*field = static_cast<int>(*n);
        return n.has_value();
    };
}

bool parse_hours(ParseState& p, const QByteArray& v, QString& why) {
    // "hours:minutes" as the device shows them, minutes in steps of ten.
    static const QRegularExpression form(QStringLiteral("^(\\d{1,6}):([0-5])0$"));
    const auto m = form.match(QString::fromLatin1(v.trimmed()));
    if (!m.hasMatch()) {
        why = QStringLiteral("expected hours:minutes, e.g. 1234:50 (minutes 00, 10, ... 50)");
        return false;
    }
    p.s.hours = {m.captured(1).toUInt(), m.captured(2).toInt()};
    return true;
}

bool parse_timings(ParseState& p, const QByteArray& v, QString& why) {
    const QList<QByteArray> parts = v.simplified().split(' ');
    if (parts.size() != 14) {
        why = QStringLiteral("expected 14 values, found %1").arg(parts.size());
        return false;
    }
    for (int i = 0; i < 14; ++i) {
        const auto n = integer(parts.at(i), 0, 255, why);
        if (!n)
            return false;
        p.s.timings[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(*n);
    }
    return true;
}

bool parse_override(ParseState& p, const QByteArray& v, QString& why) {
    const qsizetype colon = v.indexOf(':');
    if (colon < 0) {
        why = QStringLiteral("expected position:hex bytes, e.g. 20: 90 00");
        return false;
    }
    const auto pos = integer(v.left(colon), 2, live_status_size, why);
    if (!pos)
        return false;
    const auto bytes = values::hex_bytes(v.mid(colon + 1), why);
    if (!bytes)
        return false;
    if (bytes->isEmpty() || *pos + bytes->size() - 1 > live_status_size) {
        why = QStringLiteral("the bytes must lie within positions 2..%1").arg(live_status_size);
        return false;
    }
    p.s.live.overrides << LiveSettings::Override{static_cast<int>(*pos), *bytes};
    return true;
}

bool parse_status_record(ParseState& p, const QByteArray& v, QString& why) {
    const auto bytes = values::hex_bytes(v, why);
    if (!bytes)
        return false;
    if (bytes->size() != status_record_size) {
        why = QStringLiteral("a status record has %1 bytes, found %2")
                  .arg(status_record_size)
                  .arg(bytes->size());
        return false;
    }
    if (p.s.status_records.size() >= status_record_max) {
        why = QStringLiteral("the device keeps at most %1 status records").arg(status_record_max);
        return false;
    }
    p.s.status_records << *bytes;
    return true;
}

bool parse_garbage(ParseState& p, const QByteArray& v, QString& why) {
    QString ignored;
    if (const auto f = values::flag(v, ignored)) {
        p.s.faults.garbage_between_frames = *f ? Faults::line_noise() : QByteArray();
        return true;
    }
    const auto bytes = values::hex_bytes(v, why);
    if (!bytes) {
        why = QStringLiteral("expected on, off or hexadecimal bytes");
        return false;
    }
    p.s.faults.garbage_between_frames = *bytes;
    return true;
}

const std::map<QByteArray, Key>& keys() {
    static const std::map<QByteArray, Key> table = [] {
        std::map<QByteArray, Key> k;
        // Identity
        k["SW"] = {set_text(&Scenario::sw, 99)};
        k["SW_AFTER_UPDATE"] = {[](ParseState& p, const QByteArray& v, QString& why) {
            const auto t = values::text(v, why);
            if (t)
                p.s.sw_after_update = *t;
            return t.has_value();
        }};
        k["INFO"] = {set_text(&Scenario::info, 99)};
        k["SN"] = {set_text(&Scenario::serial, field::serial)};
        k["LP"] = {set_text(&Scenario::board, field::board)};
        k["HARDWARE_ID"] = {set_text(&Scenario::hardware_id, field::hardware_id)};
        k["TEXT_40"] = {set_text(&Scenario::text_40, field::text_40)};
        k["TEXT_58"] = {set_text(&Scenario::text_58, field::text_58)};
        k["BOOT_LOADER_GREETING"] = {set_text(&Scenario::boot_loader_greeting, 0)};
        k["BOOT_LOADER"] = {[](ParseState& p, const QByteArray& v, QString& why) {
            const auto f = values::flag(v, why);
            if (f)
                p.s.boot_loader_at_power_on = *f;
            return f.has_value();
        }};
        // Counters and settings
        k["HOURS"] = {parse_hours};
        k["CLOCK"] = {[](ParseState& p, const QByteArray& v, QString& why) {
            const auto t = values::date_time(v, why);
            if (t)
                p.s.clock = *t;
            return t.has_value();
        }};
        k["REMAINING"] = {set_integer(&Scenario::remaining, 0, 65535)};
        k["TIMINGS"] = {parse_timings};
        k["FLOW_SELECTOR_U"] = {set_integer(&Scenario::flow_selector_u, 0, 255)};
        k["FLOW_SELECTOR_O"] = {set_integer(&Scenario::flow_selector_o, 0, 255)};
        k["ACOUSTIC_ALARM"] = {set_integer(&Scenario::acoustic_alarm, 0, 255)};
        k["LATENCY_MS"] = {set_integer(&Scenario::latency_ms, 0, 60000)};
        // Live status
        k["ALARMS"] = {set_live_integer(&LiveSettings::alarms, 0, 255)};
        k["ALARMS2"] = {set_live_integer(&LiveSettings::alarms2, 0, 255)};
        k["ALARM_LEVEL"] = {set_live_integer(&LiveSettings::alarm_level, 0, 255)};
        k["O2"] = {set_live_integer(&LiveSettings::o2_percent, 0, 255)};
        k["FLOW_SETPOINT"] = {set_live_real(&LiveSettings::flow_setpoint_lpm, 0, 400)};
        k["SPEED_OF_SOUND"] = {set_live_real(&LiveSettings::speed_of_sound, -1e6, 1e6)};
        k["GAS_TEMP"] = {set_live_real(&LiveSettings::gas_temperature, -1e6, 1e6)};
        k["COMPRESSOR_TEMP"] = {set_live_integer(&LiveSettings::compressor_temperature, 0, 32767)};
        k["SUPPLY_VOLTAGE"] = {set_live_real(&LiveSettings::supply_voltage, 0, 959)};
        k["PRESSURE_LOW"] = {set_live_integer(&LiveSettings::pressure_low_hpa, 0, 32767)};
        k["PRESSURE_HIGH"] = {set_live_integer(&LiveSettings::pressure_high_hpa, 0, 32767)};
        k["NOISE"] = {[](ParseState& p, const QByteArray& v, QString& why) {
            const auto f = values::flag(v, why);
            if (f)
                p.s.live.noise = *f;
            return f.has_value();
        }};
        k["SEED"] = {set_live_integer(&LiveSettings::seed, 0, std::numeric_limits<qint64>::max())};
        k["TICKS_AT_POWER_ON"] = {set_live_integer(&LiveSettings::ticks_at_power_on, 0, 65535)};
        k["LIVE_OVERRIDE"] = {parse_override, true};
        // Status memory
        k["STATUS_LAYOUT"] = {[](ParseState& p, const QByteArray& v, QString& why) {
            const QByteArray t = v.trimmed().toLower();
            if (t == "basic")
                p.s.status_layout = StatusLayout::basic;
            else if (t == "extended")
                p.s.status_layout = StatusLayout::extended;
            else
                why = QStringLiteral("expected basic or extended");
            return t == "basic" || t == "extended";
        }};
        k["STATUS_RECORD"] = {parse_status_record, true};
        k["STATUS_GENERATE"] = {set_integer(&Scenario::status_generate, 0, status_record_max)};
        // Usage memory
        k["COMPLIANCE_RING_SIZE"] = {set_integer(&Scenario::compliance_ring_size, 1, 65535)};
        k["COMPLIANCE_RECORD"] = {[](ParseState& p, const QByteArray& v, QString& why) {
                                      const auto r = values::compliance_period(v, why);
                                      if (r)
                                          p.s.compliance_records << *r;
                                      return r.has_value();
                                  },
                                  true};
        k["COMPLIANCE_GENERATE"] = {set_integer(&Scenario::compliance_generate, 0, 32767)};
        k["COMPLIANCE_FROM"] = {[](ParseState& p, const QByteArray& v, QString& why) {
            const auto t = values::scenario_time(v, why);
            if (t)
                p.s.compliance_from = *t;
            return t.has_value();
        }};
        k["COMPLIANCE_TO"] = {[](ParseState& p, const QByteArray& v, QString& why) {
            const auto t = values::scenario_time(v, why);
            if (t)
                p.s.compliance_to = *t;
            return t.has_value();
        }};
        // Faults
        k["SILENT"] = {set_fault_flag(&Faults::silent)};
        k["DROP_EVERY"] = {set_fault_count(&Faults::drop_every, 1000000)};
        k["CORRUPT_CRC_EVERY"] = {set_fault_count(&Faults::corrupt_crc_every, 1000000)};
        k["GARBAGE_BETWEEN_FRAMES"] = {parse_garbage};
        k["SPLIT_ANSWERS"] = {set_fault_flag(&Faults::split_answers)};
        k["IGNORE_WRITES"] = {set_fault_flag(&Faults::ignore_writes)};
        k["ANSWER_DELAY_MS"] = {set_fault_count(&Faults::answer_delay_ms, 60000)};
        k["NAK_LINE"] = {set_fault_count(&Faults::nak_line, 1000000)};
        k["NAK_ATTEMPTS"] = {[](ParseState& p, const QByteArray& v, QString& why) {
            const QByteArray t = v.trimmed().toLower();
            if (t == "1")
                p.s.faults.nak_attempts = NakAttempts::first;
            else if (t == "2")
                p.s.faults.nak_attempts = NakAttempts::first_two;
            else if (t == "always")
                p.s.faults.nak_attempts = NakAttempts::always;
            else
                why = QStringLiteral("expected 1, 2 or always");
            return t == "1" || t == "2" || t == "always";
        }};
        k["ACK_FORM"] = {[](ParseState& p, const QByteArray& v, QString& why) {
            const QByteArray t = v.trimmed().toLower();
            if (t == "plain")
                p.s.faults.ack_form = AckForm::plain;
            else if (t == "doubled")
                p.s.faults.ack_form = AckForm::doubled;
            else if (t == "blank")
                p.s.faults.ack_form = AckForm::trailing_blank;
            else
                why = QStringLiteral("expected plain, doubled or blank");
            return t == "plain" || t == "doubled" || t == "blank";
        }};
        k["LOSE_SYNC"] = {set_fault_flag(&Faults::lose_sync)};
        k["UNPLUG"] = {set_fault_flag(&Faults::unplug)};
        k["LATE_ANSWER_RECORD"] = {set_fault_record(&Faults::late_answer_record)};
        k["LATE_ANSWER_MS"] = {set_fault_count(&Faults::late_answer_ms, 60000)};
        k["DUPLICATE_ANSWER_RECORD"] = {set_fault_record(&Faults::duplicate_answer_record)};
        k["WRONG_INDEX_RECORD"] = {set_fault_record(&Faults::wrong_index_record)};
        k["REFUSED_ANSWER_RECORD"] = {set_fault_record(&Faults::refused_answer_record)};
        k["REFUSED_ANSWERS"] = {[](ParseState& p, const QByteArray& v, QString& why) {
            if (v.trimmed().toLower() == "always") {
                p.s.faults.refused_answers = Faults::every_answer;
                return true;
            }
            const auto n = integer(v, 1, 1000000, why);
            if (n)
                p.s.faults.refused_answers = static_cast<int>(*n);
            return n.has_value();
        }};
        k["WITHHELD_RECORD"] = {set_fault_record(&Faults::withheld_record)};
        return k;
    }();
    return table;
}

QString at_line(int line, const QString& what) {
    return QStringLiteral("line %1: %2").arg(line).arg(what);
}

// Checks that concern several keys; the error names the line of the key that
// cannot stand as given.
bool check_together(const ParseState& p, QString* error) {
    const auto line = [&](const char* key) {
        const auto it = p.seen.find(key);
        return it == p.seen.end() ? 0 : it->second;
    };
    const auto fail = [&](const char* key, const QString& what) {
        if (error)
            *error = at_line(line(key), what);
        return false;
    };
    const Scenario& s = p.s;
    if (s.status_generate > 0 && !s.status_records.isEmpty())
        return fail("STATUS_GENERATE",
                    QStringLiteral("STATUS_GENERATE and STATUS_RECORD exclude each other"));
    if (s.compliance_generate > 0) {
        if (!s.compliance_records.isEmpty())
            return fail(
                "COMPLIANCE_GENERATE",
                QStringLiteral("COMPLIANCE_GENERATE and COMPLIANCE_RECORD exclude each other"));
        if (!p.seen.count("COMPLIANCE_FROM") || !p.seen.count("COMPLIANCE_TO"))
            return fail(
                "COMPLIANCE_GENERATE",
                QStringLiteral("COMPLIANCE_GENERATE needs COMPLIANCE_FROM and COMPLIANCE_TO"));
        if (s.compliance_from.relative() != s.compliance_to.relative())
            return fail("COMPLIANCE_TO", QStringLiteral("COMPLIANCE_FROM and COMPLIANCE_TO are "
                                                        "both dates or both relative to CLOCK"));
        // Both relative or both fixed: the span is the same on any day.
        const QDateTime any = device_epoch();
        const qint64 span = s.compliance_from.at(any).secsTo(s.compliance_to.at(any));
        if (span < 120LL * s.compliance_generate)
            return fail("COMPLIANCE_TO",
                        QStringLiteral("the range leaves less than two minutes per usage period"));
    }
    if (s.live.pressure_low_hpa > s.live.pressure_high_hpa)
        return fail("PRESSURE_LOW", QStringLiteral("PRESSURE_LOW is above PRESSURE_HIGH"));
    return true;
}

} // namespace

std::optional<Scenario> parse_scenario(const QByteArray& text, QString* error) {
    ParseState p;
    // Read like every text file of the program (UTF-8 or Windows-1252, any
    // line end). The device's texts are single bytes that the program shows
    // as Latin-1, so "SERIAL=Müller" gives the device the byte 0xFC for "ü".
    const QStringList lines = config::decode_text_lines(text);
    for (int n = 1; n <= lines.size(); ++n) {
        const QByteArray line = lines.at(n - 1).toLatin1().trimmed();
        if (line.isEmpty() || line.startsWith('#'))
            continue;
        const qsizetype eq = line.indexOf('=');
        if (eq < 0) {
            if (error)
                *error = at_line(n, QStringLiteral("expected KEY=VALUE"));
            return std::nullopt;
        }
        const QByteArray key = line.left(eq).trimmed().toUpper();
        const auto it = keys().find(key);
        if (it == keys().end()) {
            if (error)
                *error = at_line(n, QStringLiteral("unknown key %1").arg(QString::fromLatin1(key)));
            return std::nullopt;
        }
        if (!it->second.repeatable && p.seen.count(key)) {
            if (error)
                *error = at_line(n, QStringLiteral("%1 was already given on line %2")
                                        .arg(QString::fromLatin1(key))
                                        .arg(p.seen[key]));
            return std::nullopt;
        }
        p.seen[key] = n;
        QString why;
        if (!it->second.handle(p, line.mid(eq + 1), why)) {
            if (error)
                *error = at_line(n, QStringLiteral("%1: %2").arg(QString::fromLatin1(key), why));
            return std::nullopt;
        }
    }
    if (!check_together(p, error))
        return std::nullopt;
    return p.s;
}

namespace {

const QString sample_folder = QStringLiteral(":/veltrako2_sim/scenarios/");
const QString sample_suffix = QStringLiteral(".scn");

} // namespace

QStringList sample_scenario_names() {
    QStringList names;
    for (const QString& file :
         QDir(sample_folder).entryList({QStringLiteral("*.scn")}, QDir::Files, QDir::Name))
        names << file.chopped(sample_suffix.size());
    return names;
}

std::optional<Scenario> load_scenario(const QString& name_or_path, QString* error) {
    static const QRegularExpression bare_name(QStringLiteral("^[A-Za-z0-9_-]+$"));
    const bool sample = bare_name.match(name_or_path).hasMatch();
    if (sample && !sample_scenario_names().contains(name_or_path)) {
        if (error) {
            *error = QStringLiteral("no sample scenario \"%1\" (there are: %2)")
                         .arg(name_or_path, sample_scenario_names().join(QStringLiteral(", ")));
        }
        return std::nullopt;
    }
    QFile file(sample ? sample_folder + name_or_path + sample_suffix : name_or_path);
    if (!file.open(QIODevice::ReadOnly)) {
        if (error)
            *error = QStringLiteral("%1: %2").arg(name_or_path, file.errorString());
        return std::nullopt;
    }
    QString why;
    auto scenario = parse_scenario(file.readAll(), &why);
    if (!scenario && error)
        *error = QStringLiteral("%1: %2").arg(name_or_path, why);
    return scenario;
}

} // namespace veltrako::sim
