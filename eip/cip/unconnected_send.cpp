#include "eip/cip/unconnected_send.h"

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/malloc_ptr.h"
#include "eip/cip/mr_view.h"
#include "eip/cip/wire.h"

namespace {

/// Priority/time tick, time-out ticks, embedded request size.
const int kHeadSize = 1 + 1 + 2;
/// Route path size, reserved.
const int kRouteHeadSize = 1 + 1;
const int kMaxRoutePath = 255 * 2;

/// A byte for even length, where the standard wants one.
int paddingOf(int length) {
    return length & 1;
}

/// Whether there is something to send and it can go out; records the error.
bool isSendable(const void* request, int requestLength, const unsigned char* routePath,
                int routePathLength) {
    if (!request || requestLength < 1) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_NOTHING_TO_SEND, 0);
        return false;
    }
    if (routePathLength < 0 || (routePathLength > 0 && !routePath)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_ERROR, 0);
        return false;
    }
    if (requestLength > kEncapMaxRequestBody || routePathLength > kMaxRoutePath) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BUFFER_TOO_SMALL, 0);
        return false;
    }
    return true;
}

// 0  1  priority/time tick
// 1  1  time-out ticks
// 2  2  embedded request size
// 4  n  embedded request, a zero byte after it when n is odd
//    1  route path size, words
//    1  reserved
//    n  route path, padded to even length
int encode(unsigned char* data, unsigned char priorityTick, unsigned char timeoutTicks,
           const void* request, int requestLength, const unsigned char* routePath,
           int routePathLength) {
    data[0] = priorityTick;
    data[1] = timeoutTicks;
    cip::putUInt16(data + 2, static_cast<uint16_t>(requestLength));
    memcpy(data + kHeadSize, request, static_cast<size_t>(requestLength));
    int size = kHeadSize + requestLength + paddingOf(requestLength);
    data[size] = static_cast<unsigned char>((routePathLength + 1) / 2);
    size += kRouteHeadSize;
    if (routePathLength > 0) {
        memcpy(data + size, routePath, static_cast<size_t>(routePathLength));
    }
    return size + routePathLength + paddingOf(routePathLength);
}

}  // namespace

_MR_Reply* _UnconnectedSend(_Eip_Session* session, unsigned char priorityTick,
                            unsigned char timeoutTicks, const void* request, int requestLength,
                            const unsigned char* routePath, int routePathLength, int* replySize) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (replySize) {
        *replySize = 0;
    }
    if (!isSendable(request, requestLength, routePath, routePathLength)) {
        return nullptr;
    }
    unsigned char data[kHeadSize + kEncapMaxRequestBody + kRouteHeadSize + kMaxRoutePath] = {0};
    const int size = encode(data, priorityTick, timeoutTicks, request, requestLength, routePath,
                            routePathLength);
    const uint8_t embedded = *static_cast<const unsigned char*>(request);
    return cip::sendMRRequest(session, kServiceUnconnectedSend, CM_PATH, sizeof(CM_PATH), data,
                              size, embedded, replySize);
}
