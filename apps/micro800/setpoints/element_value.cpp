#include "apps/micro800/setpoints/element_value.h"

#include <QJsonDocument>
#include <QtEndian>
#include <cmath>
#include <cstring>
#include <limits>

#include "apps/micro800/base/problem.h"
#include "apps/micro800/format/value_format.h"

namespace {

/// Enough for every double to come back.
const int kDoubleDigits = 17;

template <typename Bits, typename Float>
QByteArray realBytes(Float value) {
    Bits bits;
    static_assert(sizeof bits == sizeof value, "same size");
    std::memcpy(&bits, &value, sizeof bits);
    QByteArray bytes(sizeof bits, '\0');
    qToLittleEndian(bits, bytes.data());
    return bytes;
}

QByteArray realElement(const TagType& type, double value) {
    return type.size == 4 ? realBytes<quint32>(static_cast<float>(value))
                          : realBytes<quint64>(value);
}

/// The values that a program is not to write by hand, but that a controller may contain.
bool specialReal(const TagType& type, const QString& text, QByteArray* element) {
    const double infinity = std::numeric_limits<double>::infinity();
    const struct {
        const char* text;
        double value;
    } specials[] = {
        {"inf", infinity}, {"-inf", -infinity}, {"nan", std::numeric_limits<double>::quiet_NaN()}};
    for (const auto& special : specials) {
        if (text == QLatin1String(special.text)) {
            *element = realElement(type, special.value);
            return true;
        }
    }
    return false;
}

/// An empty string is a value here, although the driver cannot write it.
bool stringFrom(const QString& text, QByteArray* element, QString* problem) {
    element->clear();
    return text.isEmpty() ||
           appendValue(*tagTypeByPrefix(QStringLiteral("STRING0")), text, element, problem);
}

QString shownJson(const QJsonValue& json) {
    return json.isDouble()   ? QString::number(json.toDouble(), 'g', kDoubleDigits)
           : json.isString() ? json.toString()
           : json.isBool()
               ? QString(json.toBool() ? QStringLiteral("true") : QStringLiteral("false"))
               : QStringLiteral("null");
}

}  // namespace

QByteArray normalElement(const TagType& type, const QByteArray& bytes) {
    if (type.kind == ValueKind::kBool) {
        return QByteArray(1, !bytes.isEmpty() && bytes.at(0) ? '\1' : '\0');
    }
    if (type.kind == ValueKind::kString) {
        int length = bytes.size();
        while (length > 0 && bytes.at(length - 1) == '\0') {
            --length;
        }
        return bytes.left(length);
    }
    QByteArray special;
    if (type.kind == ValueKind::kReal && valueText(type, bytes, 1) == QLatin1String("nan") &&
        specialReal(type, QStringLiteral("nan"), &special)) {
        return special;
    }
    return bytes.left(type.size);
}

QJsonValue elementJson(const TagType& type, const QByteArray& element) {
    if (type.kind == ValueKind::kString) {
        return QString::fromLatin1(element.constData(), element.size());
    }
    const QString text = valueText(type, element, 1);
    if (type.kind == ValueKind::kReal && text == QLatin1String("-0")) {
        return text;
    }
    return valueJson(type, element, 1);
}

bool elementFrom(const TagType& type, const QJsonValue& json, QByteArray* element,
                 QString* problem) {
    const QString text = shownJson(json);
    if (type.kind == ValueKind::kString) {
        return json.isString() ? stringFrom(text, element, problem)
                               : fail(problem, QStringLiteral("%1 is not a string").arg(text));
    }
    element->clear();
    if (json.isString() && type.kind == ValueKind::kReal && specialReal(type, text, element)) {
        return true;
    }
    if (json.isBool() != (type.kind == ValueKind::kBool)) {
        return fail(problem, QStringLiteral("%1 is not a %2").arg(text, QLatin1String(type.name)));
    }
    return appendValue(type, text, element, problem);
}

QString elementText(const TagType& type, const QByteArray& element) {
    return valueText(type, element, 1);
}
