#ifndef EIP_CIP_REQUEST_PATH_H
#define EIP_CIP_REQUEST_PATH_H

#include <cstdint>

// The request path (IOI) of a tag name: symbol segments 0x91 (CIP Networks Library Vol. 1, C-1.4.5)
// and element segments 0x28, 0x29, 0x2A (C-1.4.2). Each function clears the error record and
// returns the number of bytes it writes; with a null buffer it writes nothing and only counts, so
// that a caller measures first and then fills. Any text terminates: nothing is read past its end.
// A name that no controller could have gives a path that it will refuse; only a part that exceeds a
// segment fails.

/// The path of a whole name such as Udt.Member[3,70000].Low. A missing ']' counts as being at
/// the end. An empty name gives 0 bytes. -1 with (0, -31, 0) for a name with a part that
/// _BuildIOIString refuses; the buffer then contains the segments before that part.
int _BuildIOI(unsigned char* buffer, const char* tagName);

/// One name segment: 0x91, n, n bytes, a zero byte when n is odd. n is the shorter of the text's
/// length and `maxLength`; nothing when that is below 1. -1 with (0, -31, 0), nothing written, for
/// n above 255, which the segment's length byte cannot say: cut to 255 bytes it would name another
/// tag.
int _BuildIOIString(unsigned char* buffer, const char* name, int maxLength);

/// Element segments for the comma-separated decimal numbers in the first `length` bytes of `text`.
/// A number is read as strtol does, but is limited to 32 bits; an empty place adds nothing.
int _BuildIOIArray(unsigned char* buffer, const char* text, int length);

/// One element segment. Below 256: 0x28 and the low byte (negative values too); below 65536: 0x29,
/// 0 and 16 bits; otherwise 0x2A, 0 and 32 bits.
int _AddSegmentValue(unsigned char* buffer, int32_t value);

#endif
