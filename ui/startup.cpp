#include "startup.h"

#include "app_context.h"
#include "apply_language.h"
#include "config/config.h"
#include "config/config_location.h"
#include "config/language.h"
#include "frm_main.h"
#include "protocol/poll_cycle.h"
#include "report/report_measurements.h"
#include "report_page.h"

#include <QGuiApplication>
#include <QScreen>

namespace veltrako::ui {

namespace {

// The initialisation routine, in its order: program folder, configuration,
// timer interval, language, clock origin of the log, general reset.
void initialise(AppContext& ctx, const StartupOptions& options) {
    ctx.program_dir = config::program_folder(options.application_dir);
    // Beside the program, or with the user when the program's folder is
    // read-only (an installed copy).
    const config::ConfigLocation location =
        config::locate_config(ctx.program_dir, options.user_folders);
    ctx.config_path = location.config_path;
    ctx.user_dir = location.user_dir;
    config::set_config_defaults(ctx.config, ctx.user_dir);
    config::load_config(ctx.config, ctx.config_path, ctx.user_dir, ctx.ui);
    ctx.archive_path = config::archive_path(location, ctx.config.ARCHIV, options.archive_option);
    ctx.timer1.set_interval(ctx.config.TIMERINTERVAL);
    ctx.language.words = config::language_locale(options.language_code);
    config::load_language(ctx.language,
                          ctx.program_dir + QStringLiteral("lang") + options.language_code +
                              QStringLiteral(".txt"),
                          ctx.ui);
    // A prescription that is no number of hours is said once and left out:
    // no summary is measured against a value nobody meant.
    if (const std::optional<double> hours = config::prescribed_hours(ctx.config.VERORDNUNG))
        ctx.compliance.prescribed_hours = *hours;
    else
        show_msg(ctx, ctx.language.text(8401) + QLatin1Char(' ') + ctx.config.VERORDNUNG);
    // A share that is no percentage is said once; the default stands for it.
    if (const std::optional<double> share = config::adherence_share(ctx.config.ADHERENZ_ANTEIL))
        ctx.compliance.adherence_share = *share;
    else
        show_msg(ctx, ctx.language.text(8502) + QLatin1Char(' ') + ctx.config.ADHERENZ_ANTEIL);
    // So is a limit of the measured values that is no number; its default
    // holds, and the report names the limit it judged by.
    if (const auto problems = report::limit_problems(ctx.config); !problems.isEmpty()) {
        QStringList named;
        for (const auto& [key, text] : problems)
            named << key + QStringLiteral(" = ") + text + QStringLiteral(" \u2192 ") +
                         report::measurement_text(report::limit_value(report::Limits{}, key),
                                                  QLocale());
        show_msg(ctx,
                 ctx.language.text(8913) + QLatin1Char(' ') + named.join(QStringLiteral(", ")));
    }
    ctx.comm_log.log_start = seconds_since_midnight(ctx.clock.now());
    protocol::reset_link_state(ctx);
}

void size_form(FrmMain& form) {
    const QScreen* screen = QGuiApplication::primaryScreen();
    form.resize(form_size(screen ? screen->availableSize() : QSize()));
}

} // namespace

QSize form_size(const QSize& available) {
    // Room for the diagram to grow where the screen has it; the pages fit
    // the window chosen for a 1024 x 768 screen without scrolling.
    const QSize wanted(1320, 900);
    return available.isValid() ? wanted.boundedTo(available * 0.95) : wanted;
}

void form_load(FrmMain& form, AppContext& ctx, const StartupOptions& options) {
    initialise(ctx, options);
    // The report's device data follows the (now empty) device record.
    refresh_report(form, ctx);
    form.set_language_applier([&ctx](QWidget& f) { apply_language(f, ctx.language); });
    apply_language(form, ctx.language);
    size_form(form);
    form.select_page(Page::geraet);
    // A report that was being typed when the program last ended without
    // saving it (a crash, a power cut) comes back if the technician wants it.
    restore_report_draft(form, ctx);
    protocol::connect_routine(ctx);
}

} // namespace veltrako::ui
