#include "visit/visit.h"

#include "app_context.h"
#include "compliance/compliance_file.h"
#include "compliance/compliance_month.h"
#include "compliance/compliance_print.h"
#include "compliance/compliance_readout.h"
#include "config/file_names.h"
#include "config/key_value_lines.h"
#include "config/text_file.h"
#include "device/parameter_values.h"
#include "link/connection_state.h"
#include "report/report_file.h"
#include "report/report_print.h"
#include "status/status_readout.h"
#include "status/status_table.h"

#include <QDir>
#include <QFileInfo>
#include <QLocale>

#include <algorithm>

namespace veltrako::visit {

namespace {

// Language texts of the visit.
constexpr int text_step_first = 8410; // the steps' names, in Step order
constexpr int text_failed = 8423;     // "... failed:"
constexpr int text_missing = 8424;    // "Not written:"
constexpr int text_no_answer = 8425;
constexpr int text_cancelled = 8426;
constexpr int text_no_device = 8427;
constexpr int text_not_written = 8428;
constexpr int text_folder_failed = 8429;
constexpr int text_done = 8422;
constexpr int text_usage_not_read = 8430;
constexpr int text_kept_in = 8431;
constexpr int text_step_silent = 8530; // "No usable answer from the device for %1 s."
constexpr int text_not_renamed = 8531; // "The folder could not be renamed:"

QString native(const QString& path) {
    return QDir::toNativeSeparators(path);
}

} // namespace

QString step_text(Step step, const config::LanguageTables& language) {
    return language.text(text_step_first + static_cast<int>(step));
}

QString make_visit_folder(const QString& base_dir, const QString& serial, const QDate& day) {
    QDir base(base_dir);
    if (!base.exists() && !QDir().mkpath(base_dir))
        return {};
    const QString name = config::proposed_file_name(
        config::file_name_part(serial).isEmpty() ? QStringLiteral("Besuch")
                                                 : config::file_name_part(serial),
        {day.toString(QStringLiteral("yyyy-MM-dd"))}, QString());
    const QString suffix = QLatin1String(incomplete_suffix);
    // A second visit of the day gets a folder of its own, whether the first
    // was completed or not: nothing of the first is ever replaced.
    for (int n = 1; n < 1000; ++n) {
        const QString candidate = n == 1 ? name : name + QStringLiteral("_%1").arg(n);
        if (base.exists(candidate) || base.exists(candidate + suffix))
            continue;
        return base.mkdir(candidate + suffix) ? base.filePath(candidate + suffix) : QString();
    }
    return {};
}

std::vector<qint64> pdf_months(const std::vector<qint64>& months_with_use, int months) {
    std::vector<qint64> chosen;
    if (months_with_use.empty() || months <= 0)
        return chosen;
    const compliance::Stamp first = compliance::add_months(months_with_use.back(), -(months - 1));
    for (auto it = months_with_use.rbegin(); it != months_with_use.rend() && *it >= first; ++it)
        chosen.push_back(*it);
    return chosen;
}

Visit::Visit(AppContext& ctx, VisitRequest request) : ctx_(ctx), request_(std::move(request)) {}

void Visit::enter(Step step) {
    step_ = step;
    step_deadline_.disarm();
    if (changed)
        changed();
}

void Visit::fail(const QString& why) {
    reason_ = why;
    outcome_ = Outcome::failed;
    // A readout of the visit that is still running stops with it.
    compliance::compliance_cancel(ctx_);
    ctx_.status.readout.cancel(ctx_.clock.elapsed_ms());
    ctx_.ui.set_busy(false);
    hand_on();
    if (changed)
        changed();
}

void Visit::hand_on() {
    if (!ctx_.hooks.visit_done || handed_on_)
        return;
    handed_on_ = true;
    jobs::VisitDone done;
    done.sn = ctx_.device.SN.trimmed();
    done.at = started_;
    done.folder = folder_;
    done.result = outcome_ == Outcome::written  ? jobs::VisitResult::written
                  : outcome_ == Outcome::failed ? jobs::VisitResult::failed
                                                : jobs::VisitResult::cancelled;
    done.reason = reason_;
    const QLocale locale;
    for (const QString& key : device::parameter_keys())
        if (!key.isEmpty())
            done.snapshot << config::key_value_line(
                key, device::parameter_value(ctx_.device, key, locale));
    ctx_.hooks.visit_done(done);
}

void Visit::start() {
    started_ = ctx_.clock.now();
    files_.reset();
    // What the readouts and the report hand on from here belongs to this visit.
    if (ctx_.hooks.visit_begun)
        ctx_.hooks.visit_begun();
    if (!link::device_controls_enabled(ctx_)) {
        fail(ctx_.language.text(text_no_device));
        return;
    }
    // The report's snapshot is the device as this visit found it; the date
    // and time are the visit's unless the form has its own.
    report::ReportRecord& r = request_.report;
    report::take_snapshot(r, ctx_.device, false);
    if (r.value(QStringLiteral("t_Datum")).trimmed().isEmpty())
        report::set_report_defaults(r, started_);
    planned_ = {status::status_file_base(ctx_.device, started_) + QStringLiteral(".txt"),
                compliance::default_file_name(ctx_),
                config::proposed_file_name(QStringLiteral("Compliance"), {ctx_.device.SN},
                                           QStringLiteral(".pdf")),
                report::default_report_name(r, started_) + QStringLiteral(".txt"),
                report::report_pdf_name(r, started_),
                QStringLiteral("Besuch.txt")};
    enter(Step::status_read);
    status::cmd_sysstatread_Click(ctx_);
}

bool Visit::step_answered() {
    const progress::Standing now = standing();
    const qint64 now_ms = ctx_.clock.elapsed_ms();
    // Anything the step's readout could use moves its standing on.
    if (!step_deadline_.armed() || now.phase != seen_.phase || now.done != seen_.done ||
        now.total != seen_.total) {
        seen_ = now;
        step_deadline_.arm(now_ms, step_deadline_ms);
        return true;
    }
    if (!step_deadline_.expired(now_ms))
        return true;
    fail(ctx_.language.text(text_step_silent).arg(step_deadline_ms / 1000));
    return false;
}

void Visit::poll() {
    if (!running())
        return;
    const bool reading = step_ == Step::status_read || step_ == Step::usage_read;
    if (reading && !link::device_controls_enabled(ctx_)) {
        fail(ctx_.language.text(text_no_answer));
        return;
    }
    // Deliberately no step waits for ever: a readout whose answers stop
    // coming (a refused answer, a request that never went out) would
    // otherwise hold the visit on one step while the device keeps answering
    // everything else.
    if (reading && !step_answered())
        return;
    if (step_ == Step::status_read && ctx_.status.readout.phase() == progress::Phase::finished) {
        enter(Step::folder);
        folder_ = make_visit_folder(request_.base_dir, ctx_.device.SN, started_.date());
        if (folder_.isEmpty()) {
            fail(ctx_.language.text(text_folder_failed) + QLatin1Char(' ') +
                 native(request_.base_dir));
            return;
        }
        // A fresh table: its heading shows the time of saving, as the save
        // button's does.
        if (!write_step(Step::status_file, planned_[0], [&](const QString& path) {
                return status::write_status_table(path, status::format_status(ctx_));
            }))
            return;
        enter(Step::usage_read);
        // Its failure, naming the record missing, becomes the visit's reason.
        compliance::start_readout(ctx_, false);
        return;
    }
    if (step_ == Step::usage_read) {
        const compliance::ComplianceMemory& m = ctx_.compliance;
        const progress::Phase phase = m.readout.phase();
        if (phase == progress::Phase::finished && m.state.has_data)
            write_files();
        else if (phase != progress::Phase::running)
            fail(m.failure.isEmpty() ? ctx_.language.text(text_usage_not_read) : m.failure);
    }
}

void Visit::cancel() {
    if (!running())
        return;
    outcome_ = Outcome::cancelled;
    reason_ = ctx_.language.text(text_cancelled);
    compliance::compliance_cancel(ctx_);
    ctx_.ui.set_busy(false);
    hand_on();
    if (changed)
        changed();
}

bool Visit::write_step(Step step, const QString& name,
                       const std::function<bool(const QString&)>& write) {
    enter(step);
    const QString path = QDir(folder_).filePath(name);
    if (!write(path)) {
        fail(ctx_.language.text(text_not_written) + QLatin1Char(' ') + native(path));
        return false;
    }
    written_ << path;
    return true;
}

void Visit::write_files() {
    const compliance::ComplianceMemory& m = ctx_.compliance;
    const QLocale locale;
    const compliance::Stamp now = compliance::to_stamp(ctx_.clock.now());
    const report::ReportRecord& r = request_.report;
    const compliance::PrintedFor printed_for{r.value(QStringLiteral("t_Patient")), now,
                                             m.prescribed_hours, m.adherence_share};
    files_.start(ctx_.clock.elapsed_ms(), 5);
    const auto advance = [&] {
        files_.advance(static_cast<int>(written_.size()) - 1, ctx_.clock.elapsed_ms());
    };

    if (!write_step(Step::compliance_file, planned_[1], [&](const QString& path) {
            return compliance::write_compliance_file(path, m, locale);
        }))
        return;
    advance();
    std::vector<qint64> months =
        pdf_months(compliance::months_with_use(m.records, m.state.last_index), request_.months);
    if (months.empty())
        months.push_back(0); // no use at all: the page the chart shows by itself
    QString error;
    const auto pdf = [&](int pages, const PageDrawer& draw) {
        return [&, pages, draw](const QString& path) {
            return request_.write_pdf && request_.write_pdf(path, pages, draw, &error);
        };
    };
    if (!write_step(
            Step::compliance_pdf, planned_[2],
            pdf(static_cast<int>(months.size()), [&](print::DrawingSurface& surface, int page) {
                compliance::ComplianceState state = m.state;
                state.shown_month = months[static_cast<std::size_t>(page)];
                compliance::compliance_print_page(surface, state, m.records, ctx_.language, locale,
                                                  now, printed_for);
            })))
        return;
    advance();
    if (!write_step(Step::report_file, planned_[3], [&](const QString& path) {
            if (!config::write_text_lines(path, report::report_file_lines(r, locale)))
                return false;
            report::hand_on_report(ctx_, r, path, false);
            return true;
        }))
        return;
    advance();
    if (!write_step(Step::report_pdf, planned_[4], pdf(1, [&](print::DrawingSurface& surface, int) {
                        report::print_report(surface, r, ctx_.language, locale);
                    })))
        return;
    advance();
    if (!write_step(Step::visit_file, planned_[5], [&](const QString& path) {
            return config::write_text_lines(path, visit_lines());
        }))
        return;
    if (!mark_complete()) {
        fail(ctx_.language.text(text_not_renamed) + QLatin1Char(' ') + native(folder_));
        return;
    }
    files_.finish(ctx_.clock.elapsed_ms());
    outcome_ = Outcome::written;
    hand_on();
    enter(Step::done);
}

bool Visit::mark_complete() {
    const QString suffix = QLatin1String(incomplete_suffix);
    if (!folder_.endsWith(suffix))
        return false;
    const QString complete = folder_.left(folder_.size() - suffix.size());
    if (QFileInfo::exists(complete) || !QDir().rename(folder_, complete))
        return false;
    for (QString& path : written_)
        path = QDir(complete).filePath(QFileInfo(path).fileName());
    folder_ = complete;
    return true;
}

QStringList Visit::visit_lines() const {
    const device::DeviceRecord& d = ctx_.device;
    const compliance::ComplianceMemory& m = ctx_.compliance;
    const QLocale locale;
    QStringList lines{config::key_value_line(QStringLiteral("SN"), d.SN.trimmed()),
                      config::key_value_line(QStringLiteral("LP"), d.LP.trimmed()),
                      config::key_value_line(QStringLiteral("SW"), d.SW.trimmed()),
                      config::key_value_line(QStringLiteral("BSTD"), d.BSTD.trimmed()),
                      config::key_value_line(QStringLiteral("DATUM"),
                                             started_.toString(QStringLiteral("dd.MM.yyyy"))),
                      config::key_value_line(QStringLiteral("UHRZEIT"),
                                             started_.toString(QStringLiteral("HH:mm:ss")))};
    if (m.prescribed_hours > 0)
        lines << config::key_value_line(
            QStringLiteral("VERORDNUNG"),
            locale.toString(m.prescribed_hours, 'g', QLocale::FloatingPointShortest));
    for (const compliance::Stamp month :
         compliance::months_with_use(m.records, m.state.last_index)) {
        QString line =
            compliance::month_usage_line(m.records, m.state, month, m.prescribed_hours, locale);
        // Without a prescription a month line has five fields, the last one
        // "-"; with one, six: the days that reached it and the days counted.
        if (m.prescribed_hours <= 0)
            line += QStringLiteral("|-");
        lines << line;
    }
    if (const auto window =
            compliance::best_window(m.records, m.state, m.prescribed_hours, m.adherence_share))
        lines << compliance::adherence_line(*window);
    return lines;
}

progress::Standing Visit::standing() const {
    switch (step_) {
    case Step::status_read:
        return ctx_.status.readout.standing();
    case Step::usage_read:
        return ctx_.compliance.readout.standing();
    default:
        return files_.standing();
    }
}

QStringList Visit::missing() const {
    QStringList names;
    for (const QString& name : planned_)
        if (std::none_of(written_.begin(), written_.end(),
                         [&](const QString& path) { return QFileInfo(path).fileName() == name; }))
            names << name;
    return names;
}

QString Visit::result_text() const {
    QString text;
    if (outcome_ == Outcome::written) {
        text = ctx_.language.text(text_done) + QLatin1Char(' ') + native(folder_);
    } else {
        text = ctx_.language.text(text_failed) + QLatin1Char(' ') +
               step_text(step_, ctx_.language) + QStringLiteral(": ") + reason_;
        if (!planned_.isEmpty())
            text += QStringLiteral("\r\n") + ctx_.language.text(text_missing) + QLatin1Char(' ') +
                    missing().join(QStringLiteral(", "));
        if (!folder_.isEmpty())
            text += QStringLiteral("\r\n") + ctx_.language.text(text_kept_in) + QLatin1Char(' ') +
                    native(folder_);
    }
    for (const QString& path : written_)
        text += QStringLiteral("\r\n") + QFileInfo(path).fileName();
    return text;
}

} // namespace veltrako::visit
