#include "apps/simulator/tags/tag_services.h"

#include <algorithm>

#include "apps/simulator/tags/oracle.h"

namespace sim {

namespace {

const size_t kTypeSize = 2;

/// The tag and the element of it that a request begins with.
struct Target {
    Tag* tag = nullptr;
    size_t element = 0;
};

CipStatus findTarget(const TagTable& table, const TagBehaviour& behaviour, const RequestPath& path,
                     Target* target) {
    target->tag = table.find(path.name);
    if (!target->tag) {
        return behaviour.unknownTagStatus;
    }
    switch (target->tag->find(path.indices, &target->element)) {
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

void putElement(Tag& tag, size_t element, const TagBehaviour& behaviour, Bytes* reply) {
    if (tag.type().code == kString) {
        const std::string& text = tag.string(element);
        put8(*reply, uint8_t(text.size()));
        putBytes(*reply, ByteView(reinterpret_cast<const uint8_t*>(text.data()), text.size()));
    } else if (tag.type().code == kBool) {
        put8(*reply, *tag.bytes(element) != 0 ? behaviour.boolTrue : 0);
    } else if (!behaviour.oracle || !putOracleValue(tag, element, reply)) {
        putBytes(*reply, ByteView(tag.bytes(element), tag.type().size));
    }
}

size_t sizeOf(Tag& tag, size_t element) {
    return tag.type().code == kString ? 1 + tag.string(element).size() : tag.type().size;
}

/// Appends the elements' bytes from `offset` on, as many whole elements as fit `room`.
CipStatus putElements(const Target& target, size_t count, size_t offset,
                      const TagBehaviour& behaviour, size_t room, Bytes* reply) {
    const size_t fixedSize = target.tag->type().size;
    size_t i = fixedSize > 0 ? std::min(offset / fixedSize, count) : 0;
    size_t at = i * fixedSize;
    for (; i < count; ++i) {
        const size_t end = at + sizeOf(*target.tag, target.element + i);
        const size_t skipped = offset > at ? std::min(offset, end) - at : 0;
        const size_t size = end - at - skipped;
        if (size > room) {
            return kPartialTransfer;
        }
        if (size > 0) {
            const size_t begin = reply->size();
            putElement(*target.tag, target.element + i, behaviour, reply);
            reply->erase(reply->begin() + long(begin), reply->begin() + long(begin + skipped));
        }
        room -= size;
        at = end;
    }
    return offset < at ? kSuccess : CipStatus(kGeneralError, kBeyondEnd);
}

/// Takes `count` strings apart: a length byte and as many characters each.
CipStatus splitStrings(ByteView payload, uint16_t count, std::vector<std::string>* strings) {
    ByteReader reader(payload);
    for (uint16_t i = 0; i < count; ++i) {
        uint8_t length = 0;
        ByteView characters;
        if (!reader.take8(&length) || !reader.take(length, &characters)) {
            return kNotEnoughData;
        }
        strings->emplace_back(reinterpret_cast<const char*>(characters.data()), characters.size());
    }
    return reader.left() == 0 ? kSuccess : kTooMuchData;
}

CipStatus storeStrings(const Target& target, uint16_t count, ByteView payload) {
    std::vector<std::string> strings;
    const CipStatus status = splitStrings(payload, count, &strings);
    if (!status.ok()) {
        return status;
    }
    for (size_t i = 0; i < count; ++i) {
        target.tag->string(target.element + i).swap(strings[i]);
    }
    return kSuccess;
}

/// Where the elements of a write request go, and which of them it contains.
struct Piece {
    size_t total;   ///< elements of the whole write
    size_t offset;  ///< in bytes, of the first one that is here
    bool isPart;    ///< need not contain all the rest
    ByteView bytes;
};

/// Whether a piece contains whole elements, and no more than there are to come.
CipStatus checkPiece(const Piece& piece, size_t size) {
    if (piece.offset % size != 0) {
        return kInvalidParameter;
    }
    if (piece.offset >= piece.total * size) {
        return CipStatus(kGeneralError, kBeyondEnd);
    }
    const size_t left = piece.total * size - piece.offset;
    if (piece.bytes.size() > left) {
        return kTooMuchData;
    }
    const bool isWhole = piece.isPart ? !piece.bytes.empty() && piece.bytes.size() % size == 0
                                      : piece.bytes.size() == left;
    return isWhole ? kSuccess : kNotEnoughData;
}

CipStatus storeElements(const Target& target, const Piece& piece, bool oracle) {
    const size_t size = target.tag->type().size;
    const CipStatus status = checkPiece(piece, size);
    if (!status.ok()) {
        return status;
    }
    const size_t first = target.element + piece.offset / size;
    for (size_t i = 0; i < piece.bytes.size() / size; ++i) {
        uint8_t* to = target.tag->bytes(first + i);
        std::copy_n(piece.bytes.data() + i * size, size, to);
        if (target.tag->type().code == kBool) {
            *to = *to != 0 ? 1 : 0;
        }
        if (oracle) {
            noteOracleWrite(*target.tag, first + i);
        }
    }
    return kSuccess;
}

/// Element count, and of a piece the byte offset after it. False when they are not all there.
bool takeCountAndOffset(ByteReader& reader, bool isPiece, TagAccess* access) {
    uint16_t count = 0;
    uint32_t offset = 0;
    if (!reader.take16(&count)) {
        return false;
    }
    access->count = count;
    if (!isPiece) {
        return true;
    }
    const bool complete = reader.take32(&offset);
    access->offset = complete ? int64_t(offset) : -1;
    return complete;
}

size_t offsetOf(const TagAccess& access) {
    return access.offset > 0 ? size_t(access.offset) : 0;
}

}  // namespace

CipStatus readTag(const TagTable& table, const TagBehaviour& behaviour, const TagRequest& request,
                  Bytes* reply, TagAccess* access) {
    ByteReader reader(request.data);
    const bool complete = takeCountAndOffset(reader, request.service == kReadTagFragmented, access);
    Target target;
    CipStatus status = findTarget(table, behaviour, request.path, &target);
    if (!status.ok()) {
        return status;
    }
    access->type = target.tag->type().code;
    if (!complete) {
        return kNotEnoughData;
    }
    if (reader.left() != 0) {
        return kTooMuchData;
    }
    const uint16_t count = uint16_t(access->count);
    status = checkCount(target, count);
    if (!status.ok()) {
        return status;
    }
    if (request.room < kTypeSize) {
        return kReplyDataTooLarge;
    }
    const size_t begin = reply->size();
    put16(*reply, target.tag->type().code);
    status =
        putElements(target, count, offsetOf(*access), behaviour, request.room - kTypeSize, reply);
    if (!status.ok() && status.general != kPartialTransfer) {
        reply->resize(begin);
    }
    return status;
}

CipStatus writeTag(const TagTable& table, const TagBehaviour& behaviour, const TagRequest& request,
                   TagAccess* access) {
    const bool isPiece = request.service == kWriteTagFragmented;
    uint16_t type = 0;
    ByteReader reader(request.data);
    const bool hasType = reader.take16(&type);
    const bool complete = hasType && takeCountAndOffset(reader, isPiece, access);
    access->type = hasType ? type : -1;
    Target target;
    CipStatus status = findTarget(table, behaviour, request.path, &target);
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
    const uint16_t count = uint16_t(access->count);
    status = checkCount(target, count);
    if (!status.ok()) {
        return status;
    }
    const Piece piece = {count, offsetOf(*access), isPiece, reader.rest()};
    if (target.tag->type().code != kString) {
        return storeElements(target, piece, behaviour.oracle);
    }
    return piece.offset == 0 ? storeStrings(target, count, piece.bytes) : kInvalidParameter;
}

}  // namespace sim
