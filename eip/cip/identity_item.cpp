#include "eip/cip/identity.h"

#include <cstring>

#include "eip/cip/cip_error.h"
#include "eip/cip/common_packet.h"
#include "eip/cip/cpf_view.h"
#include "eip/cip/wire.h"

namespace {

/// Item type id of the identity item.
const uint16_t kIdentityItem = 0x000C;

/// Bytes of the item up to and with the length byte of the product name.
const int kHeadSize = 2 + 16 + 2 + 2 + 2 + 1 + 1 + 2 + 4 + 1;
const int kStateSize = 1;

uint16_t getBigEndian16(const unsigned char* at) {
    return static_cast<uint16_t>((at[0] << 8) | at[1]);
}

uint32_t getBigEndian32(const unsigned char* at) {
    return static_cast<uint32_t>(getBigEndian16(at)) << 16 | getBigEndian16(at + 2);
}

//  0   2  encapsulation protocol version
//  2  16  socket address, big-endian: family, port, IPv4 address, zeroes
// 18   2  vendor id
// 20   2  device type
// 22   2  product code
// 24   2  revision: major, minor
// 26   2  status
// 28   4  serial number
// 32   1  length of the product name
// 33   n  product name
//      1  state
CipIdentity decode(const unsigned char* data) {
    CipIdentity identity = {};
    const unsigned char nameLength = data[32];
    identity.protocolVersion = cip::getUInt16(data);
    identity.port = getBigEndian16(data + 4);
    identity.ipAddress = getBigEndian32(data + 6);
    identity.vendorId = cip::getUInt16(data + 18);
    identity.deviceType = cip::getUInt16(data + 20);
    identity.productCode = cip::getUInt16(data + 22);
    identity.majorRevision = data[24];
    identity.minorRevision = data[25];
    identity.status = cip::getUInt16(data + 26);
    identity.serialNumber = cip::getUInt32(data + 28);
    memcpy(identity.productName, data + kHeadSize, nameLength);
    identity.state = data[kHeadSize + nameLength];
    return identity;
}

/// The data of a whole identity item, or null.
const unsigned char* identityData(const _Encap_Header* reply) {
    const _Eip_Item* item = _GetAdressItem(reply);
    if (!item || _GetItemType(item) != kIdentityItem || _GetItemLength(item) < kHeadSize) {
        return nullptr;
    }
    const unsigned char* data = cip::itemData(item);
    const int needed = kHeadSize + data[kHeadSize - 1] + kStateSize;
    return _GetItemLength(item) >= needed ? data : nullptr;
}

}  // namespace

bool DecodeIdentity(const _Encap_Header* reply, CipIdentity* identity) {
    const bool isList = reply && _GetEncapCommand(reply) == ENCAP_LIST_IDENTITY;
    const unsigned char* data = isList ? identityData(reply) : nullptr;
    if (!data) {
        CIPERROR(CIP_ERR_INTERNAL, CIP_INTERNAL_INVALID_REPLY, 0);
        return false;
    }
    *identity = decode(data);
    return true;
}
