#ifndef EIP_CIP_MESSAGE_ROUTER_H
#define EIP_CIP_MESSAGE_ROUTER_H

#include <cstdint>

#include "eip/cip/encapsulation.h"

// Message-router requests and replies (CIP Networks Library Vol. 1, 2-4), sent unconnected inside
// SendRRData. The functions of this header take a reply from outside apart; every number in it is
// checked before use.

/// Request paths (Vol. 1, C-1.4: logical segments of 8 bits). Plain data, as the defaults of the
/// connection manager.
extern unsigned char CM_PATH[4];              ///< class 0x06 connection manager, instance 1
extern unsigned char ROUTER_PATH[4];          ///< class 0x02 message router, instance 1
extern unsigned char BACKPLANE_DATA_PATH[4];  ///< class 0x66, instance 1
extern unsigned char PCCC_PATH[4];            ///< class 0x67 PCCC object, instance 1
extern unsigned char DHPA_PROXY_PATH[6];      ///< class 0xA6, instance 1 (DH+ channel A)
extern unsigned char DHPB_PROXY_PATH[6];      ///< class 0xA6, instance 2 (DH+ channel B)

/// Set in the service code of every reply.
const unsigned char kReplyServiceBit = 0x80;

/// Head of a message-router reply; additional status words, then the reply data follow it.
/// Wherever this library returns one, head and additional status lie inside the reply.
struct _MR_Reply {
    unsigned char service;  ///< request service | 0x80
    unsigned char reserved;
    unsigned char generalStatus;
    unsigned char additionalStatusSize;  ///< in 16-bit words
};

const int kMRReplyHeadSize = 1 + 1 + 1 + 1;

/// Service, path size in words, path, data. Returns the request, to be freed with free(), and its
/// size; null (size 0) with (1, errno, 0) without memory, (0, -31, 0) when the path is longer than
/// 255 words or the whole longer than a request body.
unsigned char* _BuildMRRequest(uint8_t service, const void* path, int pathLength, const void* data,
                               int dataLength, int* size);

/// Sends a message-router request unconnected and returns the whole encapsulated reply, to be freed
/// with free(), or null. The contents are not checked.
_Encap_Header* _ExSendMRRequest(_Eip_Session* session, const void* request, int requestLength);

/// Sends an unconnected request and returns a copy of the message-router reply, to be freed with
/// free(), with its size in bytes (0 without a reply; `replySize` may be null). The error record
/// then contains (3, general status, extended status), which the caller judges, for every
/// encapsulation status. Null: no reply; a reply without a data item (2, encapsulation status,
/// 0); a reply to another command or session (0, -7, 0); a malformed reply or one that
/// answers another service (0, -20, 0).
_MR_Reply* _SendMRRequest(_Eip_Session* session, uint8_t service, const void* path, int pathLength,
                          const void* data, int dataLength, int* replySize);

/// The message-router reply inside an encapsulated reply, head and additional status whole inside
/// it; null with (0, -20, 0) otherwise. It follows the data item's head (0x00B2), its head
/// and sequence count (0x00B1), or a socket address (0x8000).
const _MR_Reply* _GetMRReply(const _Encap_Header* reply);
/// The same; the connection manager's replies look no different.
const _MR_Reply* _GetCMReply(const _Encap_Header* reply);
/// Bytes of the reply that _GetMRReply gives; 0 when it gives null.
int _GetMRReplySize(const _Encap_Header* reply);
/// Bytes of its data, after head and additional status; 0 when there is no reply.
int _GetMRDataSize(const _Encap_Header* reply);

/// The data of a message-router reply that this library returned: after head and additional
/// status. Null for null.
const unsigned char* _GetMRData(const _MR_Reply* reply);
/// -1 for null; the signed 16-bit additional status when it is one word, the 32-bit one when it is
/// two, else 0.
int32_t _GetMRExtendedStatus(const _MR_Reply* reply);

#endif
