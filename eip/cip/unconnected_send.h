#ifndef EIP_CIP_UNCONNECTED_SEND_H
#define EIP_CIP_UNCONNECTED_SEND_H

#include <cstdint>

#include "eip/cip/message_router.h"

/// Service code of Unconnected Send; a reply that bears it comes from the route, not from its end.
const uint8_t kServiceUnconnectedSend = 0x52;

/// Sends a message-router request (as _BuildMRRequest makes it) to the device at the end of
/// `routePath` (port segments), wrapped in an Unconnected Send to the connection manager (CIP
/// Networks Library Vol. 1, 3-5.5.4). Returns a copy of the message-router reply, to be freed with
/// free(), with its size in bytes (`replySize` may be null). It is the embedded request's own
/// reply, or, with the service code 0xD2 and a general status other than 0, that of a router on the
/// way. The error record then contains (3, general status, extended status). Null: (0, -8, 0) when
/// there is no request; (0, -1, 0) for a route that is not there; (0, -31, 0) when it does not fit;
/// and as _SendMRRequest says.
_MR_Reply* _UnconnectedSend(_Eip_Session* session, unsigned char priorityTick,
                            unsigned char timeoutTicks, const void* request, int requestLength,
                            const unsigned char* routePath, int routePathLength, int* replySize);

#endif
