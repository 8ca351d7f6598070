#pragma once
// The one way the program reads and writes its text files. Reading accepts
// what older tools left behind: UTF-8 with or without a byte order mark, or
// else the Windows ANSI code page (Windows-1252), and lines ended by CR LF,
// LF or a lone CR. Writing is always UTF-8 with CR LF.

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace veltrako::config {

// The lines of a file's bytes without their line ends; a final line end does
// not start another (empty) line. Bytes that are valid UTF-8 are read so (a
// leading byte order mark dropped); anything else is Windows-1252, so that
// "M\xFCller" saved by a Windows program reads as "Müller".
QStringList decode_text_lines(const QByteArray& bytes);

// decode_text_lines of the whole file; empty when the file cannot be read.
std::optional<QStringList> read_text_lines(const QString& path);

// Writes every line followed by CR LF. The file is replaced whole or not at
// all, so a full disk or a crash never leaves half a file behind.
bool write_text_lines(const QString& path, const QStringList& lines);

} // namespace veltrako::config
