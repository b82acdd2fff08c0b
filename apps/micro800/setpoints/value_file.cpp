#include "apps/micro800/setpoints/value_file.h"

#include <QJsonArray>
#include <QJsonDocument>

#include "apps/micro800/base/problem.h"
#include "apps/micro800/format/escape.h"
#include "apps/micro800/setpoints/element_value.h"

namespace {

const char kFormat[] = "micro800-values/1";

QJsonObject valueObject(const SavedValue& value) {
    QJsonArray elements;
    for (const QByteArray& element : value.elements) {
        elements.append(elementJson(value.type(), element));
    }
    return {
        {QStringLiteral("address"), value.address.text},
        {QStringLiteral("type"), QLatin1String(value.type().name)},
        {QStringLiteral("value"), value.address.isRange() ? QJsonValue(elements) : elements.at(0)}};
}

bool elementsFrom(const QJsonValue& json, SavedValue* value, QString* problem) {
    const bool isRange = value->address.isRange();
    if (isRange != json.isArray()) {
        return fail(problem, isRange ? QStringLiteral("a list of values is missing")
                                     : QStringLiteral("one value is wanted, not a list"));
    }
    const QJsonArray list = isRange ? json.toArray() : QJsonArray{json};
    if (list.size() != value->address.count()) {
        return fail(problem, QStringLiteral("%1 values for %2 elements")
                                 .arg(list.size())
                                 .arg(value->address.count()));
    }
    for (const QJsonValue& one : list) {
        QByteArray element;
        if (!elementFrom(value->type(), one, &element, problem)) {
            return false;
        }
        value->elements.append(element);
    }
    return true;
}

bool valueFrom(const QJsonObject& object, SavedValue* value, QString* problem) {
    const QString address = object.value(QStringLiteral("address")).toString();
    if (!parseListedAddress({address, QString()}, &value->address, problem)) {
        return false;
    }
    const QString type = object.value(QStringLiteral("type")).toString();
    if (type != QLatin1String(value->type().name)) {
        return fail(
            problem,
            QStringLiteral("%1: type \"%2\" does not go with the prefix").arg(address, type));
    }
    QString why;
    return elementsFrom(object.value(QStringLiteral("value")), value, &why) ||
           fail(problem, QStringLiteral("%1: %2").arg(address, why));
}

}  // namespace

QByteArray valueFileText(const ValueFile& file) {
    const QJsonObject head{{QStringLiteral("format"), QLatin1String(kFormat)},
                           {QStringLiteral("saved"), file.saved},
                           {QStringLiteral("controller"), file.controller}};
    QByteArray text = jsonText(head);
    text.chop(1);  // its closing brace: the values follow
    text += ",\"values\":[";
    const char* separator = "\n";
    for (const SavedValue& value : file.values) {
        text += separator + jsonText(valueObject(value));
        separator = ",\n";
    }
    for (const UnsavedValue& one : file.unsaved) {
        text += separator + jsonText({{QStringLiteral("address"), one.address},
                                      {QStringLiteral("type"), one.type},
                                      {QStringLiteral("problem"), one.problem}});
        separator = ",\n";
    }
    return text + "\n]}\n";
}

bool parseValueFile(const QByteArray& text, ValueFile* file, QString* problem) {
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (!document.isObject()) {
        const QString where =
            document.isNull()
                ? QStringLiteral("%1 at byte %2").arg(error.errorString()).arg(error.offset)
                : QStringLiteral("not an object");
        return fail(problem, QStringLiteral("not a value file: %1").arg(where));
    }
    const QJsonObject object = document.object();
    const QString format = object.value(QStringLiteral("format")).toString();
    if (format != QLatin1String(kFormat)) {
        return fail(problem, QStringLiteral("not a value file: its format is \"%1\" and not \"%2\"")
                                 .arg(format, QLatin1String(kFormat)));
    }
    const QJsonValue values = object.value(QStringLiteral("values"));
    if (!values.isArray()) {
        return fail(problem, QStringLiteral("not a value file: the list \"values\" is missing"));
    }
    ValueFile result;
    result.saved = object.value(QStringLiteral("saved")).toString();
    result.controller = object.value(QStringLiteral("controller")).toObject();
    int number = 0;
    for (const QJsonValue& one : values.toArray()) {
        ++number;
        const QJsonObject entry = one.toObject();
        if (entry.contains(QStringLiteral("problem"))) {
            result.unsaved.append({entry.value(QStringLiteral("address")).toString(),
                                   entry.value(QStringLiteral("type")).toString(),
                                   entry.value(QStringLiteral("problem")).toString()});
            continue;
        }
        SavedValue value;
        QString why;
        if (!valueFrom(entry, &value, &why)) {
            return fail(problem, QStringLiteral("value %1: %2").arg(QString::number(number), why));
        }
        result.values.append(value);
    }
    *file = result;
    return true;
}
