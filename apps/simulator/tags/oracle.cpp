#include "apps/simulator/tags/oracle.h"

namespace sim {

namespace {

unsigned counterBits(const ValueType& type) {
    switch (type.code) {
        case kReal:
            return 12;
        case kInt:
        case kUint:
            return 8;
        case kSint:
        case kUsint:
            return 4;
        default:
            return 20;
    }
}

}  // namespace

bool putOracleValue(Tag& tag, size_t element, Bytes* out) {
    const ValueType& type = tag.type();
    if (!type.isNumeric()) {
        return false;
    }
    const unsigned bits = counterBits(type);
    const uint32_t counter = tag.counter(element)++ & ((1u << bits) - 1);
    putNumber(type, uint32_t(tag.ordinal() + element) << bits | counter, out);
    return true;
}

void noteOracleWrite(Tag& tag, size_t element) {
    if (tag.type().isNumeric()) {
        tag.counter(element) = wholeNumber(tag.type(), tag.bytes(element));
    }
}

}  // namespace sim
