#pragma once
// Readers of the value forms scenario files use. Each returns nullopt and sets
// `why` when the text is not of its form.

#include "compliance_ring.h"
#include "scenario.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include <optional>

namespace veltrako::sim::values {

// Decimal, or hexadecimal after "0x", within [low, high].
std::optional<qint64> integer(const QByteArray& text, qint64 low, qint64 high, QString& why);
// A decimal number with "." as the separator, within [low, high].
std::optional<double> real(const QByteArray& text, double low, double high, QString& why);
// on/off, yes/no, true/false, 1/0.
std::optional<bool> flag(const QByteArray& text, QString& why);
// Bare text as it stands, or in double quotes with \xNN, \r, \n, \t, \\ and \".
std::optional<QByteArray> text(const QByteArray& value, QString& why);
// Pairs of hexadecimal digits, blanks between them allowed.
std::optional<QByteArray> hex_bytes(const QByteArray& text, QString& why);
// "yyyy-mm-dd hh:mm:ss" (seconds, or the whole time, may be left out; "T" may
// stand for the blank), as a calendar value in Qt::UTC.
std::optional<QDateTime> date_time(const QByteArray& text, QString& why);
// A date-time as above, or a distance from the device clock at power-on:
// "now", or a sign, a whole number and d, h or m ("-60d", "-12h", "+30m").
std::optional<ScenarioTime> scenario_time(const QByteArray& text, QString& why);
// "start / end" as two date-times, or "-" for an erased slot.
std::optional<ComplianceRecord> compliance_period(const QByteArray& text, QString& why);

} // namespace veltrako::sim::values
