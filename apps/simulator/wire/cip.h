#ifndef APPS_SIMULATOR_WIRE_CIP_H
#define APPS_SIMULATOR_WIRE_CIP_H

#include "apps/simulator/wire/bytes.h"

// Services, status codes and objects of CIP Networks Library Vol. 1 (chapters 3 and 5, appendices A
// and B) and of the Logix tag services.

namespace sim {

enum CipService : uint8_t {
    kGetAttributesAll = 0x01,
    kGetAttributeList = 0x03,
    kMultipleServicePacket = 0x0A,
    kGetAttributeSingle = 0x0E,
    kExecutePccc = 0x4B,  ///< of the PCCC object; of the symbol class kListInstances
    kListInstances = 0x4B,
    kReadTag = 0x4C,
    kWriteTag = 0x4D,
    kForwardClose = 0x4E,
    kUnconnectedSend = 0x52,  ///< of the connection manager; of a tag kReadTagFragmented
    kReadTagFragmented = 0x52,
    kWriteTagFragmented = 0x53,
    kForwardOpen = 0x54,
    kGetInstanceAttributeList = 0x55,
};

/// Whether the service of a request for a tag reads it, or writes it, be it in pieces or at once.
inline bool readsTag(int service) {
    return service == kReadTag || service == kReadTagFragmented;
}
inline bool writesTag(int service) {
    return service == kWriteTag || service == kWriteTagFragmented;
}

/// Set in the service code of every reply.
const uint8_t kReplyFlag = 0x80;

/// The name of the service of a class, 0 for a tag; null for any other.
const char* cipServiceName(uint8_t service, uint32_t classId);

enum GeneralStatus : uint8_t {
    kSuccess = 0x00,
    kConnectionFailure = 0x01,
    kPathSegmentError = 0x04,
    kPathDestinationUnknown = 0x05,
    kPartialTransfer = 0x06,
    kServiceNotSupported = 0x08,
    kAttributeListError = 0x0A,
    kReplyDataTooLarge = 0x11,
    kNotEnoughData = 0x13,
    kAttributeNotSupported = 0x14,
    kTooMuchData = 0x15,
    kInvalidParameter = 0x20,
    kPathSizeInvalid = 0x26,
    kGeneralError = 0xFF,
};

/// Extended status of the connection manager with general status kConnectionFailure.
enum ConnectionStatus : uint16_t {
    kConnectionInUse = 0x0100,
    kTransportNotSupported = 0x0103,
    kTargetConnectionNotFound = 0x0107,
    kInvalidParameters = 0x0108,
    kInvalidConnectionSize = 0x0109,
    kIntervalNotSupported = 0x0111,
    kOutOfConnections = 0x0113,
    kPortNotAvailable = 0x0311,
};

/// Extended status of the tag services with general status kGeneralError.
enum TagStatus : uint16_t {
    kBeyondEnd = 0x2105,
    kTypeMismatch = 0x2107,
};

/// Classes that a request path can name.
const uint32_t kIdentityClass = 0x01;
const uint32_t kMessageRouterClass = 0x02;
const uint32_t kConnectionManagerClass = 0x06;
const uint32_t kPcccClass = 0x67;
const uint32_t kSymbolClass = 0x6B;

struct CipStatus {
    uint8_t general = kSuccess;
    bool hasExtended = false;
    uint16_t extended = 0;

    CipStatus() = default;
    CipStatus(uint8_t generalStatus) : general(generalStatus) {}  // NOLINT
    CipStatus(uint8_t generalStatus, uint16_t extendedStatus)
        : general(generalStatus), hasExtended(true), extended(extendedStatus) {}
    bool ok() const { return general == kSuccess; }
};

/// Appends the head of a message-router reply: service, reserved, status and additional status.
void putReplyHead(Bytes& out, uint8_t service, const CipStatus& status);

/// A message-router request: service, path size in words, path, data.
struct CipRequest {
    uint8_t service = 0;
    ByteView path;
    ByteView data;
    /// The path size points past the end of the request.
    bool pathTooLong = false;
};

/// False when there is not even a service code and a path size.
bool decodeCipRequest(ByteView bytes, CipRequest* request);

}  // namespace sim

#endif
