// Connections to the objects that answer for a controller: its message router, a DH+ proxy.

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/connection_manager.h"

namespace {

/// Network connection parameters (CIP Vol. 1, 3-5.5.1.1): point to point, low priority, variable
/// size of at most 0x102 (258) bytes, for controllers of the PLC-5 and SLC kind.
const uint16_t kSmallParameters = 0x4302;
const int kPlc5 = 1;
const int kSlc500 = 2;

uint16_t parametersFor(int plcKind) {
    return plcKind == kPlc5 || plcKind == kSlc500 ? kSmallParameters : _Parameters;
}

/// A connection path: the route to a device, then the object in it.
struct ConnectionPath {
    static const int kLongestObject = 6;

    ConnectionPath(const unsigned char* route, int routeLength, const unsigned char* object,
                   int objectLength)
        : length(0) {
        append(route, route ? routeLength : 0);
        append(object, objectLength);
    }

    void append(const unsigned char* part, int partLength) {
        if (partLength > 0) {
            memcpy(bytes + length, part, static_cast<size_t>(partLength));
            length += partLength;
        }
    }

    unsigned char bytes[UINT8_MAX + kLongestObject];
    int length;
};
static_assert(sizeof(ROUTER_PATH) <= ConnectionPath::kLongestObject &&
                  sizeof(DHPA_PROXY_PATH) <= ConnectionPath::kLongestObject &&
                  sizeof(DHPB_PROXY_PATH) <= ConnectionPath::kLongestObject,
              "room for every object");

}  // namespace

_Eip_Connection* _ConnectPLCOverCNET2(_Eip_Session* session, int plcKind,
                                      unsigned char priorityTick, unsigned char timeoutTicks,
                                      uint32_t tToOConnectionId, uint16_t connectionSerial,
                                      uint16_t vendorId, uint32_t originatorSerial,
                                      unsigned char timeoutMultiplier, uint32_t rpiMs,
                                      unsigned char transport, const unsigned char* routePath,
                                      unsigned char routePathLength) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    const ConnectionPath path(routePath, routePathLength, ROUTER_PATH, sizeof(ROUTER_PATH));
    return _Forward_Open2(session, priorityTick, timeoutTicks, tToOConnectionId, connectionSerial,
                          vendorId, originatorSerial, timeoutMultiplier, rpiMs,
                          parametersFor(plcKind), transport, path.bytes, path.length);
}

_Eip_Connection* _ConnectPLCOverCNET(_Eip_Session* session, int plcKind, unsigned char priorityTick,
                                     unsigned char timeoutTicks, uint32_t tToOConnectionId,
                                     uint16_t connectionSerial, uint16_t vendorId,
                                     uint32_t originatorSerial, unsigned char timeoutMultiplier,
                                     uint32_t rpiMs, unsigned char transport,
                                     const unsigned char* routePath,
                                     unsigned char routePathLength) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    const ConnectionPath path(routePath, routePathLength, ROUTER_PATH, sizeof(ROUTER_PATH));
    return _Forward_Open(session, priorityTick, timeoutTicks, tToOConnectionId, connectionSerial,
                         vendorId, originatorSerial, timeoutMultiplier, rpiMs,
                         parametersFor(plcKind), transport, path.bytes, path.length);
}

_Eip_Connection* _ConnectPLCOverDHP(_Eip_Session* session, int plcKind, unsigned char priorityTick,
                                    unsigned char timeoutTicks, uint32_t tToOConnectionId,
                                    uint16_t connectionSerial, uint16_t vendorId,
                                    uint32_t originatorSerial, unsigned char timeoutMultiplier,
                                    uint32_t rpiMs, unsigned char transport, char channel,
                                    const unsigned char* routePath, unsigned char routePathLength) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    const bool isA = channel == 'A' || channel == 'a';
    if (!isA && channel != 'B' && channel != 'b') {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_ERROR, 0);
        return nullptr;
    }
    const ConnectionPath path(routePath, routePathLength, isA ? DHPA_PROXY_PATH : DHPB_PROXY_PATH,
                              sizeof(DHPA_PROXY_PATH));
    return _Forward_Open(session, priorityTick, timeoutTicks, tToOConnectionId, connectionSerial,
                         vendorId, originatorSerial, timeoutMultiplier, rpiMs,
                         parametersFor(plcKind), transport, path.bytes, path.length);
}
