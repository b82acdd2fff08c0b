#include "apps/simulator/values/json_values.h"

#include <QJsonArray>

namespace sim {

namespace {

bool jsonValue(const QJsonValue& json, QStringList* values, QString* problem) {
    QString value;
    if (json.isString()) {
        value = json.toString();
    } else if (json.isBool()) {
        value = json.toBool() ? "1" : "0";
    } else if (json.isDouble()) {
        value = QString::number(json.toDouble(), 'g', 17);
    } else {
        *problem = "a value is neither a number, nor a string, nor true or false";
        return false;
    }
    values->append(value);
    return true;
}

}  // namespace

bool jsonValues(const QJsonValue& json, QStringList* values, QString* problem) {
    if (json.isUndefined()) {
        return true;
    }
    if (!json.isArray()) {
        return jsonValue(json, values, problem);
    }
    for (const QJsonValue& one : json.toArray()) {
        if (!jsonValue(one, values, problem)) {
            return false;
        }
    }
    return true;
}

bool knownKeys(const QJsonObject& json, const QStringList& known, QString* problem) {
    for (const QString& key : json.keys()) {
        if (!known.contains(key)) {
            *problem = QString("there is no key '%1' (%2)").arg(key, known.join(", "));
            return false;
        }
    }
    return true;
}

}  // namespace sim
