#ifndef APPS_SIMULATOR_VALUES_VALUE_TYPE_H
#define APPS_SIMULATOR_VALUES_VALUE_TYPE_H

#include <QString>
#include <cstdint>

#include "apps/simulator/wire/bytes.h"

namespace sim {

/// Elementary data type codes (CIP Networks Library Vol. 1, appendix C).
enum TypeCode : uint16_t {
    kBool = 0xC1,
    kSint = 0xC2,
    kInt = 0xC3,
    kDint = 0xC4,
    kUsint = 0xC6,
    kUint = 0xC7,
    kUdint = 0xC8,
    kReal = 0xCA,
    kLreal = 0xCB,
    kDword = 0xD3,
    kString = 0xDA,  ///< one length byte, then the characters
};

struct ValueType {
    TypeCode code;
    const char* name;
    size_t size;  ///< bytes an element; 0 for STRING, whose elements have lengths of their own
    bool isNumeric() const { return code != kBool && code != kString; }
};

/// The type of this name, without regard to case; null for any other name.
const ValueType* findType(const QString& name);
/// The type of this code; null for any other code.
const ValueType* findType(uint16_t code);
/// "BOOL, SINT, ..." for error messages.
QString typeNames();

/// Appends the little-endian bytes of the value that `text` writes out: a decimal number, for the
/// integer types also 0x and hexadecimal digits, for BOOL 0, 1, true or false. False with the
/// reason in `problem` when the text is no such value or exceeds the type. Not for STRING.
bool parseValue(const ValueType& type, const QString& text, Bytes* out, QString* problem);

/// The value of one element as text; the inverse of parseValue. `bytes` contains type.size bytes.
QString valueText(const ValueType& type, const uint8_t* bytes);

/// The low 32 bits of an element of an integer type, or the integer part of a REAL or LREAL (0 when
/// that is negative or needs more than 32 bits).
uint32_t wholeNumber(const ValueType& type, const uint8_t* bytes);

/// Appends the number as an element of a numeric type; integers narrower than 32 bits keep its low
/// bits.
void putNumber(const ValueType& type, uint32_t value, Bytes* out);

/// Adds 1 to the element of a numeric type, which wraps around at its end. Does nothing for others.
void countUp(const ValueType& type, uint8_t* bytes);

const size_t kMaxStringLength = 255;

/// The characters of a STRING value: one byte each, so up to U+00FF, and at most 255 of them.
bool parseString(const QString& text, std::string* out, QString* problem);

}  // namespace sim

#endif
