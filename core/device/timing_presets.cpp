#include "device/timing_presets.h"

#include "app_context.h"
#include "config/text_file.h"
#include "config/wait.h"
#include "device/device_view.h"
#include "protocol/commands.h"
#include "protocol/poll_cycle.h"

#include <QFileInfo>

#include <optional>

namespace veltrako::device {

namespace {

namespace cmd = protocol::cmd;

constexpr int timing_wait_ms = 200;
constexpr int preset_wait_ms = 500;

// Where each key of a preset file goes: a title line, or a timing index.
// The order is the device's, not the keys': the outlet 2 times come before
// phase 2, the outlet 1 times after it.
struct KeyTarget {
    const char* key;
    int index; // -1: titel1, -2: titel2
};
constexpr KeyTarget key_targets[] = {
    {"TITEL1", -1},         {"TITEL2", -2},       {"ZEIT_VORLAUF", 0},   {"ZEIT_PHASE1", 1},
    {"ZEIT_A2ON", 2},       {"ZEIT_A2OFF", 3},    {"ZEIT_PHASE2", 4},    {"ZEIT_A1ON", 5},
    {"ZEIT_A1OFF", 6},      {"ZEIT_SPUEL1ON", 8}, {"ZEIT_SPUEL1OFF", 9}, {"ZEIT_SPUEL2ON", 10},
    {"ZEIT_SPUEL2OFF", 11},
};

std::optional<std::uint8_t> timing_value(const QString& text) {
    const QString t = text.trimmed();
    if (t.isEmpty() || t.size() > 3)
        return std::nullopt;
    for (const QChar c : t) {
        if (c < QLatin1Char('0') || c > QLatin1Char('9'))
            return std::nullopt;
    }
    const int v = t.toInt();
    if (v > 255)
        return std::nullopt;
    return static_cast<std::uint8_t>(v);
}

// Timings by index as people read them: "0: 4,00  1: 5,76".
using Timings = QList<std::pair<int, int>>;
QString timings_text(const Timings& timings) {
    QStringList parts;
    for (const auto& [index, value] : timings)
        parts << QString::number(index) + QStringLiteral(": ") + timing_text(value, QLocale());
    return parts.join(QStringLiteral("  "));
}

// The record keeps index `i` (the device reports it) on this model.
bool kept(const DeviceRecord& r, int i) {
    return i <= 6 || model_controls(r).extra_timings;
}

// Writes `wanted` (index, value), waits, reads each back and tells the
// outcome; `ask` is the question before it, if there is one.
WriteOutcome write_timings(AppContext& ctx, const Timings& wanted, int wait,
                           const std::optional<QString>& ask, Telling telling,
                           const QString& confirmed_message) {
    Timings old_values, kept_wanted;
    for (const auto& [i, value] : wanted) {
        if (kept(ctx.device, i)) {
            old_values.append({i, ctx.device.zeiten[static_cast<std::size_t>(i)]});
            kept_wanted.append({i, value});
        }
    }
    if (ask && !confirm_change(ctx, *ask, timings_text(old_values), timings_text(wanted)))
        return WriteOutcome::not_written;
    // The selectors show the values being written until the device's own
    // answers replace them.
    for (const auto& [i, value] : kept_wanted)
        ctx.device.zeiten[static_cast<std::size_t>(i)] = static_cast<std::uint8_t>(value);
    ctx.ui.device_record_changed();
    ReadBackWatch watch(ctx);
    for (const auto& [i, value] : wanted)
        protocol::queue_command(ctx, cmd::write_timing(i, static_cast<std::uint8_t>(value)));
    wait_ms(ctx, wait);
    for (const auto& [i, value] : wanted)
        protocol::queue_command(ctx, cmd::read_timing(i));
    const auto& [last, last_value] = wanted.constLast();
    const bool answered = watch.await(
        cmd::write_timing(last, static_cast<std::uint8_t>(last_value)), cmd::read_timing(last));
    // Only what the record keeps can be compared; a failure names the
    // timings that differ.
    Timings written, reported;
    for (const auto& [i, value] : kept_wanted) {
        const int got = ctx.device.zeiten[static_cast<std::size_t>(i)];
        if (got != value) {
            written.append({i, value});
            reported.append({i, got});
        }
    }
    const QString what = wanted.size() == 1
                             ? ctx.language.text(8027) + QLatin1Char(' ') + QString::number(last)
                             : ctx.language.text(8028);
    const bool equal = written.isEmpty();
    return tell_outcome(ctx,
                        {what, timings_text(equal ? kept_wanted : written),
                         timings_text(equal ? kept_wanted : reported), answered, equal,
                         timings_text(old_values)},
                        telling, confirmed_message);
}

} // namespace

QString timing_text(int byte_value, const QLocale& locale) {
    return format_value(byte_value * timing_tick_seconds, 2, locale);
}

QStringList timing_entries(const QLocale& locale) {
    QStringList entries;
    for (int k = 0; k <= 255; ++k)
        entries << timing_text(k, locale);
    return entries;
}

QString preset_file_name(int n) {
    return QStringLiteral("Zeiten_%1.txt").arg(n);
}

bool parse_preset_lines(const QStringList& lines, PresetRecord& p) {
    p.titel1.clear();
    p.titel2.clear();
    p.preset_zeiten.fill(0);
    for (const QString& line : lines) {
        if (line.trimmed().isEmpty())
            continue;
        const qsizetype eq = line.indexOf(QLatin1Char('='));
        const QString key = (eq < 0 ? line : line.left(eq)).trimmed();
        const QString value = eq < 0 ? QString() : line.mid(eq + 1);
        for (const KeyTarget& t : key_targets) {
            if (key != QLatin1String(t.key))
                continue;
            if (t.index == -1) {
                p.titel1 = value;
            } else if (t.index == -2) {
                p.titel2 = value;
            } else {
                const auto v = timing_value(value);
                if (!v)
                    return false;
                p.preset_zeiten[static_cast<std::size_t>(t.index)] = *v;
            }
            break;
        }
    }
    return true;
}

bool load_preset(PresetTable& table, int n, const QString& folder) {
    if (n < 1 || n > preset_count)
        return false;
    PresetRecord& p = table.preset(n);
    if (p.tried)
        return p.loaded;
    p.tried = true;
    p.loaded = false;
    const QString path = folder + preset_file_name(n);
    if (!QFileInfo::exists(path))
        return false;
    const std::optional<QStringList> lines = config::read_text_lines(path);
    if (!lines)
        return false;
    p.loaded = parse_preset_lines(*lines, p);
    return p.loaded;
}

bool presets_wanted(const DeviceRecord& r) {
    return r.valve_layout;
}

void setup_presets(PresetTable& table, const QString& folder, bool show) {
    table.shown = show;
    if (!show)
        return;
    for (int n = 1; n <= preset_count; ++n) {
        PresetButton& b = table.buttons[static_cast<std::size_t>(n - 1)];
        if (load_preset(table, n, folder)) {
            b.enabled = true;
            b.caption = table.preset(n).titel1 + QStringLiteral("\r\n") + table.preset(n).titel2;
        } else {
            b.enabled = false;
            b.caption = QStringLiteral("---");
        }
    }
}

WriteOutcome cb_t_Click(AppContext& ctx, int index, int position, bool locked) {
    if (locked || !ctx.device.live_valid || index < 0 || index >= timing_count || position < 0 ||
        position > 255)
        return WriteOutcome::not_written;
    return write_timings(ctx, {{index, position}}, timing_wait_ms, std::nullopt, Telling::note, {});
}

WriteOutcome cmd_t_reset_Click(AppContext& ctx) {
    Timings factory;
    for (std::size_t i = 0; i < factory_timings.size(); ++i)
        factory.append({static_cast<int>(i), factory_timings[i]});
    return write_timings(ctx, factory, timing_wait_ms, ctx.language.text(8035), Telling::note, {});
}

WriteOutcome cmdPresetZeiten_Click(AppContext& ctx, int n) {
    if (!ctx.device.live_valid || n < 1 || n > preset_count)
        return WriteOutcome::not_written;
    const PresetRecord& p = ctx.presets.preset(n);
    // A preset that did not load holds no timings worth writing.
    if (!p.loaded)
        return WriteOutcome::not_written;
    Timings wanted;
    for (int i = 0; i < preset_timing_count; ++i) {
        if (i != preset_skipped_index)
            wanted.append({i, p.preset_zeiten[static_cast<std::size_t>(i)]});
    }
    // The wait after the reads is the wait for their answers; text 116 only
    // when the device reports every value written.
    return write_timings(ctx, wanted, preset_wait_ms, ctx.language.text(8036), Telling::message,
                         ctx.language.text(116));
}

} // namespace veltrako::device
