#include "link/connection_state.h"

#include "app_context.h"

namespace veltrako::link {

namespace {
constexpr int text_no_device = 8000;
constexpr int text_connecting = 8001;
constexpr int text_connected = 8002;
constexpr int text_not_answering = 8003;
constexpr int text_boot_loader = 8004;
constexpr int text_polling_stopped = 8600;
} // namespace

ConnectionState connection_state(const AppContext& ctx) {
    const LinkState& l = ctx.link;
    if (l.boot_loader)
        return ConnectionState::boot_loader;
    if (l.device_handle == 0)
        return l.lost ? ConnectionState::not_answering : ConnectionState::no_device;
    if (ctx.protocol.retry_count > 0)
        return ConnectionState::not_answering;
    if (!ctx.device.SW.isEmpty())
        return ConnectionState::connected;
    // Opened again by the silent reconnection, but not yet heard from.
    return l.lost ? ConnectionState::not_answering : ConnectionState::connecting;
}

QString connection_text(const AppContext& ctx, ConnectionState state) {
    // Live values that stand still under "Verbunden" look like a device that
    // is fine; the technician is told instead that nothing is asked.
    if (state != ConnectionState::boot_loader && ctx.link.device_handle != 0 &&
        !ctx.timer1.enabled())
        return ctx.language.text(text_polling_stopped);
    switch (state) {
    case ConnectionState::no_device:
        return ctx.language.text(text_no_device);
    case ConnectionState::connecting:
        return ctx.language.text(text_connecting);
    case ConnectionState::connected: {
        QString text = ctx.language.text(text_connected);
        if (const QString sn = ctx.device.SN.trimmed(); !sn.isEmpty())
            text += QLatin1Char(' ') + sn;
        if (const QString route = ctx.link.backend ? ctx.link.backend->route_name() : QString();
            !route.isEmpty())
            text += QStringLiteral(" (") + route + QLatin1Char(')');
        return text;
    }
    case ConnectionState::not_answering:
        return ctx.language.text(text_not_answering);
    case ConnectionState::boot_loader:
        return ctx.language.text(text_boot_loader);
    }
    return {};
}

bool device_controls_enabled(const AppContext& ctx) {
    return ctx.link.device_handle != 0 && !ctx.device.SW.isEmpty() && !ctx.link.boot_loader;
}

void follow_connection(AppContext& ctx) {
    if (ctx.link.quiet)
        return;
    const ConnectionState state = connection_state(ctx);
    if (state == ConnectionState::connected)
        ctx.link.lost = false;
    const QString text = connection_text(ctx, state);
    if (state == ctx.link.connection && text == ctx.link.connection_text)
        return;
    ctx.link.connection = state;
    ctx.link.connection_text = text;
    ctx.ui.connection_changed(state, text);
}

QuietConnection::QuietConnection(AppContext& ctx) : ctx_(ctx), was_quiet_(ctx.link.quiet) {
    ctx_.link.quiet = true;
}

QuietConnection::~QuietConnection() {
    ctx_.link.quiet = was_quiet_;
}

} // namespace veltrako::link
