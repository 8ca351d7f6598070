#include "progress_line.h"

#include "device/device_view.h"
#include "progress/progress.h"

#include <QLocale>

#include <cstdio>
#include <unistd.h>

namespace veltrako::cli {

namespace {
// A terminal shows ten lines a second at most; a readout moves hundreds of
// records a second.
constexpr qint64 redraw_ms = 100;
} // namespace

QString progress_text(const progress::Standing& s) {
    const QLocale locale;
    QString text = QStringLiteral("records ") + device::format_value(s.done, 0, locale);
    if (s.total > 0)
        text += QStringLiteral(" / ") + device::format_value(s.total, 0, locale) +
                QStringLiteral(", ") + device::format_value(s.percent(), 0, locale) +
                QLatin1Char('%');
    if (s.remaining_ms && s.phase == progress::Phase::running)
        text += QStringLiteral(", ") + progress::minutes_seconds(*s.remaining_ms) +
                QStringLiteral(" left");
    return text;
}

ProgressLine::ProgressLine(progress::Progress& progress)
    : progress_(progress), terminal_(isatty(fileno(stderr)) != 0) {
    if (terminal_)
        progress_.changed = [this] { show(); };
}

ProgressLine::~ProgressLine() {
    if (!terminal_)
        return;
    progress_.changed = nullptr;
    if (printed_)
        std::fputs("\n", stderr);
}

void ProgressLine::show() {
    const bool running = progress_.running();
    if (printed_ && running && since_shown_.isValid() && since_shown_.elapsed() < redraw_ms)
        return;
    if (!running && !printed_)
        return;
    since_shown_.start();
    printed_ = true;
    // Back to the start of the line, and the rest of the old text erased.
    std::fprintf(stderr, "\r%s\033[K", qUtf8Printable(progress_text(progress_.standing())));
    std::fflush(stderr);
}

} // namespace veltrako::cli
