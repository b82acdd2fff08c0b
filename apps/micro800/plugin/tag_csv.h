#ifndef APPS_MICRO800_PLUGIN_TAG_CSV_H
#define APPS_MICRO800_PLUGIN_TAG_CSV_H

#include <QString>

#include "apps/micro800/format/address.h"
#include "apps/micro800/format/value_format.h"
#include "apps/micro800/plugin/driver_session.h"

/// The names of the fields that --csv prints for one access.
QString accessCsvHeader();

/// The record of one access, in that order: address, type, whether it went well, how long it took
/// in milliseconds, the value as text (several with blanks between them), and the failure.
QString accessCsv(const TagAddress& address, int count, const DriverResult& result,
                  NumberBase base);

#endif
