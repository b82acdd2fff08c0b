#ifndef COMMON_HEX_H
#define COMMON_HEX_H

#include <QByteArray>

/// The number that `length` characters of `text` write in hexadecimal, after an optional "0x" or
/// "0X". 0 for a character that is no hexadecimal digit, for no digits, and for a number of more
/// than 32 bits. Reads no character after `length`. Any thread.
unsigned int HexToUInt(const char* text, int length);

/// The bytes as two upper-case hexadecimal digits each, with blanks between them: "01 FF". Any
/// thread.
QByteArray spacedHex(const QByteArray& data);

/// Prints `data` to the debug output: lines of "offset: bytes" with up to 16 bytes each, in
/// hexadecimal ("0010: 01 FF"); "(empty)" for no bytes. Any thread.
void dumpByteArray(const QByteArray& data);

#endif
