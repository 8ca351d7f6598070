#include "device/timing_presets.h"

#include "app_context.h"
#include "config/text_file.h"
#include "config/wait.h"
#include "device/device_view.h"
#include "protocol/commands.h"
#include "protocol/poll_cycle.h"

#include <QFileInfo>

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

bool cb_t_Click(AppContext& ctx, int index, int position, bool locked) {
    if (locked || !ctx.device.live_valid || index < 0 || index >= timing_count || position < 0 ||
        position > 255)
        return false;
    protocol::queue_command(ctx, cmd::write_timing(index, static_cast<std::uint8_t>(position)));
    wait_ms(ctx, timing_wait_ms);
    protocol::queue_command(ctx, cmd::read_timing(index));
    return true;
}

void cmd_t_reset_Click(AppContext& ctx) {
    for (int i = 0; i < static_cast<int>(factory_timings.size()); ++i)
        protocol::queue_command(ctx,
                                cmd::write_timing(i, factory_timings[static_cast<std::size_t>(i)]));
    wait_ms(ctx, timing_wait_ms);
    for (int i = 0; i < static_cast<int>(factory_timings.size()); ++i)
        protocol::queue_command(ctx, cmd::read_timing(i));
}

bool cmdPresetZeiten_Click(AppContext& ctx, int n) {
    if (!ctx.device.live_valid || n < 1 || n > preset_count)
        return false;
    const PresetRecord& p = ctx.presets.preset(n);
    // A preset that did not load holds no timings worth writing.
    if (!p.loaded)
        return false;
    for (int i = 0; i < preset_timing_count; ++i) {
        if (i != preset_skipped_index)
            protocol::queue_command(
                ctx, cmd::write_timing(i, p.preset_zeiten[static_cast<std::size_t>(i)]));
    }
    wait_ms(ctx, preset_wait_ms);
    for (int i = 0; i < preset_timing_count; ++i) {
        if (i != preset_skipped_index)
            protocol::queue_command(ctx, cmd::read_timing(i));
    }
    wait_ms(ctx, preset_wait_ms);
    ctx.ui.show_msg(ctx.language.text(116), MsgIcon::information);
    return true;
}

} // namespace veltrako::device
