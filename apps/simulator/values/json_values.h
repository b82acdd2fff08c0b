#ifndef APPS_SIMULATOR_VALUES_JSON_VALUES_H
#define APPS_SIMULATOR_VALUES_JSON_VALUES_H

#include <QJsonObject>
#include <QJsonValue>
#include <QStringList>

namespace sim {

/// Appends one value, or those of a flat list, as the command line has them; nothing for a key that
/// is not there. False with the reason in `problem` for anything else.
bool jsonValues(const QJsonValue& json, QStringList* values, QString* problem);

/// False with the reason in `problem` for an object with a key that is not among `known`.
bool knownKeys(const QJsonObject& json, const QStringList& known, QString* problem);

}  // namespace sim

#endif
