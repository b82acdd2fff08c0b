#ifndef EIP_CIP_REQUEST_PATH_H
#define EIP_CIP_REQUEST_PATH_H

#include <cstdint>

// The request path (IOI) of a tag name: symbol segments 0x91 (CIP Networks Library Vol. 1, C-1.4.5)
// and element segments 0x28, 0x29, 0x2A (C-1.4.2). Each function returns the number of bytes it
// writes; with a null buffer it writes nothing and only counts, so that a caller measures first and
// then fills. Any text terminates: nothing is read past its end and nothing fails; a name that no
// controller could have simply gives a path that it will refuse.

/// The path of a whole name such as Udt.Member[3,70000].Low. A missing ']' counts as standing at
/// the end. An empty name gives 0 bytes.
int _BuildIOI(unsigned char* buffer, const char* tagName);

/// One name segment: 0x91, n, n bytes, a zero byte when n is odd. n is the shortest of the text's
/// length, `maxLength` and 255; nothing when that is below 1.
int _BuildIOIString(unsigned char* buffer, const char* name, int maxLength);

/// Element segments for the comma-separated decimal numbers in the first `length` bytes of `text`.
/// A number is read as strtol does, but is held within 32 bits; an empty place adds nothing.
int _BuildIOIArray(unsigned char* buffer, const char* text, int length);

/// One element segment. Below 256: 0x28 and the low byte (negative values too); below 65536: 0x29,
/// 0 and 16 bits; otherwise 0x2A, 0 and 32 bits.
int _AddSegmentValue(unsigned char* buffer, int32_t value);

#endif
