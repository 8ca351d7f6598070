#pragma once
// The key-value lines of the report and compliance files: one pair per line,
// key "|" value. A value never spreads over two lines and never adds a
// column: "|" in it becomes "/", every line break (CR LF, lone CR, lone LF)
// the two characters backslash and "n".

#include <QString>

namespace veltrako::config {

// The line for one pair, without its line end (write_text_lines adds CR LF).
QString key_value_line(const QString& key, const QString& value);

// Turns every backslash-"n" pair of a stored value back into a line break
// ("\r\n", as the multi-line boxes of the forms use).
QString restore_line_breaks(const QString& stored);

} // namespace veltrako::config
