#include "apps/simulator/pccc/execute_pccc.h"

namespace sim {

CipStatus decodeExecutePccc(ByteView data, ExecutePcccRequest* request) {
    const size_t length = get8(data, 0);
    if (data.empty() || length > data.size()) {
        return kNotEnoughData;
    }
    if (length < kLeastRequestor) {
        return kInvalidParameter;
    }
    request->requestor = ByteView(data.data(), length);
    request->command = data.from(length);
    return kSuccess;
}

bool takeDhpHeader(ByteReader& reader, DhpHeader* header) {
    return reader.take16(&header->destinationLink) && reader.take16(&header->destinationNode) &&
           reader.take16(&header->sourceLink) && reader.take16(&header->sourceNode);
}

void putDhpAnswerHeader(Bytes& out, const DhpHeader& request) {
    put16(out, request.sourceLink);
    put16(out, request.sourceNode);
    put16(out, request.destinationLink);
    put16(out, request.destinationNode);
}

}  // namespace sim
