// Opening class 3 connections.

#include <algorithm>
#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/connection_manager.h"
#include "eip/cip/connection_path.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/mr_view.h"
#include "eip/cip/wire.h"

namespace {

const uint8_t kServiceForwardOpen = 0x54;

/// Fields of the Forward Open before the path.
const int kForwardOpenHead = 1 + 1 + 4 + 4 + 2 + 2 + 4 + 1 + 3 + 4 + 2 + 4 + 2 + 1 + 1;
static_assert(kForwardOpenHead == 36, "the path starts at an even offset");

/// O->T and T->O connection id at the start of the reply data.
const int kConnectionIdsSize = 4 + 4;

const uint32_t kUsPerMs = 1000;

/// The fields of the request.
struct OpenFields {
    unsigned char priorityTick;
    unsigned char timeoutTicks;
    uint32_t oToTConnectionId;
    uint32_t tToOConnectionId;
    uint16_t connectionSerial;
    uint16_t vendorId;
    uint32_t originatorSerial;
    unsigned char timeoutMultiplier;
    uint32_t rpiMs;
    uint16_t parameters;
    unsigned char transport;
};

uint32_t microseconds(uint32_t ms) {
    return static_cast<uint32_t>(
        std::min<uint64_t>(static_cast<uint64_t>(ms) * kUsPerMs, UINT32_MAX));
}

//  0  1  priority/time tick
//  1  1  time-out ticks
//  2  4  O->T connection id
//  6  4  T->O connection id
// 10  2  connection serial number
// 12  2  originator vendor id
// 14  4  originator serial number
// 18  1  connection time-out multiplier
// 19  3  reserved
// 22  4  O->T RPI, microseconds
// 26  2  O->T network connection parameters
// 28  4  T->O RPI, microseconds
// 32  2  T->O network connection parameters
// 34  1  transport class and trigger
// 35  1  connection path size, words
// 36  n  connection path, padded to even length
int encode(unsigned char* data, const OpenFields& fields, const unsigned char* path,
           int pathLength) {
    const uint32_t rpi = microseconds(fields.rpiMs);
    const int words = cip::pathWords(pathLength);
    data[0] = fields.priorityTick;
    data[1] = fields.timeoutTicks;
    cip::putUInt32(data + 2, fields.oToTConnectionId);
    cip::putUInt32(data + 6, fields.tToOConnectionId);
    cip::putUInt16(data + 10, fields.connectionSerial);
    cip::putUInt16(data + 12, fields.vendorId);
    cip::putUInt32(data + 14, fields.originatorSerial);
    data[18] = fields.timeoutMultiplier;
    cip::putUInt32(data + 22, rpi);
    cip::putUInt16(data + 26, fields.parameters);
    cip::putUInt32(data + 28, rpi);
    cip::putUInt16(data + 32, fields.parameters);
    data[34] = fields.transport;
    data[35] = static_cast<unsigned char>(words);
    if (pathLength > 0) {
        memcpy(data + kForwardOpenHead, path, static_cast<size_t>(pathLength));
    }
    return kForwardOpenHead + 2 * words;
}

/// The connection ids of the target's reply, or null with the error recorded.
const unsigned char* connectionIds(const _MR_Reply* reply, int replySize) {
    if (reply->generalStatus != 0) {
        cip::recordMRStatus(reply);
        return nullptr;
    }
    if (replySize - cip::mrHeadSize(reply) < kConnectionIdsSize) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return nullptr;
    }
    return _GetMRData(reply);
}

_Eip_Connection* newConnection(_Eip_Session* session, const OpenFields& fields,
                               const unsigned char* ids, const unsigned char* path,
                               int pathLength) {
    cip::MallocPtr<_Eip_Connection> connection =
        cip::allocateZeroed<_Eip_Connection>(sizeof(_Eip_Connection));
    if (connection) {
        connection->session = session;
        connection->connectionSerial = fields.connectionSerial;
        connection->vendorId = fields.vendorId;
        connection->originatorSerial = fields.originatorSerial;
        connection->oToTConnectionId = cip::getUInt32(ids);
        connection->tToOConnectionId = cip::getUInt32(ids + 4);
        connection->connectionSize = fields.parameters & kConnectionSizeMask;
        connection->pathLength = static_cast<uint8_t>(pathLength);
        if (pathLength > 0) {
            memcpy(connection->path, path, static_cast<size_t>(pathLength));
        }
    }
    return connection.release();
}

_Eip_Connection* open(_Eip_Session* session, const OpenFields& fields, const unsigned char* path,
                      int pathLength) {
    if (!cip::isConnectionPath(path, pathLength)) {
        return nullptr;
    }
    unsigned char data[kForwardOpenHead + cip::kMaxPaddedPath] = {0};
    const int dataLength = encode(data, fields, path, pathLength);
    int replySize = 0;
    const cip::MallocPtr<_MR_Reply> reply(_SendMRRequest(
        session, kServiceForwardOpen, CM_PATH, sizeof(CM_PATH), data, dataLength, &replySize));
    const unsigned char* ids = reply ? connectionIds(reply.get(), replySize) : nullptr;
    return ids ? newConnection(session, fields, ids, path, pathLength) : nullptr;
}

}  // namespace

_Eip_Connection* _Forward_Open(_Eip_Session* session, unsigned char priorityTick,
                               unsigned char timeoutTicks, uint32_t tToOConnectionId,
                               uint16_t connectionSerial, uint16_t vendorId,
                               uint32_t originatorSerial, unsigned char timeoutMultiplier,
                               uint32_t rpiMs, uint16_t parameters, unsigned char transport,
                               const unsigned char* path, int pathLength) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    const OpenFields fields = {
        priorityTick,     timeoutTicks,      0,     tToOConnectionId, connectionSerial, vendorId,
        originatorSerial, timeoutMultiplier, rpiMs, parameters,       transport};
    return open(session, fields, path, pathLength);
}

_Eip_Connection* _Forward_Open2(_Eip_Session* session, unsigned char priorityTick,
                                unsigned char timeoutTicks, uint32_t tToOConnectionId,
                                uint16_t connectionSerial, uint16_t vendorId,
                                uint32_t originatorSerial, unsigned char timeoutMultiplier,
                                uint32_t rpiMs, uint16_t parameters, unsigned char transport,
                                const unsigned char* path, int pathLength) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    const uint32_t oToTConnectionId = (tToOConnectionId & 0x8000000F) + 1;
    const OpenFields fields = {priorityTick,     timeoutTicks,      oToTConnectionId,
                               tToOConnectionId, connectionSerial,  vendorId,
                               originatorSerial, timeoutMultiplier, rpiMs,
                               parameters,       transport};
    return open(session, fields, path, pathLength);
}
