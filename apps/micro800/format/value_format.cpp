#include "apps/micro800/format/value_format.h"

#include <QJsonArray>
#include <QStringList>
#include <QtEndian>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <string>
#include <system_error>

#include "apps/micro800/format/escape.h"

namespace {

/// Numbers beyond these are written with an exponent.
const double kSmallestFixed = 1e-4;
const double kLargestFixedReal = 1e9;
const double kLargestFixedLreal = 1e15;

template <typename Float>
QString realText(Float value, double largestFixed) {
    if (std::isnan(value)) {
        return QStringLiteral("nan");
    }
    if (std::isinf(value)) {
        return value < 0 ? QStringLiteral("-inf") : QStringLiteral("inf");
    }
    const Float magnitude = std::fabs(value);
    const bool fixed =
        magnitude == 0 || (magnitude >= Float(kSmallestFixed) && magnitude < Float(largestFixed));
    char text[64];
    const auto end =
        std::to_chars(text, text + sizeof text, value,
                      fixed ? std::chars_format::fixed : std::chars_format::scientific);
    return QString::fromLatin1(text, static_cast<int>(end.ptr - text));
}

template <typename Bits, typename Float>
Float realFrom(const char* bytes) {
    const Bits bits = qFromLittleEndian<Bits>(bytes);
    Float value;
    static_assert(sizeof bits == sizeof value, "same size");
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

quint64 unsignedFrom(const char* bytes, int size) {
    quint64 value = 0;
    for (int i = size - 1; i >= 0; --i) {
        value = value << 8 | static_cast<unsigned char>(bytes[i]);
    }
    return value;
}

qint64 signedFrom(const char* bytes, int size) {
    const int unusedBits = 64 - 8 * size;
    return static_cast<qint64>(unsignedFrom(bytes, size) << unusedBits) >> unusedBits;
}

void appendLittleEndian(quint64 value, int size, QByteArray* bytes) {
    for (int i = 0; i < size; ++i) {
        bytes->append(static_cast<char>(value >> (8 * i)));
    }
}

QString hexText(const TagType& type, const char* bytes) {
    const QString digits = QString::number(unsignedFrom(bytes, type.size), 16).toUpper();
    return QLatin1String("0x") + digits.rightJustified(2 * type.size, QLatin1Char('0'));
}

bool isWholeNumber(const TagType& type) {
    return type.kind == ValueKind::kSigned || type.kind == ValueKind::kUnsigned;
}

QString elementText(const TagType& type, const char* bytes, NumberBase base) {
    if (base == NumberBase::kHexadecimal && isWholeNumber(type)) {
        return hexText(type, bytes);
    }
    switch (type.kind) {
        case ValueKind::kBool:
            return *bytes ? QStringLiteral("true") : QStringLiteral("false");
        case ValueKind::kSigned:
            return QString::number(signedFrom(bytes, type.size));
        case ValueKind::kUnsigned:
            return QString::number(unsignedFrom(bytes, type.size));
        case ValueKind::kReal:
            return type.size == 4 ? realText(realFrom<quint32, float>(bytes), kLargestFixedReal)
                                  : realText(realFrom<quint64, double>(bytes), kLargestFixedLreal);
        case ValueKind::kString:
            break;
    }
    return QString();
}

QJsonValue elementJson(const TagType& type, const char* bytes, NumberBase base) {
    const QString text = elementText(type, bytes, base);
    if (base == NumberBase::kHexadecimal && isWholeNumber(type)) {
        return text;
    }
    switch (type.kind) {
        case ValueKind::kBool:
            return *bytes != 0;
        case ValueKind::kReal: {
            // By way of the text, so that a REAL of 0.1 stays 0.1.
            const double number = text.toDouble();
            return std::isfinite(number) ? QJsonValue(number) : QJsonValue(text);
        }
        default:
            return text.toDouble();  // at most 32 bits: exact
    }
}

/// The string's characters without the driver's padding.
QByteArray withoutPadding(const QByteArray& bytes) {
    int length = bytes.size();
    while (length > 0 && bytes.at(length - 1) == '\0') {
        --length;
    }
    return bytes.left(length);
}

bool holdsElements(const TagType& type, const QByteArray& bytes, int count) {
    return count >= 1 && qint64(count) * type.size <= bytes.size();
}

/// All of them: without the size Qt ends the text at the first zero byte.
QString fromLatin1(const QByteArray& characters) {
    return QString::fromLatin1(characters.constData(), characters.size());
}

// ---- text to bytes ------------------------------------------------------------------------

QString rangeText(const TagType& type) {
    const int bits = 8 * type.size;
    if (type.kind == ValueKind::kUnsigned) {
        return QStringLiteral("0 to %1").arg((quint64(1) << bits) - 1);
    }
    const qint64 largest = (qint64(1) << (bits - 1)) - 1;
    return QStringLiteral("%1 to %2").arg(-largest - 1).arg(largest);
}

QString doesNotFit(const TagType& type, const QString& text) {
    return QStringLiteral("%1 does not fit %2 (%3)").arg(text, type.name, rangeText(type));
}

/// Sign and magnitude of a whole number in decimal or 0x form. False when the text is none;
/// `tooBig` when it is one beyond 64 bits.
bool parseWhole(const std::string& text, bool* negative, quint64* magnitude, bool* tooBig) {
    const char* at = text.data();
    const char* const end = at + text.size();
    *negative = at != end && *at == '-';
    if (at != end && (*at == '-' || *at == '+')) {
        ++at;
    }
    int base = 10;
    if (end - at > 2 && at[0] == '0' && (at[1] == 'x' || at[1] == 'X')) {
        base = 16;
        at += 2;
    }
    const auto result = std::from_chars(at, end, *magnitude, base);
    *tooBig = result.ec == std::errc::result_out_of_range;
    return result.ptr == end && (result.ec == std::errc() || *tooBig);
}

bool appendWhole(const TagType& type, const QString& text, QByteArray* bytes, QString* problem) {
    bool negative = false;
    bool tooBig = false;
    quint64 magnitude = 0;
    if (!parseWhole(text.toStdString(), &negative, &magnitude, &tooBig)) {
        *problem = QStringLiteral("%1 is not a whole number").arg(text);
        return false;
    }
    const int bits = 8 * type.size;
    quint64 largest = (quint64(1) << bits) - 1;
    quint64 smallest = 0;  // as a magnitude
    if (type.kind == ValueKind::kSigned) {
        smallest = quint64(1) << (bits - 1);
        largest = smallest - 1;
    }
    if (tooBig || magnitude > (negative ? smallest : largest)) {
        *problem = doesNotFit(type, text);
        return false;
    }
    appendLittleEndian(negative ? 0 - magnitude : magnitude, type.size, bytes);
    return true;
}

template <typename Bits, typename Float>
bool appendReal(const TagType& type, const QString& text, QByteArray* bytes, QString* problem) {
    const std::string latin1 = text.toStdString();
    const char* at = latin1.data();
    const char* const end = at + latin1.size();
    if (end - at > 1 && at[0] == '+' && at[1] != '-') {
        ++at;  // from_chars knows no plus
    }
    Float value = 0;
    const auto result = std::from_chars(at, end, value);
    if (result.ptr != end || result.ec == std::errc::invalid_argument) {
        *problem = QStringLiteral("%1 is not a number").arg(text);
        return false;
    }
    if (result.ec == std::errc::result_out_of_range) {
        *problem = QStringLiteral("%1 does not fit %2 (its magnitude is too large or too small)")
                       .arg(text, type.name);
        return false;
    }
    if (!std::isfinite(value)) {
        *problem = QStringLiteral("%1 is not a finite number; a %2 is only written with one")
                       .arg(text, type.name);
        return false;
    }
    Bits bits;
    std::memcpy(&bits, &value, sizeof bits);
    appendLittleEndian(bits, type.size, bytes);
    return true;
}

bool appendBool(const QString& text, QByteArray* bytes, QString* problem) {
    const QString lower = text.toLower();
    const bool isTrue = QStringList{QStringLiteral("true"), QStringLiteral("1"),
                                    QStringLiteral("on"), QStringLiteral("yes")}
                            .contains(lower);
    const bool isFalse = QStringList{QStringLiteral("false"), QStringLiteral("0"),
                                     QStringLiteral("off"), QStringLiteral("no")}
                             .contains(lower);
    if (!isTrue && !isFalse) {
        *problem =
            QStringLiteral("%1 is not a BOOL (true, false, on, off, yes, no, 1 or 0)").arg(text);
        return false;
    }
    bytes->append(isTrue ? '\1' : '\0');
    return true;
}

bool appendString(const QString& text, QByteArray* bytes, QString* problem) {
    if (text.isEmpty()) {
        *problem = QStringLiteral("\"\" cannot be written: the driver sends no empty string");
        return false;
    }
    for (const QChar character : text) {
        if (character.unicode() > 0xFF) {
            *problem =
                QStringLiteral("%1 does not fit STRING (one byte a character, Latin-1)").arg(text);
            return false;
        }
    }
    if (text.size() > kLongestString) {
        *problem =
            QStringLiteral("%1... does not fit STRING (%2 characters, at most %3)")
                .arg(text.left(20), QString::number(text.size()), QString::number(kLongestString));
        return false;
    }
    bytes->append(text.toLatin1());
    return true;
}

}  // namespace

QString quotedString(const QByteArray& characters) {
    return quotedText(fromLatin1(characters));
}

QString valueText(const TagType& type, const QByteArray& bytes, int count, NumberBase base) {
    if (type.kind == ValueKind::kString) {
        return quotedString(withoutPadding(bytes));
    }
    if (!holdsElements(type, bytes, count)) {
        return QString();
    }
    QString text = elementText(type, bytes.constData(), base);
    for (int i = 1; i < count; ++i) {
        text += QLatin1Char(' ') + elementText(type, bytes.constData() + i * type.size, base);
    }
    return text;
}

QJsonValue valueJson(const TagType& type, const QByteArray& bytes, int count, NumberBase base) {
    if (type.kind == ValueKind::kString) {
        return fromLatin1(withoutPadding(bytes));
    }
    if (!holdsElements(type, bytes, count)) {
        return QJsonValue();
    }
    if (count == 1) {
        return elementJson(type, bytes.constData(), base);
    }
    QJsonArray values;
    for (int i = 0; i < count; ++i) {
        values.append(elementJson(type, bytes.constData() + i * type.size, base));
    }
    return values;
}

bool appendValue(const TagType& type, const QString& text, QByteArray* bytes, QString* problem) {
    switch (type.kind) {
        case ValueKind::kBool:
            return appendBool(text, bytes, problem);
        case ValueKind::kSigned:
        case ValueKind::kUnsigned:
            return appendWhole(type, text, bytes, problem);
        case ValueKind::kReal:
            return type.size == 4 ? appendReal<quint32, float>(type, text, bytes, problem)
                                  : appendReal<quint64, double>(type, text, bytes, problem);
        case ValueKind::kString:
            return appendString(text, bytes, problem);
    }
    return false;
}
