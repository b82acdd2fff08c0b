#include "apps/simulator/values/value_type.h"

#include <QByteArray>
#include <QStringList>
#include <cmath>
#include <cstring>
#include <limits>

namespace sim {

namespace {

const ValueType kTypes[] = {
    {kBool, "BOOL", 1},   {kSint, "SINT", 1},   {kInt, "INT", 2},       {kDint, "DINT", 4},
    {kUsint, "USINT", 1}, {kUint, "UINT", 2},   {kUdint, "UDINT", 4},   {kReal, "REAL", 4},
    {kLreal, "LREAL", 8}, {kDword, "DWORD", 4}, {kString, "STRING", 0},
};

struct Range {
    int64_t low;
    int64_t high;
};

bool isSigned(TypeCode code) {
    return code == kSint || code == kInt || code == kDint;
}

Range rangeOf(const ValueType& type) {
    const int bits = int(8 * type.size);
    if (isSigned(type.code)) {
        return {-(int64_t(1) << (bits - 1)), (int64_t(1) << (bits - 1)) - 1};
    }
    return {0, (int64_t(1) << bits) - 1};
}

uint64_t load(const uint8_t* bytes, size_t size) {
    uint64_t value = 0;
    for (size_t i = 0; i < size; ++i) {
        value |= uint64_t(bytes[i]) << (8 * i);
    }
    return value;
}

void store(uint64_t value, uint8_t* bytes, size_t size) {
    for (size_t i = 0; i < size; ++i) {
        bytes[i] = uint8_t(value >> (8 * i));
    }
}

void append(uint64_t value, size_t size, Bytes* out) {
    out->resize(out->size() + size);
    store(value, out->data() + out->size() - size, size);
}

template <typename Float, typename Bits>
Bits bitsOf(Float value) {
    static_assert(sizeof(Float) == sizeof(Bits), "same width");
    Bits bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

template <typename Float, typename Bits>
Float fromBits(Bits bits) {
    static_assert(sizeof(Float) == sizeof(Bits), "same width");
    Float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

float loadReal(const uint8_t* bytes) {
    return fromBits<float, uint32_t>(uint32_t(load(bytes, 4)));
}

double loadLreal(const uint8_t* bytes) {
    return fromBits<double, uint64_t>(load(bytes, 8));
}

bool parseBool(const QString& text, Bytes* out, QString* problem) {
    const QString word = text.toLower();
    if (word == "1" || word == "true") {
        out->push_back(1);
        return true;
    }
    if (word == "0" || word == "false") {
        out->push_back(0);
        return true;
    }
    *problem = QString("'%1' is no BOOL (0, 1, false, true)").arg(text);
    return false;
}

bool parseInteger(const ValueType& type, const QString& text, Bytes* out, QString* problem) {
    bool ok = false;
    const bool hex = text.startsWith("0x", Qt::CaseInsensitive);
    const qint64 value = hex ? text.mid(2).toLongLong(&ok, 16) : text.toLongLong(&ok, 10);
    const Range range = rangeOf(type);
    // Hexadecimal digits may also give the bit pattern of a negative number.
    const int64_t high = hex ? (int64_t(1) << (8 * type.size)) - 1 : range.high;
    if (!ok || value < range.low || value > high) {
        *problem = QString("'%1' is no %2 (%3..%4)")
                       .arg(text, QString(type.name))
                       .arg(range.low)
                       .arg(range.high);
        return false;
    }
    append(uint64_t(value), type.size, out);
    return true;
}

bool parseFloat(const ValueType& type, const QString& text, Bytes* out, QString* problem) {
    bool ok = false;
    const double value = text.toDouble(&ok);
    if (type.code == kLreal) {
        append(bitsOf<double, uint64_t>(value), 8, out);
    } else {
        ok = ok && (std::isinf(value) || std::isnan(value) ||
                    std::fabs(value) <= double(std::numeric_limits<float>::max()));
        append(bitsOf<float, uint32_t>(ok ? float(value) : 0.0f), 4, out);
    }
    if (!ok) {
        *problem = QString("'%1' is no %2").arg(text, QString(type.name));
    }
    return ok;
}

}  // namespace

const ValueType* findType(const QString& name) {
    for (const ValueType& type : kTypes) {
        if (name.compare(QLatin1String(type.name), Qt::CaseInsensitive) == 0) {
            return &type;
        }
    }
    return nullptr;
}

const ValueType* findType(uint16_t code) {
    for (const ValueType& type : kTypes) {
        if (code == type.code) {
            return &type;
        }
    }
    return nullptr;
}

QString typeNames() {
    QStringList names;
    for (const ValueType& type : kTypes) {
        names << type.name;
    }
    return names.join(", ");
}

bool parseValue(const ValueType& type, const QString& text, Bytes* out, QString* problem) {
    switch (type.code) {
        case kBool:
            return parseBool(text, out, problem);
        case kReal:
        case kLreal:
            return parseFloat(type, text, out, problem);
        case kString:
            *problem = "a STRING is no number";
            return false;
        default:
            return parseInteger(type, text, out, problem);
    }
}

QString valueText(const ValueType& type, const uint8_t* bytes) {
    const uint64_t raw = load(bytes, type.size);
    switch (type.code) {
        case kReal:
            return QString::number(double(loadReal(bytes)), 'g', 9);
        case kLreal:
            return QString::number(loadLreal(bytes), 'g', 17);
        case kSint:
            return QString::number(int8_t(raw));
        case kInt:
            return QString::number(int16_t(raw));
        case kDint:
            return QString::number(int32_t(raw));
        default:
            return QString::number(raw);
    }
}

uint32_t wholeNumber(const ValueType& type, const uint8_t* bytes) {
    if (type.code != kReal && type.code != kLreal) {
        return uint32_t(load(bytes, type.size));
    }
    const double value = type.code == kReal ? double(loadReal(bytes)) : loadLreal(bytes);
    return value >= 0 && value <= 4294967295.0 ? uint32_t(value) : 0;
}

void putNumber(const ValueType& type, uint32_t value, Bytes* out) {
    if (type.code == kReal) {
        append(bitsOf<float, uint32_t>(float(value)), 4, out);
    } else if (type.code == kLreal) {
        append(bitsOf<double, uint64_t>(double(value)), 8, out);
    } else {
        append(value, type.size, out);
    }
}

void countUp(const ValueType& type, uint8_t* bytes) {
    if (type.code == kReal) {
        store(bitsOf<float, uint32_t>(loadReal(bytes) + 1.0f), bytes, 4);
    } else if (type.code == kLreal) {
        store(bitsOf<double, uint64_t>(loadLreal(bytes) + 1.0), bytes, 8);
    } else if (type.isNumeric()) {
        store(load(bytes, type.size) + 1, bytes, type.size);
    }
}

bool parseString(const QString& text, std::string* out, QString* problem) {
    if (size_t(text.size()) > kMaxStringLength) {
        *problem = QString("a STRING has at most %1 characters, this one %2")
                       .arg(kMaxStringLength)
                       .arg(text.size());
        return false;
    }
    for (const QChar c : text) {
        if (c.unicode() > 0xFF) {
            *problem = QString("the character '%1' has no single byte").arg(c);
            return false;
        }
    }
    const QByteArray latin1 = text.toLatin1();
    out->assign(latin1.constData(), size_t(latin1.size()));
    return true;
}

}  // namespace sim
