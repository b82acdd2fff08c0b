#include "apps/simulator/pccc/type_parameter.h"

#include "apps/simulator/pccc/data_table.h"

namespace sim {

namespace {

const uint8_t kBehind = 0x08;
const uint8_t kNumber = 0x07;
const size_t kMostBytes = 4;

bool takeNumber(ByteReader& reader, uint8_t half, uint32_t* number) {
    *number = half & kNumber;
    if ((half & kBehind) == 0) {
        return true;
    }
    const size_t count = *number;
    ByteView bytes;
    if (count == 0 || count > kMostBytes || !reader.take(count, &bytes)) {
        return false;
    }
    *number = 0;
    for (size_t i = 0; i < count; ++i) {
        *number |= uint32_t(bytes[i]) << (8 * i);
    }
    return true;
}

/// Appends a number and returns the half flag that shows its length.
uint8_t putNumberBehind(Bytes& out, uint32_t number) {
    uint8_t count = 0;
    do {
        put8(out, uint8_t(number));
        number >>= 8;
        ++count;
    } while (number != 0);
    return uint8_t(kBehind | count);
}

}  // namespace

bool takeTypeParameter(ByteReader& reader, TypeParameter* parameter) {
    uint8_t flag = 0;
    return reader.take8(&flag) && takeNumber(reader, uint8_t(flag >> 4), &parameter->type) &&
           takeNumber(reader, flag & 0x0F, &parameter->size);
}

void putTypeParameter(Bytes& out, const TypeParameter& parameter) {
    const size_t at = out.size();
    put8(out, 0);
    const uint8_t type =
        parameter.type <= kNumber ? uint8_t(parameter.type) : putNumberBehind(out, parameter.type);
    const uint8_t size =
        parameter.size <= kNumber ? uint8_t(parameter.size) : putNumberBehind(out, parameter.size);
    set8(out, at, uint8_t(type << 4 | size));
}

void putArrayParameter(Bytes& out, uint32_t size) {
    const size_t at = out.size();
    put8(out, 0);
    const uint8_t typeHalf = putNumberBehind(out, kPcccArray);
    const uint8_t sizeHalf = putNumberBehind(out, size);
    set8(out, at, uint8_t(typeHalf << 4 | sizeHalf));
}

}  // namespace sim
