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

QString family_text(const device::DeviceRecord& r) {
    return QStringLiteral(" (device family %1)").arg(r.family_code);
}

std::optional<Plan> plan_sn(const QStringList& a, QString& error) {
    if (a.size() != 1) {
        error = QStringLiteral("usage: set sn TEXT");
        return std::nullopt;
    }
    const QString text = a[0];
    if (!device::serial_text_storable(text)) {
        error = QStringLiteral("the serial number holds characters the device cannot store");
        return std::nullopt;
    }
    Plan p;
    p.change = [text](AppContext& ctx) { return device::cmd_setsn_Click(ctx, text); };
    p.result = [](const AppContext& ctx) { return Lines{{QStringLiteral("SN"), ctx.device.SN}}; };
    return p;
}

std::optional<Plan> plan_hours(const QStringList& a, QString& error) {
    const auto entry = a.size() == 1 ? device::parse_hours_entry(a[0]) : std::nullopt;
    if (!entry) {
        error = QStringLiteral("usage: set hours HHHHHH:M (six hour digits, a colon and the tens "
                               "of minutes 0 to 5, e.g. 001234:5, or as shown, 001234:50)");
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

std::optional<Plan> plan_clock(const QStringList& a, QString& error) {
    if (!a.isEmpty()) {
        error = QStringLiteral("usage: set clock (takes the PC's present time)");
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

std::optional<Plan> plan_lp(const QStringList& a, QString& error) {
    if (!a.isEmpty()) {
        error = QStringLiteral("usage: set lp (switches the low-power mode)");
        return std::nullopt;
    }
    Plan p;
    p.refuse = [](const device::DeviceRecord& r) {
        return device::toggled_low_power(r)
                   ? QString()
                   : QStringLiteral("the board %1 has no low-power mode").arg(r.LP.trimmed());
    };
    p.change = [](AppContext& ctx) { return device::cmd_togglelp_Click(ctx); };
    p.result = [](const AppContext& ctx) { return Lines{{QStringLiteral("LP"), ctx.device.LP}}; };
    return p;
}

std::optional<Plan> plan_rest(const QStringList& a, QString& error) {
    const auto value = a.size() == 1 ? device::parse_remaining_entry(a[0]) : std::nullopt;
    if (!value || a[0].trimmed() != a[0]) {
        error = QStringLiteral("usage: set rest N (a whole number from 0 to %1)")
                    .arg(device::remaining_max);
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

std::optional<Plan> plan_flow(const QStringList& a, QString& error) {
    const int selector = a.value(0) == QLatin1String("u")   ? 0
                         : a.value(0) == QLatin1String("o") ? 1
                                                            : -1;
    const auto value = a.size() == 2 ? whole_number(a[1], 0, 255) : std::nullopt;
    if (selector < 0 || !value) {
        error = QStringLiteral("usage: set flow u|o VALUE (VALUE 0 to 255)");
        return std::nullopt;
    }
    const int v = *value;
    Plan p;
    p.refuse = [](const device::DeviceRecord& r) {
        return device::model_controls(r).flow_selectors
                   ? QString()
                   : QStringLiteral("this device has no flow selectors") + family_text(r);
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

std::optional<Plan> plan_timing(const QStringList& a, QString& error) {
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
        error = QStringLiteral("usage: set timing INDEX VALUE (INDEX 0 to 13, VALUE 0 to 255 in "
                               "ticks of 0.04 s) or set timing reset");
        return std::nullopt;
    }
    const int i = *index, v = *value;
    Plan p;
    p.refuse = [i](const device::DeviceRecord& r) {
        return timing_kept(r, i)
                   ? QString()
                   : QStringLiteral("timing %1 is not used by this device").arg(i) + family_text(r);
    };
    p.change = [i, v](AppContext& ctx) { return device::cb_t_Click(ctx, i, v, false); };
    p.result = [i](const AppContext& ctx) { return timing_lines(ctx, {i}); };
    return p;
}

std::optional<Plan> plan_preset(const QStringList& a, QString& error, AppContext& ctx) {
    const auto n = a.size() == 1 ? whole_number(a[0], 1, device::preset_count) : std::nullopt;
    if (!n) {
        error = QStringLiteral("usage: set preset N (N 1 to 3)");
        return std::nullopt;
    }
    if (!device::load_preset(ctx.presets, *n, ctx.program_dir)) {
        error = QStringLiteral("%1 is missing or holds a bad value")
                    .arg(ctx.program_dir + device::preset_file_name(*n));
        return std::nullopt;
    }
    QList<int> indexes;
    for (int i = 0; i < device::preset_timing_count; ++i) {
        if (i != device::preset_skipped_index)
            indexes << i;
    }
    const int preset = *n;
    Plan p;
    p.refuse = [](const device::DeviceRecord& r) {
        return device::presets_wanted(r)
                   ? QString()
                   : QStringLiteral("presets are offered only for models with a rinse valve") +
                         family_text(r);
    };
    p.change = [preset](AppContext& c) { return device::cmdPresetZeiten_Click(c, preset); };
    p.result = [indexes](const AppContext& c) { return timing_lines(c, indexes); };
    return p;
}

std::optional<Plan> plan_alarm(const QStringList& a, QString& error) {
    const auto alarm = a.size() == 1 ? device::acoustic_alarm_named(a[0]) : std::nullopt;
    if (!alarm) {
        error = QStringLiteral("usage: set alarm o21|o22|vollo (switches whether it sounds)");
        return std::nullopt;
    }
    const device::AcousticAlarm which = *alarm;
    Plan p;
    p.refuse = [which](const device::DeviceRecord& r) {
        const device::ModelControls m = device::model_controls(r);
        if (!m.acoustic || (which == device::AcousticAlarm::o22 && !m.acoustic_o22))
            return QStringLiteral("this device has no acoustic switch for that alarm") +
                   family_text(r);
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
    QString error;
    std::optional<Plan> plan;
    if (what == QLatin1String("sn"))
        plan = plan_sn(rest, error);
    else if (what == QLatin1String("hours"))
        plan = plan_hours(rest, error);
    else if (what == QLatin1String("clock"))
        plan = plan_clock(rest, error);
    else if (what == QLatin1String("lp"))
        plan = plan_lp(rest, error);
    else if (what == QLatin1String("rest"))
        plan = plan_rest(rest, error);
    else if (what == QLatin1String("flow"))
        plan = plan_flow(rest, error);
    else if (what == QLatin1String("timing"))
        plan = plan_timing(rest, error);
    else if (what == QLatin1String("preset"))
        plan = plan_preset(rest, error, env.ctx);
    else if (what == QLatin1String("alarm"))
        plan = plan_alarm(rest, error);
    else
        error = QStringLiteral("set what? sn, hours, clock, lp, rest, flow, timing, preset, alarm");
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
    c.help = QStringLiteral(
        "set sn TEXT          write the serial number (--yes)\n"
        "set hours HHHHHH:M   write the operating hours (tens of minutes 0 to 5; --yes)\n"
        "set clock            set the device clock to the PC's present time\n"
        "set lp               switch the low-power mode\n"
        "set rest N           write the remaining time (0 to 999)\n"
        "set flow u|o VALUE   write a flow selector (0 to 255)\n"
        "set timing INDEX VALUE | set timing reset\n"
        "                     write one valve timing (ticks of 0.04 s) or the factory values\n"
        "                     (reset: --yes)\n"
        "set preset N         write the valve timings of Zeiten_N.txt (N 1 to 3; --yes)\n"
        "set alarm o21|o22|vollo  switch whether that alarm sounds\n"
        "                     each prints the device's value after the read-back as KEY|VALUE;\n"
        "                     --yes answers the question before a change that cannot be undone");
    c.run = run_set;
    return c;
}

} // namespace veltrako::cli
