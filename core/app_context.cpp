#include "app_context.h"

#include "link/connection_state.h"
#include "protocol/response_interpreter.h"

#include <QDir>

namespace veltrako {

AppContext::AppContext(Clock& clock_, UserInterface& ui_, std::unique_ptr<link::DeviceLink> backend)
    : clock(clock_), ui(ui_) {
    link.backend = std::move(backend);
    comm_log.log_start = seconds_since_midnight(clock.now());
    payload_handler = [this](const QByteArray& payload) {
        protocol::dispatch_response(*this, payload);
    };
    timer1.switched = [this] { link::follow_connection(*this); };
}

void show_msg(AppContext& ctx, const QString& text) {
    ctx.ui.show_msg(text);
}

void show_info(AppContext& ctx, const QString& text) {
    ctx.ui.append_out(text);
    log_comm(ctx, QStringLiteral("ERR"), text);
}

bool remember_dialog_folder(AppContext& ctx, const QString& chosen_file) {
    const QString plain = QDir::fromNativeSeparators(chosen_file);
    const QString folder = plain.left(plain.lastIndexOf(QLatin1Char('/')) + 1);
    if (!folder.isEmpty())
        ctx.config.INITDIR = folder;
    if (!ctx.persist_config)
        return true;
    return config::save_config(ctx.config, ctx.config_path);
}

void log_comm(AppContext& ctx, const QString& tag, const QString& text) {
    protocol::log_comm(ctx.comm_log, seconds_since_midnight(ctx.clock.now()), tag, text);
}

} // namespace veltrako
