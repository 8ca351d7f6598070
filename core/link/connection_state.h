#pragma once
// The one connection state the technician sees (no device, connecting,
// connected, not answering, boot loader), worked out from the link, the
// repetitions of the poll cycle and the device record, and handed to the
// user interface whenever it or its wording changes.

#include "user_interface.h"

#include <QString>

namespace veltrako {
class AppContext;
}

namespace veltrako::link {

ConnectionState connection_state(const AppContext& ctx);
// The status bar's wording of `state`, e.g. "Verbunden: VO2-0012345 (sim)".
// While a device is open and Timer1 is off, whatever the state, it says
// that polling has stopped and what starts it again.
QString connection_text(const AppContext& ctx, ConnectionState state);
// A control that sends to the device is usable only while a device is open,
// its identity has been read, and it is not waiting in its boot loader.
bool device_controls_enabled(const AppContext& ctx);
// Works the state out again and tells the user interface when it or its
// wording changed. An identity read ends a lost connection.
void follow_connection(AppContext& ctx);

// While one lives, follow_connection tells nothing: for a routine whose steps
// pass through states that are none (the connect routine, between opening
// the device and switching Timer1 on); it follows the state once at its end.
class QuietConnection {
public:
    explicit QuietConnection(AppContext& ctx);
    ~QuietConnection();
    QuietConnection(const QuietConnection&) = delete;
    QuietConnection& operator=(const QuietConnection&) = delete;

private:
    AppContext& ctx_;
    bool was_quiet_;
};

} // namespace veltrako::link
