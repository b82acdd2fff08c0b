#ifndef TESTS_SUPPORT_HEX_BYTES_H
#define TESTS_SUPPORT_HEX_BYTES_H

#include <QByteArray>

/// The bytes of hexadecimal digits.
inline QByteArray hex(const char* digits) {
    return QByteArray::fromHex(digits);
}

#endif
