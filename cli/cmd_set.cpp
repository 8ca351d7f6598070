// set: change one stored setting of the device, exactly as the "Gerät" page
// does, and print what the device reports after the read-back.
//
// Values are checked before anything is sent: an invalid one ends the
// command with exit code 2 and a message, and the device is not touched.
// Settings that the window does not offer for the connected model are
// refused the same way once the device has said who it is. A change that
// cannot be undone (serial number, operating hours, factory timings, a
// preset) is asked for as in the window: --yes writes, --no or no answer
// writes nothing. After the read-back each value is printed as KEY|VALUE
// under the key `info` uses; a value the device did not take is printed as
// the device has it, with a message on stderr naming both values and exit
// code 1.

#include "app_context.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "console_ui.h"
#include "device/device_view.h"
#include "device/parameter_values.h"
#include "device/settings.h"
#include "device/timing_presets.h"
#include "protocol/commands.h"
#include "protocol/poll_cycle.h"
#include "setting_plan.h"

#include <memory>
#include <optional>

namespace veltrako::cli {

namespace {

using Plan = SettingPlan;
using Words = config::LanguageTables;

constexpr int text_usage_sn = 9361;          // "usage: set sn TEXT"
constexpr int text_sn_not_storable = 9362;   // "the serial number holds characters ..."
constexpr int text_usage_hours = 9363;       // "usage: set hours HHHHHH:M (...)"
constexpr int text_usage_clock = 9364;       // "usage: set clock (takes the PC's present time)"
constexpr int text_usage_lp = 9365;          // "usage: set lp (switches the low-power mode)"
constexpr int text_no_low_power = 9366;      // "the board %1 has no low-power mode"
constexpr int text_usage_rest = 9367;        // "usage: set rest N (a whole number from 0 to %1)"
constexpr int text_usage_flow = 9368;        // "usage: set flow u¦o VALUE (VALUE 0 to 255)"
constexpr int text_no_flow_selectors = 9369; // "this device has no flow selectors"
constexpr int text_family = 9370;            // "(device family %1)"
constexpr int text_usage_timing = 9371;      // "usage: set timing INDEX VALUE (...)"
constexpr int text_timing_unused = 9372;     // "timing %1 is not used by this device"
constexpr int text_usage_preset = 9373;      // "usage: set preset N (N 1 to 3)"
constexpr int text_preset_bad = 9374;        // "%1 is missing or holds a bad value"
constexpr int text_no_presets = 9375;  // "presets are offered only for models with a rinse valve"
constexpr int text_usage_alarm = 9376; // "usage: set alarm o21¦o22¦vollo (...)"
constexpr int text_no_acoustic = 9377; // "this device has no acoustic switch for that alarm"
constexpr int text_set_what = 9378;    // "set what? sn, hours, clock, lp, rest, ..."

std::optional<int> whole_number(const QString& text, int low, int high) {
    bool ok = false;
    const int v = text.toInt(&ok);
    if (!ok || v < low || v > high || text.trimmed() != text)
        return std::nullopt;
    return v;
}

QString live_field(const device::DeviceRecord& r, const QString& name) {
    for (const auto& [key, value] : device::live_fields(r, QLocale::c()))
        if (key == name)
            return value;
    return {};
}

QString timing_key(int index) {
    return QStringLiteral("ZEITEN%1").arg(index);
}

// Timing index `i` reaches the record only on models that keep it; the
// window shows no selector for the others either.
bool timing_kept(const device::DeviceRecord& r, int i) {
    return i <= 6 || device::model_controls(r).extra_timings;
}

// A refusal with the device family it was made for.
QString refusal(const Words& w, int text, const device::DeviceRecord& r,
                const QStringList& args = {}) {
    return cli_text(w, text, args) + QLatin1Char(' ') + cli_text(w, text_family, {r.family_code});
}

std::optional<Plan> plan_sn(const Words& w, const QStringList& a, QString& error) {
    if (a.size() != 1) {
        error = cli_text(w, text_usage_sn);
        return std::nullopt;
    }
    const QString text = a[0];
    if (!device::serial_text_storable(text)) {
        error = cli_text(w, text_sn_not_storable);
        return std::nullopt;
    }
    Plan p;
    p.change = [text](AppContext& ctx) { return device::cmd_setsn_Click(ctx, text); };
    p.result = [](const AppContext& ctx) { return Lines{{QStringLiteral("SN"), ctx.device.SN}}; };
    return p;
}

std::optional<Plan> plan_hours(const Words& w, const QStringList& a, QString& error) {
    const auto entry = a.size() == 1 ? device::parse_hours_entry(a[0]) : std::nullopt;
    if (!entry) {
        error = cli_text(w, text_usage_hours);
        return std::nullopt;
    }
    const QString typed = a[0];
    Plan p;
    p.change = [typed](AppContext& ctx) {
        static_cast<ConsoleUi&>(ctx.ui).preset_input = typed; // the answer to the input box
        return device::cmd_setbstd_Click(ctx);
    };
    p.result = [](const AppContext& ctx) {
        return Lines{{QStringLiteral("BSTD"), ctx.device.BSTD}};
    };
    return p;
}

std::optional<Plan> plan_clock(const Words& w, const QStringList& a, QString& error) {
    if (!a.isEmpty()) {
        error = cli_text(w, text_usage_clock);
        return std::nullopt;
    }
    Plan p;
    p.change = [](AppContext& ctx) { return device::cmd_setdatetime_Click(ctx); };
    p.result = [](const AppContext& ctx) {
        const QString key = QStringLiteral("geraetezeit");
        return Lines{{key, live_field(ctx.device, key)}};
    };
    return p;
}

std::optional<Plan> plan_lp(const Words& w, const QStringList& a, QString& error) {
    if (!a.isEmpty()) {
        error = cli_text(w, text_usage_lp);
        return std::nullopt;
    }
    Plan p;
    p.refuse = [&w](const device::DeviceRecord& r) {
        return device::toggled_low_power(r) ? QString()
                                            : cli_text(w, text_no_low_power, {r.LP.trimmed()});
    };
    p.change = [](AppContext& ctx) { return device::cmd_togglelp_Click(ctx); };
    p.result = [](const AppContext& ctx) { return Lines{{QStringLiteral("LP"), ctx.device.LP}}; };
    return p;
}

std::optional<Plan> plan_rest(const Words& w, const QStringList& a, QString& error) {
    const auto value = a.size() == 1 ? device::parse_remaining_entry(a[0]) : std::nullopt;
    if (!value || a[0].trimmed() != a[0]) {
        error = cli_text(w, text_usage_rest, {QString::number(device::remaining_max)});
        return std::nullopt;
    }
    const QString typed = a[0];
    Plan p;
    p.change = [typed](AppContext& ctx) {
        static_cast<ConsoleUi&>(ctx.ui).preset_input = typed;
        return device::cmd_Restzeit_Click(ctx);
    };
    p.result = [](const AppContext& ctx) {
        return Lines{{QStringLiteral("rest_text"), ctx.device.rest_text}};
    };
    return p;
}

std::optional<Plan> plan_flow(const Words& w, const QStringList& a, QString& error) {
    const int selector = a.value(0) == QLatin1String("u")   ? 0
                         : a.value(0) == QLatin1String("o") ? 1
                                                            : -1;
    const auto value = a.size() == 2 ? whole_number(a[1], 0, 255) : std::nullopt;
    if (selector < 0 || !value) {
        error = cli_text(w, text_usage_flow);
        return std::nullopt;
    }
    const int v = *value;
    Plan p;
    p.refuse = [&w](const device::DeviceRecord& r) {
        return device::model_controls(r).flow_selectors ? QString()
                                                        : refusal(w, text_no_flow_selectors, r);
    };
    p.change = [selector, v](AppContext& ctx) {
        return device::cb_vs_Click(ctx, selector, v, false);
    };
    p.result = [selector](const AppContext& ctx) {
        const int got = selector == 0 ? ctx.device.wert_u : ctx.device.wert_o;
        const QString key = selector == 0 ? QStringLiteral("wert_u") : QStringLiteral("wert_o");
        return Lines{{key, QString::number(got)}};
    };
    return p;
}

// The timings of indexes `indexes` the record keeps.
Lines timing_lines(const AppContext& ctx, const QList<int>& indexes) {
    Lines lines;
    for (const int i : indexes) {
        if (timing_kept(ctx.device, i))
            lines.append(
                {timing_key(i), QString::number(ctx.device.zeiten[static_cast<std::size_t>(i)])});
    }
    return lines;
}

std::optional<Plan> plan_timing(const Words& w, const QStringList& a, QString& error) {
    if (a.size() == 1 && a[0] == QLatin1String("reset")) {
        QList<int> indexes;
        for (std::size_t i = 0; i < device::factory_timings.size(); ++i)
            indexes << static_cast<int>(i);
        Plan p;
        p.change = [](AppContext& ctx) { return device::cmd_t_reset_Click(ctx); };
        p.result = [indexes](const AppContext& ctx) { return timing_lines(ctx, indexes); };
        return p;
    }
    const auto index =
        a.size() == 2 ? whole_number(a[0], 0, device::timing_count - 1) : std::nullopt;
    const auto value = a.size() == 2 ? whole_number(a[1], 0, 255) : std::nullopt;
    if (!index || !value) {
        error = cli_text(w, text_usage_timing);
        return std::nullopt;
    }
    const int i = *index, v = *value;
    Plan p;
    p.refuse = [&w, i](const device::DeviceRecord& r) {
        return timing_kept(r, i) ? QString()
                                 : refusal(w, text_timing_unused, r, {QString::number(i)});
    };
    p.change = [i, v](AppContext& ctx) { return device::cb_t_Click(ctx, i, v, false); };
    p.result = [i](const AppContext& ctx) { return timing_lines(ctx, {i}); };
    return p;
}

std::optional<Plan> plan_preset(const QStringList& a, QString& error, AppContext& ctx) {
    const Words& w = ctx.language;
    const auto n = a.size() == 1 ? whole_number(a[0], 1, device::preset_count) : std::nullopt;
    if (!n) {
        error = cli_text(w, text_usage_preset);
        return std::nullopt;
    }
    if (!device::load_preset(ctx.presets, *n, ctx.program_dir)) {
        error = cli_text(w, text_preset_bad, {ctx.program_dir + device::preset_file_name(*n)});
        return std::nullopt;
    }
    QList<int> indexes;
    for (int i = 0; i < device::preset_timing_count; ++i) {
        if (i != device::preset_skipped_index)
            indexes << i;
    }
    const int preset = *n;
    Plan p;
    p.refuse = [&w](const device::DeviceRecord& r) {
        return device::presets_wanted(r) ? QString() : refusal(w, text_no_presets, r);
    };
    p.change = [preset](AppContext& c) { return device::cmdPresetZeiten_Click(c, preset); };
    p.result = [indexes](const AppContext& c) { return timing_lines(c, indexes); };
    return p;
}

std::optional<Plan> plan_alarm(const Words& w, const QStringList& a, QString& error) {
    const auto alarm = a.size() == 1 ? device::acoustic_alarm_named(a[0]) : std::nullopt;
    if (!alarm) {
        error = cli_text(w, text_usage_alarm);
        return std::nullopt;
    }
    const device::AcousticAlarm which = *alarm;
    Plan p;
    p.refuse = [&w, which](const device::DeviceRecord& r) {
        const device::ModelControls m = device::model_controls(r);
        if (!m.acoustic || (which == device::AcousticAlarm::o22 && !m.acoustic_o22))
            return refusal(w, text_no_acoustic, r);
        return QString();
    };
    p.change = [which](AppContext& ctx) { return device::pic_akust_Click(ctx, which); };
    p.result = [](const AppContext& ctx) {
        return Lines{{QStringLiteral("wert_x"), QString::number(ctx.device.wert_x)}};
    };
    return p;
}

int run_set(CommandEnv& env) {
    const QString what = env.args.value(0);
    const QStringList rest = env.args.mid(1);
    const Words& w = env.ctx.language;
    QString error;
    std::optional<Plan> plan;
    if (what == QLatin1String("sn"))
        plan = plan_sn(w, rest, error);
    else if (what == QLatin1String("hours"))
        plan = plan_hours(w, rest, error);
    else if (what == QLatin1String("clock"))
        plan = plan_clock(w, rest, error);
    else if (what == QLatin1String("lp"))
        plan = plan_lp(w, rest, error);
    else if (what == QLatin1String("rest"))
        plan = plan_rest(w, rest, error);
    else if (what == QLatin1String("flow"))
        plan = plan_flow(w, rest, error);
    else if (what == QLatin1String("timing"))
        plan = plan_timing(w, rest, error);
    else if (what == QLatin1String("preset"))
        plan = plan_preset(rest, error, env.ctx);
    else if (what == QLatin1String("alarm"))
        plan = plan_alarm(w, rest, error);
    else
        error = cli_text(w, text_set_what);
    if (!plan) {
        print_error(error);
        return exit_usage;
    }
    return run_setting_plan(env, *plan);
}

} // namespace

CliCommand set_command() {
    CliCommand c;
    c.name = QStringLiteral("set");
    c.help = {
        {9340, 9341}, // set sn TEXT: write the serial number (--yes)
        {9342, 9343}, // set hours HHHHHH:M: write the operating hours (...)
        {9344, 9345}, // set clock: set the device clock to the PC's present time
        {9346, 9347}, // set lp: switch the low-power mode
        {9348, 9349}, // set rest N: write the remaining time (0 to 999)
        {9350, 9351}, // set flow u|o VALUE: write a flow selector (0 to 255)
        {9352, 0},    // set timing INDEX VALUE | set timing reset
        {0, 9353},    // write one valve timing (ticks of 0.04 s) or the factory values
        {0, 9354},    // (reset: --yes)
        {9355, 9356}, // set preset N: write the valve timings of Zeiten_N.txt (N 1 to 3; --yes)
        {9357, 9358}, // set alarm o21|o22|vollo: switch whether that alarm sounds
        {0, 9359},    // each prints the device's value after the read-back as KEY|VALUE;
        {0, 9360},    // --yes answers the question before a change that cannot be undone
    };
    c.run = run_set;
    return c;
}

} // namespace veltrako::cli
