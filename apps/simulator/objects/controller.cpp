#include "apps/simulator/objects/controller.h"

#include <algorithm>
#include <utility>

#include "apps/simulator/pccc/execute_pccc.h"

namespace sim {

namespace {

// Protocol version and option flags (Vol. 2, 2-4.7).
const size_t kRegisterBody = 2 + 2;
// Interface handle, time-out, item count: the least that SendRRData and SendUnitData carry.
const size_t kCommonPacketPrefix = 4 + 2 + 2;
/// Service, reserved, status and size of the additional status.
const size_t kReplyHead = 1 + 1 + 1 + 1;
const size_t kSequenceCount = 2;
/// What a message-router request or reply may have without a connection.
const size_t kUnconnectedSize = 504;

void refuse(Exchange& exchange, uint32_t status) {
    exchange.encapStatus = status;
    exchange.reply.resize(kEncapHeaderSize);
    set32(exchange.reply, kEncapStatusAt, status);
}

/// What the data of a reply may have on a connection, whose size counts the sequence count as well.
size_t roomOf(const CipConnection& connection) {
    return connection.toOriginatorSize - kSequenceCount - kReplyHead;
}

void discard(Exchange& exchange, const char* note) {
    exchange.reply.clear();
    exchange.note = note;
}

}  // namespace

Controller::Controller(const ControllerSettings& given, TagTable& tagTable, DataTable& dataTable,
                       FaultPlan& faultPlan, Clock monotonicMs)
    : settings(given),
      tags(tagTable),
      files(dataTable),
      faults(faultPlan),
      clock(std::move(monotonicMs)),
      connections(given.connections) {}

void Controller::serve(EncapSession& session, ByteView frame, Exchange& exchange) {
    exchange.begin(frame);
    EncapHeader header;
    if (!decodeHeader(frame, &header)) {
        discard(exchange, "no whole header");
        return;
    }
    exchange.command = header.command;
    // Vol. 2, 2-3.5 and 2-3.7: a receiver ignores requests whose status or options are not 0.
    if (header.status != 0 || header.options != 0) {
        discard(exchange, "status or options not 0");
        return;
    }
    beginReply(exchange.reply, header, header.session);
    dispatch(session, header, frame.from(kEncapHeaderSize), exchange);
    // What was refused before its service was known meets its faults here.
    if (!exchange.reply.empty() && !exchange.faultsSelected) {
        selectFaults(exchange);
    }
    if (!exchange.reply.empty()) {
        finishReply(exchange.reply);
    }
}

void Controller::dispatch(EncapSession& session, const EncapHeader& header, ByteView body,
                          Exchange& exchange) {
    switch (header.command) {
        case kNop:
            discard(exchange, "NOP");
            break;
        case kListServices:
        case kListIdentity:
        case kListInterfaces:
            list(session, body, exchange);
            break;
        case kRegisterSession:
            registerSession(session, body, exchange);
            break;
        case kUnRegisterSession:
            exchange.closeTcp = session.handle != 0 && header.session == session.handle;
            discard(exchange, exchange.closeTcp ? "session ends" : "no such session");
            break;
        case kSendRRData:
        case kSendUnitData:
            if (session.handle == 0 || header.session != session.handle) {
                refuse(exchange, kEncapInvalidSession);
            } else if (header.command == kSendRRData) {
                sendRRData(session, body, exchange);
            } else {
                sendUnitData(session, body, exchange);
            }
            break;
        default:
            refuse(exchange, kEncapUnsupportedCommand);
    }
}

void Controller::selectFaults(Exchange& exchange) {
    exchange.faultsSelected = true;
    if (!faults.empty()) {
        FaultTarget target;
        target.command = exchange.command;
        target.service = exchange.service;
        target.pccc = exchange.hasPccc;
        target.tag = exchange.hasPccc ? &exchange.pccc.address : &exchange.path.name;
        faults.select(target, &exchange.faults);
    }
}

void Controller::registerSession(EncapSession& session, ByteView body, Exchange& exchange) {
    selectFaults(exchange);
    ByteReader reader(body);
    uint16_t version = 0;
    uint16_t options = 0;
    if (body.size() != kRegisterBody || !reader.take16(&version) || !reader.take16(&options)) {
        refuse(exchange, kEncapInvalidLength);
        return;
    }
    // The answer carries the version that is spoken here, also when it says no to another one.
    put16(exchange.reply, kProtocolVersion);
    put16(exchange.reply, 0);
    uint32_t status = kEncapSuccess;
    if (version != kProtocolVersion || options != 0) {
        status = kEncapUnsupportedRevision;
    } else if (session.handle != 0) {
        status = kEncapUnsupportedCommand;  // one session a TCP connection
    }
    if (const Fault* fault = exchange.fault(FaultKind::refuseRegister)) {
        status = uint32_t(fault->parameter);
    }
    if (status == kEncapSuccess) {
        session.handle = ++lastHandle;
        set32(exchange.reply, kEncapSessionAt, session.handle);
    }
    exchange.encapStatus = status;
    set32(exchange.reply, kEncapStatusAt, status);
}

void Controller::list(const EncapSession& session, ByteView body, Exchange& exchange) {
    if (!body.empty()) {
        refuse(exchange, kEncapInvalidLength);
        return;
    }
    put16(exchange.reply, exchange.command == kListInterfaces ? 0 : 1);
    if (exchange.command == kListIdentity) {
        putIdentityItem(exchange.reply, settings.identity, session.address, session.port);
    } else if (exchange.command == kListServices) {
        putServicesItem(exchange.reply);
    }
}

void Controller::sendRRData(const EncapSession& session, ByteView body, Exchange& exchange) {
    CommonPacket packet;
    if (body.size() < kCommonPacketPrefix) {
        refuse(exchange, kEncapInvalidLength);
    } else if (!decodeCommonPacket(body, &packet) || packet.addressType != kNullAddress ||
               !packet.address.empty() || packet.dataType != kUnconnectedData) {
        refuse(exchange, kEncapIncorrectData);
    } else {
        exchange.room = kUnconnectedSize - kReplyHead;
        addressItem.clear();
        answerCip(session, packet, addressItem, nullptr, packet.data, exchange);
    }
}

void Controller::sendUnitData(const EncapSession& session, ByteView body, Exchange& exchange) {
    CommonPacket packet;
    uint16_t sequence = 0;
    if (body.size() < kCommonPacketPrefix) {
        refuse(exchange, kEncapInvalidLength);
        return;
    }
    const bool ok = decodeCommonPacket(body, &packet);
    ByteReader data(packet.data);
    if (!ok || packet.addressType != kConnectedAddress || packet.address.size() != 4 ||
        packet.dataType != kConnectedData || !data.take16(&sequence)) {
        refuse(exchange, kEncapIncorrectData);
        return;
    }
    const CipConnection* connection =
        connections.use(get32(packet.address, 0), session.owner, clock());
    if (!connection) {
        // A connected message that no connection takes is lost (Vol. 1, 3-4).
        discard(exchange, "no such connection");
        return;
    }
    if (packet.data.size() > connection->toTargetSize) {
        discard(exchange, "larger than the connection");
        return;
    }
    exchange.connected = true;
    if (!connection->lastAnswer.empty() && sequence == connection->lastSequence) {
        // A message that came twice is not carried out again (Vol. 1, 3-4.4): class 3 answers it
        // with what it has answered.
        putBytes(exchange.reply, ByteView(connection->lastAnswer));
        exchange.note = "sequence count of the message before";
        return;
    }
    const uint32_t id = connection->toTargetId;
    addressItem.clear();
    put32(addressItem, connection->toOriginatorId);
    exchange.room = roomOf(*connection);
    if (connection->toDhpProxy) {
        answerDhp(packet, addressItem, sequence, data.rest(), exchange);
    } else {
        answerCip(session, packet, addressItem, &sequence, data.rest(), exchange);
    }
    if (exchange.dataItemAt != 0) {
        connections.remember(id, sequence, ByteView(exchange.reply).from(kEncapHeaderSize));
    }
}

void Controller::answerCip(const EncapSession& session, const CommonPacket& packet,
                           const Bytes& address, const uint16_t* sequence, ByteView bytes,
                           Exchange& exchange) {
    CipRequest request;
    if (!decodeCipRequest(bytes, &request)) {
        refuse(exchange, kEncapIncorrectData);
        return;
    }
    serviceData.clear();
    exchange.status = execute(session, request, exchange, &serviceData);
    if (serviceData.size() > exchange.room) {
        serviceData.clear();
        exchange.status = kReplyDataTooLarge;
    }
    CommonPacket answer = packet;
    answer.address = address;
    exchange.dataItemAt = beginCommonPacket(exchange.reply, answer);
    if (sequence) {
        put16(exchange.reply, *sequence);
    }
    exchange.cipAt = exchange.reply.size();
    putReplyHead(exchange.reply, uint8_t(exchange.service), exchange.status);
    if (exchange.hasPccc && exchange.status.ok()) {
        exchange.requestorAt = exchange.reply.size();
        exchange.pcccAt = exchange.requestorAt + exchange.requestor.size();
    }
    putBytes(exchange.reply, serviceData);
    finishCommonPacket(exchange.reply, exchange.dataItemAt);
}

/// A connection to a DH+ proxy leads to no message router: there is no status to refuse a
/// message with.
void Controller::answerDhp(const CommonPacket& packet, const Bytes& address, uint16_t sequence,
                           ByteView message, Exchange& exchange) {
    ByteReader reader(message);
    DhpHeader header;
    if (!takeDhpHeader(reader, &header) || !decodePccc(reader.rest(), files, &exchange.pccc)) {
        discard(exchange, "no whole DH+ message");
        return;
    }
    exchange.hasPccc = true;
    selectFaults(exchange);
    CommonPacket answer = packet;
    answer.address = address;
    exchange.dataItemAt = beginCommonPacket(exchange.reply, answer);
    put16(exchange.reply, sequence);
    putDhpAnswerHeader(exchange.reply, header);
    exchange.pcccAt = exchange.reply.size();
    // Such a message has a DH+ header in place of the head of a reply.
    const size_t room = exchange.room + kReplyHead;
    answerCommand(exchange, room > kDhpHeader ? room - kDhpHeader : 0, &exchange.reply);
    finishCommonPacket(exchange.reply, exchange.dataItemAt);
}

}  // namespace sim
