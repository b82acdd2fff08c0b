#ifndef EIP_CIP_WIRE_H
#define EIP_CIP_WIRE_H

#include <cstdint>

// Little-endian fields at any address, byte by byte. The caller has checked that they are there.
// Internal to eip/cip.

namespace cip {

inline uint16_t getUInt16(const unsigned char* at) {
    return static_cast<uint16_t>(at[0] | (at[1] << 8));
}

inline uint32_t getUInt32(const unsigned char* at) {
    return static_cast<uint32_t>(at[0]) | (static_cast<uint32_t>(at[1]) << 8) |
           (static_cast<uint32_t>(at[2]) << 16) | (static_cast<uint32_t>(at[3]) << 24);
}

inline void putUInt16(unsigned char* at, uint16_t value) {
    at[0] = static_cast<unsigned char>(value);
    at[1] = static_cast<unsigned char>(value >> 8);
}

inline void putUInt32(unsigned char* at, uint32_t value) {
    at[0] = static_cast<unsigned char>(value);
    at[1] = static_cast<unsigned char>(value >> 8);
    at[2] = static_cast<unsigned char>(value >> 16);
    at[3] = static_cast<unsigned char>(value >> 24);
}

}  // namespace cip

#endif
