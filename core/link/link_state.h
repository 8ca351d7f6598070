#pragma once
// The one device link of the program, its open handle, and what the
// technician is told about it.

#include "link/device_link.h"
#include "user_interface.h"

#include <memory>

namespace veltrako::link {

struct LinkState {
    std::unique_ptr<DeviceLink> backend;
    FtHandle device_handle = 0; // 0: no device open

    // The facts the connection state is worked out from besides the handle,
    // the record and the repetitions (link/connection_state.h):
    // the device stopped answering and was given up; set until it answers
    // again, so that one lost connection brings one message.
    bool lost = false;
    // The device waits in its boot loader: a firmware update left it there,
    // or it answered the loader's sync request instead of "?" when connected.
    bool boot_loader = false;
    // The hardware identifier its loader named when it was found there;
    // empty when the loader does not say.
    QString loader_hardware;

    // Set while a routine passes through states it does not mean to tell
    // (QuietConnection).
    bool quiet = false;

    // The state and its wording as last handed to the user interface.
    ConnectionState connection = ConnectionState::no_device;
    QString connection_text;
};

} // namespace veltrako::link
