// compliance: reads the usage memory (or a saved compliance file), writes the
// file and/or the chart of one month as a PDF, and prints one line per month
// with use: yyyy-mm|total hours|days used|mean hours per day used, and with a
// prescription |days that reached it|days counted, then the best 30 days:
// 30d|first day|last day|days that reached it|days|met or not met.
// With --delete it erases the memory after the question is answered.

#include "app_context.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "compliance/compliance_file.h"
#include "compliance/compliance_month.h"
#include "compliance/compliance_print.h"
#include "compliance/compliance_readout.h"
#include "console_ui.h"
#include "device/device_clock.h"
#include "device/device_view.h"
#include "pdf_output.h"
#include "prescribed_hours.h"
#include "progress_line.h"

#include <QCommandLineParser>
#include <QRegularExpression>

namespace veltrako::cli {

namespace {

// Outcomes a person reads, in the chosen language.
constexpr int text_not_finished = 8110;
constexpr int text_nothing_erased = 8112;
constexpr int text_erased = 8113;
constexpr int text_not_written = 8114;
constexpr int text_clock_off = 8263;
constexpr int text_no_arguments = 9240; // "%1 takes no arguments"
constexpr int text_bad_month = 9432;    // "--month takes yyyy-mm"
constexpr int text_delete_alone = 9433; // "--delete takes no other compliance option"
constexpr int text_out_not_load = 9434; // "--out saves data read from the device only, not --load"

const QString out_opt = QStringLiteral("out");
const QString pdf_opt = QStringLiteral("pdf");
const QString month_opt = QStringLiteral("month");
const QString load_opt = QStringLiteral("load");
const QString delete_opt = QStringLiteral("delete");

std::optional<compliance::Stamp> parse_month(const QString& text) {
    static const QRegularExpression form(QStringLiteral(R"(^(\d{4})-(\d{2})$)"));
    const QRegularExpressionMatch m = form.match(text);
    if (!m.hasMatch())
        return std::nullopt;
    const int year = m.captured(1).toInt();
    const int month = m.captured(2).toInt();
    if (month < 1 || month > 12 || year < 1900)
        return std::nullopt;
    return compliance::make_stamp(year, month, 1);
}

int read_device(CommandEnv& env) {
    AppContext& ctx = env.ctx;
    const int code = env.session.connect_and_read_record();
    if (code != exit_ok)
        return code;
    compliance::ComplianceMemory& m = ctx.compliance;
    int read = exit_ok;
    {
        const ProgressLine line(m.readout, ctx.language);
        compliance::cmd_complianceread_Click(ctx);
        read = env.session.run_until(
            [&] { return m.state.has_data || m.readout.phase() == progress::Phase::failed; });
    }
    // A readout that gave up has said which record is missing.
    if (!m.failure.isEmpty())
        return exit_device;
    if (read != exit_ok || !m.state.has_data) {
        print_error(env.ctx.language.text(text_not_finished));
        return exit_device;
    }
    return exit_ok;
}

int erase(CommandEnv& env) {
    const int code = env.session.connect_and_read_record();
    if (code != exit_ok)
        return code;
    const int questions_before = env.ctx.protocol.queue_count;
    compliance::cmd_compliancedelete_Click(env.ctx);
    if (env.ui.unanswered_question())
        return exit_usage;
    if (env.ctx.protocol.queue_count == questions_before) {
        print_error(env.ctx.language.text(text_nothing_erased));
        return exit_ok;
    }
    const int drained = env.session.drain_queue();
    if (drained == exit_ok)
        print_error(env.ctx.language.text(text_erased));
    return drained;
}

void print_months(const compliance::ComplianceMemory& m) {
    for (const compliance::Stamp month : compliance::months_with_use(m.records, m.state.last_index))
        print_line(
            compliance::month_usage_line(m.records, m.state, month, m.prescribed_hours, QLocale()));
    if (const auto window =
            compliance::best_window(m.records, m.state, m.prescribed_hours, m.adherence_share))
        print_line(compliance::adherence_line(*window));
}

int run_compliance(CommandEnv& env) {
    const QCommandLineParser& p = env.parser;
    if (!env.args.isEmpty())
        return usage_error(env, text_no_arguments, {QStringLiteral("compliance")});
    std::optional<compliance::Stamp> month;
    if (p.isSet(month_opt)) {
        month = parse_month(p.value(month_opt));
        if (!month)
            return usage_error(env, text_bad_month);
    }
    const bool loading = p.isSet(load_opt);
    if (p.isSet(delete_opt) &&
        (loading || p.isSet(out_opt) || p.isSet(pdf_opt) || p.isSet(month_opt)))
        return usage_error(env, text_delete_alone);
    if (loading && p.isSet(out_opt))
        return usage_error(env, text_out_not_load);

    if (!take_prescribed_hours(env))
        return exit_usage;

    AppContext& ctx = env.ctx;
    compliance::install_compliance(ctx);
    if (p.isSet(delete_opt))
        return erase(env);
    if (loading) {
        if (!compliance::load_compliance_file(ctx, p.value(load_opt)))
            return exit_device;
    } else if (const int code = read_device(env); code != exit_ok) {
        return code;
    } else if (const QString note = device::clock_offset_note(ctx); !note.isEmpty()) {
        // The running period ends by the device's clock: say when that is off.
        print_error(note + QLatin1Char(' ') + ctx.language.text(text_clock_off));
    }

    compliance::ComplianceMemory& m = ctx.compliance;
    if (p.isSet(out_opt) && !compliance::write_compliance_file(p.value(out_opt), m, QLocale())) {
        print_error(ctx.language.text(text_not_written) + QLatin1Char(' ') + p.value(out_opt));
        return exit_device;
    }
    if (p.isSet(pdf_opt)) {
        m.state.shown_month = month.value_or(0);
        const compliance::Stamp now = compliance::to_stamp(ctx.clock.now());
        QString error;
        const bool written = paint::print_to_pdf(
            p.value(pdf_opt),
            [&](print::DrawingSurface& surface) {
                compliance::compliance_print_page(
                    surface, m.state, m.records, ctx.language, QLocale(), now,
                    {QString(), now, m.prescribed_hours, m.adherence_share});
            },
            &error);
        if (!written) {
            print_error(error);
            return exit_device;
        }
    }
    print_months(m);
    return exit_ok;
}

} // namespace

CliCommand compliance_command() {
    CliCommand c;
    c.name = QStringLiteral("compliance");
    c.help = {
        {9420, 0}, // compliance [--out FILE] [--pdf FILE] [--month yyyy-mm] [--prescribed-hours H]
        {0, 9421}, // read the usage memory; one line per month: yyyy-mm|hours|...
        {0, 9441}, // with H then 30d|first day|last day|days >= H h|days|met or not met
        {9422, 0}, // compliance --load FILE [--pdf FILE] [--month yyyy-mm]
        {0, 9423}, // the same from a saved compliance file, without a device
        {9424, 9425}, // compliance --delete: erase the usage memory (answer with --yes)
    };
    c.options = {
        {out_opt, 9204, 9426},   // FILE: compliance: write the compliance file
        {pdf_opt, 9204, 9427},   // FILE: compliance: print the month's chart to a PDF file
        {month_opt, 9237, 9428}, // yyyy-mm: compliance: the month of the chart
        {load_opt, 9204, 9429},  // FILE: compliance: read a saved compliance file instead
        {delete_opt, 0, 9430},   // compliance: erase the usage memory
        prescribed_hours_option(), adherence_share_option(),
    };
    // Only a chart needs a drawing platform.
    c.needs_gui = [](const QCommandLineParser& parser) {
        return parser.isSet(QStringLiteral("pdf"));
    };
    c.run = run_compliance;
    return c;
}

} // namespace veltrako::cli
