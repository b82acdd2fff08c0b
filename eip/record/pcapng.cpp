#include "eip/record/pcapng.h"

#include <algorithm>
#include <cstring>

namespace {

const uint32_t kSectionHeaderBlock = 0x0A0D0D0A;
const uint32_t kInterfaceBlock = 1;
const uint32_t kEnhancedPacketBlock = 6;
const uint32_t kByteOrderMagic = 0x1A2B3C4D;
const uint16_t kMajorVersion = 1;
const uint16_t kMinorVersion = 0;

const uint16_t kEndOfOptions = 0;
const uint16_t kComment = 1;
const uint16_t kUserApplication = 4;
const size_t kLongestOption = 0xFFFF;

const size_t kAlignment = 4;

typedef std::vector<unsigned char> Bytes;

void append(const void* data, size_t size, Bytes* out) {
    const unsigned char* const bytes = static_cast<const unsigned char*>(data);
    out->insert(out->end(), bytes, bytes + size);
}

template <typename T>
void append(T value, Bytes* out) {
    append(&value, sizeof value, out);
}

void pad(size_t blockAt, Bytes* out) {
    while ((out->size() - blockAt) % kAlignment != 0) {
        out->push_back(0);
    }
}

/// Every block:    type (32)  total length (32)  body, padded to 32 bits  total length (32)
/// The first length is filled in by endBlock(). Returns where the block begins.
size_t beginBlock(uint32_t type, Bytes* out) {
    const size_t at = out->size();
    append(type, out);
    append(uint32_t(0), out);
    return at;
}

void endBlock(size_t at, Bytes* out) {
    pad(at, out);
    const uint32_t total = static_cast<uint32_t>(out->size() - at + sizeof(uint32_t));
    append(total, out);
    std::memcpy(out->data() + at + sizeof(uint32_t), &total, sizeof total);
}

/// Every option:   code (16)  length (16)  value, padded to 32 bits
void appendOption(uint16_t code, const std::string& text, size_t blockAt, Bytes* out) {
    if (text.empty()) {
        return;
    }
    const size_t length = std::min(text.size(), kLongestOption);
    append(code, out);
    append(static_cast<uint16_t>(length), out);
    append(text.data(), length, out);
    pad(blockAt, out);
}

void endOptions(Bytes* out) {
    append(kEndOfOptions, out);
    append(uint16_t(0), out);
}

}  // namespace

/// Body:           byte-order magic (32)  version 1.0 (16, 16)  section length, unknown (64)
/// options
void pcapngSectionHeader(const std::string& application, const std::string& comment, Bytes* out) {
    const size_t at = beginBlock(kSectionHeaderBlock, out);
    append(kByteOrderMagic, out);
    append(kMajorVersion, out);
    append(kMinorVersion, out);
    append(int64_t(-1), out);
    appendOption(kComment, comment, at, out);
    appendOption(kUserApplication, application, at, out);
    endOptions(out);
    endBlock(at, out);
}

/// Body:           link type (16)  reserved (16)  longest packet, 0 for no limit (32)
void pcapngInterface(Bytes* out) {
    const size_t at = beginBlock(kInterfaceBlock, out);
    append(kPcapngLinkTypeRaw, out);
    append(uint16_t(0), out);
    append(uint32_t(0), out);
    endBlock(at, out);
}

/// Body:           interface (32)  time, high and low half (32, 32)  captured length (32)
///                 original length (32)  packet, padded to 32 bits  options
void pcapngPacket(int64_t micros, const Bytes& packet, const std::string& comment, Bytes* out) {
    const size_t at = beginBlock(kEnhancedPacketBlock, out);
    const uint32_t size = static_cast<uint32_t>(packet.size());
    append(uint32_t(0), out);
    append(static_cast<uint32_t>(static_cast<uint64_t>(micros) >> 32), out);
    append(static_cast<uint32_t>(micros), out);
    append(size, out);
    append(size, out);
    append(packet.data(), packet.size(), out);
    pad(at, out);
    if (!comment.empty()) {
        appendOption(kComment, comment, at, out);
        endOptions(out);
    }
    endBlock(at, out);
}
