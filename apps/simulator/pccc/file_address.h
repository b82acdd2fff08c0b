#ifndef APPS_SIMULATOR_PCCC_FILE_ADDRESS_H
#define APPS_SIMULATOR_PCCC_FILE_ADDRESS_H

#include <string>

#include "apps/simulator/pccc/data_table.h"

// Addresses in PCCC commands (DF1 Protocol and Command Set, 1770-6.5.16).

namespace sim {

/// A reply's STS byte, and the EXT STS byte that follows its head when STS is F0.
struct PcccStatus {
    uint8_t sts = 0;
    uint8_t ext = 0;
    bool ok() const { return sts == 0; }
};

enum PcccSts : uint8_t {
    kPcccIllegalCommand = 0x10,
    kPcccAddressProblem = 0x50,
    kPcccExtended = 0xF0,
};

enum PcccExtSts : uint8_t {
    kPcccIllegalValue = 0x01,
    kPcccTooFewLevels = 0x02,
    kPcccTooManyLevels = 0x03,
    kPcccNothingThere = 0x06,
    kPcccDataTooLarge = 0x09,
    kPcccPastEnd = 0x0A,
    kPcccIllegalType = 0x11,
    kPcccTypeMismatch = 0x17,
};

struct FileAddress {
    uint16_t file = 0;
    uint16_t element = 0;
    uint16_t word = 0;       ///< in the element
    bool namesWord = false;  ///< one word is meant, not the whole element
    int typeCode = -1;       ///< of a three-address field, -1 without one

    /// As people write it: "N7:300", "T4:0.2". `type` may be null; then the type's code or nothing
    /// replaces the letter.
    std::string text(const FileType* type) const;
};

/// Takes a logical binary address: a mask of the levels that follow (1 area, 2 file, 3 element, 4
/// word), then each level, below 255 in one byte, or FF and 16 bits. Refused are addresses without
/// file or element, with levels above 4, in another area than 0, and such as are cut off.
PcccStatus takeLogicalAddress(ByteReader& reader, FileAddress* address);

/// Takes file number, file type, element and word; all but the type, one byte, are written like
/// levels. False when it is cut off.
bool takeThreeAddressField(ByteReader& reader, FileAddress* address);

}  // namespace sim

#endif
