#ifndef EIP_CIP_CPF_VIEW_H
#define EIP_CIP_CPF_VIEW_H

#include "eip/cip/common_packet.h"

// The items of a reply, found and measured once. Internal to eip/cip.

namespace cip {

/// Bytes of the SendRRData/SendUnitData prefix: interface handle, time-out.
const int kCommandPrefixSize = 4 + 2;
const int kItemCountSize = 2;

struct CpfView {
    int count;                 ///< items that the reply announces
    const _Eip_Item* address;  ///< first item, whole inside the reply, or null
    const _Eip_Item* data;     ///< second item, likewise
    bool broken;               ///< something announced is not whole inside the reply
};

/// Looks at a reply that contains 24 + length bytes. Null is allowed. Records nothing.
CpfView viewItems(const _Encap_Header* reply);

/// The bytes after an item's head.
inline const unsigned char* itemData(const _Eip_Item* item) {
    return reinterpret_cast<const unsigned char*>(item + 1);
}

}  // namespace cip

#endif
