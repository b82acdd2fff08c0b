#include "eip/cip/pccc_types.h"

#include <cstdint>

#include "eip/cip/cip_error.h"

namespace {

/// Half of the flag byte: a value up to 7 is in it, a longer one after it.
const int kLargestInFlag = 7;
const unsigned char kFollows = 0x08;
const unsigned char kCountMask = 0x07;

/// Appends a value's bytes, if it needs any, and returns its half of the flag byte.
unsigned char encodeValue(unsigned char* bytes, int* size, int value) {
    if (value <= kLargestInFlag) {
        return static_cast<unsigned char>(value);
    }
    unsigned char count = 0;
    for (uint32_t rest = static_cast<uint32_t>(value); rest != 0; rest >>= 8) {
        bytes[(*size)++] = static_cast<unsigned char>(rest);
        ++count;
    }
    return kFollows | count;
}

/// Reads a value that half of a flag byte announces; moves `*at` after its bytes.
bool decodeValue(unsigned char half, const unsigned char* data, int length, int* at, int* value) {
    const int count = half & kCountMask;
    if (!(half & kFollows)) {
        *value = count;
        return true;
    }
    if (count > length - *at) {
        return false;
    }
    uint64_t wide = 0;
    for (int i = count - 1; i >= 0; --i) {
        wide = wide << 8 | data[*at + i];
    }
    *at += count;
    *value = static_cast<int>(wide & INT32_MAX);
    return wide <= INT32_MAX;
}

}  // namespace

int _EncodePLCDataType(unsigned char* buffer, int type, int size) {
    if (type < 0 || size < 0) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSUPPORTED_TYPE, 0);
        return 0;
    }
    unsigned char bytes[kMaxPLCDataType];
    int used = 1;
    const unsigned char typeHalf = encodeValue(bytes, &used, type);
    const unsigned char sizeHalf = encodeValue(bytes, &used, size);
    bytes[0] = static_cast<unsigned char>(typeHalf << 4 | sizeHalf);
    for (int i = 0; buffer && i < used; ++i) {
        buffer[i] = bytes[i];
    }
    return used;
}

int _DecodePLCDataType(const unsigned char* data, int length, int* type, int* size) {
    int at = 1;
    if (!data || length < 1 ||
        !decodeValue(static_cast<unsigned char>(data[0] >> 4), data, length, &at, type) ||
        !decodeValue(data[0] & 0x0F, data, length, &at, size)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return 0;
    }
    return at;
}
