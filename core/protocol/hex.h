#pragma once
// Byte strings shown as hexadecimal for the log and the developer page.

#include <QByteArray>
#include <QString>

namespace veltrako::protocol {

// `value` in upper-case hexadecimal, padded with "0" on the left and cut to
// its last `digits` characters.
QString hex_digits(qint64 value, int digits);

// Every byte as two upper-case hex digits followed by one blank.
QString hex_dump(const QByteArray& data);

} // namespace veltrako::protocol
