#include "firmware_update.h"

#include "app_context.h"
#include "config/config.h"
#include "config/wait.h"
#include "device/device_view.h"
#include "device/read_back.h"
#include "link/connection_state.h"
#include "link/device_connection.h"
#include "protocol/frames.h"
#include "protocol/poll_cycle.h"

#include <QFileInfo>
#include <QLocale>

namespace veltrako::firmware {

namespace {

const QString crlf = QStringLiteral("\r\n");
constexpr int text_in_loader = 8004;        // "Gerät wartet im Bootloader"
constexpr int text_hardware_unknown = 8601; // the loader does not say which hardware it is
constexpr int text_file_hardware = 8602;    // "Hardware der Software-Datei:"

// The hourglass while the update waits on the device; gone on every way out
// and while a message is up.
class BusyPointer {
public:
    explicit BusyPointer(UserInterface& ui) : ui_(ui) { set(true); }
    ~BusyPointer() { set(false); }
    BusyPointer(const BusyPointer&) = delete;
    BusyPointer& operator=(const BusyPointer&) = delete;
    void set(bool on) {
        if (on != on_)
            ui_.set_busy(on);
        on_ = on;
    }

private:
    UserInterface& ui_;
    bool on_ = false;
};

// Stops the poll cycle for the questions before an update and, unless the
// update went as far as the device's loader, starts it again on the way out.
// Deliberately unlike the routine this follows, which left Timer1 off after a
// cancelled dialog, a refused file or a "No": the device heard nothing, so
// its live values go on instead of freezing under "Verbunden" until someone
// thinks of "Verbindung initialisieren" (and a service visit started meanwhile
// no longer waits for ever at its first step).
class PollingPaused {
public:
    explicit PollingPaused(AppContext& ctx) : ctx_(ctx) { ctx_.timer1.set_enabled(false); }
    ~PollingPaused() {
        if (resume_)
            protocol::resume_polling(ctx_);
    }
    PollingPaused(const PollingPaused&) = delete;
    PollingPaused& operator=(const PollingPaused&) = delete;
    // From the loader dialogue on, the connect routine brings it back.
    void keep_stopped() { resume_ = false; }

private:
    AppContext& ctx_;
    bool resume_ = true;
};

// After a failure the device cannot run until it is programmed: say so with
// the failure.
QString failure_message(const AppContext& ctx, const QString& what) {
    return what + crlf + ctx.language.text(106);
}

// Polls for the answer to a data line: quickly first, then more slowly, and
// stops at the first bytes received. Nothing is written again meanwhile; a
// second write would only stand in the loader's buffer behind the first.
QByteArray await_acknowledgement(AppContext& ctx) {
    for (int i = 0; i < loader::quick_polls; ++i) {
        wait_ms(ctx, loader::quick_poll_ms);
        if (QByteArray answer = link::read_raw(ctx); !answer.isEmpty())
            return answer;
    }
    for (int i = 0; i < loader::slow_polls; ++i) {
        wait_ms(ctx, loader::slow_poll_ms);
        if (QByteArray answer = link::read_raw(ctx); !answer.isEmpty())
            return answer;
    }
    return {};
}

// After the restart: waits, serving events, until the initial requests
// (the identity among them) are answered and live data comes in, the link
// was given up, or the time for the requests and their repetitions has run
// out.
bool await_reconnection(AppContext& ctx) {
    const qint64 start = ctx.clock.elapsed_ms();
    const auto limit = static_cast<qint64>(4 * ctx.config.TIMEOUT * 1000) + 5 * loader::restart_ms;
    while (!ctx.device.live_valid) {
        if (ctx.link.device_handle == 0 || !ctx.timer1.enabled() ||
            ctx.clock.elapsed_ms() - start > limit)
            return false;
        wait_ms(ctx, loader::quick_poll_ms);
    }
    return true;
}

} // namespace

bool hardware_fits(const FirmwareImage& image, const QString& device_hardware) {
    const QString id = device_hardware.trimmed();
    return !id.isEmpty() && image.hardware.contains(id);
}

QString loader_hardware(const QByteArray& greeting) {
    const QList<QByteArray> words = greeting.simplified().split(' ');
    return words.size() >= 3 ? QString::fromLatin1(words[2]) : QString();
}

std::optional<QByteArray> sync_boot_loader(AppContext& ctx, int tries) {
    for (int i = 0; i < tries; ++i) {
        link::write_raw(ctx, QByteArrayLiteral("I"));
        wait_ms(ctx, loader::sync_wait_ms);
        if (QByteArray answer = link::read_raw(ctx); answer.startsWith(loader::greeting))
            return answer;
    }
    return std::nullopt;
}

UpdateResult firmware_update(AppContext& ctx, UpdateProgress& progress,
                             const UpdateOptions& options) {
    if (ctx.link.device_handle == 0)
        return UpdateResult::left;
    // Nothing of the poll cycle may mix into the loader dialogue, nor change
    // the device record while the file is checked against it.
    PollingPaused polling(ctx);

    FileDialogRequest request;
    request.title = ctx.language.text(11002);
    request.start_dir = ctx.config.INITDIR;
    request.filter = QStringLiteral("Veltrak O2 Software (*.ae6)|*.ae6");
    request.default_suffix = QStringLiteral(".ae6");
    const QString path = ctx.ui.choose_open_file(request);
    if (path.isEmpty())
        return UpdateResult::left;
    if (!remember_dialog_folder(ctx, path)) {
        show_msg(ctx, ctx.language.text(9102));
        return UpdateResult::left;
    }

    FirmwareImage image;
    if (!load_firmware_file(ctx, path, image))
        return UpdateResult::left;

    // A device in its loader has no identity to read: its loader may name
    // the hardware, or the record still knows it from before a failed update.
    const bool in_loader = ctx.link.boot_loader;
    const QString hardware = in_loader && !ctx.link.loader_hardware.isEmpty()
                                 ? ctx.link.loader_hardware
                                 : ctx.device.text_d0.trimmed();
    QString question = ctx.language.text(8037);
    if (in_loader && hardware.isEmpty()) {
        const QString warning = ctx.language.text(text_hardware_unknown) + crlf +
                                ctx.language.text(text_file_hardware) + QLatin1Char(' ') +
                                image.hardware.join(QStringLiteral(", "));
        switch (options.unknown_hardware) {
        case UnknownHardware::ask:
            question = warning + QStringLiteral("\n\n") + question;
            break;
        case UnknownHardware::refuse:
            show_msg(ctx, warning);
            return UpdateResult::hardware_unknown;
        case UnknownHardware::program:
            ctx.ui.show_note(warning, MsgIcon::exclamation);
            break;
        }
    } else if (!hardware_fits(image, hardware)) {
        show_msg(ctx, ctx.language.text(102) + crlf + ctx.language.text(101) + QLatin1Char(' ') +
                          hardware + crlf + ctx.language.text(100) + QLatin1Char(' ') +
                          image.version);
        return UpdateResult::left;
    }
    const QString running = in_loader ? ctx.language.text(text_in_loader) : ctx.device.SW;
    if (!device::confirm_change(ctx, question, running, image.version))
        return UpdateResult::left;
    polling.keep_stopped();
    const UpdateResult result = program_firmware(ctx, image, progress);
    if (result != UpdateResult::done)
        return result;
    // The device restarts into its new software: connect again as the menu
    // entry would, and show what the device now says it runs.
    protocol::connect_routine(ctx);
    if (await_reconnection(ctx))
        ctx.ui.show_note(ctx.language.text(8038) + QLatin1Char(' ') + ctx.device.SW,
                         MsgIcon::information);
    return result;
}

UpdateResult program_firmware(AppContext& ctx, const FirmwareImage& image,
                              UpdateProgress& progress) {
    BusyPointer busy(ctx.ui);
    const int blocks = static_cast<int>(image.data_lines.size());
    // The device's history learns how it ended, whatever the end.
    const auto hand_on = [&ctx, &image, sn = ctx.device.SN.trimmed(), old = ctx.device.SW.trimmed(),
                          at = ctx.clock.now()](bool ok, const QString& reason) {
        if (ctx.hooks.firmware_updated)
            ctx.hooks.firmware_updated({sn, at, old, image.version, ok, reason});
    };
    // From "b" on the device is out of its application: nothing may
    // interrupt the dialogue with its loader.
    progress.begin(blocks);
    // A device that waits in its loader already is not told again.
    if (!ctx.link.boot_loader) {
        protocol::send_frame(ctx, QByteArrayLiteral("b"));
        // Until it is told to restart, the device listens to its loader only.
        ctx.link.boot_loader = true;
        link::follow_connection(ctx);
        wait_ms(ctx, loader::enter_ms);
    }
    // An answer to the last poll may still have come in; the loader's
    // greeting must be the first thing read after the sync request.
    link::read_raw(ctx);
    if (!sync_boot_loader(ctx, loader::sync_tries)) {
        progress.end();
        busy.set(false);
        show_msg(ctx, failure_message(ctx, ctx.language.text(103)));
        hand_on(false, ctx.language.text(103));
        return UpdateResult::no_sync;
    }

    const ProgressClock clock(blocks, ctx.clock.elapsed_ms());
    for (int block = 1; block <= blocks; ++block) {
        progress.block(clock.step(block, ctx.clock.elapsed_ms()));
        // Checked when the file was loaded.
        const QByteArray bytes = hex_to_bytes(image.data_lines[block - 1]).value_or(QByteArray());
        QByteArray answer;
        bool acknowledged = false;
        for (int attempt = 0; attempt < loader::line_tries && !acknowledged; ++attempt) {
            link::write_raw(ctx, bytes);
            answer = await_acknowledgement(ctx);
            acknowledged = answer == ">";
        }
        if (!acknowledged) {
            progress.end();
            busy.set(false);
            const QString refused = ctx.language.text(105) + QLatin1Char(' ') +
                                    device::format_value(block, 0, QLocale()) +
                                    QStringLiteral(":'") + QString::fromLatin1(answer) +
                                    QLatin1Char('\'');
            show_msg(ctx, failure_message(ctx, refused));
            hand_on(false, refused);
            return UpdateResult::block_refused;
        }
    }
    progress.end();

    busy.set(false);
    show_msg(ctx, ctx.language.text(104));
    busy.set(true);
    link::write_raw(ctx, QByteArrayLiteral("R"));
    wait_ms(ctx, loader::restart_ms);
    hand_on(true, QString());
    return UpdateResult::done;
}

} // namespace veltrako::firmware
