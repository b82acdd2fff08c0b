#include "eip/cip/encap_header.h"

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/wire.h"

uint16_t _GetEncapCommand(const _Encap_Header* header) {
    return cip::getUInt16(header->command);
}

uint16_t _GetEncapLength(const _Encap_Header* header) {
    return cip::getUInt16(header->length);
}

uint32_t _GetEncapSessionHandle(const _Encap_Header* header) {
    return cip::getUInt32(header->sessionHandle);
}

void _SetEncapCommand(_Encap_Header* header, uint16_t command) {
    cip::putUInt16(header->command, command);
}

int32_t _GetEipStatus(const _Encap_Header* reply) {
    if (!reply) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return -1;
    }
    return static_cast<int32_t>(cip::getUInt32(reply->status));
}

bool IsEIP(const void* buffer) {
    if (!buffer) {
        return false;
    }
    switch (_GetEncapCommand(static_cast<const _Encap_Header*>(buffer))) {
        case ENCAP_NOP:
        case ENCAP_LIST_TARGETS:
        case ENCAP_LIST_SERVICES:
        case ENCAP_LIST_IDENTITY:
        case ENCAP_LIST_INTERFACES:
        case ENCAP_REGISTER_SESSION:
        case ENCAP_UNREGISTER_SESSION:
        case ENCAP_SEND_RR_DATA:
        case ENCAP_SEND_UNIT_DATA:
        case ENCAP_INDICATE_STATUS:
        case ENCAP_CANCEL:
            return true;
        default:
            return false;
    }
}

void _InitHeader(_Encap_Header* buffer, uint32_t sessionHandle, uint32_t contextLow,
                 uint32_t contextHigh) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    memset(buffer, 0, kEncapHeaderSize);
    _FillHeader(buffer, sessionHandle, contextLow, contextHigh);
}

void _FillHeader(_Encap_Header* buffer, uint32_t sessionHandle, uint32_t contextLow,
                 uint32_t contextHigh) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    cip::putUInt32(buffer->sessionHandle, sessionHandle);
    cip::putUInt32(buffer->senderContext, contextLow);
    cip::putUInt32(buffer->senderContext + 4, contextHigh);
}

int _AddHeader(_Encap_Header* buffer, const void* data, int count) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    const int length = _GetEncapLength(buffer);
    if (count < 0 || count > kEncapMaxRequestBody - length) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BUFFER_TOO_SMALL, 0);
        return 0;
    }
    if (count > 0) {
        memcpy(reinterpret_cast<unsigned char*>(buffer) + kEncapHeaderSize + length, data,
               static_cast<size_t>(count));
    }
    cip::putUInt16(buffer->length, static_cast<uint16_t>(length + count));
    return length + count;
}

int _AddBYTE2Header(_Encap_Header* buffer, uint8_t value) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    return _AddHeader(buffer, &value, 1);
}

int _AddINT2Header(_Encap_Header* buffer, uint16_t value) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    unsigned char field[2];
    cip::putUInt16(field, value);
    return _AddHeader(buffer, field, sizeof(field));
}

int _AddDINT2Header(_Encap_Header* buffer, uint32_t value) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    unsigned char field[4];
    cip::putUInt32(field, value);
    return _AddHeader(buffer, field, sizeof(field));
}

int _Addtab2Header(_Encap_Header* buffer, const unsigned char* data, int count) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    return _AddHeader(buffer, data, count);
}

// 0  4  interface handle (0: CIP)
// 4  2  time-out, seconds
int _AddRR(_Encap_Header* buffer, uint32_t interfaceHandle, uint16_t timeoutSeconds) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    unsigned char prefix[4 + 2];
    cip::putUInt32(prefix, interfaceHandle);
    cip::putUInt16(prefix + 4, timeoutSeconds);
    return _AddHeader(buffer, prefix, sizeof(prefix));
}
