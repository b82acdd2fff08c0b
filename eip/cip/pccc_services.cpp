#include "eip/cip/pccc_services.h"

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/pccc_address.h"
#include "eip/cip/pccc_requests.h"

namespace {

const int kWord = 2;
const int kLongWord = 4;

typedef cip::MallocPtr<unsigned char> RequestPtr;
typedef cip::MallocPtr<_PCCC_Reply> ReplyPtr;

/// Sends a request the target's way.
ReplyPtr send(const _PCCC_Target* target, const RequestPtr& request, int requestSize,
              int* replySize) {
    *replySize = 0;
    if (!request) {
        return nullptr;
    }
    return ReplyPtr(
        target && target->connection
            ? _SendConnectedPCCCRequest(target, request.get(), requestSize, replySize)
            : _SendUnConnectedPCCCRequest(target, request.get(), requestSize, replySize));
}

/// Sends a write and returns the status byte, or -1.
int sendWrite(const _PCCC_Target* target, const RequestPtr& request, int requestSize) {
    int replySize = 0;
    const ReplyPtr reply = send(target, request, requestSize, &replySize);
    if (!reply) {
        return -1;
    }
    CIPERROR(CIP_ERR_PCCC, reply->status, 0);
    return reply->status;
}

/// Sends a read; null when there is no reply or it refuses.
ReplyPtr sendRead(const _PCCC_Target* target, const RequestPtr& request, int requestSize,
                  int* replySize) {
    ReplyPtr reply = send(target, request, requestSize, replySize);
    if (reply) {
        CIPERROR(CIP_ERR_PCCC, reply->status, 0);
        if (reply->status != 0) {
            reply.reset();
        }
    }
    return reply;
}

/// Only the bit that the address names.
uint32_t maskOf(const _PLC_Address& address) {
    return address.bit < 0 ? 0 : uint32_t(1) << address.bit;
}

/// The record when it has as many elements as were asked for, its mask set.
_PLC_Read* checked(cip::MallocPtr<_PLC_Read> read, uint16_t count, const _PLC_Address& address) {
    if (read && read->count != count) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return nullptr;
    }
    if (read) {
        read->mask = maskOf(address);
    }
    return read.release();
}

bool isStructure(PlcFileType type) {
    return _GetPLCElementSize(type) == 3 * kWord;
}

/// How a read with three address fields covers what the address names.
struct Span {
    int type;         ///< of what is picked
    int pickedSize;   ///< bytes of each picked element
    int stride;       ///< bytes from one to the next
    int firstOffset;  ///< of the first, from the element on
    int64_t bytes;    ///< to read in all
};

int typeOf(PlcFileType fileType) {
    switch (fileType) {
        case PLC_FILE_FLOAT:
            return PLC_TYPE_FLOAT;
        case PLC_FILE_INTEGER:
        case PLC_FILE_LONG:
            return PLC_TYPE_INTEGER;
        case PLC_FILE_BCD:
            return PLC_TYPE_BCD;
        case PLC_FILE_TIMER:
            return PLC_TYPE_TIMER;
        case PLC_FILE_COUNTER:
            return PLC_TYPE_COUNTER;
        case PLC_FILE_CONTROL:
            return PLC_TYPE_CONTROL;
        case PLC_FILE_STRING:
        case PLC_FILE_ASCII:
            return PLC_TYPE_BYTE_STRING;
        default:
            return PLC_TYPE_BIT_STRING;
    }
}

/// Words of structures: the control word is bits, preset, accumulator, length and position numbers.
Span spanOf(const _PLC_Address& address, uint16_t count) {
    const int elementSize = _GetPLCElementSize(address.fileType);
    Span span = {typeOf(address.fileType), elementSize, elementSize, 0, 0};
    const bool isWordOfStructure = isStructure(address.fileType) && address.subElement >= 0;
    if (isWordOfStructure) {
        span.type = address.subElement == 0 ? PLC_TYPE_BIT_STRING : PLC_TYPE_INTEGER;
        span.pickedSize = kWord;
        span.firstOffset = address.subElement * kWord;
    } else if (address.subElement > 0) {
        span.firstOffset = address.subElement * kWord;
    }
    span.bytes = static_cast<int64_t>(span.stride) * count;
    if (!isWordOfStructure) {
        span.bytes += span.firstOffset;
    }
    return span;
}

/// Brings the picked elements together at the front of the reply's data and returns the reply's
/// new size, or 0 with an error when it is not what was asked for.
int pick(_PCCC_Reply* reply, int replySize, const Span& span, uint16_t count) {
    if (replySize - kPcccReplyHead != span.bytes) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return 0;
    }
    unsigned char* data = reinterpret_cast<unsigned char*>(reply) + kPcccReplyHead;
    for (int i = 0; i < count; ++i) {
        memmove(data + i * span.pickedSize, data + span.firstOffset + i * span.stride,
                static_cast<size_t>(span.pickedSize));
    }
    return kPcccReplyHead + count * span.pickedSize;
}

/// Whole words are written: with the word that contains a bit, its other bits would be
/// overwritten.
bool namesNoBit(const char* address) {
    _PLC_Address parsed;
    if (_ParsePLCAddress(address, &parsed) && parsed.bit >= 0) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_OUT_OF_RANGE, 0);
        return false;
    }
    return true;  // what is no address at all, the request's builder says
}

}  // namespace

_PLC_Read* _ReadPLCData(const _PCCC_Target* target, int plcKind, uint16_t transaction,
                        const char* address, uint16_t count) {
    return plcKind == PLC_KIND_SLC500 ? _ReadPLCData_ExPlus(target, transaction, address, count)
                                      : _ReadPLCData_Ex(target, transaction, address, count);
}

_PLC_Read* _ReadPLCData_Ex(const _PCCC_Target* target, uint16_t transaction, const char* address,
                           uint16_t count) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    _PLC_Address parsed;
    if (!_ParsePLCAddress(address, &parsed)) {
        return nullptr;
    }
    int requestSize = 0;
    const RequestPtr request(_BuildPLCReadDataRequest(transaction, address, count, &requestSize));
    int replySize = 0;
    const ReplyPtr reply = sendRead(target, request, requestSize, &replySize);
    if (!reply) {
        return nullptr;
    }
    return checked(cip::MallocPtr<_PLC_Read>(_DecodePCCC(reply.get(), replySize)), count, parsed);
}

_PLC_Read* _ReadPLCData_ExPlus(const _PCCC_Target* target, uint16_t transaction,
                               const char* address, uint16_t count) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    _PLC_Address parsed;
    if (!_ParsePLCAddress(address, &parsed)) {
        return nullptr;
    }
    const Span span = spanOf(parsed, count);
    int requestSize = 0;
    const RequestPtr request(_BuildPLCReadDataRequestPlus(
        transaction, address, static_cast<int>(span.bytes), &requestSize));
    int replySize = 0;
    const ReplyPtr reply = sendRead(target, request, requestSize, &replySize);
    const int pickedSize = reply ? pick(reply.get(), replySize, span, count) : 0;
    if (pickedSize == 0) {
        return nullptr;
    }
    return checked(cip::MallocPtr<_PLC_Read>(
                       _DecodePCCCBytes(reply.get(), pickedSize, span.type, span.pickedSize)),
                   count, parsed);
}

int _WritePLCData(const _PCCC_Target* target, uint16_t transaction, const char* address,
                  _PLC_Data_Type type, const void* data, uint16_t count) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    const bool isWord = type == PLC_TYPE_INTEGER || type == PLC_TYPE_BIT_STRING;
    if (!isWord && type != PLC_TYPE_FLOAT) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_UNSUPPORTED_TYPE, 0);
        return -1;
    }
    if (!namesNoBit(address)) {
        return -1;
    }
    int size = 0;
    const RequestPtr request(_BuildPLCWriteDataRequest(
        transaction, address, type, isWord ? kWord : kLongWord, data, count, &size));
    return sendWrite(target, request, size);
}

int WriteMaskAndDataToPLC(const _PCCC_Target* target, uint16_t transaction, const char* address,
                          uint16_t mask, uint16_t value) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    int size = 0;
    const RequestPtr request(
        _BuildPLCWriteWithMaskRequest(transaction, address, mask, value, &size));
    return sendWrite(target, request, size);
}

int WriteBytesToPLC(const _PCCC_Target* target, uint16_t transaction, const char* address,
                    const void* data, int byteCount) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!namesNoBit(address)) {
        return -1;
    }
    int size = 0;
    const RequestPtr request(
        _BuildPLCWriteBytesRequest(transaction, address, data, byteCount, &size));
    return sendWrite(target, request, size);
}
