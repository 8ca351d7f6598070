#include "report/report_draft.h"

#include "app_context.h"
#include "config/dates.h"
#include "config/text_file.h"
#include "report/report_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace veltrako::report {

namespace {

const QString draft_key = QStringLiteral("ENTWURF");
const QString valid_key = QStringLiteral("GERAETEDATEN");
const QString file_time_format = QStringLiteral("dd.MM.yyyy HH:mm:ss");

// The question names the draft's time as files and the page do.
constexpr int text_restore = 8550;
constexpr int text_not_written = 8553;

} // namespace

QString draft_path(const AppContext& ctx) {
    if (ctx.config_path.isEmpty())
        return {};
    return QFileInfo(ctx.config_path).absoluteDir().filePath(QLatin1String(draft_file_name));
}

bool has_typed_text(const ReportRecord& report) {
    const QStringList& keys = report_keys();
    for (qsizetype i = 1; i < keys.size(); ++i) {
        const QString& value = report.report_values[static_cast<std::size_t>(i)];
        if (field_kind(keys[i]) == FieldKind::check) {
            if (check_state(value).value_or(false))
                return true;
        } else if (keys[i] != QLatin1String("t_Datum") && keys[i] != QLatin1String("t_Uhrzeit") &&
                   !value.trimmed().isEmpty()) {
            return true;
        }
    }
    return false;
}

QStringList draft_lines(const ReportRecord& report, const QDateTime& when, const QLocale& locale) {
    return QStringList{draft_key + QLatin1Char('|') + when.toString(file_time_format),
                       valid_key +
                           (report.device_valid() ? QStringLiteral("|1") : QStringLiteral("|0"))} +
           report_file_lines(report, locale);
}

std::optional<Draft> parse_draft_lines(const QStringList& lines, const Limits& limits) {
    if (lines.size() < 2 || !lines[0].startsWith(draft_key + QLatin1Char('|')) ||
        !lines[1].startsWith(valid_key + QLatin1Char('|')))
        return std::nullopt;
    Draft draft;
    draft.report.limits = limits;
    draft.written = config::parse_date(lines[0].section(QLatin1Char('|'), 1));
    read_report_lines(draft.report, lines.mid(2));
    draft.report.report_device.live_valid =
        lines[1].section(QLatin1Char('|'), 1) == QLatin1String("1");
    draft.report.report_changed = true;
    return draft;
}

std::optional<Draft> read_draft(const QString& path, const Limits& limits) {
    if (path.isEmpty())
        return std::nullopt;
    const auto lines = config::read_text_lines(path);
    return lines ? parse_draft_lines(*lines, limits) : std::nullopt;
}

void remove_draft(const AppContext& ctx) {
    const QString path = draft_path(ctx);
    if (!path.isEmpty())
        QFile::remove(path);
}

std::optional<ReportRecord> offer_draft(AppContext& ctx) {
    std::optional<Draft> draft = read_draft(draft_path(ctx), configured_limits(ctx.config));
    if (!draft)
        return std::nullopt;
    const QString when =
        draft->written.isValid() ? draft->written.toString(file_time_format) : QStringLiteral("?");
    if (ctx.ui.ask_yes_no(ctx.language.text(text_restore).arg(when)))
        return std::move(draft->report);
    remove_draft(ctx);
    return std::nullopt;
}

DraftKeeper::DraftKeeper(AppContext& ctx) : ctx_(ctx) {
    timer_.setSingleShot(true);
    timer_.setTimerType(Qt::PreciseTimer);
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { tick(); });
}

void DraftKeeper::edited() {
    edited_at_ = ctx_.clock.elapsed_ms();
    timer_.start(delay_ms);
}

void DraftKeeper::cancel() {
    edited_at_.reset();
    timer_.stop();
}

void DraftKeeper::tick() {
    if (!edited_at_)
        return;
    const qint64 left = *edited_at_ + delay_ms - ctx_.clock.elapsed_ms();
    if (left > 0) {
        // Edited again meanwhile, or the timer ran early.
        timer_.start(static_cast<int>(left));
        return;
    }
    edited_at_.reset();
    const QString path = draft_path(ctx_);
    if (path.isEmpty())
        return;
    if (collect)
        collect();
    const ReportRecord& report = ctx_.report;
    if (!report.report_changed)
        return; // shown from a file or a fresh snapshot: nothing typed to keep
    if (!has_typed_text(report)) {
        QFile::remove(path);
        return;
    }
    if (config::write_text_lines(path, draft_lines(report, ctx_.clock.now(), QLocale()))) {
        failure_said_ = false;
        return;
    }
    // Said once until a draft is written again, not every second.
    if (!failure_said_)
        ctx_.ui.show_note(ctx_.language.text(text_not_written) + QLatin1Char(' ') +
                              QDir::toNativeSeparators(path),
                          MsgIcon::exclamation);
    failure_said_ = true;
}

} // namespace veltrako::report
