#pragma once
// Device values by their parameter key ("SN", "BSTD", "ZEITEN3", ...), as
// the test report stores them and the command-line front end prints them.
//
// What stands under the keys that no identity or live answer fills:
//   "MIN_VOLUMENSTROM"  the lower volume-flow setting (the "U" answer, wert_u),
//   "MAX_VOLUMENSTROM"  the upper volume-flow setting (the "O" answer, wert_o),
//                       both as the raw setting the "Gerät" page selectors show;
//   "ALARMSIGNAL"       the acoustic alarm setting (the "X" answer, wert_x).
//   Each is empty for a device family that does not have the setting (flow
//   settings from family "51", the acoustic alarm from "30"), so that a report
//   never shows a 0 the device never said.
//   "VEEPROM", "GSMSW", "GSMSN", "SIMID"  always empty: the device protocol has
//   no answer for a serial-memory version or a GSM modem, and a report must
//   not invent one. The keys stay in the files so that every report file
//   carries the same lines.

#include "device/device_record.h"

#include <QLocale>

namespace veltrako::device {

// The value under `key`; numbers as the "Gerät" page shows them (rounded to
// the same decimals, in `locale`'s form), so that a report file or a script
// holds the number the technician saw. Unknown keys give an empty text.
QString parameter_value(const DeviceRecord& record, const QString& key, const QLocale& locale);

// The reverse, for a value read back from a file: stores `value` into the
// field of `key`. Numbers are read with either "." or "," as the decimal
// separator. False (and nothing stored) for a key without a field or a
// number that does not read; texts are stored as they stand.
bool set_parameter_value(DeviceRecord& record, const QString& key, const QString& value);

// The live and bookkeeping fields by their field names, in a fixed order, for
// printing: pairs of name and value, numbers rounded as the page shows them.
QList<std::pair<QString, QString>> live_fields(const DeviceRecord& record, const QLocale& locale);

} // namespace veltrako::device
