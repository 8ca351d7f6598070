#include "history_sync.h"

#include "app_context.h"
#include "archive/archive_service.h"
#include "archive/archive_store.h"
#include "archive/archive_sync.h"
#include "frm_main.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QStatusBar>

#include <memory>

namespace veltrako::ui {

namespace {

constexpr int text_result = 8950;    // "Abgleich: %1 gesendet, %2 empfangen"
constexpr int text_last_sync = 8951; // "Letzter Abgleich mit dem Team-Archiv: %1"
constexpr int text_never = 8952;
constexpr int text_no_server = 8953;
constexpr int text_running = 8954;
constexpr int text_no_archive = 8824;
// How long a sync waits for another laptop's transaction on the server.
constexpr int server_lock_wait_ms = 30000;

void show_last_sync(FrmMain& form, const AppContext& ctx, qint64 at) {
    form.statusBar()->setToolTip(at == 0 ? ctx.language.text(text_never)
                                         : ctx.language.text(text_last_sync)
                                               .arg(QDateTime::fromSecsSinceEpoch(at).toString(
                                                   QStringLiteral("yyyy-MM-dd HH:mm"))));
}

void read_last_sync(FrmMain& form, AppContext& ctx, archive::ArchiveService& service) {
    auto at = std::make_shared<qint64>(0);
    service.post(
        [at](archive::ArchiveStore& local) {
            QString ignored;
            *at = archive::last_sync(local, &ignored).value_or(0);
        },
        [&form, &ctx, at] { show_last_sync(form, ctx, *at); });
}

} // namespace

void bind_history_sync(FrmMain& form, AppContext& ctx, archive::ArchiveService& service,
                       std::function<void()> synced) {
    auto* button = form.control_as<QPushButton>(QStringLiteral("cmd_abgleichen"));
    auto* bar = form.control_as<QProgressBar>(QStringLiteral("prg_abgleich"));
    auto* result = form.control_as<QLabel>(QStringLiteral("l_abgleich"));
    bar->hide();
    const QString uri = ctx.config.ARCHIV_SERVER.trimmed();
    if (!service.enabled() || uri.isEmpty()) {
        button->setEnabled(false);
        button->setToolTip(ctx.language.text(service.enabled() ? text_no_server : text_no_archive));
        return;
    }
    read_last_sync(form, ctx, service);
    // A program that closes does not wait for a server that does not answer.
    auto stop = std::make_shared<std::atomic<bool>>(false);
    QObject::connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, &form,
                     [stop] { *stop = true; });
    QObject::connect(button, &QPushButton::clicked, &form, [=, &form, &ctx, &service] {
        const archive::ParsedAddress parsed = archive::parse_server_address(uri);
        if (!parsed.address) {
            result->setText(ctx.language.text(archive::address_problem_text(parsed.problem)));
            return;
        }
        button->setEnabled(false);
        bar->setRange(0, 0); // busy until the sync knows how much there is
        bar->show();
        result->setText(ctx.language.text(text_running));
        struct Answer {
            archive::SyncOptions options;
            archive::SyncReport report;
            qint64 last = 0;
        };
        auto answer = std::make_shared<Answer>();
        answer->options.now = ctx.clock.now().toSecsSinceEpoch();
        answer->options.stop = stop.get();
        service.post(
            [answer, stop, address = *parsed.address, bar](archive::ArchiveStore& local) {
                archive::ArchiveStore server(address);
                server.set_busy_timeout_ms(server_lock_wait_ms);
                // On the archive's thread; the bar moves on the window's.
                answer->report = archive::sync_archive(
                    local, server, answer->options, [bar](int done, int total) {
                        QMetaObject::invokeMethod(
                            bar,
                            [bar, done, total] {
                                bar->setRange(0, std::max(total, 1));
                                bar->setValue(done);
                            },
                            Qt::QueuedConnection);
                    });
                QString ignored;
                answer->last = archive::last_sync(local, &ignored).value_or(0);
            },
            [=, &form, &ctx] {
                button->setEnabled(true);
                bar->hide();
                const archive::SyncReport& r = answer->report;
                QString text = ctx.language.text(text_result).arg(r.sent).arg(r.received);
                if (!r.complete)
                    text += QStringLiteral(". ") +
                            archive::sync_problem_text(ctx.language, r, answer->options);
                result->setText(text);
                result->setToolTip(text);
                show_last_sync(form, ctx, answer->last);
                if (synced)
                    synced();
            });
    });
}

} // namespace veltrako::ui
