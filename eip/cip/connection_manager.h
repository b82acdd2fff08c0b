#ifndef EIP_CIP_CONNECTION_MANAGER_H
#define EIP_CIP_CONNECTION_MANAGER_H

#include <cstdint>

#include "eip/cip/encapsulation.h"
#include "eip/cip/message_router.h"

// Class 3 connections (CIP Networks Library Vol. 1, 3-5.5): Forward Open, Forward Close, and
// messages sent over an open connection. A connection record belongs to the thread that opened it.

/// Defaults of the Forward Open and Forward Close. Plain data: a program may set values of its own
/// before any thread uses the client.
extern uint16_t _OriginatorVendorID;
extern uint32_t _OriginatorSerialNumber;
extern uint8_t _Priority;       ///< priority/time tick byte of _Forward_Close
extern uint8_t _TimeOut_Ticks;  ///< time-out ticks of _Forward_Close
extern uint16_t _Parameters;    ///< network connection parameters
extern uint8_t _Transport;      ///< class 3, application trigger, server
extern uint8_t _TimeOutMultiplier;

/// The longest connection path of a record, in bytes.
const int kMaxConnectionPath = 255;

/// The connection size in network connection parameters (CIP Vol. 1, 3-5.5.1.1): the bytes that a
/// message over the connection may have, its sequence count included.
const uint16_t kConnectionSizeMask = 0x01FF;

/// Connection record: made by the Forward Open functions, freed by _Forward_Close or
/// DeleteConnection. It borrows the session, which must outlive it.
struct _Eip_Connection {
    _Eip_Session* session;
    unsigned char reserved[8];
    uint16_t connectionSerial;
    uint16_t vendorId;
    uint32_t originatorSerial;
    uint32_t oToTConnectionId;  ///< goes into every connected address item
    uint32_t tToOConnectionId;
    uint16_t sequenceCount;  ///< of the last request sent; wraps
    uint8_t pathLength;      ///< bytes
    unsigned char path[kMaxConnectionPath];
    /// Bytes that a message in either direction may have, sequence count included, as the Forward
    /// Open asked for them; 0 when nothing is known of it.
    uint16_t connectionSize;
};

/// Opens a class 3 connection to the message router at the end of `routePath` (port segments, of
/// even length; null or length 0 for the target itself). `plcKind` 1 or 2 uses the network
/// connection parameters 0x4302, any other 0x43F8. `rpiMs` is the requested packet interval in
/// milliseconds. Returns the connection or null: no reply; (1, errno, 0) without memory; (0, -31,
/// 0) when the path is too long for the record; (3, general status, extended status) when the
/// target refuses; (0, -20, 0) when its reply has no connection ids.
_Eip_Connection* _ConnectPLCOverCNET2(_Eip_Session* session, int plcKind,
                                      unsigned char priorityTick, unsigned char timeoutTicks,
                                      uint32_t tToOConnectionId, uint16_t connectionSerial,
                                      uint16_t vendorId, uint32_t originatorSerial,
                                      unsigned char timeoutMultiplier, uint32_t rpiMs,
                                      unsigned char transport, const unsigned char* routePath,
                                      unsigned char routePathLength);

/// The same with O->T connection id 0: the target chooses it, as bridges of a ControlNet route do.
/// PCCC commands to the controller at the end of the route go over it as Execute PCCC requests.
_Eip_Connection* _ConnectPLCOverCNET(_Eip_Session* session, int plcKind, unsigned char priorityTick,
                                     unsigned char timeoutTicks, uint32_t tToOConnectionId,
                                     uint16_t connectionSerial, uint16_t vendorId,
                                     uint32_t originatorSerial, unsigned char timeoutMultiplier,
                                     uint32_t rpiMs, unsigned char transport,
                                     const unsigned char* routePath, unsigned char routePathLength);

/// Opens a class 3 connection, O->T connection id 0, to the DH+ proxy at the end of `routePath` (to
/// the module that has the DH+ ports). `channel` is 'A' or 'B', in either case; any other gives
/// null with (0, -1, 0). PCCC commands go over it with a DH+ header before them. Else as above.
_Eip_Connection* _ConnectPLCOverDHP(_Eip_Session* session, int plcKind, unsigned char priorityTick,
                                    unsigned char timeoutTicks, uint32_t tToOConnectionId,
                                    uint16_t connectionSerial, uint16_t vendorId,
                                    uint32_t originatorSerial, unsigned char timeoutMultiplier,
                                    uint32_t rpiMs, unsigned char transport, char channel,
                                    const unsigned char* routePath, unsigned char routePathLength);

/// Forward Open with every field from the caller and O->T connection id 0 (the target chooses).
/// Null as above.
_Eip_Connection* _Forward_Open(_Eip_Session* session, unsigned char priorityTick,
                               unsigned char timeoutTicks, uint32_t tToOConnectionId,
                               uint16_t connectionSerial, uint16_t vendorId,
                               uint32_t originatorSerial, unsigned char timeoutMultiplier,
                               uint32_t rpiMs, uint16_t parameters, unsigned char transport,
                               const unsigned char* path, int pathLength);
/// The same with O->T connection id (T->O id & 0x8000000F) + 1.
_Eip_Connection* _Forward_Open2(_Eip_Session* session, unsigned char priorityTick,
                                unsigned char timeoutTicks, uint32_t tToOConnectionId,
                                uint16_t connectionSerial, uint16_t vendorId,
                                uint32_t originatorSerial, unsigned char timeoutMultiplier,
                                uint32_t rpiMs, uint16_t parameters, unsigned char transport,
                                const unsigned char* path, int pathLength);

/// Closes the connection and frees its record, also if it fails. Returns the general status of
/// the reply, recorded as (3, general status, extended status), or -1 without a usable reply.
int _Forward_Close(_Eip_Connection* connection);
/// Sends the Forward Close, waits for nothing and frees the record, also if it fails. Returns
/// the transport's send result, -1 when the request could not be built.
int _SendForwardClose(_Eip_Connection* connection);
/// The Forward Close request itself; the result is that of _Forward_Close.
int _ExForward_Close(_Eip_Session* session, unsigned char priorityTick, unsigned char timeoutTicks,
                     uint16_t connectionSerial, uint16_t vendorId, uint32_t originatorSerial,
                     const unsigned char* path, int pathLength);

/// Frees the record without a word to the target and sets the caller's pointer to null.
void DeleteConnection(_Eip_Connection** connection);

/// Bytes that a message-router request over the connection may have; INT_MAX when the connection's
/// size is not known, and for null.
int _GetConnectedRequestLimit(const _Eip_Connection* connection);

/// Sends one message-router request over the connection with the next sequence count. Returns a
/// copy of the reply's connected data item (type 0x00B1, length, sequence count, message-router
/// reply), to be freed with free(); its length field counts the bytes after the head, and 2 zero
/// bytes follow them. The error record then contains (2, encapsulation status, 0). Bytes after the
/// data item are ignored. Null: (0, -31, 0), nothing sent, when the request fits
/// neither an encapsulated request nor the connection's size; no reply; (2, status, 0) for a reply
/// without a data item; (0, -7, 0) for a reply to another command, session or sequence count; (0,
/// -20, 0) for items of another type or length than a connected reply has, or that are not whole.
_Eip_Item* _ConnectedSend(_Eip_Session* session, _Eip_Connection* connection, const void* request,
                          int requestLength);

#endif
