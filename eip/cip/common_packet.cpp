#include "eip/cip/common_packet.h"

#include "eip/cip/cip_error.h"
#include "eip/cip/cpf_view.h"
#include "eip/cip/wire.h"

namespace {

/// Item count of every request: an address and a data item.
const uint16_t kRequestItems = 2;

/// Fixed part of an item by type id, head included; 0 for an unknown one.
int fixedSize(uint16_t type) {
    switch (type) {
        case CPF_NULL_ADDRESS:
        case CPF_UNCONNECTED_DATA:
            return kItemHeadSize;
        case CPF_CONNECTED_DATA:
            return kItemHeadSize + kSequenceCountSize;
        case CPF_CONNECTED_ADDRESS:
            return kItemHeadSize + 4;
        case CPF_SEQUENCED_ADDRESS:
            return kItemHeadSize + 4 + 4;
        case CPF_SOCKADDR_O_TO_T:
        case CPF_SOCKADDR_T_TO_O:
            return kItemHeadSize + 24;
        default:
            return 0;
    }
}

/// Bytes that the item takes on the wire before it has been appended, or 0 with an error.
int wholeSize(const _Eip_Item* item) {
    const int fixed = _GetItemSize(item);
    return fixed > 0 ? fixed + _GetItemLength(item) : 0;
}

/// Whether `count` bytes still fit into the body; records an error when not.
bool hasRoom(const _Encap_Header* buffer, int count) {
    if (count > kEncapMaxRequestBody - _GetEncapLength(buffer)) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_BUFFER_TOO_SMALL, 0);
        return false;
    }
    return true;
}

/// Appends an item that is known and fits.
int appendItem(_Encap_Header* buffer, _Eip_Item* item, const void* data) {
    const int fixed = fixedSize(_GetItemType(item));
    const int dataLength = _GetItemLength(item);
    const uint16_t length = static_cast<uint16_t>(dataLength + fixed - kItemHeadSize);
    cip::putUInt16(item->length, length);
    if (!data) {
        _AddHeader(buffer, item, fixed + dataLength);
        return length;
    }
    _AddHeader(buffer, item, fixed);
    if (length != 0) {
        _AddHeader(buffer, data, dataLength);
    }
    return length;
}

template <typename T>
const T* orInvalidReply(const T* found) {
    if (!found) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
    }
    return found;
}

/// Where the common packet format of a reply begins, counted from the end of the header, or -1 for
/// a command that has none.
int packetOffset(uint16_t command) {
    switch (command) {
        case ENCAP_LIST_SERVICES:
        case ENCAP_LIST_IDENTITY:
        case ENCAP_LIST_INTERFACES:
            return 0;
        case ENCAP_SEND_RR_DATA:
        case ENCAP_SEND_UNIT_DATA:
            return cip::kCommandPrefixSize;
        default:
            return -1;
    }
}

/// The item at `at`, which it moves after the item; null when the item does not end by `end`.
const _Eip_Item* takeItem(const unsigned char*& at, const unsigned char* end) {
    if (end - at < kItemHeadSize) {
        return nullptr;
    }
    const _Eip_Item* item = reinterpret_cast<const _Eip_Item*>(at);
    if (_GetItemLength(item) > end - at - kItemHeadSize) {
        return nullptr;
    }
    at += kItemHeadSize + _GetItemLength(item);
    return item;
}

const _Encap_Header* withItemCount(const _Encap_Header* reply) {
    return orInvalidReply(reply && _GetEncapLength(reply) >= cip::kItemCountSize ? reply : nullptr);
}

}  // namespace

uint16_t _GetItemType(const _Eip_Item* item) {
    return cip::getUInt16(item->type);
}

uint16_t _GetItemLength(const _Eip_Item* item) {
    return cip::getUInt16(item->length);
}

void _SetItem(_Eip_Item* item, uint16_t type, uint16_t length) {
    cip::putUInt16(item->type, type);
    cip::putUInt16(item->length, length);
}

int _GetItemSize(const _Eip_Item* item) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    if (!item) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return 0;
    }
    const int size = fixedSize(_GetItemType(item));
    if (size == 0) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_ITEM_TYPE, 0);
    }
    return size;
}

// 0  2  type id
// 2  2  length of all that follows
// 4  n  fixed part (connection id, sequence count, ...), then the data
int _AddItem(_Encap_Header* buffer, _Eip_Item* item, const void* data) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    const int size = wholeSize(item);
    if (size == 0 || !hasRoom(buffer, size)) {
        return -1;
    }
    return appendItem(buffer, item, data);
}

// 0  2  item count (2)
// 2  n  address item
//    n  data item
int _AddCPF(_Encap_Header* buffer, _Eip_Item* addressItem, const void* addressData,
            _Eip_Item* dataItem, const void* data) {
    CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_SUCCESS, 0);
    const int addressSize = wholeSize(addressItem);
    const int dataSize = addressSize ? wholeSize(dataItem) : 0;
    if (dataSize == 0 || !hasRoom(buffer, cip::kItemCountSize + addressSize + dataSize)) {
        return -1;
    }
    _AddINT2Header(buffer, kRequestItems);
    appendItem(buffer, addressItem, addressData);
    appendItem(buffer, dataItem, data);
    return _GetEncapLength(buffer);
}

cip::CpfView cip::viewItems(const _Encap_Header* reply) {
    CpfView view = {0, nullptr, nullptr, false};
    if (!reply || _GetEncapLength(reply) < kItemCountSize) {
        return view;
    }
    const int offset = packetOffset(_GetEncapCommand(reply));
    if (offset < 0) {
        return view;
    }
    if (_GetEncapLength(reply) < offset + kItemCountSize) {
        view.broken = true;
        return view;
    }
    const unsigned char* body = reinterpret_cast<const unsigned char*>(reply + 1);
    const unsigned char* end = body + _GetEncapLength(reply);
    const unsigned char* at = body + offset;
    view.count = getUInt16(at);
    at += kItemCountSize;
    view.address = view.count >= 1 ? takeItem(at, end) : nullptr;
    view.data = view.count >= 2 && view.address ? takeItem(at, end) : nullptr;
    view.broken = (view.count >= 1 && !view.address) || (view.count >= 2 && !view.data);
    return view;
}

const _Eip_CPF* _GetEipCPF(const _Encap_Header* reply) {
    const _Eip_CPF* cpf = nullptr;
    if (reply) {
        const int offset = packetOffset(_GetEncapCommand(reply));
        if (offset >= 0 && _GetEncapLength(reply) >= offset + cip::kItemCountSize) {
            cpf = reinterpret_cast<const _Eip_CPF*>(
                reinterpret_cast<const unsigned char*>(reply + 1) + offset);
        }
    }
    return orInvalidReply(cpf);
}

const _Eip_CPF* _GetEipCommonPacket(const _Encap_Header* reply) {
    return _GetEipCPF(reply);
}

const _Eip_Item* _GetItem(const _Eip_CPF* cpf, int index) {
    if (!cpf || cip::getUInt16(cpf->itemCount) < index) {
        return orInvalidReply<_Eip_Item>(nullptr);
    }
    return reinterpret_cast<const _Eip_Item*>(cpf + 1);
}

const _Eip_Item* _GetAdressItem(const _Encap_Header* reply) {
    return orInvalidReply(cip::viewItems(reply).address);
}

const _Eip_Item* _GetDataItem(const _Encap_Header* reply) {
    return orInvalidReply(cip::viewItems(reply).data);
}

const _Encap_Header* _GetInterfaces(const _Encap_Header* reply) {
    return withItemCount(reply);
}

const _Encap_Header* _GetServices(const _Encap_Header* reply) {
    return withItemCount(reply);
}

const _Encap_Header* _GetIdentity(const _Encap_Header* reply) {
    return withItemCount(reply);
}
