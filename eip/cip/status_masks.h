#ifndef EIP_CIP_STATUS_MASKS_H
#define EIP_CIP_STATUS_MASKS_H

#include <cstdint>

// Which bits of a status count, and the codes whose extended status says more. Internal to eip/cip.

namespace cip {

/// General status 01, connection failure: always with an extended status (CIP Vol. 1, B-1).
const int32_t kMRConnectionFailure = 0x01;

/// Low 9 bits of a tag service's status word: general status and whether one word follows it.
const int32_t kABStatusMask = 0x1FF;
/// General status FF with one extended status word.
const int32_t kABExtended = 0x1FF;

const int32_t kPCCCStatusMask = 0xFF;
/// STS F0: an EXT STS byte says more (DF1 manual, chapter 8).
const int32_t kPCCCExtended = 0xF0;

}  // namespace cip

#endif
