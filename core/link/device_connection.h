#pragma once
// Opening, closing and raw traffic on the one device handle.

#include "link/ft_status.h"

#include <QByteArray>

namespace veltrako {
class AppContext;
}

namespace veltrako::link {

// Closes any open handle, then opens exactly one attached device with the
// line settings the concentrator expects. In silent mode nothing is shown.
bool open_device(AppContext& ctx, bool silent);
// Closes the open handle, if any; returns the close status (0 when nothing was open).
FtStatus close_device(AppContext& ctx);
// Writes bytes without framing; the status is not looked at.
void write_raw(AppContext& ctx, const QByteArray& bytes);
// Everything queued at the device, or an empty array.
QByteArray read_raw(AppContext& ctx);

// Reads all bytes waiting on the open handle, reporting a short read on the
// developer page. Shared by read_raw and the poll cycle's receive loop.
QByteArray read_waiting(AppContext& ctx);

} // namespace veltrako::link
