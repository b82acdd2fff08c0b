#ifndef EIP_CIP_SESSION_H
#define EIP_CIP_SESSION_H

#include <cstdint>

#include "eip/cip/cip_callback.h"
#include "eip/cip/common_packet.h"
#include "eip/cip/encap_header.h"

// The EtherNet/IP session (CIP Networks Library Vol. 2, 2-4) and the sending of encapsulated
// requests. A session belongs to one thread at a time. Every function but DeleteSession clears the
// thread's error record (cip_error.h) first and records its failures there; null pointers are
// refused with (0, -1, 0).

/// Session record: created by NewSession, owned by the caller, freed by DeleteSession.
struct _Eip_Session {
    CipCallback* transport;          ///< where requests go; not owned
    uint32_t sessionHandle;          ///< 0 until registered
    unsigned char senderContext[8];  ///< copied into every request; zero as created
    uint32_t timeoutMs;              ///< how long to wait for each reply
    uint32_t reserved[2];
};

/// A new, unregistered session over `transport`, which must outlive it. Null with error
/// (1, errno, 0) when there is no memory. Time-outs above 32 bits are cut to the longest.
_Eip_Session* NewSession(unsigned long timeoutMs, CipCallback* transport);
/// Older form: only the time-out is used and the record has no transport; nothing can be sent over
/// it until `transport` is set.
_Eip_Session* _OpenSession(const char* unusedHost, int unusedPort, unsigned long timeoutMs);
/// Frees the record without a word to the target; null is allowed.
void DeleteSession(_Eip_Session* session);
/// Clears the error record, then frees the record.
void CloseSession(_Eip_Session* session);

/// Registers the session. 0: the handle is stored. Otherwise the handle is 0 and the result is the
/// target's encapsulation status, recorded as (2, status, 0), or negative: -1 with (0, -5, 0) for
/// no reply, -1 with (0, -7, 0) for a reply to another command, or the transport's send result.
int _RegisterSession(_Eip_Session* session);
/// Tells the target that the session ends; nothing is awaited. Returns the transport's send
/// result. The handle stays in the record.
int _UnRegisterSession(_Eip_Session* session);

/// Sends ListServices, ListIdentity or ListInterfaces and returns the whole reply, which the caller
/// frees with free(). Null: nothing sent, no reply (0, -5, 0), a reply to another command
/// (0, -7, 0), or a status other than 0 (2, status, 0). No registration is needed.
_Encap_Header* _ListServices(_Eip_Session* session);
_Encap_Header* _ListIdentity(_Eip_Session* session);
_Encap_Header* _ListInterfaces(_Eip_Session* session);

/// Builds a SendRRData/SendUnitData request, all but its command; the caller frees it with free().
/// Both items are handled as by _AddItem. `timeoutMs` is sent in whole seconds. Null with
/// (1, errno, 0) without memory, (0, -10, 0) for an unknown item type, (0, -31, 0) when the request
/// does not fit into 1000 bytes.
_Encap_Header* _BuildRequest(_Eip_Session* session, _Eip_Item* addressItem, const void* addressData,
                             _Eip_Item* dataItem, const void* data, uint32_t timeoutMs);

/// Builds and sends a request and waits for the reply, which the caller frees with free(). Command
/// and status of the reply are the caller's to check. Null when there is none: the error record has
/// what the transport said, or (0, -5, 0) when it said nothing.
_Encap_Header* _SendData_WaitReply(_Eip_Session* session, uint16_t command, _Eip_Item* addressItem,
                                   const void* addressData, _Eip_Item* dataItem, const void* data);
/// _SendData_WaitReply with SendRRData (unconnected) or SendUnitData (connected).
_Encap_Header* _SendRRData(_Eip_Session* session, _Eip_Item* addressItem, const void* addressData,
                           _Eip_Item* dataItem, const void* data);
_Encap_Header* _SendUnitData(_Eip_Session* session, _Eip_Item* addressItem, const void* addressData,
                             _Eip_Item* dataItem, const void* data);
/// Builds and sends a request without waiting. Returns the transport's send result, or -1 when the
/// request could not be built.
int _SendData(_Eip_Session* session, uint16_t command, _Eip_Item* addressItem,
              const void* addressData, _Eip_Item* dataItem, const void* data);

/// Forwarders to the transport. Without one they record (0, -6, 0) and give -1 or null.
int CipSendData(CipCallback* transport, const _Encap_Header* request);
_Encap_Header* CipRecvData(CipCallback* transport, uint32_t timeoutMs);
_Encap_Header* CipSendData_WaitReply(CipCallback* transport, const _Encap_Header* request,
                                     uint32_t unused, uint32_t timeoutMs);
/// Does nothing and returns 0: the transport opens its socket itself.
int _CipOpenSock();

#endif
