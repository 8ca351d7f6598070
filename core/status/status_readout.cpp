#include "status/status_readout.h"

#include "app_context.h"
#include "config/config.h"
#include "config/file_names.h"
#include "protocol/commands.h"
#include "protocol/poll_cycle.h"
#include "status/status_table.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace veltrako::status {

namespace {

constexpr int text_serial_missing = 3806;
constexpr int text_file_type = 3807;
constexpr int text_overwrite = 3808;
constexpr int text_not_written = 3809;

bool connected(const AppContext& ctx) {
    return ctx.link.device_handle != 0;
}

// A folder from the configuration with the separator file names need after
// it; an empty folder stays empty (the working folder).
QString as_folder(const QString& dir) {
    if (dir.isEmpty() || dir.endsWith(QLatin1Char('/')) || dir.endsWith(QLatin1Char('\\')))
        return dir;
    return dir + QLatin1Char('/');
}

// Asks for the file until the user confirms a new name, agrees to overwrite,
// or cancels (empty result).
QString ask_file_name(AppContext& ctx, const QString& proposed_name) {
    FileDialogRequest request;
    request.start_dir = ctx.config.INITDIR;
    request.filter = ctx.language.text(text_file_type) + QStringLiteral(" (*.txt)|*.txt");
    request.default_suffix = QStringLiteral(".txt");
    request.proposed_name = proposed_name;
    for (;;) {
        const QString path = ctx.ui.choose_save_file(request);
        if (path.isEmpty() || !QFileInfo::exists(path))
            return path;
        if (ctx.ui.ask_yes_no(ctx.language.text(text_overwrite)))
            return path;
    }
}

// Automatic mode: the file to write, or empty when this device and software
// version was saved already in this run.
QString automatic_file(AppContext& ctx, const QString& key, const QString& base) {
    StatusMemory& s = ctx.status;
    if (key == s.last_auto_key)
        return {};
    const QString dir = as_folder(ctx.config.AUTOSAVEDIR);
    // The same board saved before under another software version: it keeps
    // only its newest automatic dump.
    if (s.last_auto_key.contains(QLatin1Char('_') + config::file_name_part(ctx.device.LP) +
                                 QLatin1Char('_')))
        QFile::remove(dir + s.last_auto_base + QStringLiteral(".txt"));
    s.last_auto_key = key;
    s.last_auto_base = base;
    return dir + base + QStringLiteral(".txt");
}

// Manual mode: the file the user chose, or empty when the save is off.
QString manual_file(AppContext& ctx, const QString& base) {
    if (ctx.device.SN.trimmed().isEmpty()) {
        ctx.ui.show_msg(ctx.language.text(text_serial_missing), MsgIcon::information);
        return {};
    }
    const QString path = ask_file_name(ctx, base + QStringLiteral(".txt"));
    if (path.isEmpty())
        return {};
    if (!remember_dialog_folder(ctx, path))
        return {};
    return path;
}

} // namespace

void install_status_memory(AppContext& ctx) {
    ctx.hooks.status_readout_complete = [&ctx] {
        ctx.ui.show_status_table(format_status(ctx));
        if (ctx.hooks.status_read && ctx.status.record_count() > 0) {
            jobs::StatusReadout done{ctx.device.SN.trimmed(), ctx.device.LP.trimmed(),
                                     ctx.device.SW.trimmed(), ctx.clock.now(),
                                     ctx.device.o22_source,   {}};
            done.records.assign(ctx.status.records.begin() + 1, ctx.status.records.end());
            ctx.hooks.status_read(done);
        }
    };
    ctx.hooks.status_save_due = [&ctx] { save_status(ctx, SaveMode::automatic); };
}

void cmd_sysstatread_Click(AppContext& ctx) {
    if (!connected(ctx))
        return;
    protocol::resume_polling(ctx);
    // Deliberately once: a second click while the records come in would
    // empty the list in the middle of the chain.
    if (ctx.status.readout.running())
        return;
    ctx.ui.set_busy(true);
    ctx.status.restart();
    ctx.status.readout.start(ctx.clock.elapsed_ms(), protocol::cmd::status_record_max);
    protocol::queue_command(ctx, protocol::cmd::read_status_record(1));
}

void cmd_sysstatsave_Click(AppContext& ctx) {
    save_status(ctx, SaveMode::manual);
}

QString status_device_key(const device::DeviceRecord& device) {
    return config::file_name_part(device.SN) + QLatin1Char('_') +
           config::file_name_part(device.LP) + QLatin1Char('_') + config::file_name_part(device.SW);
}

QString status_file_base(const device::DeviceRecord& device, const QDateTime& now) {
    return QStringLiteral("Status_") + status_device_key(device) + QLatin1Char('_') +
           now.toString(QStringLiteral("yyyyMMdd_HHmmss"));
}

bool save_status(AppContext& ctx, SaveMode mode) {
    if (!connected(ctx) || ctx.status.record_count() < 2)
        return false;
    const QString key = status_device_key(ctx.device);
    const QString base = status_file_base(ctx.device, ctx.clock.now());
    const QString path =
        mode == SaveMode::automatic ? automatic_file(ctx, key, base) : manual_file(ctx, base);
    if (path.isEmpty())
        return false;
    // A fresh table: its heading shows the time of saving.
    if (write_status_table(path, format_status(ctx)))
        return true;
    const QString message =
        ctx.language.text(text_not_written) + QLatin1Char(' ') + QDir::toNativeSeparators(path);
    // An automatic save runs unasked; its failure goes to the developer page.
    if (mode == SaveMode::automatic)
        show_info(ctx, message + QStringLiteral("\r\n"));
    else
        ctx.ui.show_msg(message, MsgIcon::exclamation);
    return false;
}

} // namespace veltrako::status
