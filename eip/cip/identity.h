#ifndef EIP_CIP_IDENTITY_H
#define EIP_CIP_IDENTITY_H

#include <cstdint>

#include "eip/cip/encap_header.h"

/// What a device says of itself in a ListIdentity reply (CIP Networks Library Vol. 2, table 2-4.4).
struct CipIdentity {
    uint16_t protocolVersion;  ///< of the encapsulation
    uint16_t port;             ///< of its socket address
    uint32_t ipAddress;        ///< 192.168.1.20 is 0xC0A80114
    uint16_t vendorId;
    uint16_t deviceType;
    uint16_t productCode;
    uint8_t majorRevision;
    uint8_t minorRevision;
    uint16_t status;
    uint32_t serialNumber;
    char productName[256];  ///< NUL-terminated; its bytes as the device sent them
    uint8_t state;
};

/// Takes the first item of a ListIdentity reply apart. False with (0, -20, 0) when the reply is to
/// another command, has no identity item, or the item is not whole; `*identity` is then unchanged.
/// The reply is trusted to contain 24 + length bytes.
bool DecodeIdentity(const _Encap_Header* reply, CipIdentity* identity);

#endif
