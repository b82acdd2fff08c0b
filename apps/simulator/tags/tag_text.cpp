#include "apps/simulator/tags/tag_text.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QStringList>
#include <utility>

#include "apps/simulator/values/json_values.h"

namespace sim {

namespace {

/// The character after the backslash at `at`, and how many characters it is written with: \xHH is
/// the one of that code, any other means itself. 0 for a backslash at the end.
int unescape(const QString& text, int at, QChar* c) {
    if (at + 1 == text.size()) {
        return 0;
    }
    bool isCode = false;
    const uint code = text.mid(at + 2, 2).toUInt(&isCode, 16);
    if (text.at(at + 1) == QChar('x') && isCode && at + 3 < text.size()) {
        *c = QChar(code);
        return 3;
    }
    *c = text.at(at + 1);
    return 1;
}

/// Splits "a,b" at its commas. Double quotes keep blanks and commas.
bool splitValues(const QString& text, QStringList* values, QString* problem) {
    QString value;
    bool inside = false;
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text.at(i);
        if (c == '\\') {
            QChar plain;
            const int length = unescape(text, i, &plain);
            if (length == 0) {
                *problem = "a backslash at the end of the values";
                return false;
            }
            value += plain;
            i += length;
        } else if (c == '"') {
            inside = !inside;
        } else if (c == ',' && !inside) {
            values->append(value);
            value = QString();
        } else {
            value += c;
        }
    }
    values->append(value);
    if (inside) {
        *problem = "a double quote is not closed";
    }
    return !inside;
}

bool parseBound(const QString& text, uint32_t* value) {
    bool ok = false;
    *value = text.toUInt(&ok);
    return ok && *value <= 0x7FFFFFFF;
}

/// "10" is 0..9, "2..5" is as it says.
bool parseDimension(const QString& text, Dimension* dimension, QString* problem) {
    const int dots = text.indexOf("..");
    bool ok = false;
    if (dots < 0) {
        ok = parseBound(text, &dimension->upper) && dimension->upper > 0;
        dimension->upper -= 1;
    } else {
        ok = parseBound(text.left(dots), &dimension->lower) &&
             parseBound(text.mid(dots + 2), &dimension->upper) &&
             dimension->lower <= dimension->upper;
    }
    if (!ok) {
        *problem = QString("'%1' is no dimension (10 or 2..5)").arg(text);
    }
    return ok;
}

bool checkName(const QString& name, QString* problem) {
    if (size_t(name.size()) > kMaxTagName) {
        *problem = QString("a name has at most %1 characters, this one %2")
                       .arg(kMaxTagName)
                       .arg(name.size());
        return false;
    }
    static const QRegularExpression form(
        QRegularExpression::anchoredPattern("[A-Za-z_][A-Za-z0-9_]*(\\.[A-Za-z_][A-Za-z0-9_]*)*"));
    if (!form.match(name).hasMatch()) {
        *problem = "a name is made of letters, digits and underscores and begins with no digit";
        return false;
    }
    return true;
}

/// Stores the values from `first` on, all of them or none.
bool storeValues(Tag& tag, size_t first, const QStringList& values, QString* problem) {
    if (size_t(values.size()) > tag.count() - first) {
        *problem = QString("%1 values for %2 elements").arg(values.size()).arg(tag.count() - first);
        return false;
    }
    Bytes bytes;
    std::vector<std::string> strings(size_t(values.size()));
    for (size_t i = 0; i < strings.size(); ++i) {
        const bool ok = tag.type().code == kString
                            ? parseString(values.at(int(i)), &strings[i], problem)
                            : parseValue(tag.type(), values.at(int(i)).trimmed(), &bytes, problem);
        if (!ok) {
            return false;
        }
    }
    if (tag.type().code == kString) {
        for (size_t i = 0; i < strings.size(); ++i) {
            tag.string(first + i) = strings[i];
        }
    } else {
        std::copy(bytes.begin(), bytes.end(), tag.bytes(first));
    }
    return true;
}

/// What an "=" separates; no "=" leaves the values empty.
bool splitAssignment(const QString& text, QString* left, QStringList* values, QString* problem) {
    const int equals = text.indexOf('=');
    *left = text.left(equals).trimmed();
    return equals < 0 || splitValues(text.mid(equals + 1), values, problem);
}

/// Takes "[...]" off the end of the text; the inner text is null when there is none.
QString takeBrackets(QString* text, bool* ok) {
    const int open = text->indexOf('[');
    *ok = open < 0 ? !text->contains(']') : text->endsWith(']');
    if (open < 0 || !*ok) {
        return QString();
    }
    QString inside = text->mid(open + 1, text->size() - open - 2);
    text->truncate(open);
    return inside.isNull() ? QString("") : inside;
}

bool findElement(const QString& text, const TagTable& table, Tag** tag, size_t* element,
                 bool* indexed, QString* problem) {
    bool ok = false;
    QString name = text.trimmed();
    const QString inside = takeBrackets(&name, &ok);
    std::vector<uint32_t> indices;
    if (!inside.isNull()) {
        for (const QString& part : inside.split(',')) {
            uint32_t index = 0;
            ok = ok && parseBound(part.trimmed(), &index);
            indices.push_back(index);
        }
    }
    *tag = ok ? table.findAnyCase(name.toStdString()) : nullptr;
    *indexed = !indices.empty();
    if (!*tag || (*tag)->find(indices, element) != Tag::Place::inside) {
        *problem = QString("there is no '%1'").arg(text.trimmed());
        return false;
    }
    return true;
}

QString elementText(Tag& tag, size_t element) {
    if (tag.type().code != kString) {
        return valueText(tag.type(), tag.bytes(element));
    }
    QString text;
    for (const char character : tag.string(element)) {
        const uint code = static_cast<unsigned char>(character);
        if (code < 0x20 || code > 0x7E) {
            text += QString("\\x%1").arg(code, 2, 16, QChar('0'));
        } else {
            text += QString(code == '"' || code == '\\' ? "\\%1" : "%1").arg(QChar(code));
        }
    }
    return '"' + text + '"';
}

bool addJsonTag(const QJsonObject& json, TagTable& table, QString* problem) {
    if (!knownKeys(json, {"name", "type", "dims", "value"}, problem)) {
        return false;
    }
    const QJsonValue dims = json.value("dims");
    QString dimsText;
    if (dims.isDouble()) {
        dimsText = QString::number(dims.toDouble(), 'g', 17);
    } else if (dims.isString()) {
        dimsText = dims.toString();
    } else if (!dims.isUndefined()) {
        *problem = "dims is neither a number nor a string such as \"2..5,0..3\"";
        return false;
    }
    QStringList values;
    return jsonValues(json.value("value"), &values, problem) &&
           addTag(json.value("name").toString(), json.value("type").toString(), dimsText, values,
                  table, problem);
}

}  // namespace

bool parseDimensions(const QString& text, std::vector<Dimension>* dimensions, QString* problem) {
    const QStringList parts = text.split(',');
    if (size_t(parts.size()) > kMaxDimensions) {
        *problem = QString("more than %1 dimensions").arg(kMaxDimensions);
        return false;
    }
    uint64_t elements = 1;
    for (const QString& part : parts) {
        Dimension dimension;
        if (!parseDimension(part.trimmed(), &dimension, problem)) {
            return false;
        }
        // Both factors stay below 2^32, so the product does not leave 64 bits.
        elements *= dimension.size();
        if (elements > kMaxElements) {
            *problem = QString("more than %1 elements").arg(kMaxElements);
            return false;
        }
        dimensions->push_back(dimension);
    }
    return true;
}

bool addTag(const QString& name, const QString& typeName, const QString& dims,
            const QStringList& values, TagTable& table, QString* problem) {
    const ValueType* type = findType(typeName);
    if (!type) {
        *problem = QString("there is no type '%1' (%2)").arg(typeName, typeNames());
        return false;
    }
    std::vector<Dimension> dimensions;
    if (!checkName(name, problem) ||
        (!dims.isNull() && !parseDimensions(dims, &dimensions, problem))) {
        return false;
    }
    Tag tag(name.toStdString(), *type, std::move(dimensions));
    if (!storeValues(tag, 0, values, problem)) {
        return false;
    }
    if (!table.add(std::move(tag))) {
        *problem = "there is a tag of this name already";
        return false;
    }
    return true;
}

bool addTagFromText(const QString& text, TagTable& table, QString* problem) {
    QString declaration;
    QStringList values;
    QString why;
    bool ok = splitAssignment(text, &declaration, &values, &why);
    const int colon = declaration.indexOf(':');
    if (ok && colon < 0) {
        why = "NAME:TYPE[dims]=values is wanted";
        ok = false;
    }
    if (ok) {
        QString type = declaration.mid(colon + 1).trimmed();
        const QString dims = takeBrackets(&type, &ok);
        why = "a bracket is missing";
        ok = ok &&
             addTag(declaration.left(colon).trimmed(), type.trimmed(), dims, values, table, &why);
    }
    if (!ok) {
        *problem = QString("tag '%1': %2").arg(text, why);
    }
    return ok;
}

bool addTagsFromJson(const QByteArray& json, TagTable& table, QString* problem) {
    QJsonParseError parseError;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parseError);
    if (document.isNull()) {
        *problem = QString("%1 at byte %2").arg(parseError.errorString()).arg(parseError.offset);
        return false;
    }
    const QJsonValue tags = document.object().value("tags");
    if (tags.isUndefined() && document.object().contains("pccc")) {
        return true;
    }
    if (!tags.isArray()) {
        *problem = "{\"tags\": [...]} is wanted";
        return false;
    }
    int number = 0;
    for (const QJsonValue& tag : tags.toArray()) {
        ++number;
        QString why = "an object with name and type is wanted";
        if (!tag.isObject() || !addJsonTag(tag.toObject(), table, &why)) {
            *problem = QString("tag %1 '%2': %3")
                           .arg(number)
                           .arg(tag.toObject().value("name").toString(), why);
            return false;
        }
    }
    return true;
}

bool setTagFromText(const QString& text, TagTable& table, QString* problem) {
    QString place;
    QStringList values;
    if (!splitAssignment(text, &place, &values, problem)) {
        return false;
    }
    if (values.isEmpty()) {
        *problem = "NAME=values is wanted";
        return false;
    }
    Tag* tag = nullptr;
    size_t element = 0;
    bool indexed = false;
    return findElement(place, table, &tag, &element, &indexed, problem) &&
           storeValues(*tag, element, values, problem);
}

bool tagText(const QString& text, const TagTable& table, QString* values, QString* problem) {
    Tag* tag = nullptr;
    size_t element = 0;
    bool indexed = false;
    if (!findElement(text, table, &tag, &element, &indexed, problem)) {
        return false;
    }
    const size_t end = indexed ? element + 1 : tag->count();
    QStringList texts;
    for (; element < end; ++element) {
        texts << elementText(*tag, element);
    }
    *values = texts.join(',');
    return true;
}

}  // namespace sim
