#pragma once
// Device values by their parameter key ("SN", "BSTD", "ZEITEN3", ...), as
// the test report stores them and the command-line front end prints them.

#include "device/device_record.h"

#include <QLocale>

namespace veltrako::device {

// The value under `key`; numbers as the "Gerät" page shows them (rounded to
// the same decimals, in `locale`'s form). Keys that no device
// answer fills ("VEEPROM", "GSMSW", "GSMSN", "SIMID", "MIN_VOLUMENSTROM",
// "MAX_VOLUMENSTROM", "ALARMSIGNAL") and unknown keys give an empty text.
QString parameter_value(const DeviceRecord& record, const QString& key, const QLocale& locale);

// The live and bookkeeping fields by their field names, in a fixed order, for
// printing: pairs of name and value, numbers rounded as the page shows them.
QList<std::pair<QString, QString>> live_fields(const DeviceRecord& record, const QLocale& locale);

} // namespace veltrako::device
