#include "apps/simulator/pccc/file_address.h"

namespace sim {

namespace {

const uint8_t kLongLevel = 0xFF;

enum Level : uint8_t {
    kAreaLevel = 0x01,
    kFileLevel = 0x02,
    kElementLevel = 0x04,
    kWordLevel = 0x08,
    kDeeperLevels = 0xF0,
};

bool takeLevel(ByteReader& reader, uint16_t* value) {
    uint8_t byte = 0;
    if (!reader.take8(&byte)) {
        return false;
    }
    *value = byte;
    return byte != kLongLevel || reader.take16(value);
}

}  // namespace

std::string FileAddress::text(const FileType* type) const {
    std::string text;
    if (type) {
        text += type->letter;
    } else if (typeCode >= 0) {
        const uint8_t code = uint8_t(typeCode);
        text += '<';
        appendHex(ByteView(&code, 1), &text);
        text += '>';
    }
    text += std::to_string(file) + ':' + std::to_string(element);
    if (namesWord) {
        text += '.' + std::to_string(word);
    }
    return text;
}

PcccStatus takeLogicalAddress(ByteReader& reader, FileAddress* address) {
    uint8_t mask = 0;
    if (!reader.take8(&mask)) {
        return {kPcccIllegalCommand, 0};
    }
    if ((mask & kDeeperLevels) != 0) {
        return {kPcccExtended, kPcccTooManyLevels};
    }
    if ((mask & kFileLevel) == 0 || (mask & kElementLevel) == 0) {
        return {kPcccExtended, kPcccTooFewLevels};
    }
    uint16_t area = 0;
    address->namesWord = (mask & kWordLevel) != 0;
    if (((mask & kAreaLevel) != 0 && !takeLevel(reader, &area)) ||
        !takeLevel(reader, &address->file) || !takeLevel(reader, &address->element) ||
        (address->namesWord && !takeLevel(reader, &address->word))) {
        return {kPcccIllegalCommand, 0};
    }
    return area == 0 ? PcccStatus() : PcccStatus{kPcccExtended, kPcccNothingThere};
}

bool takeThreeAddressField(ByteReader& reader, FileAddress* address) {
    uint8_t type = 0;
    if (!takeLevel(reader, &address->file) || !reader.take8(&type) ||
        !takeLevel(reader, &address->element) || !takeLevel(reader, &address->word)) {
        return false;
    }
    address->typeCode = type;
    address->namesWord = address->word != 0;
    return true;
}

}  // namespace sim
