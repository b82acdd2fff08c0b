#include "apps/simulator/objects/symbol_object.h"

#include <algorithm>

namespace sim {

namespace {

enum SymbolAttribute : uint16_t {
    kSymbolName = 1,
    kSymbolType = 2,
    kSymbolAddress = 3,
    kSymbolObjectAddress = 5,
    kSoftwareControl = 6,
    kElementSize = 7,
    kArrayDimensions = 8,
    kExternalAccess = 10,
};

/// In the type, above the code of the elements: how many dimensions.
const unsigned kDimensionsShift = 13;
/// In the software control: a tag of its own, no other name for one.
const uint32_t kBaseTag = uint32_t(1) << 26;
const uint8_t kReadWrite = 0;

bool isListed(const Tag& tag, SymbolList listed) {
    if (listed != SymbolList::partial) {
        return listed == SymbolList::all;
    }
    const auto& dimensions = tag.dimensions();
    const bool fromZero = std::all_of(dimensions.begin(), dimensions.end(),
                                      [](const Dimension& one) { return one.lower == 0; });
    const bool isBoolArray = tag.type().code == kBool && !dimensions.empty();
    return fromZero && !isBoolArray && tag.name().find('.') == std::string::npos;
}

/// A STRING has room for its longest value.
size_t elementSize(const Tag& tag) {
    return tag.type().code == kString ? 1 + kMaxStringLength : tag.type().size;
}

void putDimensions(const Tag& tag, Bytes* data) {
    for (size_t i = 0; i < kMaxDimensions; ++i) {
        put32(*data, i < tag.dimensions().size() ? uint32_t(tag.dimensions()[i].size()) : 0);
    }
}

/// Appends the attribute's value; false when there is no such attribute.
bool putAttribute(const Tag& tag, uint16_t attribute, Bytes* data) {
    switch (attribute) {
        case kSymbolName:
            put16(*data, uint16_t(tag.name().size()));
            data->insert(data->end(), tag.name().begin(), tag.name().end());
            return true;
        case kSymbolType:
            put16(*data, uint16_t(tag.type().code | tag.dimensions().size() << kDimensionsShift));
            return true;
        case kSymbolAddress:
        case kSymbolObjectAddress:
            put32(*data, 0);
            return true;
        case kSoftwareControl:
            put32(*data, kBaseTag);
            return true;
        case kElementSize:
            put16(*data, uint16_t(elementSize(tag)));
            return true;
        case kArrayDimensions:
            putDimensions(tag, data);
            return true;
        case kExternalAccess:
            put8(*data, kReadWrite);
            return true;
        default:
            return false;
    }
}

/// The attribute numbers of a request.
CipStatus takeAttributes(ByteView request, std::vector<uint16_t>* attributes) {
    ByteReader reader(request);
    uint16_t count = 0;
    if (!reader.take16(&count) || reader.left() < size_t(count) * 2) {
        return kNotEnoughData;
    }
    if (reader.left() > size_t(count) * 2) {
        return kTooMuchData;
    }
    uint16_t attribute = 0;
    while (reader.take16(&attribute)) {
        attributes->push_back(attribute);
    }
    return kSuccess;
}

/// One instance with its attributes; false when there is no such attribute.
bool putInstance(const Tag& tag, uint32_t number, const std::vector<uint16_t>& attributes,
                 Bytes* data) {
    put32(*data, number);
    return std::all_of(attributes.begin(), attributes.end(), [&tag, data](uint16_t attribute) {
        return putAttribute(tag, attribute, data);
    });
}

}  // namespace

CipStatus listSymbolInstances(TagTable& table, SymbolList listed, ByteView request, Bytes* data) {
    if (listed == SymbolList::none) {
        return kPathDestinationUnknown;
    }
    if (!request.empty()) {
        return kTooMuchData;
    }
    size_t count = 0;
    for (size_t i = 0; i < table.size(); ++i) {
        if (!isListed(table.at(i), listed)) {
            continue;
        }
        if (count == kMostListedInstances) {
            return kPartialTransfer;
        }
        put32(*data, uint32_t(i + 1));
        ++count;
    }
    return kSuccess;
}

CipStatus getInstanceAttributeList(TagTable& table, SymbolList listed, uint32_t first,
                                   ByteView request, size_t room, Bytes* data) {
    if (listed == SymbolList::none) {
        return kPathDestinationUnknown;
    }
    std::vector<uint16_t> attributes;
    const CipStatus status = takeAttributes(request, &attributes);
    if (!status.ok()) {
        return status;
    }
    const size_t begin = data->size();
    for (size_t i = first > 0 ? first - 1 : 0; i < table.size(); ++i) {
        const size_t end = data->size();
        if (!isListed(table.at(i), listed)) {
            continue;
        }
        if (!putInstance(table.at(i), uint32_t(i + 1), attributes, data)) {
            data->resize(begin);
            return kAttributeNotSupported;
        }
        if (data->size() - begin > room) {
            data->resize(end);
            return end > begin ? kPartialTransfer : kReplyDataTooLarge;
        }
    }
    return kSuccess;
}

}  // namespace sim
