#include "unit/eip/cip/wire_bytes.h"

#include <cstdio>
#include <cstdlib>
#include <sstream>

Bytes bytes(const std::string& hex) {
    Bytes result;
    std::istringstream in(hex);
    std::string word;
    while (in >> word) {
        if (word != "|") {
            result.push_back(static_cast<unsigned char>(strtoul(word.c_str(), nullptr, 16)));
        }
    }
    return result;
}

Bytes bytesAt(const void* at, size_t count) {
    const unsigned char* from = static_cast<const unsigned char*>(at);
    return Bytes(from, from + count);
}

std::string hexOf(const Bytes& data) {
    std::string text;
    char digits[4];
    for (unsigned char byte : data) {
        snprintf(digits, sizeof(digits), "%02X ", static_cast<unsigned>(byte));
        text += digits;
    }
    if (!text.empty()) {
        text.resize(text.size() - 1);
    }
    return text;
}

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

namespace {

void appendLittleEndian(Bytes& out, uint32_t value, int count) {
    for (int i = 0; i < count; ++i) {
        out.push_back(static_cast<unsigned char>(value >> (8 * i)));
    }
}

}  // namespace

Bytes message(uint16_t command, uint32_t sessionHandle, uint32_t status, const Bytes& body) {
    Bytes out;
    appendLittleEndian(out, command, 2);
    appendLittleEndian(out, static_cast<uint32_t>(body.size()), 2);
    appendLittleEndian(out, sessionHandle, 4);
    appendLittleEndian(out, status, 4);
    out.resize(24);
    return out + body;
}

Bytes unconnectedReply(uint32_t sessionHandle, const std::string& messageRouter) {
    const Bytes reply = bytes(messageRouter);
    const Bytes items = bytes("02 00 | 00 00 00 00 | B2 00");
    return message(
        0x6F, sessionHandle, 0,
        filled(6, 0) + items + Bytes{static_cast<unsigned char>(reply.size()), 0} + reply);
}

Bytes connectedReply(uint32_t sessionHandle, unsigned char sequenceCount,
                     const std::string& messageRouter) {
    const Bytes reply = bytes(messageRouter);
    const Bytes items = bytes("02 00 | A1 00 04 00 01 00 FE 80 | B1 00");
    return message(0x70, sessionHandle, 0,
                   filled(6, 0) + items + Bytes{static_cast<unsigned char>(reply.size() + 2), 0} +
                       Bytes{sequenceCount, 0} + reply);
}

Bytes cutMessage(const Bytes& whole, size_t size) {
    Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    cut[2] = static_cast<unsigned char>(size - 24);
    cut[3] = static_cast<unsigned char>((size - 24) >> 8);
    return cut;
}

bool operator==(const CipError& left, const CipError& right) {
    return left.type == right.type && left.number == right.number &&
           left.extended == right.extended;
}

std::ostream& operator<<(std::ostream& out, const CipError& error) {
    return out << "(" << error.type << ", " << error.number << ", " << error.extended << ")";
}

CipError lastError() {
    return CipError{cip_err_type(), cip_errno(), cip_ext_errno()};
}
