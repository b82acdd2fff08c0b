#include "eip/cip/pccc_data.h"

#include <cstdlib>
#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/wire.h"

namespace {

const int kFloatSize = 4;

void recordInternal(int32_t code) {
    CIPERROR(CIP_ERR_INTERNAL, code, 0);
}

/// The record of `size` data bytes; null with the error recorded when they make no elements.
_PLC_Read* newRead(int type, int elementSize, const unsigned char* data, int size) {
    if (elementSize < 1 || size < elementSize || size % elementSize != 0) {
        recordInternal(CIP_INTERNAL_INVALID_REPLY);
        return nullptr;
    }
    cip::MallocPtr<_PLC_Read> read =
        cip::allocateZeroed<_PLC_Read>(sizeof(_PLC_Read) + static_cast<size_t>(size));
    if (read) {
        read->type = type;
        read->count = size / elementSize;
        read->size = size;
        read->elementSize = elementSize;
        memcpy(static_cast<void*>(read.get() + 1), data, static_cast<size_t>(size));
    }
    return read.release();
}

/// The bytes of an element, or null with the error recorded.
const unsigned char* elementAt(const _PLC_Read* read, int index) {
    if (!read || read->count < 1 || read->elementSize < 1) {
        recordInternal(CIP_INTERNAL_INVALID_REPLY);
        return nullptr;
    }
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (index < 0 || index >= read->count || index >= read->size / read->elementSize) {
        recordInternal(CIP_INTERNAL_OUT_OF_RANGE);
        return nullptr;
    }
    return _GetPLCReadData(read) + static_cast<size_t>(index) * read->elementSize;
}

bool hasIntegers(const _PLC_Read* read) {
    const bool isType = read->type == PLC_TYPE_INTEGER || read->type == PLC_TYPE_BIT ||
                        read->type == PLC_TYPE_BIT_STRING || read->type == PLC_TYPE_BYTE_STRING ||
                        read->type == PLC_TYPE_BCD;
    const int size = read->elementSize;
    return isType && (size == 1 || size == 2 || size == 4);
}

/// An element of 1, 2 or 4 bytes; integers sign-extended.
uint32_t loadInteger(const _PLC_Read* read, const unsigned char* element) {
    const bool isSigned = read->type == PLC_TYPE_INTEGER;
    switch (read->elementSize) {
        case 1:
            return isSigned ? static_cast<uint32_t>(static_cast<int8_t>(element[0])) : element[0];
        case 2: {
            const uint16_t word = cip::getUInt16(element);
            return isSigned ? static_cast<uint32_t>(static_cast<int16_t>(word)) : word;
        }
        default:
            return cip::getUInt32(element);
    }
}

}  // namespace

const unsigned char* _GetPLCReadData(const _PLC_Read* read) {
    return reinterpret_cast<const unsigned char*>(read + 1);
}

void _FreePLCRead(_PLC_Read* read) {
    free(read);
}

// 0  1  command
// 1  1  status
// 2  2  transaction
// 4  n  type/data parameter
//   [n  type/data parameter of an array's elements]
//    n  data
_PLC_Read* _DecodePCCC(const _PCCC_Reply* reply, int length) {
    if (!reply || length < kPcccReplyHead) {
        recordInternal(CIP_INTERNAL_INVALID_REPLY);
        return nullptr;
    }
    const unsigned char* at = reinterpret_cast<const unsigned char*>(reply) + kPcccReplyHead;
    int left = length - kPcccReplyHead;
    int type = 0;
    int size = 0;
    int used = _DecodePLCDataType(at, left, &type, &size);
    if (used == 0) {
        return nullptr;
    }
    at += used;
    left -= used;
    if (size != left) {
        recordInternal(CIP_INTERNAL_INVALID_REPLY);
        return nullptr;
    }
    if (type == PLC_TYPE_ARRAY) {
        used = _DecodePLCDataType(at, left, &type, &size);
        if (used == 0) {
            return nullptr;
        }
    } else {
        used = 0;
    }
    return newRead(type, size, at + used, left - used);
}

_PLC_Read* _DecodePCCCBytes(const _PCCC_Reply* reply, int length, int type, int elementSize) {
    if (!reply || length < kPcccReplyHead) {
        recordInternal(CIP_INTERNAL_INVALID_REPLY);
        return nullptr;
    }
    return newRead(type, elementSize,
                   reinterpret_cast<const unsigned char*>(reply) + kPcccReplyHead,
                   length - kPcccReplyHead);
}

int32_t _PCCC_GetValueAsInteger(const _PLC_Read* read, int index) {
    const unsigned char* element = elementAt(read, index);
    if (!element) {
        return 0;
    }
    if (!hasIntegers(read)) {
        recordInternal(CIP_INTERNAL_UNSUPPORTED_TYPE);
        return -1;
    }
    const uint32_t value = loadInteger(read, element);
    if (read->mask != 0) {
        return (value & read->mask) != 0 ? 1 : 0;
    }
    return static_cast<int32_t>(value);
}

bool _PCCC_GetValueAsBoolean(const _PLC_Read* read, int index) {
    const int32_t value = _PCCC_GetValueAsInteger(read, index);
    return value != 0 && cip_errno() == CIP_INTERNAL_SUCCESS;
}

float _PCCC_GetValueAsFloat(const _PLC_Read* read, int index) {
    const unsigned char* element = elementAt(read, index);
    if (!element) {
        return 0;
    }
    if (read->type == PLC_TYPE_FLOAT && read->elementSize == kFloatSize) {
        const uint32_t bits = cip::getUInt32(element);
        float value;
        static_assert(sizeof(value) == kFloatSize, "an IEEE single");
        memcpy(&value, &bits, sizeof(value));
        return value;
    }
    if (read->type != PLC_TYPE_INTEGER || !hasIntegers(read)) {
        recordInternal(CIP_INTERNAL_UNSUPPORTED_TYPE);
        return -1.0f;
    }
    return static_cast<float>(_PCCC_GetValueAsInteger(read, index));
}
