#include "archive/archive_hooks.h"

#include "app_context.h"
#include "archive/archive_event.h"
#include "archive/archive_service.h"
#include "archive/archive_store.h"

#include <QDir>

#include <memory>

namespace veltrako::archive {

namespace {

// "Nicht archiviert:" and the names of the events, in the program's language.
constexpr int text_not_archived = 8800;
constexpr int text_kind_first = 8801; // usage, status, report, visit, firmware, write
constexpr int text_why = 8807;
constexpr int text_archive = 8808;

const char* const kinds[] = {kind_usage, kind_status,   kind_report,
                             kind_visit, kind_firmware, kind_write};

QString what_of(const AppContext& ctx, const ArchiveEvent& e) {
    for (int i = 0; i < 6; ++i)
        if (e.kind == QLatin1String(kinds[i]))
            return ctx.language.text(text_kind_first + i) + QLatin1Char(' ') + e.sn;
    return e.kind;
}

struct HookState {
    bool in_visit = false;
    std::vector<ArchiveEvent> pending; // the running visit's events
};

void submit(AppContext& ctx, ArchiveService& service, std::vector<ArchiveEvent> batch) {
    // A job without a device's serial number belongs to no device's history.
    std::erase_if(batch, [](const ArchiveEvent& e) { return e.sn.isEmpty(); });
    if (batch.empty())
        return;
    struct Answer {
        bool ok = false;
        QString error;
    };
    auto answer = std::make_shared<Answer>();
    QStringList what;
    for (const ArchiveEvent& e : batch)
        what << what_of(ctx, e);
    service.post(
        [batch = std::move(batch), answer](ArchiveStore& store) {
            answer->ok = store.write(batch, nullptr, &answer->error);
        },
        [&ctx, &service, answer, what] {
            if (answer->ok) {
                emit service.written();
                return;
            }
            show_msg(ctx, not_archived_text(ctx, what, answer->error, service.path()));
        });
}

} // namespace

QString not_archived_text(const AppContext& ctx, const QStringList& what, const QString& why,
                          const QString& path) {
    return ctx.language.text(text_not_archived) + QLatin1Char(' ') +
           what.join(QStringLiteral(", ")) + QStringLiteral(". ") + ctx.language.text(text_why) +
           QLatin1Char(' ') + why + QStringLiteral(" (") + ctx.language.text(text_archive) +
           QLatin1Char(' ') + QDir::toNativeSeparators(path) + QLatin1Char(')');
}

void install_archive(AppContext& ctx, ArchiveService& service) {
    if (!service.enabled())
        return;
    auto state = std::make_shared<HookState>();
    const QString writer = this_writer();
    const auto hand_on = [&ctx, &service, state](ArchiveEvent e) {
        if (state->in_visit) {
            state->pending.push_back(std::move(e));
            return;
        }
        submit(ctx, service, {std::move(e)});
    };
    ctx.hooks.usage_read = [hand_on, writer](const jobs::UsageReadout& r) {
        hand_on(usage_event(r, writer));
    };
    ctx.hooks.status_read = [hand_on, writer](const jobs::StatusReadout& r) {
        hand_on(status_event(r, writer));
    };
    ctx.hooks.report_filed = [hand_on, writer](const jobs::ReportFiled& r) {
        hand_on(report_event(r, writer));
    };
    ctx.hooks.firmware_updated = [hand_on, writer](const jobs::FirmwareUpdate& r) {
        hand_on(firmware_event(r, writer));
    };
    ctx.hooks.device_written = [hand_on, writer](const jobs::DeviceWrite& r) {
        hand_on(write_event(r, writer));
    };
    ctx.hooks.visit_begun = [state] {
        state->in_visit = true;
        state->pending.clear();
    };
    ctx.hooks.visit_done = [&ctx, &service, state, writer](const jobs::VisitDone& r) {
        ArchiveEvent visit = visit_event(r, writer);
        std::vector<ArchiveEvent> batch = std::move(state->pending);
        state->pending.clear();
        state->in_visit = false;
        for (ArchiveEvent& e : batch)
            e.visit_id = visit.id;
        batch.push_back(std::move(visit));
        submit(ctx, service, std::move(batch));
    };
}

} // namespace veltrako::archive
