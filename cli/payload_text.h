#pragma once
// A payload as typed on the command line: hex bytes ("65 00 80 07") or text
// ("I"). "hex:" or "text:" in front decides when the text could be either.

#include <QByteArray>
#include <QString>

#include <optional>

namespace veltrako::cli {

// std::nullopt for "hex:" followed by anything but hex byte pairs, or for an
// empty payload.
std::optional<QByteArray> parse_payload_argument(const QString& argument);

} // namespace veltrako::cli
