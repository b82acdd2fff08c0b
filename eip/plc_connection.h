#ifndef EIP_PLC_CONNECTION_H
#define EIP_PLC_CONNECTION_H

#include "eip/cip/connection_manager.h"

// The class 3 connection to a controller, as everything in this tree asks for it: what refuses one
// of them refuses the others.

/// The target drops a connection that was idle for RPI * (4 << multiplier).
const unsigned char kPlcTimeoutMultiplier = 2;
const uint32_t kPlcRpiMs = 2000;

/// How long a controller may take over the Forward Close: somebody waits for it.
const uint32_t kFarewellMs = 500;

/// Forward Open (CIP Networks Library Vol. 1, 3-5.4) to the controller at the end of `route`; null
/// with length 0 for the controller itself. The controller takes two equal originators for
/// one. The result is that of _ConnectPLCOverCNET2.
inline _Eip_Connection* openPlcConnection(_Eip_Session* session, uint32_t originatorSerial,
                                          const unsigned char* route, unsigned char routeLength) {
    const int kPlcKind = 3;
    const unsigned char kPriorityTick = 5;
    const unsigned char kTimeoutTicks = 247;
    const uint32_t kTToOConnectionId = 0x80FE0001;
    const uint16_t kConnectionSerial = 2;
    const uint16_t kOriginatorVendorId = 0x501B;
    return _ConnectPLCOverCNET2(session, kPlcKind, kPriorityTick, kTimeoutTicks, kTToOConnectionId,
                                kConnectionSerial, kOriginatorVendorId, originatorSerial,
                                kPlcTimeoutMultiplier, kPlcRpiMs, _Transport, route, routeLength);
}

#endif
