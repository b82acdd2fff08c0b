#ifndef APPS_SIMULATOR_WIRE_ENCAPSULATION_H
#define APPS_SIMULATOR_WIRE_ENCAPSULATION_H

#include "apps/simulator/wire/bytes.h"

// EtherNet/IP encapsulation: CIP Networks Library Vol. 2, chapter 2.

namespace sim {

enum EncapCommand : uint16_t {
    kNop = 0x0000,
    kListServices = 0x0004,
    kListIdentity = 0x0063,
    kListInterfaces = 0x0064,
    kRegisterSession = 0x0065,
    kUnRegisterSession = 0x0066,
    kSendRRData = 0x006F,
    kSendUnitData = 0x0070,
};

/// The command's name in the standard, "?" for any other code.
const char* encapCommandName(uint16_t command);

enum EncapStatus : uint32_t {
    kEncapSuccess = 0x0000,
    kEncapUnsupportedCommand = 0x0001,
    kEncapIncorrectData = 0x0003,
    kEncapInvalidSession = 0x0064,
    kEncapInvalidLength = 0x0065,
    kEncapUnsupportedRevision = 0x0069,
};

const uint16_t kProtocolVersion = 1;

/// Common packet format items (Vol. 2, 2-6).
enum CpfItem : uint16_t {
    kNullAddress = 0x0000,
    kIdentityItem = 0x000C,
    kConnectedAddress = 0x00A1,
    kConnectedData = 0x00B1,
    kUnconnectedData = 0x00B2,
    kServicesItem = 0x0100,
};

// command, length, session handle, status, sender context, options
const size_t kEncapHeaderSize = 2 + 2 + 4 + 4 + 8 + 4;
/// Type id and length of an item of the common packet format.
const size_t kItemHead = 2 + 2;
const size_t kEncapLengthAt = 2;
const size_t kEncapSessionAt = 2 + 2;
const size_t kEncapStatusAt = 2 + 2 + 4;
/// Largest number of bytes that the header's length field can announce.
const size_t kEncapMaxBody = 0xFFFF;

struct EncapHeader {
    uint16_t command = 0;
    uint16_t length = 0;
    uint32_t session = 0;
    uint32_t status = 0;
    uint8_t context[8] = {};
    uint32_t options = 0;
};

/// Reads the header at the front of `frame`; false when there are not enough bytes for one.
bool decodeHeader(ByteView frame, EncapHeader* header);

/// Makes `out` a reply header to `request`: its command and sender context, length 0, status 0.
void beginReply(Bytes& out, const EncapHeader& request, uint32_t session);
/// Sets the length field to the number of bytes after the header.
void finishReply(Bytes& out);

/// Address and data item of a SendRRData or SendUnitData request.
struct CommonPacket {
    uint16_t addressType = 0;
    ByteView address;
    uint16_t dataType = 0;
    ByteView data;
};

/// Reads what follows the header of SendRRData and SendUnitData: interface handle 0, time-out, two
/// items and nothing after them. False when it is anything else.
bool decodeCommonPacket(ByteView body, CommonPacket* packet);

/// The interface handle and time-out prefix, the item count 2 and both items' heads, the data item
/// still empty. Returns where the data item's head begins.
size_t beginCommonPacket(Bytes& out, const CommonPacket& packet);
/// Sets the length of the data item whose head begins at `dataItemAt` to the number of bytes after
/// it.
void finishCommonPacket(Bytes& out, size_t dataItemAt);

}  // namespace sim

#endif
