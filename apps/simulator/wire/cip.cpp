#include "apps/simulator/wire/cip.h"

namespace sim {

const char* cipServiceName(uint8_t service, uint32_t classId) {
    switch (service) {
        case kGetAttributesAll:
            return "GetAttributesAll";
        case kGetAttributeList:
            return "GetAttributeList";
        case kGetAttributeSingle:
            return "GetAttributeSingle";
        case kGetInstanceAttributeList:
            return "GetInstanceAttributeList";
        case kExecutePccc:
            return classId == kPcccClass     ? "ExecutePCCC"
                   : classId == kSymbolClass ? "ListInstances"
                                             : nullptr;
        case kUnconnectedSend:
            return classId == kConnectionManagerClass ? "UnconnectedSend"
                   : classId == 0                     ? "ReadTagFragmented"
                                                      : nullptr;
        case kWriteTagFragmented:
            return "WriteTagFragmented";
        case kMultipleServicePacket:
            return "MultipleServicePacket";
        case kReadTag:
            return "ReadTag";
        case kWriteTag:
            return "WriteTag";
        case kForwardClose:
            return "ForwardClose";
        case kForwardOpen:
            return "ForwardOpen";
        default:
            return nullptr;
    }
}

void putReplyHead(Bytes& out, uint8_t service, const CipStatus& status) {
    put8(out, service | kReplyFlag);
    put8(out, 0);
    put8(out, status.general);
    put8(out, status.hasExtended ? 1 : 0);
    if (status.hasExtended) {
        put16(out, status.extended);
    }
}

bool decodeCipRequest(ByteView bytes, CipRequest* request) {
    ByteReader reader(bytes);
    uint8_t words = 0;
    if (!reader.take8(&request->service) || !reader.take8(&words)) {
        return false;
    }
    request->pathTooLong = !reader.take(size_t(words) * 2, &request->path);
    request->data = reader.rest();
    return true;
}

}  // namespace sim
