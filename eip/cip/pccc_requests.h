#ifndef EIP_CIP_PCCC_REQUESTS_H
#define EIP_CIP_PCCC_REQUESTS_H

#include <cstdint>

#include "eip/cip/pccc_types.h"

// PCCC requests as bytes (DF1 Protocol and Command Set, 1770-6.5.16, chapter 7): command 0x0F,
// status 0, transaction number, function code, then the function's fields. Each builder returns the
// request, to be freed with free(), and its size. Null (size 0): (1, errno, 0) without memory,
// (0, -1, 0) for an address that is none (pccc_address.h) or data that are not there, (0, -21, 0)
// for an address beyond the fields, (0, -31, 0) for more data than they can announce.

enum PcccFunction : uint8_t {
    PCCC_TYPED_WRITE = 0x67,
    PCCC_TYPED_READ = 0x68,
    PCCC_READ_THREE_ADDRESS = 0xA2,
    PCCC_WRITE_THREE_ADDRESS = 0xAA,
    PCCC_WRITE_WITH_MASK = 0xAB
};

/// Command of all requests, and what a reply's command has set beside it.
const uint8_t kPcccCommand = 0x0F;
const uint8_t kPcccReplyBit = 0x40;

/// Typed read of `count` elements from a logical binary address.
unsigned char* _BuildPLCReadDataRequest(uint16_t transaction, const char* address, uint16_t count,
                                        int* size);

/// Read of `byteCount` bytes (at most 255) from a file number, type and element, from its
/// sub-element 0 on, whichever sub-element the address names.
unsigned char* _BuildPLCReadDataRequestPlus(uint16_t transaction, const char* address,
                                            int byteCount, int* size);

/// Typed write of `count` elements of `elementSize` bytes at a logical binary address.
unsigned char* _BuildPLCWriteDataRequest(uint16_t transaction, const char* address,
                                         _PLC_Data_Type type, int elementSize, const void* data,
                                         uint16_t count, int* size);

/// Write of the bits of one word that `mask` has set.
unsigned char* _BuildPLCWriteWithMaskRequest(uint16_t transaction, const char* address,
                                             uint16_t mask, uint16_t value, int* size);

/// Write of `byteCount` bytes (at most 255).
unsigned char* _BuildPLCWriteBytesRequest(uint16_t transaction, const char* address,
                                          const void* data, int byteCount, int* size);

#endif
