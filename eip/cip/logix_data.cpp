#include "eip/cip/logix_data.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/wire.h"

namespace {

const uint32_t kNoMask = 0;
const uint32_t kFullMask = 0xFFFFFFFF;

bool hasElements(const _LGX_Read* read) {
    if (!read || read->count == 0 || read->size == 0) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return false;
    }
    return true;
}

/// Copies the `width` bytes of an element; zeroes and an error when they are not in the record.
void loadElement(const _LGX_Read* read, int index, int width, unsigned char* element) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (index < 0 || index >= read->count) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_OUT_OF_RANGE, 0);
    }
    const int64_t offset = static_cast<int64_t>(index) * read->elementSize;
    const int64_t allocated = static_cast<int64_t>(read->size) + kLgxReadSlack;
    if (offset < 0 || offset > allocated - width) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_OUT_OF_RANGE, 0);
        memset(element, 0, static_cast<size_t>(width));
        return;
    }
    memcpy(element, _GetLGXReadData(read) + offset, static_cast<size_t>(width));
}

uint32_t unsupported() {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSUPPORTED_TYPE, 0);
    return UINT32_MAX;
}

bool isMasked(const _LGX_Read* read) {
    return read->mask != kNoMask && read->mask != kFullMask;
}

template <typename T>
T bitOf(const _LGX_Read* read, uint32_t bits) {
    return (bits & read->mask) != 0 ? T(1) : T(0);
}

/// An element as 32 bits, SINT and INT sign-extended.
uint32_t loadInteger(const _LGX_Read* read, int index) {
    unsigned char element[4];
    switch (read->type) {
        case LGX_TYPE_BOOL:
        case LGX_TYPE_USINT:
            loadElement(read, index, 1, element);
            return element[0];
        case LGX_TYPE_SINT:
            loadElement(read, index, 1, element);
            return static_cast<uint32_t>(static_cast<int8_t>(element[0]));
        case LGX_TYPE_UINT:
            loadElement(read, index, 2, element);
            return cip::getUInt16(element);
        case LGX_TYPE_INT:
            loadElement(read, index, 2, element);
            return static_cast<uint32_t>(static_cast<int16_t>(cip::getUInt16(element)));
        default:
            loadElement(read, index, 4, element);
            return cip::getUInt32(element);
    }
}

bool isIntegerReadable(int type) {
    return type == LGX_TYPE_REAL || (type != LGX_TYPE_LREAL && _GetLGXDataSize(type) > 0);
}

}  // namespace

const unsigned char* _GetLGXReadData(const _LGX_Read* read) {
    return reinterpret_cast<const unsigned char*>(read + 1);
}

void _FreeLGXRead(_LGX_Read* read) {
    free(read);
}

int _GetLGXDataSize(int type) {
    switch (type) {
        case LGX_TYPE_BOOL:
        case LGX_TYPE_SINT:
        case LGX_TYPE_USINT:
            return 1;
        case LGX_TYPE_INT:
        case LGX_TYPE_UINT:
            return 2;
        case LGX_TYPE_DINT:
        case LGX_TYPE_UDINT:
        case LGX_TYPE_REAL:
        case LGX_TYPE_DWORD:
            return 4;
        case LGX_TYPE_LREAL:
            return 8;
        default:
            CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSUPPORTED_TYPE, 0);
            return -1;
    }
}

int _LGXDataType(int number) {
    switch (number) {
        case 1:
            return LGX_TYPE_BOOL;
        case 2:
            return LGX_TYPE_SINT;
        case 3:
            return LGX_TYPE_INT;
        case 4:
            return LGX_TYPE_DINT;
        case 5:
            return LGX_TYPE_REAL;
        default:
            return -1;
    }
}

QByteArray GetLGXValueAsByteArray(const _LGX_Read* read) {
    if (!read) {
        return QByteArray();
    }
    const int wanted = read->type == LGX_TYPE_SHORT_STRING ? read->elementSize : read->size;
    return QByteArray(reinterpret_cast<const char*>(_GetLGXReadData(read)),
                      std::min(wanted, read->size));
}

uint32_t GetLGXValueAsUInt32(const _LGX_Read* read, int index) {
    if (!hasElements(read)) {
        return 0;
    }
    if (!isIntegerReadable(read->type)) {
        return unsupported();
    }
    const uint32_t value = loadInteger(read, index);
    return isMasked(read) ? bitOf<uint32_t>(read, value) : value;
}

int32_t _GetLGXValueAsInteger(const _LGX_Read* read, int index) {
    return static_cast<int32_t>(GetLGXValueAsUInt32(read, index));
}

float _GetLGXValueAsFloat(const _LGX_Read* read, int index) {
    if (!hasElements(read)) {
        return 0;
    }
    if (read->type != LGX_TYPE_REAL) {
        unsupported();
        return -1.0f;
    }
    unsigned char element[4];
    loadElement(read, index, sizeof(element), element);
    const uint32_t bits = cip::getUInt32(element);
    if (isMasked(read)) {
        return bitOf<float>(read, bits);
    }
    float value;
    static_assert(sizeof(value) == sizeof(bits), "REAL is an IEEE single");
    memcpy(&value, &bits, sizeof(value));
    return value;
}

double GetLGXValueAsDouble(const _LGX_Read* read, int index) {
    if (!hasElements(read)) {
        return 0;
    }
    if (read->type != LGX_TYPE_LREAL) {
        unsupported();
        return -1.0;
    }
    unsigned char element[8];
    loadElement(read, index, sizeof(element), element);
    const uint32_t low = cip::getUInt32(element);
    if (isMasked(read)) {
        return bitOf<double>(read, low);
    }
    const uint64_t bits = static_cast<uint64_t>(cip::getUInt32(element + 4)) << 32 | low;
    double value;
    static_assert(sizeof(value) == sizeof(bits), "LREAL is an IEEE double");
    memcpy(&value, &bits, sizeof(value));
    return value;
}

int GetLGXValueAsString(const _LGX_Read* read, char* buffer, int bufferSize) {
    if (!hasElements(read)) {
        return 0;
    }
    if (read->type != LGX_TYPE_SHORT_STRING) {
        unsupported();
        return -1;
    }
    const int length = std::min(bufferSize, std::min(read->elementSize, read->size));
    if (length > 0) {
        memcpy(buffer, _GetLGXReadData(read), static_cast<size_t>(length));
    }
    return 0;
}
