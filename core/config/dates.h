#pragma once
// Date and number helpers shared by the device record, the files and the
// reports. Date-times are plain calendar values held with Qt::UTC (see
// clock.h); the empty date is a null QDateTime.

#include <QDateTime>
#include <QString>

#include <optional>

namespace veltrako::config {

// Counts from 1 January 2000 00:00:00: adds day-1 days, month-1 months,
// year-2000 years, then the hours, minutes and seconds. Parts out of range
// roll over (day 32 of January is 1 February) or clamp (31 February is the
// last day of February), so texts and device fields that are slightly off
// still give a date instead of an error. Each part is first held to
// +-1,000,000 so that no input can overflow the arithmetic.
QDateTime make_date(int day, int month, int year, int hour, int minute, int second);

// "dd.mm.yyyy hh:nn:ss" or "dd.mm.yyyy" (blanks and dots count as colons).
// Any other number of parts, or a part that is not a whole number, gives the
// empty date.
QDateTime parse_date(const QString& text);

// The date and time as messages on the developer page show them: the
// user's short date and long time.
QString message_time_text(const QDateTime& t);

// The text as a number in the user's locale (QLocale(), decimal comma on a
// German system); empty when it is not a finite number.
std::optional<double> text_to_number(const QString& text);

} // namespace veltrako::config
