// report: the inspection report from the command line. With --out it reads
// the device, fills the report as the "Protokoll" page would (snapshot,
// today's date and time, the fields given as KEY=VALUE, measured values
// judged against the limits of veltrako2.ini) and writes the report file,
// then prints each judged value and the result; with --print it draws a
// saved report into a PDF file, without a device.

#include "app_context.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "config/text_file.h"
#include "console_ui.h"
#include "pdf_output.h"
#include "report/report_file.h"
#include "report/report_measurements.h"
#include "report/report_print.h"
#include "report_fields.h"

#include <QCommandLineParser>

namespace veltrako::cli {

namespace {

// An outcome a person reads, in the chosen language.
constexpr int text_not_written = 8115;
constexpr int text_print_no_fields = 9467; // "report --print takes no KEY=VALUE fields"
constexpr int text_print_needs_pdf = 9468; // "report --print FILE needs --pdf OUT"
constexpr int text_unreadable = 9469;      // "cannot read the report file %1"
constexpr int text_out_or_print =
    9470; // "report needs either --out FILE or --print FILE --pdf OUT"

const QString out_name = QStringLiteral("out");
const QString print_name = QStringLiteral("print");
const QString pdf_name = QStringLiteral("pdf");

int print_saved_report(CommandEnv& env) {
    if (!env.args.isEmpty())
        return usage_error(env, text_print_no_fields);
    if (!env.parser.isSet(pdf_name))
        return usage_error(env, text_print_needs_pdf);
    report::Limits limits;
    if (!take_report_limits(env, limits))
        return exit_usage;
    report::ReportRecord record;
    const QString file = env.parser.value(print_name);
    const auto lines = config::read_text_lines(file);
    if (!lines || !report::load_report_file(record, file, limits))
        return usage_error(env, text_unreadable, {file});
    QString error;
    const bool written = paint::print_to_pdf(
        env.parser.value(pdf_name),
        [&](print::DrawingSurface& surface) {
            report::print_report(surface, record, env.ctx.language, QLocale());
        },
        &error);
    if (!written) {
        print_error(error);
        return exit_device;
    }
    report::hand_on_report(env.ctx, record.report_device.SN, *lines, env.parser.value(pdf_name),
                           true);
    return exit_ok;
}

int write_report(CommandEnv& env) {
    report::Limits limits;
    const auto fields = checked_report_input(env, limits);
    if (!fields)
        return exit_usage;

    const int code = env.session.connect_and_read_record();
    if (code != exit_ok)
        return code;
    report::ReportRecord& record = env.ctx.report;
    report::take_snapshot(record, env.ctx.device, true);
    report::set_report_defaults(record, env.ctx.clock.now());
    record.limits = limits;
    for (const auto& [key, value] : *fields)
        record.set_value(key, value);
    const QString out = env.parser.value(out_name);
    if (!config::write_text_lines(out, report::report_file_lines(record, QLocale()))) {
        print_error(env.ctx.language.text(text_not_written) + QLatin1Char(' ') + out);
        return exit_device;
    }
    report::hand_on_report(env.ctx, record, out, false);
    // What was measured, judged: one line per judged value and the result.
    // Whatever the result, the report was written.
    const report::Judgement judgement = report::judge_report(record, record.limits);
    for (const QString& line : report::judgement_lines(judgement, QLocale()))
        print_line(line);
    if (const QString note = report::o2_sensor_note(judgement, env.ctx.language, QLocale());
        !note.isEmpty())
        print_error(note);
    return exit_ok;
}

int run_report(CommandEnv& env) {
    const bool out = env.parser.isSet(out_name);
    const bool print = env.parser.isSet(print_name);
    if (out == print)
        return usage_error(env, text_out_or_print);
    return print ? print_saved_report(env) : write_report(env);
}

} // namespace

CliCommand report_command() {
    CliCommand c;
    c.name = QStringLiteral("report");
    c.help = {
        {9460, 9461}, // report --out FILE [KEY=VALUE ...]: read the device, write a report file
        {0, 9703},    // then one line KEY|value|limit|pass or fail per judged value
        {0, 9704},    // and ERGEBNIS|pass, fail or incomplete (limits: GRENZE_... in veltrako2.ini)
        {9462, 9463}, // report --print FILE --pdf OUT: draw a saved report into a PDF file
    };
    c.options = {
        {out_name, 9204, 9464},   // FILE: write the result to FILE
        {print_name, 9204, 9465}, // FILE: the saved report to print
        {pdf_name, 9239, 9466},   // OUT: draw the printout into the PDF file OUT
    };
    // Only the printout needs a drawing platform.
    c.needs_gui = [](const QCommandLineParser& parser) { return parser.isSet(pdf_name); };
    c.run = run_report;
    return c;
}

} // namespace veltrako::cli
