// visit: the whole service visit in one go. Reads the device's identity, its
// status memory and its usage memory, and writes into a new folder DIR/<SN>_
// <yyyy-mm-dd> the status table, the compliance file, a compliance PDF of the
// last months, the inspection report (fields as KEY=VALUE, as for report
// --out) with its PDF, and Besuch.txt. Prints the folder and one line per file
// written; exit 0 only when every file was written.

#include "app_context.h"
#include "cli_session.h"
#include "cli_texts.h"
#include "commands.h"
#include "compliance/compliance_readout.h"
#include "console_ui.h"
#include "pdf_output.h"
#include "prescribed_hours.h"
#include "progress_line.h"
#include "report/report_record.h"
#include "report_fields.h"
#include "visit/visit.h"

#include <QCommandLineParser>
#include <QDir>

#include <optional>

namespace veltrako::cli {

namespace {

const QString out_opt = QStringLiteral("out");
const QString months_opt = QStringLiteral("months");

constexpr int text_needs_out = 9495;  // "visit needs --out DIR"
constexpr int text_bad_months = 9496; // "--months takes a whole number from 1 to 120"

int run_visit(CommandEnv& env) {
    const QCommandLineParser& p = env.parser;
    const QString dir = p.value(out_opt);
    if (dir.isEmpty())
        return usage_error(env, text_needs_out);
    int months = 12;
    if (p.isSet(months_opt)) {
        bool ok = false;
        months = p.value(months_opt).toInt(&ok);
        if (!ok || months < 1 || months > 120)
            return usage_error(env, text_bad_months);
    }
    if (!take_prescribed_hours(env))
        return exit_usage;
    report::Limits limits;
    const auto fields = checked_report_input(env, limits);
    if (!fields)
        return exit_usage;

    AppContext& ctx = env.ctx;
    compliance::install_compliance(ctx);
    if (const int code = env.session.connect_and_read_record(); code != exit_ok)
        return code;

    visit::VisitRequest request;
    request.base_dir = dir;
    request.months = months;
    request.report.limits = limits;
    for (const auto& [key, value] : *fields)
        request.report.set_value(key, value);
    request.write_pdf = [](const QString& path, int pages, const visit::PageDrawer& draw,
                           QString* why) {
        return paint::print_pages_to_pdf(path, pages, draw, why);
    };
    visit::Visit v(ctx, std::move(request));
    {
        const ProgressLine status_line(ctx.status.readout, ctx.language);
        const ProgressLine usage_line(ctx.compliance.readout, ctx.language);
        v.start();
        if (v.running())
            env.session.run_until([&] {
                v.poll();
                return !v.running();
            });
        // The link went or the run was interrupted before the visit noticed.
        if (v.running()) {
            v.poll();
            v.cancel();
        }
    }
    if (!v.folder().isEmpty())
        print_line(QDir::toNativeSeparators(v.folder()));
    for (const QString& path : v.written())
        print_line(QDir::toNativeSeparators(path));
    if (v.outcome() != visit::Outcome::written) {
        print_error(v.result_text());
        return exit_device;
    }
    return exit_ok;
}

} // namespace

CliCommand visit_command() {
    CliCommand c;
    c.name = QStringLiteral("visit");
    c.help = {
        {9490, 0}, // visit --out DIR [--months N] [--prescribed-hours H] [KEY=VALUE ...]
        {0, 9491}, // the service visit: read status and usage memory, write them,
        {0, 9492}, // their PDFs, the inspection report and Besuch.txt into
        {0, 9493}, // DIR/<SN>_<yyyy-mm-dd>
    };
    c.options = {
        // --out is declared by status, which --help names first.
        {months_opt, 9208, 9494}, // N: visit: months in the compliance PDF (default 12)
        prescribed_hours_option(),
        adherence_share_option(),
    };
    // The PDFs need a drawing platform.
    c.needs_gui = [](const QCommandLineParser&) { return true; };
    c.run = run_visit;
    return c;
}

} // namespace veltrako::cli
