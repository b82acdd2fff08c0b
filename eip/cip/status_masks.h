#ifndef EIP_CIP_STATUS_MASKS_H
#define EIP_CIP_STATUS_MASKS_H

#include <cstdint>

// Which bits of a status count, the codes whose extended status says more, and those that say how a
// request goes on. Internal to eip/cip.

namespace cip {

/// General status 01, connection failure: always with an extended status (CIP Vol. 1, B-1).
const int32_t kMRConnectionFailure = 0x01;

/// General status 06, partial transfer: as much as fits is here, the rest waits (B-1).
const uint8_t kPartialTransfer = 0x06;
/// General status 08: the service is not supported (B-1).
const uint8_t kServiceNotSupported = 0x08;

/// Low 9 bits of a tag service's status word: general status and whether one word follows it.
const int32_t kABStatusMask = 0x1FF;
/// General status FF with one extended status word.
const int32_t kABExtended = 0x1FF;

const int32_t kPCCCStatusMask = 0xFF;
/// STS F0: an EXT STS byte says more (DF1 manual, chapter 8).
const int32_t kPCCCExtended = 0xF0;

}  // namespace cip

#endif
