#include "eip/cip/connection_manager.h"

#include <cstdlib>
#include <cstring>

#include "common/packet_sizes.h"
#include "eip/cip/cip_error.h"
#include "eip/cip/cip_trace.h"
#include "eip/cip/connection_path.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/session_header.h"
#include "eip/cip/wire.h"

/// Point to point, low priority, of variable size (CIP Vol. 1, 3-5.5.1.1).
static const uint16_t kDefaultParameters = 0x43F8;
static_assert((kDefaultParameters & kConnectionSizeMask) == kConnectionBytes,
              "what programs are told of the size");

uint16_t _OriginatorVendorID = 0x004D;
uint32_t _OriginatorSerialNumber = 0x38BE3B1F;
uint8_t _Priority = 0x07;
uint8_t _TimeOut_Ticks = 0x9A;
uint16_t _Parameters = kDefaultParameters;
uint8_t _Transport = 0xA3;
uint8_t _TimeOutMultiplier = 0x02;

namespace {

const uint8_t kServiceForwardClose = 0x4E;
/// Fields of the Forward Close before the path.
const int kForwardCloseHead = 1 + 1 + 2 + 2 + 4 + 1 + 1;

const int kLongestForwardClose = kForwardCloseHead + cip::kMaxPaddedPath;

const int kTraceReplies = 3;

/// The fields of the request.
struct CloseFields {
    unsigned char priorityTick;
    unsigned char timeoutTicks;
    uint16_t connectionSerial;
    uint16_t vendorId;
    uint32_t originatorSerial;
    const unsigned char* path;
    int pathLength;
};

CloseFields fieldsOf(const _Eip_Connection& connection) {
    const CloseFields fields = {_Priority,
                                _TimeOut_Ticks,
                                connection.connectionSerial,
                                connection.vendorId,
                                connection.originatorSerial,
                                connection.path,
                                connection.pathLength};
    return fields;
}

/// Fills the zeroed `data` and returns the request's size; -1 with the error recorded for a path
/// that does not go out.
//  0  1  priority/time tick
//  1  1  time-out ticks
//  2  2  connection serial number
//  4  2  originator vendor id
//  6  4  originator serial number
// 10  1  path size, words
// 11  1  reserved
// 12  n  path, padded to even length
int encode(unsigned char* data, const CloseFields& fields) {
    if (!cip::isConnectionPath(fields.path, fields.pathLength)) {
        return -1;
    }
    const int words = cip::pathWords(fields.pathLength);
    data[0] = fields.priorityTick;
    data[1] = fields.timeoutTicks;
    cip::putUInt16(data + 2, fields.connectionSerial);
    cip::putUInt16(data + 4, fields.vendorId);
    cip::putUInt32(data + 6, fields.originatorSerial);
    data[10] = static_cast<unsigned char>(words);
    if (fields.pathLength > 0) {
        memcpy(data + kForwardCloseHead, fields.path, static_cast<size_t>(fields.pathLength));
    }
    return kForwardCloseHead + 2 * words;
}

}  // namespace

bool cip::isConnectionPath(const unsigned char* path, int pathLength) {
    if (pathLength < 0 || (pathLength > 0 && !path)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_ERROR, 0);
        return false;
    }
    if (pathLength > kMaxConnectionPath) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BUFFER_TOO_SMALL, 0);
        return false;
    }
    return true;
}

int _ExForward_Close(_Eip_Session* session, unsigned char priorityTick, unsigned char timeoutTicks,
                     uint16_t connectionSerial, uint16_t vendorId, uint32_t originatorSerial,
                     const unsigned char* path, int pathLength) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    const CloseFields fields = {priorityTick,     timeoutTicks, connectionSerial, vendorId,
                                originatorSerial, path,         pathLength};
    unsigned char data[kLongestForwardClose] = {0};
    const int size = encode(data, fields);
    if (size < 0) {
        return -1;
    }
    int replySize = 0;
    const cip::MallocPtr<_MR_Reply> reply(_SendMRRequest(session, kServiceForwardClose, CM_PATH,
                                                         sizeof(CM_PATH), data, size, &replySize));
    if (!reply) {
        return -1;
    }
    LogCip(kTraceReplies, "_ExForward_Close : reply=%p (%d)\n", static_cast<void*>(reply.get()),
           replySize);
    return reply->generalStatus;
}

int _SendForwardClose(_Eip_Connection* connection) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!cip::isUsable(connection)) {
        return -1;
    }
    const cip::MallocPtr<_Eip_Connection> owned(connection);
    unsigned char data[kLongestForwardClose] = {0};
    const int size = encode(data, fieldsOf(*connection));
    int requestSize = 0;
    const cip::MallocPtr<unsigned char> request(
        _BuildMRRequest(kServiceForwardClose, CM_PATH, sizeof(CM_PATH), data, size, &requestSize));
    if (!request) {
        return -1;
    }
    _Eip_Item address;
    _Eip_Item item;
    _SetItem(&address, CPF_NULL_ADDRESS, 0);
    _SetItem(&item, CPF_UNCONNECTED_DATA, static_cast<uint16_t>(requestSize));
    return _SendData(connection->session, ENCAP_SEND_RR_DATA, &address, nullptr, &item,
                     request.get());
}

int _Forward_Close(_Eip_Connection* connection) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!cip::isUsable(connection)) {
        return -1;
    }
    const cip::MallocPtr<_Eip_Connection> owned(connection);
    const CloseFields fields = fieldsOf(*connection);
    return _ExForward_Close(connection->session, fields.priorityTick, fields.timeoutTicks,
                            fields.connectionSerial, fields.vendorId, fields.originatorSerial,
                            fields.path, fields.pathLength);
}

void DeleteConnection(_Eip_Connection** connection) {
    if (connection) {
        free(*connection);
        *connection = nullptr;
    }
}
