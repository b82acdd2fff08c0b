#ifndef EIP_CIP_ENCAP_HEADER_H
#define EIP_CIP_ENCAP_HEADER_H

#include <cstdint>

// The EtherNet/IP encapsulation header (CIP Networks Library Vol. 2, 2-3) and the functions that
// append to a message, each of which clears the error record first. All fields on the wire are
// little-endian; they are byte arrays here so that neither alignment nor the host's byte order
// matters.

/// Head of every encapsulated message; `length` bytes of command-specific data follow it.
struct _Encap_Header {
    unsigned char command[2];
    unsigned char length[2];  ///< number of bytes after the header
    unsigned char sessionHandle[4];
    unsigned char status[4];
    unsigned char senderContext[8];
    unsigned char options[4];
};

const int kEncapHeaderSize = 2 + 2 + 4 + 4 + 8 + 4;
static_assert(sizeof(_Encap_Header) == kEncapHeaderSize, "no padding on the wire");

/// A request's body is limited to this many bytes after the header.
const int kEncapMaxRequestBody = 1000;

/// Commands (Vol. 2, 2-3.2).
enum EncapCommand : uint16_t {
    ENCAP_NOP = 0x0000,
    ENCAP_LIST_TARGETS = 0x0001,
    ENCAP_LIST_SERVICES = 0x0004,
    ENCAP_LIST_IDENTITY = 0x0063,
    ENCAP_LIST_INTERFACES = 0x0064,
    ENCAP_REGISTER_SESSION = 0x0065,
    ENCAP_UNREGISTER_SESSION = 0x0066,
    ENCAP_SEND_RR_DATA = 0x006F,
    ENCAP_SEND_UNIT_DATA = 0x0070,
    ENCAP_INDICATE_STATUS = 0x0072,
    ENCAP_CANCEL = 0x0073
};

/// Fields of a header. `header` must not be null and must contain 24 bytes.
uint16_t _GetEncapCommand(const _Encap_Header* header);
uint16_t _GetEncapLength(const _Encap_Header* header);
uint32_t _GetEncapSessionHandle(const _Encap_Header* header);
void _SetEncapCommand(_Encap_Header* header, uint16_t command);

/// The status field of a reply; -1 with error (0, -20, 0) for a null reply.
int32_t _GetEipStatus(const _Encap_Header* reply);

/// Whether the 24 bytes at `buffer` begin with a command that this protocol has. Null gives false.
bool IsEIP(const void* buffer);

/// Zeroes the 24-byte header, then fills it as _FillHeader does.
void _InitHeader(_Encap_Header* buffer, uint32_t sessionHandle, uint32_t contextLow,
                 uint32_t contextHigh);
/// Sets session handle and the two halves of the sender context, the low half in bytes 12 to 15.
void _FillHeader(_Encap_Header* buffer, uint32_t sessionHandle, uint32_t contextLow,
                 uint32_t contextHigh);

/// Appends `count` bytes after the current body and counts them in the length field. Returns the
/// new length, or 0 (nothing written) with (0, -31, 0) when the body would exceed 1000 bytes or
/// `count` is negative.
/// The caller's buffer must have room for header and new body; 1024 bytes always do.
int _AddHeader(_Encap_Header* buffer, const void* data, int count);
/// The same for one byte, a 16-bit value, a 32-bit value and an array of bytes.
int _AddBYTE2Header(_Encap_Header* buffer, uint8_t value);
int _AddINT2Header(_Encap_Header* buffer, uint16_t value);
int _AddDINT2Header(_Encap_Header* buffer, uint32_t value);
int _Addtab2Header(_Encap_Header* buffer, const unsigned char* data, int count);

/// Appends the SendRRData/SendUnitData prefix: interface handle (32 bits), time-out in seconds (16
/// bits). Returns the new length or 0 as _AddHeader does; all or nothing is written.
int _AddRR(_Encap_Header* buffer, uint32_t interfaceHandle, uint16_t timeoutSeconds);

#endif
