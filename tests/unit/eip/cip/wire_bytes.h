#ifndef TESTS_UNIT_EIP_CIP_WIRE_BYTES_H
#define TESTS_UNIT_EIP_CIP_WIRE_BYTES_H

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "eip/cip/cip_error.h"

/// Bytes as on the wire.
typedef std::vector<unsigned char> Bytes;

/// Bytes from hexadecimal text; blanks separate, '|' may be between fields.
Bytes bytes(const std::string& hex);
/// The bytes at any address.
Bytes bytesAt(const void* at, size_t count);
/// Upper-case hexadecimal text with blanks.
std::string hexOf(const Bytes& data);

/// `count` bytes of the value `fill`.
inline Bytes filled(size_t count, unsigned char fill) {
    return Bytes(count, fill);
}

Bytes operator+(Bytes left, const Bytes& right);

/// An encapsulated message: command, length of `body`, session handle, status, zero context and
/// options, body.
Bytes message(uint16_t command, uint32_t sessionHandle, uint32_t status, const Bytes& body);

/// SendRRData and SendUnitData replies with status 0 around a message-router reply, which is given
/// as hexadecimal text of at most 253 bytes.
Bytes unconnectedReply(uint32_t sessionHandle, const std::string& messageRouter);
Bytes connectedReply(uint32_t sessionHandle, unsigned char sequenceCount,
                     const std::string& messageRouter);

/// The same bytes cut after `size`, with the length field counting what is left: what a transport
/// hands out when the sender's own length was short.
Bytes cutMessage(const Bytes& whole, size_t size);

/// An entry of the error record; that of the calling thread by lastError().
struct CipError {
    int32_t type;
    int32_t number;
    int32_t extended;
};
bool operator==(const CipError& left, const CipError& right);
inline bool operator!=(const CipError& left, const CipError& right) {
    return !(left == right);
}
std::ostream& operator<<(std::ostream& out, const CipError& error);

CipError lastError();

#endif
