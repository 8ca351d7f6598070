#pragma once
// Where device answers become data: each valid frame's payload is taken
// apart by its letter into the device record, follow-up reads are queued,
// and the live page is refreshed.

#include <QByteArray>
#include <QString>

namespace veltrako {
class AppContext;
}

namespace veltrako::protocol {

void dispatch_response(AppContext& ctx, const QByteArray& payload);

// IEEE-754 single precision from four bytes, least significant first,
// computed arithmetically. Four zero bytes give 2^-127 (no special cases).
double bytes_to_single(const QByteArray& four);

template <typename T> T min_of(T a, T b) {
    return a < b ? a : b;
}

// "70" -> "50", "71" -> "51", anything else unchanged.
QString map_family_code(const QString& code);

// The version code the send queue and the schedule compare against.
QString version_code(const AppContext& ctx);

} // namespace veltrako::protocol
