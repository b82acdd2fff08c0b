#ifndef APPS_MICRO800_PLUGIN_TAG_JSON_H
#define APPS_MICRO800_PLUGIN_TAG_JSON_H

#include <QJsonObject>

#include "apps/micro800/format/address.h"
#include "apps/micro800/format/value_format.h"
#include "apps/micro800/plugin/driver_session.h"

/// The object that --json prints for one access: "address", "type", "ok", "ms" (how long it took,
/// in milliseconds), and "value" (one element), "values" (an array, for a count above 1) or
/// "error". `bytes` are the value's own, also where a write's result has none.
QJsonObject accessJson(const TagAddress& address, int count, const DriverResult& result,
                       const QByteArray& bytes, NumberBase base = NumberBase::kDecimal);

#endif
