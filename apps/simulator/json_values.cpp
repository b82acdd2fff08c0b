#include "apps/simulator/json_values.h"

#include <QJsonArray>

namespace sim {

namespace {

bool jsonValue(const QJsonValue& json, QStringList* values, QString* error) {
    QString value;
    if (json.isString()) {
        value = json.toString();
    } else if (json.isBool()) {
        value = json.toBool() ? "1" : "0";
    } else if (json.isDouble()) {
        value = QString::number(json.toDouble(), 'g', 17);
    } else {
        *error = "a value is neither a number, nor a string, nor true or false";
        return false;
    }
    values->append(value);
    return true;
}

}  // namespace

bool jsonValues(const QJsonValue& json, QStringList* values, QString* error) {
    if (json.isUndefined()) {
        return true;
    }
    if (!json.isArray()) {
        return jsonValue(json, values, error);
    }
    for (const QJsonValue& one : json.toArray()) {
        if (!jsonValue(one, values, error)) {
            return false;
        }
    }
    return true;
}

bool knownKeys(const QJsonObject& json, const QStringList& known, QString* error) {
    for (const QString& key : json.keys()) {
        if (!known.contains(key)) {
            *error = QString("there is no key '%1' (%2)").arg(key, known.join(", "));
            return false;
        }
    }
    return true;
}

}  // namespace sim
