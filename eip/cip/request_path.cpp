#include "eip/cip/request_path.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "common/digits.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/wire.h"

namespace {

/// Segment types (CIP Networks Library Vol. 1, C-1.4).
const unsigned char kExtendedSymbol = 0x91;
const unsigned char kMember8 = 0x28;
const unsigned char kMember16 = 0x29;
const unsigned char kMember32 = 0x2A;

const int kMaxSymbolLength = 255;

/// Where the next segment goes; null stays null.
unsigned char* behind(unsigned char* buffer, int size) {
    return buffer ? buffer + size : nullptr;
}

int asInt(size_t length) {
    return static_cast<int>(std::min<size_t>(length, INT_MAX));
}

bool isSpace(char c) {
    return c == ' ' || (c >= '\t' && c <= '\r');
}

/// The decimal number that `text` begins with, as strtol reads it but for 32 bits on every machine
/// and never past `length`. 0 when there is none.
int32_t parseNumber(const char* text, int length) {
    int at = 0;
    while (at < length && isSpace(text[at])) {
        ++at;
    }
    bool negative = false;
    if (at < length && (text[at] == '-' || text[at] == '+')) {
        negative = text[at] == '-';
        ++at;
    }
    int64_t magnitude = 0;
    for (; at < length && isDigit(text[at]); ++at) {
        magnitude = std::min<int64_t>(magnitude * 10 + (text[at] - '0'), INT32_MAX);
    }
    return static_cast<int32_t>(negative ? -magnitude : magnitude);
}

}  // namespace

int _BuildIOI(unsigned char* buffer, const char* tagName) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    int size = 0;
    const char* at = tagName ? tagName : "";
    while (*at) {
        const size_t nameLength = strcspn(at, "[.");
        const int segment = _BuildIOIString(behind(buffer, size), at, asInt(nameLength));
        if (segment < 0) {
            return segment;
        }
        size += segment;
        at += nameLength;
        if (*at == '.') {
            ++at;
        } else if (*at == '[') {
            ++at;
            const size_t indexLength = strcspn(at, "]");
            size += _BuildIOIArray(behind(buffer, size), at, asInt(indexLength));
            at += indexLength;
            at += *at ? 1 : 0;
        }
    }
    return size;
}

// 0  1  0x91
// 1  1  n
// 2  n  name, a zero byte after it when n is odd
int _BuildIOIString(unsigned char* buffer, const char* name, int maxLength) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!name || maxLength < 1) {
        return 0;
    }
    const int length = static_cast<int>(strnlen(name, static_cast<size_t>(maxLength)));
    if (length > kMaxSymbolLength) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BUFFER_TOO_SMALL, 0);
        return -1;
    }
    if (length < 1) {
        return 0;
    }
    if (buffer) {
        buffer[0] = kExtendedSymbol;
        buffer[1] = static_cast<unsigned char>(length);
        memcpy(buffer + 2, name, static_cast<size_t>(length));
        if (length & 1) {
            buffer[2 + length] = 0;
        }
    }
    return length + 2 + (length & 1);
}

int _BuildIOIArray(unsigned char* buffer, const char* text, int length) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    int size = 0;
    int at = 0;
    while (text && at < length) {
        const void* comma = memchr(text + at, ',', static_cast<size_t>(length - at));
        const int end = comma ? static_cast<int>(static_cast<const char*>(comma) - text) : length;
        if (end > at) {
            size += _AddSegmentValue(behind(buffer, size), parseNumber(text + at, end - at));
        }
        at = end + 1;
    }
    return size;
}

// 0  1  0x28, 0x29 or 0x2A
// 1  1  the value; or 0 and
// 2  n  the value in 16 or 32 bits
int _AddSegmentValue(unsigned char* buffer, int32_t value) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    unsigned char segment[2 + 4] = {kMember8, static_cast<unsigned char>(value)};
    int size = 2;
    if (value >= 0x10000) {
        segment[0] = kMember32;
        segment[1] = 0;
        cip::putUInt32(segment + 2, static_cast<uint32_t>(value));
        size = 6;
    } else if (value >= 0x100) {
        segment[0] = kMember16;
        segment[1] = 0;
        cip::putUInt16(segment + 2, static_cast<uint16_t>(value));
        size = 4;
    }
    if (buffer) {
        memcpy(buffer, segment, static_cast<size_t>(size));
    }
    return size;
}
