#include "apps/simulator/wire/bytes.h"

namespace sim {

bool ByteReader::take8(uint8_t* value) {
    if (left() < 1) {
        return false;
    }
    *value = bytes[at++];
    return true;
}

bool ByteReader::take16(uint16_t* value) {
    if (left() < 2) {
        return false;
    }
    *value = get16(bytes, at);
    at += 2;
    return true;
}

bool ByteReader::take32(uint32_t* value) {
    if (left() < 4) {
        return false;
    }
    *value = get32(bytes, at);
    at += 4;
    return true;
}

bool ByteReader::take(size_t size, ByteView* value) {
    if (left() < size) {
        return false;
    }
    *value = ByteView(bytes.data() + at, size);
    at += size;
    return true;
}

bool ByteReader::skip(size_t size) {
    ByteView ignored;
    return take(size, &ignored);
}

void put8(Bytes& out, uint8_t value) {
    out.push_back(value);
}

void put16(Bytes& out, uint16_t value) {
    const uint8_t bytes[] = {uint8_t(value), uint8_t(value >> 8)};
    out.insert(out.end(), bytes, bytes + sizeof bytes);
}

void put32(Bytes& out, uint32_t value) {
    const uint8_t bytes[] = {uint8_t(value), uint8_t(value >> 8), uint8_t(value >> 16),
                             uint8_t(value >> 24)};
    out.insert(out.end(), bytes, bytes + sizeof bytes);
}

void putBytes(Bytes& out, ByteView bytes) {
    out.insert(out.end(), bytes.data(), bytes.data() + bytes.size());
}

void set8(Bytes& out, size_t at, uint8_t value) {
    if (at < out.size()) {
        out[at] = value;
    }
}

void set16(Bytes& out, size_t at, uint16_t value) {
    if (out.size() >= 2 && at <= out.size() - 2) {
        out[at] = uint8_t(value);
        out[at + 1] = uint8_t(value >> 8);
    }
}

void set32(Bytes& out, size_t at, uint32_t value) {
    if (out.size() >= 4 && at <= out.size() - 4) {
        for (size_t i = 0; i < 4; ++i) {
            out[at + i] = uint8_t(value >> (8 * i));
        }
    }
}

uint8_t get8(ByteView bytes, size_t at) {
    return at < bytes.size() ? bytes[at] : 0;
}

uint16_t get16(ByteView bytes, size_t at) {
    if (bytes.size() < 2 || at > bytes.size() - 2) {
        return 0;
    }
    return uint16_t(bytes[at] | bytes[at + 1] << 8);
}

uint32_t get32(ByteView bytes, size_t at) {
    if (bytes.size() < 4 || at > bytes.size() - 4) {
        return 0;
    }
    return uint32_t(bytes[at]) | uint32_t(bytes[at + 1]) << 8 | uint32_t(bytes[at + 2]) << 16 |
           uint32_t(bytes[at + 3]) << 24;
}

void appendHex(ByteView bytes, std::string* out) {
    static const char kDigits[] = "0123456789abcdef";
    const size_t start = out->size();
    out->resize(start + 2 * bytes.size());
    for (size_t i = 0; i < bytes.size(); ++i) {
        (*out)[start + 2 * i] = kDigits[bytes[i] >> 4];
        (*out)[start + 2 * i + 1] = kDigits[bytes[i] & 0xF];
    }
}

}  // namespace sim
