#include "apps/simulator/wire/encapsulation.h"

#include <cstring>

namespace sim {

namespace {

bool takeItem(ByteReader& reader, uint16_t* type, ByteView* data) {
    uint16_t length = 0;
    return reader.take16(type) && reader.take16(&length) && reader.take(length, data);
}

}  // namespace

const char* encapCommandName(uint16_t command) {
    switch (command) {
        case kNop:
            return "NOP";
        case kListServices:
            return "ListServices";
        case kListIdentity:
            return "ListIdentity";
        case kListInterfaces:
            return "ListInterfaces";
        case kRegisterSession:
            return "RegisterSession";
        case kUnRegisterSession:
            return "UnRegisterSession";
        case kSendRRData:
            return "SendRRData";
        case kSendUnitData:
            return "SendUnitData";
        default:
            return "?";
    }
}

bool decodeHeader(ByteView frame, EncapHeader* header) {
    ByteReader reader(frame);
    ByteView context;
    if (!reader.take16(&header->command) || !reader.take16(&header->length) ||
        !reader.take32(&header->session) || !reader.take32(&header->status) ||
        !reader.take(sizeof header->context, &context) || !reader.take32(&header->options)) {
        return false;
    }
    std::memcpy(header->context, context.data(), sizeof header->context);
    return true;
}

void beginReply(Bytes& out, const EncapHeader& request, uint32_t session) {
    out.clear();
    put16(out, request.command);
    put16(out, 0);
    put32(out, session);
    put32(out, kEncapSuccess);
    putBytes(out, ByteView(request.context, sizeof request.context));
    put32(out, 0);
}

void finishReply(Bytes& out) {
    set16(out, kEncapLengthAt, uint16_t(out.size() - kEncapHeaderSize));
}

bool decodeCommonPacket(ByteView body, CommonPacket* packet) {
    ByteReader reader(body);
    uint32_t interfaceHandle = 0;
    uint16_t timeout = 0;
    uint16_t items = 0;
    if (!reader.take32(&interfaceHandle) || !reader.take16(&timeout) || !reader.take16(&items)) {
        return false;
    }
    if (interfaceHandle != 0 || items != 2) {
        return false;
    }
    return takeItem(reader, &packet->addressType, &packet->address) &&
           takeItem(reader, &packet->dataType, &packet->data) && reader.left() == 0;
}

size_t beginCommonPacket(Bytes& out, const CommonPacket& packet) {
    put32(out, 0);  // interface handle: CIP
    put16(out, 0);  // time-out, without meaning in a reply
    put16(out, 2);
    put16(out, packet.addressType);
    put16(out, uint16_t(packet.address.size()));
    putBytes(out, packet.address);
    const size_t dataItemAt = out.size();
    put16(out, packet.dataType);
    put16(out, 0);
    return dataItemAt;
}

void finishCommonPacket(Bytes& out, size_t dataItemAt) {
    set16(out, dataItemAt + 2, uint16_t(out.size() - dataItemAt - kItemHead));
}

}  // namespace sim
