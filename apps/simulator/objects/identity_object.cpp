#include "apps/simulator/objects/identity_object.h"

namespace sim {

namespace {

enum IdentityAttribute : uint16_t {
    kVendor = 1,
    kDeviceType = 2,
    kProductCode = 3,
    kRevision = 4,
    kStatus = 5,
    kSerialNumber = 6,
    kProductName = 7,
    kState = 8,
};

/// The last attribute of Get_Attributes_All: what follows is optional, and clients disagree on it.
const uint16_t kLastOfAll = kProductName;

/// Appends the attribute's value; false when there is no such attribute.
bool putAttribute(const Identity& identity, uint32_t attribute, Bytes* reply) {
    switch (attribute) {
        case kVendor:
            put16(*reply, identity.vendor);
            return true;
        case kDeviceType:
            put16(*reply, identity.deviceType);
            return true;
        case kProductCode:
            put16(*reply, identity.productCode);
            return true;
        case kRevision:
            put8(*reply, identity.majorRevision);
            put8(*reply, identity.minorRevision);
            return true;
        case kStatus:
            put16(*reply, identity.status);
            return true;
        case kSerialNumber:
            put32(*reply, identity.serial);
            return true;
        case kProductName:
            put8(*reply, uint8_t(identity.productName.size()));
            reply->insert(reply->end(), identity.productName.begin(), identity.productName.end());
            return true;
        case kState:
            put8(*reply, identity.state);
            return true;
        default:
            return false;
    }
}

CipStatus getAll(const Identity& identity, Bytes* reply) {
    for (uint16_t attribute = kVendor; attribute <= kLastOfAll; ++attribute) {
        putAttribute(identity, attribute, reply);
    }
    return kSuccess;
}

// Request: count, attribute numbers. Reply: count, then number, status and value of each.
CipStatus getList(const Identity& identity, ByteView data, Bytes* reply) {
    ByteReader reader(data);
    uint16_t count = 0;
    if (!reader.take16(&count) || reader.left() < size_t(count) * 2) {
        return kNotEnoughData;
    }
    if (reader.left() > size_t(count) * 2) {
        return kTooMuchData;
    }
    CipStatus status = kSuccess;
    put16(*reply, count);
    uint16_t attribute = 0;
    while (reader.take16(&attribute)) {
        put16(*reply, attribute);
        const size_t statusAt = reply->size();
        put16(*reply, kSuccess);
        if (!putAttribute(identity, attribute, reply)) {
            set16(*reply, statusAt, kAttributeNotSupported);
            status = kAttributeListError;
        }
    }
    return status;
}

}  // namespace

CipStatus getIdentityAttributes(const Identity& identity, uint8_t service, uint32_t attribute,
                                ByteView data, Bytes* reply) {
    if (service == kGetAttributeList) {
        return getList(identity, data, reply);
    }
    if (!data.empty()) {
        return kTooMuchData;
    }
    if (service == kGetAttributesAll) {
        return getAll(identity, reply);
    }
    return putAttribute(identity, attribute, reply) ? kSuccess : kAttributeNotSupported;
}

}  // namespace sim
