// Read Tag and Write Tag requests, whole and fragmented.

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/logix_messages.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/request_path.h"
#include "eip/cip/wire.h"

namespace {

/// Service, path size.
const int kHeadSize = 1 + 1;
const int kMaxPathBytes = 255 * 2;
const int kMaxShortString = 255;

/// Bytes of the tag's path, or -1 with the error recorded when a segment or the size field is
/// too small for it.
int pathSize(const char* tagName) {
    const int size = _BuildIOI(nullptr, tagName);
    if (size > kMaxPathBytes) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BUFFER_TOO_SMALL, 0);
        return -1;
    }
    return size;
}

/// A zeroed request of head, path and `rest` more bytes, of which head and path are filled.
cip::MallocPtr<unsigned char> newRequest(uint8_t service, const char* tagName, int pathBytes,
                                         int rest) {
    cip::MallocPtr<unsigned char> request =
        cip::allocateZeroed<unsigned char>(static_cast<size_t>(kHeadSize + pathBytes + rest));
    if (request) {
        request.get()[0] = service;
        request.get()[1] = static_cast<unsigned char>(pathBytes / 2);
        _BuildIOI(request.get() + kHeadSize, tagName);
    }
    return request;
}

/// Whether the data can go out at all; records the error.
bool isWritable(_LGX_Data_Type dataType, const void* data, int dataBytes) {
    if (dataBytes < 0 || (dataBytes > 0 && !data)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_ERROR, 0);
        return false;
    }
    const int limit = dataType == LGX_TYPE_SHORT_STRING ? kMaxShortString : kEncapMaxRequestBody;
    if (dataBytes > limit) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BUFFER_TOO_SMALL, 0);
        return false;
    }
    return true;
}

}  // namespace

// 0  1  0x4C
// 1  1  path size, words
// 2  n  path
//    2  element count
unsigned char* _BuildLgxReadDataRequest(const char* tagName, uint16_t elementCount, int* size) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    *size = 0;
    const int pathBytes = pathSize(tagName);
    if (pathBytes < 0) {
        return nullptr;
    }
    cip::MallocPtr<unsigned char> request = newRequest(LGX_SERVICE_READ_TAG, tagName, pathBytes, 2);
    if (!request) {
        return nullptr;
    }
    cip::putUInt16(request.get() + kHeadSize + pathBytes, elementCount);
    *size = kHeadSize + pathBytes + 2;
    return request.release();
}

// 0  1  0x4D
// 1  1  path size, words
// 2  n  path
//    2  data type
//    2  element count (a short string's is 1)
//   [1  length of a short string]
//    n  data
unsigned char* _BuildLgxWriteDataRequest(const char* tagName, _LGX_Data_Type dataType,
                                         const void* data, int dataBytes, uint16_t elementCount,
                                         int* size) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    *size = 0;
    const int pathBytes = pathSize(tagName);
    if (pathBytes < 0 || !isWritable(dataType, data, dataBytes)) {
        return nullptr;
    }
    const bool isString = dataType == LGX_TYPE_SHORT_STRING;
    const int rest = 2 + 2 + (isString ? 1 : 0) + dataBytes;
    cip::MallocPtr<unsigned char> request =
        newRequest(LGX_SERVICE_WRITE_TAG, tagName, pathBytes, rest);
    if (!request) {
        return nullptr;
    }
    unsigned char* at = request.get() + kHeadSize + pathBytes;
    cip::putUInt16(at, static_cast<uint16_t>(dataType));
    cip::putUInt16(at + 2, isString ? 1 : elementCount);
    at += 4;
    if (isString) {
        *at++ = static_cast<unsigned char>(dataBytes);
    }
    if (dataBytes > 0) {
        memcpy(at, data, static_cast<size_t>(dataBytes));
    }
    *size = kHeadSize + pathBytes + rest;
    return request.release();
}

// 0  1  0x52
// 1  1  path size, words
// 2  n  path
//    2  element count of the whole
//    4  byte offset
unsigned char* _BuildLgxReadFragmentRequest(const char* tagName, uint16_t elementCount,
                                            uint32_t offset, int* size) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    *size = 0;
    const int pathBytes = pathSize(tagName);
    if (pathBytes < 0) {
        return nullptr;
    }
    const int rest = 2 + 4;
    cip::MallocPtr<unsigned char> request =
        newRequest(LGX_SERVICE_READ_TAG_FRAGMENTED, tagName, pathBytes, rest);
    if (!request) {
        return nullptr;
    }
    unsigned char* at = request.get() + kHeadSize + pathBytes;
    cip::putUInt16(at, elementCount);
    cip::putUInt32(at + 2, offset);
    *size = kHeadSize + pathBytes + rest;
    return request.release();
}

// 0  1  0x53
// 1  1  path size, words
// 2  n  path
//    2  data type
//    2  element count of the whole
//    4  byte offset
//    n  data
unsigned char* _BuildLgxWriteFragmentRequest(const char* tagName, _LGX_Data_Type dataType,
                                             const void* data, int dataBytes, uint16_t elementCount,
                                             uint32_t offset, int* size) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    *size = 0;
    const int pathBytes = pathSize(tagName);
    if (pathBytes < 0 || !isWritable(dataType, data, dataBytes)) {
        return nullptr;
    }
    const int rest = 2 + 2 + 4 + dataBytes;
    cip::MallocPtr<unsigned char> request =
        newRequest(LGX_SERVICE_WRITE_TAG_FRAGMENTED, tagName, pathBytes, rest);
    if (!request) {
        return nullptr;
    }
    unsigned char* at = request.get() + kHeadSize + pathBytes;
    cip::putUInt16(at, static_cast<uint16_t>(dataType));
    cip::putUInt16(at + 2, elementCount);
    cip::putUInt32(at + 4, offset);
    if (dataBytes > 0) {
        memcpy(at + 8, data, static_cast<size_t>(dataBytes));
    }
    *size = kHeadSize + pathBytes + rest;
    return request.release();
}
