#include "update_progress.h"

#include "device/device_view.h"

#include <QLocale>

namespace veltrako::firmware {

QString ProgressStep::caption() const {
    const QLocale locale;
    return QStringLiteral("Software Update Block ") + device::format_value(block, 0, locale) +
           QLatin1Char('/') + device::format_value(blocks, 0, locale);
}

ProgressStep ProgressClock::step(int block, qint64 now_ms) const {
    ProgressStep s;
    s.block = block;
    s.blocks = blocks_;
    s.elapsed_ms = now_ms - start_ms_;
    const int done = block - 1;
    const int left = blocks_ - done;
    s.remaining_ms = done > 0 ? s.elapsed_ms * left / done : left * block_floor_ms;
    return s;
}

} // namespace veltrako::firmware
