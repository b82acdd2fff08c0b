#include "eip/cip/connection_manager.h"

#include <cstdlib>
#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/cip_trace.h"
#include "eip/cip/connection_path.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/session_header.h"
#include "eip/cip/wire.h"

const uint16_t _OriginatorVendorID = 0x004D;
const uint32_t _OriginatorSerialNumber = 0x38BE3B1F;
const uint8_t _Priority = 0x07;
const uint8_t _TimeOut_Ticks = 0x9A;
const uint16_t _Parameters = 0x43F8;
const uint8_t _Transport = 0xA3;
const uint8_t _TimeOutMultiplier = 0x02;

namespace {

const uint8_t kServiceForwardClose = 0x4E;
/// Fields of the Forward Close before the path.
const int kForwardCloseHead = 1 + 1 + 2 + 2 + 4 + 1 + 1;

const int kTraceReplies = 3;

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

//  0  1  priority/time tick
//  1  1  time-out ticks
//  2  2  connection serial number
//  4  2  originator vendor id
//  6  4  originator serial number
// 10  1  path size, words
// 11  1  reserved
// 12  n  path, padded to even length
int _ExForward_Close(_Eip_Session* session, unsigned char priorityTick, unsigned char timeoutTicks,
                     uint16_t connectionSerial, uint16_t vendorId, uint32_t originatorSerial,
                     const unsigned char* path, int pathLength) {
    if (!cip::isConnectionPath(path, pathLength)) {
        return -1;
    }
    unsigned char data[kForwardCloseHead + cip::kMaxPaddedPath] = {0};
    const int words = cip::pathWords(pathLength);
    data[0] = priorityTick;
    data[1] = timeoutTicks;
    cip::putUInt16(data + 2, connectionSerial);
    cip::putUInt16(data + 4, vendorId);
    cip::putUInt32(data + 6, originatorSerial);
    data[10] = static_cast<unsigned char>(words);
    if (pathLength > 0) {
        memcpy(data + kForwardCloseHead, path, static_cast<size_t>(pathLength));
    }
    int replySize = 0;
    const cip::MallocPtr<_MR_Reply> reply(
        _SendMRRequest(session, kServiceForwardClose, CM_PATH, sizeof(CM_PATH), data,
                       kForwardCloseHead + 2 * words, &replySize));
    if (!reply) {
        return -1;
    }
    LogCip(kTraceReplies, "_ExForward_Close : reply=%p (%d)\n", static_cast<void*>(reply.get()),
           replySize);
    return reply->generalStatus;
}

int _Forward_Close(_Eip_Connection* connection) {
    if (!cip::isUsable(connection)) {
        return -1;
    }
    const cip::MallocPtr<_Eip_Connection> owned(connection);
    return _ExForward_Close(connection->session, _Priority, _TimeOut_Ticks,
                            connection->connectionSerial, connection->vendorId,
                            connection->originatorSerial, connection->path, connection->pathLength);
}

void DeleteConnection(_Eip_Connection** connection) {
    if (connection) {
        free(*connection);
        *connection = nullptr;
    }
}
