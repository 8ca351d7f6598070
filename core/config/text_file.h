#pragma once
// The one way the program reads and writes its text files: UTF-8, lines
// ended by CR LF on writing, CR LF or LF accepted on reading.

#include <QString>
#include <QStringList>

#include <optional>

namespace veltrako::config {

// All lines of the file without their line ends; a final line end does not
// start another (empty) line. A UTF-8 byte order mark at the start, as
// Windows editors like to put there, is dropped. Empty when the file cannot be
// read.
std::optional<QStringList> read_text_lines(const QString& path);

// Writes every line followed by CR LF. The file is replaced whole or not at
// all, so a full disk or a crash never leaves half a file behind.
bool write_text_lines(const QString& path, const QStringList& lines);

} // namespace veltrako::config
