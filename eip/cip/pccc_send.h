#ifndef EIP_CIP_PCCC_SEND_H
#define EIP_CIP_PCCC_SEND_H

#include <cstdint>

#include "eip/cip/connection_manager.h"
#include "eip/cip/pccc_data.h"

// PCCC requests on their way: inside Execute PCCC (service 0x4B to the PCCC object, class 0x67),
// unconnected or over a connection to a message router; or over a connection to a DH+ proxy, with a
// DH+ header before them.

/// Requestor id before every request of Execute PCCC and of its reply: its length, vendor id,
/// serial number.
extern const unsigned char _PCCC_RequestorID[7];

/// Where a command goes on DH+ links, and from where. Zero links and source are usual.
struct _DHP_Header {
    uint16_t destinationLink;
    uint16_t destinationNode;
    uint16_t sourceLink;
    uint16_t sourceNode;
};

/// The way to a controller. All is borrowed.
struct _PCCC_Target {
    _Eip_Session* session;
    _Eip_Connection* connection;     ///< null: unconnected
    const _DHP_Header* dhp;          ///< set for a connection to a DH+ proxy, else null
    const unsigned char* routePath;  ///< unconnected: port segments; null for the session's target
    int routePathLength;             ///< bytes
};

/// Sends a PCCC request (as pccc_requests.h builds it) and returns the PCCC reply, to be freed with
/// free(), with its size in bytes (at least 4; `replySize` may be null). Its status byte is not
/// checked. Null: (0, -8, 0) without a request; (0, -1, 0) without what the way needs;
/// (0, -22, 0) for an unconnected request to a DH+ node; a general status other than 0, as
/// (3, general status, extended status); (0, -7, 0) for a reply to another requestor, command or
/// transaction; (0, -20, 0) for a malformed reply; otherwise as _ConnectedSend,
/// _SendMRRequest or _UnconnectedSend say.
_PCCC_Reply* _SendConnectedPCCCRequest(const _PCCC_Target* target, const void* request,
                                       int requestLength, int* replySize);
_PCCC_Reply* _SendUnConnectedPCCCRequest(const _PCCC_Target* target, const void* request,
                                         int requestLength, int* replySize);

#endif
