#pragma once
// Sending payloads as frames and cutting received bytes into frames.

#include "link/ft_status.h"

#include <QByteArray>

namespace veltrako {
class AppContext;
}

namespace veltrako::protocol {

// Wraps the payload in a frame and writes it. Logs the payload under "OUT"
// even when no device is open; returns -1 (all bits set) then.
link::FtStatus send_frame(AppContext& ctx, const QByteArray& payload);
inline constexpr link::FtStatus send_no_device = static_cast<link::FtStatus>(-1);

// Appends the received bytes to the receive buffer and hands every valid
// frame's payload to the context's payload handler, in order. A bad length or
// checksum is reported and scanning resumes one byte later, so a "#" inside
// the rejected bytes can start the next frame.
void parse_frames(AppContext& ctx, const QByteArray& received);

} // namespace veltrako::protocol
