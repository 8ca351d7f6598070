// The window calls into the poll cycle, which is built elsewhere. These weak
// stand-ins let the window's tests link on their own; wherever the real poll
// cycle is linked in, its definitions take precedence. They do nothing, and
// no test relies on what they do.

#include <QString>

#include "protocol/poll_cycle.h"

namespace veltrako::protocol {

[[gnu::weak]] void timer1_tick(AppContext&) {}
[[gnu::weak]] void connect_routine(AppContext&) {}
[[gnu::weak]] void cmd_clear(AppContext&) {}
[[gnu::weak]] QString cmd_saveprotokoll(AppContext&) {
    return {};
}
[[gnu::weak]] void cmd_sendcommand(AppContext&, const QByteArray&) {}

} // namespace veltrako::protocol
