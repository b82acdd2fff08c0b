#ifndef APPS_SIMULATOR_WIRE_UNCONNECTED_SEND_H
#define APPS_SIMULATOR_WIRE_UNCONNECTED_SEND_H

#include "apps/simulator/wire/cip.h"

namespace sim {

/// A request on its way to another device (CIP Networks Library Vol. 1, 3-5.5.4).
struct UnconnectedSend {
    ByteView message;  ///< the embedded message-router request
    ByteView route;    ///< the route path
};

/// Reads the data of an Unconnected Send: priority/tick, ticks, message size, message, a pad byte
/// after one of odd size, route path size in words, reserved, route path.
CipStatus decodeUnconnectedSend(ByteView data, UnconnectedSend* request);

}  // namespace sim

#endif
