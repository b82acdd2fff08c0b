#ifndef EIP_CIP_COMMON_PACKET_H
#define EIP_CIP_COMMON_PACKET_H

#include <cstdint>

#include "eip/cip/encap_header.h"

// The common packet format (CIP Networks Library Vol. 2, 2-6): an item count, then items of type
// id, length and data. Requests of this client carry two items, an address and a data item.

/// Item type ids (Vol. 2, table 2-6.3).
enum CpfItemType : uint16_t {
    CPF_NULL_ADDRESS = 0x0000,
    CPF_CONNECTED_ADDRESS = 0x00A1,
    CPF_CONNECTED_DATA = 0x00B1,
    CPF_UNCONNECTED_DATA = 0x00B2,
    CPF_SOCKADDR_O_TO_T = 0x8000,
    CPF_SOCKADDR_T_TO_O = 0x8001,
    CPF_SEQUENCED_ADDRESS = 0x8002
};

/// Head of an item as on the wire; `length` bytes follow it.
struct _Eip_Item {
    unsigned char type[2];
    unsigned char length[2];
};

/// An item with room for the longest fixed part (type-and-length head included): connection id of a
/// connected address, sequence count of connected data, socket address.
struct _Eip_FixedItem {
    _Eip_Item head;
    unsigned char fixed[24];
};

/// Start of the common packet format; the items follow it.
struct _Eip_CPF {
    unsigned char itemCount[2];
};

const int kItemHeadSize = 2 + 2;
/// The sequence count before what a connected data item carries.
const int kSequenceCountSize = 2;

uint16_t _GetItemType(const _Eip_Item* item);
uint16_t _GetItemLength(const _Eip_Item* item);
/// Fills a type-and-length head.
void _SetItem(_Eip_Item* item, uint16_t type, uint16_t length);

/// Bytes of the item's fixed part including its 4-byte head, by type id: 4 for null address and
/// unconnected data, 6 for connected data, 8 for connected address, 12 for sequenced address, 28
/// for socket addresses. Any other type gives 0 with error (0, -10, 0); null 0 with (0, -20, 0).
int _GetItemSize(const _Eip_Item* item);

/// Appends one item. On entry its length field counts the caller's data; it is rewritten in place
/// to what the wire says: data length + fixed part - 4. With `data` the fixed part of `item` and
/// then `data` are appended; without, fixed part and data are both in the item record.
/// Returns the item's length field, or -1 (nothing written, item unchanged): (0, -10, 0) for an
/// unknown type, (0, -31, 0) when the body would exceed 1000 bytes.
int _AddItem(_Encap_Header* buffer, _Eip_Item* item, const void* data);

/// Appends item count 2, the address item and the data item, all or nothing. Returns the new body
/// length, or -1 as _AddItem does.
int _AddCPF(_Encap_Header* buffer, _Eip_Item* addressItem, const void* addressData,
            _Eip_Item* dataItem, const void* data);

// ---- reading a reply ---------------------------------------------------------------------
// A reply is trusted to contain 24 + length bytes, as the transport's recvData guarantees; every
// other number in it is checked against that end. Returned pointers lie inside the reply. Null
// results come with error (0, -20, 0).

/// The common packet format: at byte 24 for ListServices, ListIdentity and ListInterfaces, at byte
/// 30 for SendRRData and SendUnitData. Null for a null reply, a body too short to contain the item
/// count, and any other command.
const _Eip_CPF* _GetEipCPF(const _Encap_Header* reply);
const _Eip_CPF* _GetEipCommonPacket(const _Encap_Header* reply);

/// The first item for every `index`, or null when there are fewer than `index` items. It is
/// not checked against the reply's end, which is not known here; use the two functions below.
const _Eip_Item* _GetItem(const _Eip_CPF* cpf, int index);

/// The first item of the reply, whole inside it, or null.
const _Eip_Item* _GetAdressItem(const _Encap_Header* reply);
/// The second item of the reply, whole inside it, or null.
const _Eip_Item* _GetDataItem(const _Encap_Header* reply);

/// The reply itself when it has at least the 2 bytes of an item count, else null.
const _Encap_Header* _GetInterfaces(const _Encap_Header* reply);
const _Encap_Header* _GetServices(const _Encap_Header* reply);
const _Encap_Header* _GetIdentity(const _Encap_Header* reply);

#endif
