#include "progress_line.h"

#include "cli_texts.h"
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
constexpr int text_records = 9232;    // "records %1"
constexpr int text_records_of = 9233; // "records %1 / %2, %3%"
constexpr int text_left = 9234;       // "%1 left"
} // namespace

QString progress_text(const progress::Standing& s, const config::LanguageTables& language) {
    const QLocale locale;
    const QString done = device::format_value(s.done, 0, locale);
    QString text = s.total > 0 ? cli_text(language, text_records_of,
                                          {done, device::format_value(s.total, 0, locale),
                                           device::format_value(s.percent(), 0, locale)})
                               : cli_text(language, text_records, {done});
    if (s.remaining_ms && s.phase == progress::Phase::running)
        text += QStringLiteral(", ") +
                cli_text(language, text_left, {progress::minutes_seconds(*s.remaining_ms)});
    return text;
}

ProgressLine::ProgressLine(progress::Progress& progress, const config::LanguageTables& language)
    : progress_(progress), language_(language), terminal_(isatty(fileno(stderr)) != 0) {
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
    std::fprintf(stderr, "\r%s\033[K",
                 qUtf8Printable(progress_text(progress_.standing(), language_)));
    std::fflush(stderr);
}

} // namespace veltrako::cli
