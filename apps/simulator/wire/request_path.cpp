#include "apps/simulator/wire/request_path.h"

namespace sim {

namespace {

enum Segment : uint8_t {
    kClass8 = 0x20,
    kClass16 = 0x21,
    kInstance8 = 0x24,
    kInstance16 = 0x25,
    kInstance32 = 0x26,
    kElement8 = 0x28,
    kElement16 = 0x29,
    kElement32 = 0x2A,
    kAttribute8 = 0x30,
    kAttribute16 = 0x31,
    kSymbol = 0x91,
};

/// A logical segment's value after its type byte; the wider ones have a pad byte before it.
bool takeLogicalValue(ByteReader& reader, uint8_t segment, uint32_t* value) {
    uint8_t byte = 0;
    if (!reader.take8(&byte)) {
        return false;
    }
    if ((segment & 3) == 0) {
        *value = byte;
        return true;
    }
    if (byte != 0) {
        return false;
    }
    if ((segment & 3) == 2) {
        return reader.take32(value);
    }
    uint16_t word = 0;
    const bool ok = reader.take16(&word);
    *value = word;
    return ok;
}

void appendIndices(const std::vector<uint32_t>& indices, std::string* text) {
    if (indices.empty()) {
        return;
    }
    char before = '[';
    for (uint32_t index : indices) {
        *text += before;
        *text += std::to_string(index);
        before = ',';
    }
    *text += ']';
}

bool takeSymbol(ByteReader& reader, RequestPath* path) {
    uint8_t length = 0;
    ByteView characters;
    if (!reader.take8(&length) || length == 0 || !reader.take(length, &characters)) {
        return false;
    }
    if (length % 2 != 0 && !reader.skip(1)) {
        return false;
    }
    if (!path->name.empty()) {
        appendIndices(path->indices, &path->name);
        path->indices.clear();
        path->name += '.';
    }
    for (size_t i = 0; i < characters.size(); ++i) {
        const char c = char(characters[i]);
        path->name += c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
    }
    return true;
}

bool takeSegment(ByteReader& reader, RequestPath* path) {
    uint8_t segment = 0;
    if (!reader.take8(&segment)) {
        return false;
    }
    switch (segment) {
        case kSymbol:
            return path->classId == 0 && takeSymbol(reader, path);
        case kElement8:
        case kElement16:
        case kElement32:
            path->indices.push_back(0);
            return path->isSymbolic() && takeLogicalValue(reader, segment, &path->indices.back());
        case kClass8:
        case kClass16:
            return !path->isSymbolic() && path->classId == 0 &&
                   takeLogicalValue(reader, segment, &path->classId);
        case kInstance8:
        case kInstance16:
        case kInstance32:
            return path->classId != 0 && path->instanceId == 0 && path->attributeId == 0 &&
                   takeLogicalValue(reader, segment, &path->instanceId);
        case kAttribute8:
        case kAttribute16:
            return path->classId != 0 && path->attributeId == 0 &&
                   takeLogicalValue(reader, segment, &path->attributeId);
        default:
            return false;
    }
}

}  // namespace

void RequestPath::clear() {
    name.clear();
    indices.clear();
    classId = 0;
    instanceId = 0;
    attributeId = 0;
}

std::string RequestPath::text() const {
    std::string text = name;
    appendIndices(indices, &text);
    return text;
}

bool parseRequestPath(ByteView bytes, RequestPath* path) {
    path->clear();
    ByteReader reader(bytes);
    while (reader.left() > 0) {
        if (!takeSegment(reader, path)) {
            return false;
        }
    }
    return path->isSymbolic() || path->classId != 0;
}

}  // namespace sim
