#pragma once
// Names the program proposes for the files it writes. Every name that holds a
// text from the device (its serial number) takes it through file_name_part,
// so a serial number with "/" or ":" in it never turns into a folder or a
// drive.

#include <QString>
#include <QStringList>

namespace veltrako::config {

// `text` trimmed, with every character a file name cannot hold on Windows or
// Linux (\ / : * ? " < > | and control characters) made "_".
QString file_name_part(const QString& text);

// "<prefix>_<part 1>_<part 2>...<suffix>", each part through file_name_part;
// empty parts are left out, so an unknown serial number leaves no "__".
QString proposed_file_name(const QString& prefix, const QStringList& parts, const QString& suffix);

} // namespace veltrako::config
