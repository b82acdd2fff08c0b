#ifndef APPS_SIMULATOR_PCCC_EXECUTE_PCCC_H
#define APPS_SIMULATOR_PCCC_EXECUTE_PCCC_H

#include "apps/simulator/wire/cip.h"

// What PCCC commands travel in: requests of the service Execute PCCC, or messages to a DH+ proxy.

namespace sim {

/// Data of an Execute PCCC request: the requestor id, whose first byte is its own length, with
/// vendor id and serial number in it, and the command.
struct ExecutePcccRequest {
    ByteView requestor;  ///< goes back before the reply
    ByteView command;
};

/// Length, vendor id, serial number; more may follow them.
const size_t kLeastRequestor = 1 + 2 + 4;
const size_t kRequestorSerialAt = 1 + 2;

CipStatus decodeExecutePccc(ByteView data, ExecutePcccRequest* request);

/// Header of the messages on a connection to a DH+ proxy, both ways.
struct DhpHeader {
    uint16_t destinationLink = 0;
    uint16_t destinationNode = 0;
    uint16_t sourceLink = 0;
    uint16_t sourceNode = 0;
};

const size_t kDhpHeader = 4 * 2;

bool takeDhpHeader(ByteReader& reader, DhpHeader* header);
/// Appends the header of the answer: back to where the request came from.
void putDhpAnswerHeader(Bytes& out, const DhpHeader& request);

}  // namespace sim

#endif
