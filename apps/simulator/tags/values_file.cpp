#include "apps/simulator/tags/values_file.h"

#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStringList>
#include <algorithm>
#include <vector>

#include "apps/simulator/tags/tag_text.h"
#include "apps/simulator/values/json_values.h"

namespace sim {

namespace {

const char kFormat[] = "micro800-values/1";

/// One entry: a variable, or a part of an array.
struct SavedPart {
    QString name;
    QString type;
    std::vector<Dimension> ranges;  ///< none for a scalar
    QStringList values;             ///< row by row
};

/// All parts of one variable.
struct SavedTag {
    std::vector<SavedPart> parts;
    std::vector<Dimension> bounds;  ///< around all parts
};

uint64_t elementsOf(const std::vector<Dimension>& ranges) {
    uint64_t elements = 1;
    for (const Dimension& range : ranges) {
        elements *= range.size();
        if (elements > kMaxElements) {
            return kMaxElements + 1;
        }
    }
    return elements;
}

/// "DINT0:A[0..9]" with the type DINT. An element alone is a range of one: a bare index would leave
/// open how many dimensions and elements there are.
bool parseAddress(const QString& address, SavedPart* part, QString* problem) {
    const QString prefix = part->type + "0:";
    if (part->type.isEmpty() || !address.startsWith(prefix)) {
        *problem = QString("the address is not of the type '%1'").arg(part->type);
        return false;
    }
    const int open = address.indexOf('[');
    part->name = address.mid(prefix.size(), open < 0 ? -1 : open - prefix.size());
    if (open < 0) {
        return true;
    }
    const QString ranges = address.mid(open + 1, address.size() - open - 2);
    for (const QString& range : ranges.split(',')) {
        if (!range.contains("..") || !address.endsWith(']')) {
            *problem = "an array needs a range for every dimension, such as [0..9,2..5]";
            return false;
        }
    }
    return parseDimensions(ranges, &part->ranges, problem);
}

bool parsePart(const QJsonObject& entry, SavedPart* part, QString* problem) {
    part->type = entry.value("type").toString();
    if (!parseAddress(entry.value("address").toString(), part, problem) ||
        !jsonValues(entry.value("value"), &part->values, problem)) {
        return false;
    }
    const uint64_t wanted = elementsOf(part->ranges);
    if (uint64_t(part->values.size()) != wanted ||
        entry.value("value").isArray() == part->ranges.empty()) {
        *problem = QString("%1 values for %2 elements").arg(part->values.size()).arg(wanted);
        return false;
    }
    return true;
}

bool addPart(const SavedPart& part, SavedTag* tag, QString* problem) {
    if (tag->parts.empty()) {
        tag->bounds = part.ranges;
    } else if (part.ranges.empty() || part.type != tag->parts.front().type ||
               part.ranges.size() != tag->bounds.size()) {
        *problem = "another entry has the same name";
        return false;
    }
    for (size_t i = 0; i < part.ranges.size(); ++i) {
        tag->bounds[i].lower = std::min(tag->bounds[i].lower, part.ranges[i].lower);
        tag->bounds[i].upper = std::max(tag->bounds[i].upper, part.ranges[i].upper);
    }
    tag->parts.push_back(part);
    if (elementsOf(tag->bounds) > kMaxElements) {
        *problem = QString("more than %1 elements").arg(kMaxElements);
        return false;
    }
    return true;
}

/// Where the n-th element of the ranges is among the elements of the bounds around them.
size_t placeOf(size_t n, const std::vector<Dimension>& ranges,
               const std::vector<Dimension>& bounds) {
    size_t place = 0;
    size_t step = 1;
    for (size_t i = ranges.size(); i-- > 0;) {
        const size_t index = n % size_t(ranges[i].size());
        place += (index + ranges[i].lower - bounds[i].lower) * step;
        n /= size_t(ranges[i].size());
        step *= size_t(bounds[i].size());
    }
    return place;
}

QStringList allValues(const SavedTag& tag) {
    const bool isText = tag.parts.front().type == "STRING";
    QStringList values;
    const uint64_t elements = elementsOf(tag.bounds);
    for (uint64_t i = 0; i < elements; ++i) {
        values << (isText ? "" : "0");
    }
    for (const SavedPart& part : tag.parts) {
        for (int n = 0; n < part.values.size(); ++n) {
            values[int(placeOf(size_t(n), part.ranges, tag.bounds))] = part.values.at(n);
        }
    }
    return values;
}

QString dimensionsText(const std::vector<Dimension>& bounds) {
    QStringList texts;
    for (const Dimension& bound : bounds) {
        texts << QString("%1..%2").arg(bound.lower).arg(bound.upper);
    }
    return texts.isEmpty() ? QString() : texts.join(",");
}

/// The variables in the order in which they come first.
bool collect(const QJsonArray& entries, std::vector<SavedTag>* tags, QString* problem) {
    QHash<QString, size_t> byName;
    int number = 0;
    for (const QJsonValue& one : entries) {
        ++number;
        const QJsonObject entry = one.toObject();
        if (entry.contains("problem") && !entry.contains("value")) {
            continue;  // it could not be read when the others were saved
        }
        SavedPart part;
        QString why;
        bool ok = parsePart(entry, &part, &why);
        if (ok) {
            const QString key = part.name.toUpper();
            if (!byName.contains(key)) {
                byName[key] = tags->size();
                tags->emplace_back();
            }
            ok = addPart(part, &(*tags)[byName.value(key)], &why);
        }
        if (!ok) {
            *problem = QString("value %1 '%2': %3")
                           .arg(number)
                           .arg(entry.value("address").toString(), why);
            return false;
        }
    }
    return true;
}

}  // namespace

bool isValuesFile(const QByteArray& json) {
    return QJsonDocument::fromJson(json).object().value("format").toString().startsWith(
        "micro800-values/");
}

bool addTagsFromValues(const QByteArray& json, TagTable& table, QString* problem) {
    const QJsonObject document = QJsonDocument::fromJson(json).object();
    if (document.value("format").toString() != kFormat) {
        *problem = QString("the format '%1' is not known (%2)")
                       .arg(document.value("format").toString(), QString(kFormat));
        return false;
    }
    if (!document.value("values").isArray()) {
        *problem = "{\"values\": [...]} is wanted";
        return false;
    }
    std::vector<SavedTag> tags;
    if (!collect(document.value("values").toArray(), &tags, problem)) {
        return false;
    }
    for (const SavedTag& tag : tags) {
        const SavedPart& first = tag.parts.front();
        QString why;
        if (!addTag(first.name, first.type, dimensionsText(tag.bounds), allValues(tag), table,
                    &why)) {
            *problem = QString("value of '%1': %2").arg(first.name, why);
            return false;
        }
    }
    return true;
}

}  // namespace sim
