#include "apps/simulator/objects/identity.h"

#include "apps/simulator/wire/encapsulation.h"

namespace sim {

namespace {

const uint16_t kAddressFamilyInternet = 2;
const uint16_t kCipOverTcp = 0x0020;
const char kServiceName[16] = "Communications";

/// Socket addresses are the one structure in network byte order.
void putBig16(Bytes& out, uint16_t value) {
    put8(out, uint8_t(value >> 8));
    put8(out, uint8_t(value));
}

void putText(Bytes& out, const char* text, size_t size) {
    putBytes(out, ByteView(reinterpret_cast<const uint8_t*>(text), size));
}

}  // namespace

void putIdentityItem(Bytes& out, const Identity& identity, uint32_t address, uint16_t port) {
    const size_t itemAt = out.size();
    put16(out, kIdentityItem);
    put16(out, 0);
    put16(out, kProtocolVersion);
    putBig16(out, kAddressFamilyInternet);
    putBig16(out, port);
    putBig16(out, uint16_t(address >> 16));
    putBig16(out, uint16_t(address));
    out.insert(out.end(), 8, 0);
    put16(out, identity.vendor);
    put16(out, identity.deviceType);
    put16(out, identity.productCode);
    put8(out, identity.majorRevision);
    put8(out, identity.minorRevision);
    put16(out, identity.status);
    put32(out, identity.serial);
    put8(out, uint8_t(identity.productName.size()));
    putText(out, identity.productName.data(), identity.productName.size());
    put8(out, identity.state);
    finishCommonPacket(out, itemAt);
}

void putServicesItem(Bytes& out) {
    const size_t itemAt = out.size();
    put16(out, kServicesItem);
    put16(out, 0);
    put16(out, kProtocolVersion);
    put16(out, kCipOverTcp);
    putText(out, kServiceName, sizeof kServiceName);
    finishCommonPacket(out, itemAt);
}

}  // namespace sim
