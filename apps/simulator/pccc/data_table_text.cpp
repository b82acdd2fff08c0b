#include "apps/simulator/pccc/data_table_text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <algorithm>

#include "apps/simulator/values/json_values.h"
#include "apps/simulator/values/value_type.h"

namespace sim {

namespace {

/// The types that a number of this file may be written as; the first is how it is read.
struct NumberTypes {
    TypeCode shown;
    TypeCode other;
};

NumberTypes numberTypes(const FileType& type) {
    if (type.data == kPcccFloat) {
        return {kReal, kReal};
    }
    if (type.unit > kPcccWord) {
        return {kDint, kUdint};
    }
    return type.data == kPcccBitString ? NumberTypes{kUint, kInt} : NumberTypes{kInt, kUint};
}

bool parseNumbers(const FileType& type, const QStringList& values, Bytes* bytes, QString* problem) {
    const NumberTypes types = numberTypes(type);
    for (const QString& value : values) {
        const QString text = value.trimmed();
        QString ignored;
        if (!parseValue(*findType(types.other), text, bytes, &ignored) &&
            !parseValue(*findType(types.shown), text, bytes, problem)) {
            return false;
        }
    }
    return true;
}

/// Stores the numbers from the byte `at` on, all of them or none.
bool storeNumbers(DataFile& file, size_t at, const QStringList& values, QString* problem) {
    Bytes bytes;
    if (!parseNumbers(*file.type, values, &bytes, problem)) {
        return false;
    }
    if (bytes.size() > file.bytes.size() - at) {
        *problem = QString("%1 numbers where there is room for %2")
                       .arg(values.size())
                       .arg((file.bytes.size() - at) / file.type->unit);
        return false;
    }
    std::copy(bytes.begin(), bytes.end(), file.bytes.begin() + long(at));
    return true;
}

/// "N7": the type, and the number that is in range.
const FileType* parseFileName(const QString& text, uint32_t* number, QString* problem) {
    static const QRegularExpression form(QRegularExpression::anchoredPattern("([A-Za-z])([0-9]+)"));
    const QRegularExpressionMatch match = form.match(text);
    const FileType* type =
        match.hasMatch() ? findFileType(match.captured(1).at(0).toUpper().toLatin1()) : nullptr;
    bool ok = false;
    *number = match.captured(2).toUInt(&ok);
    if (!type || !ok || *number > kMaxFileNumber) {
        *problem = QString("'%1' is no file: a letter of SBTCRNFL and a number up to %2")
                       .arg(text)
                       .arg(kMaxFileNumber);
        return nullptr;
    }
    return type;
}

bool addFile(const QString& name, uint32_t elements, const QStringList& values, DataTable& table,
             QString* problem) {
    uint32_t number = 0;
    const FileType* type = parseFileName(name, &number, problem);
    if (!type) {
        return false;
    }
    if (elements < 1 || elements > kMaxFileElements) {
        *problem = QString("a file has from 1 to %1 elements").arg(kMaxFileElements);
        return false;
    }
    DataFile file(*type, elements);
    if (!storeNumbers(file, 0, values, problem)) {
        return false;
    }
    table.put(number, file);
    return true;
}

bool addJsonFile(const QJsonObject& json, DataTable& table, QString* problem) {
    if (!knownKeys(json, {"file", "elements", "value"}, problem)) {
        return false;
    }
    const QJsonValue elements = json.value("elements");
    const double count = elements.toDouble(elements.isUndefined() ? 1 : 0);
    QStringList values;
    return jsonValues(json.value("value"), &values, problem) &&
           addFile(json.value("file").toString(),
                   count >= 1 && count <= kMaxFileElements ? uint32_t(count) : 0, values, table,
                   problem);
}

/// The place that an address names.
struct Place {
    DataFile* file = nullptr;
    size_t at = 0;
    size_t size = 0;
};

/// "ACC", or "2"; -1 for no word of that type.
int wordNumber(const FileType& type, const QString& text) {
    for (size_t i = 0; type.isStructure() && i < type.units; ++i) {
        if (text == QString::number(i) || text.toUpper() == QLatin1String(type.words[i])) {
            return int(i);
        }
    }
    return -1;
}

bool findPlace(const QString& text, DataTable& table, Place* place, QString* problem) {
    static const QRegularExpression form(
        QRegularExpression::anchoredPattern("([A-Za-z][0-9]+):([0-9]+)(?:\\.([A-Za-z0-9]+))?"));
    const QRegularExpressionMatch match = form.match(text.trimmed());
    *problem = QString("there is no '%1'").arg(text.trimmed());
    uint32_t number = 0;
    QString ignored;
    const FileType* type = parseFileName(match.captured(1), &number, &ignored);
    place->file = type ? table.find(number) : nullptr;
    bool ok = false;
    const uint element = match.captured(2).toUInt(&ok);
    if (!place->file || place->file->type != type || !ok || element >= place->file->elements) {
        return false;
    }
    place->at = element * type->elementSize();
    place->size = type->elementSize();
    if (!match.captured(3).isEmpty()) {
        const int word = wordNumber(*type, match.captured(3));
        place->at += size_t(std::max(word, 0)) * type->unit;
        place->size = type->unit;
        return word >= 0;
    }
    return true;
}

}  // namespace

bool addFileFromText(const QString& text, DataTable& table, QString* problem) {
    static const QRegularExpression form(
        QRegularExpression::anchoredPattern("([^\\[=]*)(?:\\[([0-9]+)\\])?(?:=(.*))?"));
    const QRegularExpressionMatch match = form.match(text);
    QString why = "FILE[elements]=values is wanted";
    bool ok = match.hasMatch();
    if (ok) {
        const QString count = match.captured(2);
        const QString values = match.captured(3);
        ok = addFile(match.captured(1).trimmed(), count.isEmpty() ? 1 : count.toUInt(),
                     values.isEmpty() ? QStringList() : values.split(','), table, &why);
    }
    if (!ok) {
        *problem = QString("file '%1': %2").arg(text, why);
    }
    return ok;
}

bool addFilesFromJson(const QByteArray& json, DataTable& table, QString* problem) {
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (document.isNull()) {
        *problem = QString("%1 at byte %2").arg(parseError.errorString()).arg(parseError.offset);
        return false;
    }
    const QJsonValue files = document.object().value("pccc");
    if (!files.isUndefined() && !files.isArray()) {
        *problem = "{\"pccc\": [...]} is wanted";
        return false;
    }
    int number = 0;
    for (const QJsonValue& file : files.toArray()) {
        ++number;
        QString why = "an object with file, elements and value is wanted";
        if (!file.isObject() || !addJsonFile(file.toObject(), table, &why)) {
            *problem = QString("file %1 '%2': %3")
                           .arg(number)
                           .arg(file.toObject().value("file").toString(), why);
            return false;
        }
    }
    return true;
}

bool isFileAddress(const QString& text) {
    return text.left(text.indexOf('=')).contains(':');
}

bool setFileFromText(const QString& text, DataTable& table, QString* problem) {
    const int equals = text.indexOf('=');
    if (equals < 0) {
        *problem = "ADDRESS=values is wanted";
        return false;
    }
    Place place;
    return findPlace(text.left(equals), table, &place, problem) &&
           storeNumbers(*place.file, place.at, text.mid(equals + 1).split(','), problem);
}

bool fileText(const QString& text, DataTable& table, QString* values, QString* problem) {
    Place place;
    if (!findPlace(text, table, &place, problem)) {
        return false;
    }
    const FileType& type = *place.file->type;
    const ValueType& shown = *findType(uint16_t(numberTypes(type).shown));
    QStringList texts;
    for (size_t at = place.at; at < place.at + place.size; at += type.unit) {
        texts << valueText(shown, place.file->bytes.data() + at);
    }
    *values = texts.join(',');
    return true;
}

}  // namespace sim
