#include "device/read_back.h"

#include "app_context.h"
#include "config/wait.h"
#include "protocol/poll_cycle.h"

namespace veltrako::device {

namespace {

// How often the watch looks while it waits; the poll timer ticks in between.
constexpr int look_every_ms = 10;
// Besides the three repetitions the poll cycle allows before it gives the
// link up, time for the commands queued ahead of the read-back.
constexpr qint64 queue_allowance_ms = 5000;

} // namespace

ReadBackWatch::ReadBackWatch(AppContext& ctx) : ctx_(ctx), previous_(ctx.payload_handler) {
    // Every write of a setting watches its read-back: the poll cycle must
    // run for either to go out.
    protocol::resume_polling(ctx_);
    ctx_.payload_handler = [this](const QByteArray& payload) {
        const QByteArray answering = ctx_.protocol.last_command;
        if (previous_)
            previous_(payload);
        answered_ << answering;
    };
}

ReadBackWatch::~ReadBackWatch() {
    ctx_.payload_handler = previous_;
}

bool ReadBackWatch::answered(const QByteArray& write, const QByteArray& read_back) const {
    const qsizetype w = answered_.indexOf(write);
    return w >= 0 && answered_.indexOf(read_back, w + 1) > w;
}

bool ReadBackWatch::await(const QByteArray& write, const QByteArray& read_back) {
    // A read the device's version withholds would never be answered.
    if (!protocol::send_permitted(ctx_, read_back))
        return false;
    const qint64 start = ctx_.clock.elapsed_ms();
    const auto limit = static_cast<qint64>(4 * ctx_.config.TIMEOUT * 1000) + queue_allowance_ms;
    while (!answered(write, read_back)) {
        if (ctx_.link.device_handle == 0 || !ctx_.timer1.enabled() ||
            ctx_.clock.elapsed_ms() - start > limit)
            return false;
        wait_ms(ctx_, look_every_ms);
    }
    return true;
}

WriteOutcome tell_outcome(AppContext& ctx, const ReadBack& r, Telling telling,
                          const QString& confirmed_message) {
    const auto tell = [&](const QString& text, MsgIcon icon) {
        if (telling == Telling::message)
            ctx.ui.show_msg(text, icon);
        else
            ctx.ui.show_note(text, icon);
    };
    if (r.answered && r.equal) {
        if (ctx.hooks.device_written)
            ctx.hooks.device_written({ctx.device.SN.trimmed(), ctx.clock.now(), r.what, r.before,
                                      r.reported, ctx.report.value(QStringLiteral("t_Pruefer"))});
        if (telling == Telling::message && !confirmed_message.isEmpty())
            tell(confirmed_message, MsgIcon::information);
        else
            tell(r.what + QLatin1Char(' ') + ctx.language.text(8010) + QLatin1Char(' ') +
                     r.reported,
                 MsgIcon::information);
        return WriteOutcome::confirmed;
    }
    const QString written =
        r.what + QLatin1Char(' ') + ctx.language.text(8011) + QLatin1Char(' ') + r.written;
    if (!r.answered) {
        tell(written + QStringLiteral(", ") + ctx.language.text(8013), MsgIcon::exclamation);
        return WriteOutcome::no_answer;
    }
    tell(written + QStringLiteral(", ") + ctx.language.text(8012) + QLatin1Char(' ') + r.reported,
         MsgIcon::exclamation);
    return WriteOutcome::differs;
}

bool confirm_change(AppContext& ctx, const QString& question, const QString& old_value,
                    const QString& new_value) {
    return ctx.ui.confirm_change(question + QStringLiteral("\n\n") + ctx.language.text(8030) +
                                 QLatin1Char(' ') + old_value + QLatin1Char('\n') +
                                 ctx.language.text(8031) + QLatin1Char(' ') + new_value);
}

} // namespace veltrako::device
