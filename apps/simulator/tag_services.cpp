#include "apps/simulator/tag_services.h"

#include "apps/simulator/oracle.h"

namespace sim {

namespace {

/// The tag and the element of it that a request begins with.
struct Target {
    Tag* tag = nullptr;
    size_t element = 0;
};

CipStatus findTarget(const TagTable& table, const TagBehaviour& behaviour, const RequestPath& path,
                     Target& target) {
    target.tag = table.find(path.name);
    if (!target.tag) {
        return behaviour.unknownTagStatus;
    }
    switch (target.tag->find(path.indices, &target.element)) {
        case Tag::Place::outside:
            return CipStatus(kGeneralError, kBeyondEnd);
        case Tag::Place::wrongDimensions:
            return kPathSegmentError;
        case Tag::Place::inside:
            break;
    }
    return kSuccess;
}

CipStatus checkCount(const Target& target, uint16_t count) {
    if (count == 0) {
        return kInvalidParameter;
    }
    if (count > target.tag->count() - target.element) {
        return CipStatus(kGeneralError, kBeyondEnd);
    }
    return kSuccess;
}

void putElement(Tag& tag, size_t element, const TagBehaviour& behaviour, Bytes& reply) {
    if (tag.type().code == kString) {
        const std::string& text = tag.string(element);
        put8(reply, uint8_t(text.size()));
        putBytes(reply, ByteView(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
    } else if (tag.type().code == kBool) {
        put8(reply, *tag.bytes(element) != 0 ? behaviour.boolTrue : 0);
    } else if (!behaviour.oracle || !putOracleValue(tag, element, reply)) {
        putBytes(reply, ByteView(tag.bytes(element), tag.type().size));
    }
}

/// True when the payload is exactly `count` times a length byte and as many characters.
bool splitStrings(ByteView payload, uint16_t count, std::vector<std::string>& strings) {
    ByteReader reader(payload);
    for (uint16_t i = 0; i < count; ++i) {
        uint8_t length = 0;
        ByteView characters;
        if (!reader.take8(length) || !reader.take(length, characters)) {
            return false;
        }
        strings.emplace_back(reinterpret_cast<const char*>(characters.data()), characters.size());
    }
    return reader.left() == 0;
}

CipStatus storeStrings(const Target& target, uint16_t count, ByteView payload) {
    std::vector<std::string> strings;
    if (!splitStrings(payload, count, strings)) {
        return kNotEnoughData;
    }
    for (size_t i = 0; i < count; ++i) {
        target.tag->string(target.element + i).swap(strings[i]);
    }
    return kSuccess;
}

CipStatus storeElements(const Target& target, uint16_t count, ByteView payload, bool oracle) {
    const size_t size = target.tag->type().size;
    if (payload.size() != size_t(count) * size) {
        return kNotEnoughData;
    }
    for (size_t i = 0; i < count; ++i) {
        uint8_t* to = target.tag->bytes(target.element + i);
        for (size_t k = 0; k < size; ++k) {
            to[k] = payload[i * size + k];
        }
        if (target.tag->type().code == kBool) {
            *to = *to != 0 ? 1 : 0;
        }
        if (oracle) {
            noteOracleWrite(*target.tag, target.element + i);
        }
    }
    return kSuccess;
}

}  // namespace

CipStatus readTag(const TagTable& table, const TagBehaviour& behaviour, const RequestPath& path,
                  ByteView data, Bytes& reply, TagAccess& access) {
    uint16_t count = 0;
    ByteReader reader(data);
    const bool complete = reader.take16(count);
    access.count = complete ? count : -1;
    Target target;
    CipStatus status = findTarget(table, behaviour, path, target);
    if (!status.ok()) {
        return status;
    }
    access.type = target.tag->type().code;
    if (!complete) {
        return kNotEnoughData;
    }
    if (reader.left() != 0) {
        return kTooMuchData;
    }
    status = checkCount(target, count);
    if (!status.ok()) {
        return status;
    }
    put16(reply, target.tag->type().code);
    for (size_t i = 0; i < count; ++i) {
        putElement(*target.tag, target.element + i, behaviour, reply);
    }
    return kSuccess;
}

CipStatus writeTag(const TagTable& table, const TagBehaviour& behaviour, const RequestPath& path,
                   ByteView data, TagAccess& access) {
    uint16_t type = 0;
    uint16_t count = 0;
    ByteReader reader(data);
    const bool hasType = reader.take16(type);
    const bool complete = hasType && reader.take16(count);
    access.type = hasType ? type : -1;
    access.count = complete ? count : -1;
    Target target;
    CipStatus status = findTarget(table, behaviour, path, target);
    if (!status.ok()) {
        return status;
    }
    if (!hasType) {
        return kNotEnoughData;
    }
    if (type != target.tag->type().code) {
        return CipStatus(kGeneralError, kTypeMismatch);
    }
    if (!complete) {
        return kNotEnoughData;
    }
    status = checkCount(target, count);
    if (!status.ok()) {
        return status;
    }
    return target.tag->type().code == kString
               ? storeStrings(target, count, reader.rest())
               : storeElements(target, count, reader.rest(), behaviour.oracle);
}

}  // namespace sim
