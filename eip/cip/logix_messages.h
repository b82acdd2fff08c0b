#ifndef EIP_CIP_LOGIX_MESSAGES_H
#define EIP_CIP_LOGIX_MESSAGES_H

#include <cstdint>

#include "eip/cip/common_packet.h"
#include "eip/cip/logix_data.h"
#include "eip/cip/message_router.h"

// Requests and replies of the Logix Read Tag and Write Tag services, and of their fragmented forms
// (Logix 5000 Controllers Data Access, 1756-PM020), as bytes.

/// Service codes; a reply has bit 0x80 set.
enum LgxService : uint8_t {
    LGX_SERVICE_MULTIPLE = 0x0A,  ///< Multiple Service Packet
    LGX_SERVICE_PCCC = 0x4B,      ///< Execute PCCC
    LGX_SERVICE_READ_TAG = 0x4C,
    LGX_SERVICE_WRITE_TAG = 0x4D,
    LGX_SERVICE_READ_TAG_FRAGMENTED = 0x52,
    LGX_SERVICE_WRITE_TAG_FRAGMENTED = 0x53
};

/// The data type before every value.
const int kLgxTypeSize = 2;
/// Bytes of a Write Tag and of a Write Tag Fragmented request beside path and data: service, path
/// size, data type, element count; and the offset.
const int kWriteTagFixedSize = 1 + 1 + kLgxTypeSize + 2;
const int kWriteFragmentFixedSize = kWriteTagFixedSize + 4;

/// Read Tag request for `elementCount` elements. Returns the request, to be freed with free(), and
/// its size. Null (size 0) with (1, errno, 0) without memory, (0, -31, 0) when the path of the name
/// is longer than 255 words or a part of the name longer than 255 bytes.
unsigned char* _BuildLgxReadDataRequest(const char* tagName, uint16_t elementCount, int* size);

/// Write Tag request. `data` contains `dataBytes` bytes: the characters of a short string (at most
/// 255; its element count is sent as 1), else the values of `elementCount` elements. Result as
/// above; (0, -31, 0) also for more data than a request body takes.
unsigned char* _BuildLgxWriteDataRequest(const char* tagName, _LGX_Data_Type dataType,
                                         const void* data, int dataBytes, uint16_t elementCount,
                                         int* size);

/// Read Tag Fragmented request: of `elementCount` elements in all, as many bytes from byte `offset`
/// on as fit a reply. Result as that of _BuildLgxReadDataRequest.
unsigned char* _BuildLgxReadFragmentRequest(const char* tagName, uint16_t elementCount,
                                            uint32_t offset, int* size);

/// Write Tag Fragmented request: the `dataBytes` bytes at `data` go to byte `offset` of
/// `elementCount` elements in all. Not for short strings. Result as that of
/// _BuildLgxWriteDataRequest.
unsigned char* _BuildLgxWriteFragmentRequest(const char* tagName, _LGX_Data_Type dataType,
                                             const void* data, int dataBytes, uint16_t elementCount,
                                             uint32_t offset, int* size);

/// Number of service replies in a connected or unconnected data item: the count of a Multiple
/// Service Packet reply, 1 for a reply to Read Tag, Write Tag or Execute PCCC; 0 with (0, -22, 0)
/// for any other service, with (0, -20, 0) for null or an item too short.
/// The item must contain 4 + its length field bytes; everything inside is checked against that.
int _GetService_ReplyNumber(const _Eip_Item* item);

/// The service reply at `index`, inside the item. Its head, additional status and, for a good Read
/// Tag reply, data type are whole. Null: (0, -10, 0) for another item type, (0, -21, 0) for an
/// index beyond the replies, (0, -22, 0) for another service, (0, -20, 0) for any other
/// malformed item.
const _MR_Reply* _GetService_Reply(const _Eip_Item* item, int index);
/// Bytes of that reply: up to the next one, or to the item's end. 0 when there is none.
int _GetService_ReplySize(const _Eip_Item* item, int index);

/// General status in the low byte, additional status size in words in the high byte: what is
/// recorded as an error of type 5. 0 is success. -1 for null.
int32_t _GetLGXStatusWord(const _MR_Reply* reply);
/// The signed 16-bit extended status when the status word is 0x01FF, else 0.
int32_t _GetExtendedStatus(const _MR_Reply* reply);

/// The data type of a Read Tag reply that _GetService_Reply returned. 0 on failure: (0, -20, 0)
/// for null, (5, status word, extended status) for a refusal, (0, -24, 0) for another service.
int32_t _GetLGXDataType(const _MR_Reply* reply);
/// Start of the data of such a reply, after the type. Null on failure: as above, and (0, -24, 0)
/// for a type that has no entry in _LGX_Data_Type. Clears the error record on success.
const unsigned char* _GetData(const _MR_Reply* reply);

/// Decodes a Read Tag reply of `length` bytes. All bytes after the type (a string's length byte)
/// are the record's data; its count is that of the whole elements in them. Null: (1, errno, 0)
/// without memory; (0, -102, 236) for null, a refusal, another service's reply or a type without
/// size; (0, -102, 248) for no whole element, also of a string longer than its data; (0, -20, 0)
/// for a reply cut short.
_LGX_Read* _DecodeLGX(const _MR_Reply* reply, int length);

#endif
