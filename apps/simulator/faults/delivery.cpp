#include "apps/simulator/faults/delivery.h"

#include <algorithm>

#include "apps/simulator/pccc/execute_pccc.h"

namespace sim {

namespace {

// From the header: interface handle, time-out, item count, then the address item's head.
const size_t kCommandAt = 0;
const size_t kItemCountAt = kEncapHeaderSize + 4 + 2;
const size_t kAddressAt = kItemCountAt + 2 + 2 + 2;
const size_t kItemLengthAt = 2;              // from the item's head
const size_t kSequenceAt = 2 + 2;            // from the data item's head
const size_t kAdditionalSizeAt = 1 + 1 + 1;  // from the message-router reply
const size_t kTransactionAt = 1 + 1;         // from the PCCC reply
const size_t kSequenceSize = 2;

/// Where the data of the message-router reply begins.
size_t dataAt(const Exchange& exchange) {
    return exchange.cipAt + 4 + (exchange.status.hasExtended ? 2 : 0);
}

/// A parameter that was given, or else a value that differs from the right one.
uint32_t codeOr(const Fault& fault, uint32_t other) {
    return fault.parameter >= 0 ? uint32_t(fault.parameter) : other;
}

void addTo16(Bytes& bytes, size_t at, int64_t change) {
    set16(bytes, at, uint16_t(get16(bytes, at) + change));
}

/// Where the message begins that travels in the data item, or what there is instead.
size_t messageAt(const Exchange& exchange) {
    if (exchange.cipAt != 0) {
        return exchange.cipAt;
    }
    const size_t dhpAt = exchange.dataItemAt + kItemHead + kSequenceSize;
    return exchange.dataItemAt != 0 ? dhpAt : kEncapHeaderSize;
}

/// Takes bytes off the end and corrects the lengths that count them.
void shorten(Exchange& exchange, size_t count) {
    const size_t keep = messageAt(exchange);
    count = std::min(count, exchange.reply.size() - keep);
    exchange.reply.resize(exchange.reply.size() - count);
    if (exchange.dataItemAt != 0) {
        addTo16(exchange.reply, exchange.dataItemAt + kItemLengthAt, -int64_t(count));
    }
    finishReply(exchange.reply);
}

void distortHeader(const Fault& fault, Exchange& exchange) {
    Bytes& reply = exchange.reply;
    switch (fault.kind) {
        case FaultKind::wrongCommand:
            set16(reply, kCommandAt, uint16_t(codeOr(fault, get16(reply, kCommandAt) ^ 0x1Fu)));
            break;
        case FaultKind::wrongSession:
            set32(reply, kEncapSessionAt, codeOr(fault, get32(reply, kEncapSessionAt) + 1));
            break;
        case FaultKind::encapLengthLong:
            addTo16(reply, kEncapLengthAt, fault.parameter);
            break;
        case FaultKind::encapLengthShort:
            addTo16(reply, kEncapLengthAt,
                    -std::min<int64_t>(fault.parameter, get16(reply, kEncapLengthAt)));
            break;
        default:
            break;
    }
}

void distortItems(const Fault& fault, Exchange& exchange) {
    Bytes& reply = exchange.reply;
    switch (fault.kind) {
        case FaultKind::itemCount:
            set16(reply, kItemCountAt, uint16_t(fault.parameter));
            break;
        case FaultKind::itemLengthLong:
            addTo16(reply, exchange.dataItemAt + kItemLengthAt, fault.parameter);
            break;
        case FaultKind::wrongConnection:
            if (exchange.connected) {
                set32(reply, kAddressAt, codeOr(fault, get32(reply, kAddressAt) + 1));
            }
            break;
        case FaultKind::wrongSequence:
            if (exchange.connected) {
                addTo16(reply, exchange.dataItemAt + kSequenceAt, fault.parameter);
            }
            break;
        default:
            break;
    }
}

void distortCip(const Fault& fault, Exchange& exchange) {
    Bytes& reply = exchange.reply;
    const bool value = readsTag(exchange.service) &&
                       (exchange.status.ok() || exchange.status.general == kPartialTransfer);
    switch (fault.kind) {
        case FaultKind::wrongService:
            set8(reply, exchange.cipAt, uint8_t(codeOr(fault, reply[exchange.cipAt] ^ 1u)));
            break;
        case FaultKind::additionalStatusSize:
            set8(reply, exchange.cipAt + kAdditionalSizeAt, uint8_t(fault.parameter));
            break;
        case FaultKind::unknownType:
            if (value) {
                set16(reply, dataAt(exchange), uint16_t(fault.parameter));
            }
            break;
        case FaultKind::stringLengthPastEnd:
            if (value && get16(reply, dataAt(exchange)) == kString) {
                set8(reply, dataAt(exchange) + 2, uint8_t(fault.parameter));
            }
            break;
        case FaultKind::shortOpenReply:
            if (exchange.service == kForwardOpen && exchange.status.ok()) {
                const size_t size = reply.size() - std::min(reply.size(), dataAt(exchange));
                shorten(exchange, size - std::min(size, size_t(fault.parameter)));
            }
            break;
        default:
            break;
    }
}

void distortPccc(const Fault& fault, Exchange& exchange) {
    Bytes& reply = exchange.reply;
    const size_t at = exchange.pcccAt;
    const size_t serialAt = exchange.requestorAt + kRequestorSerialAt;
    switch (fault.kind) {
        case FaultKind::wrongRequestor:
            if (exchange.requestorAt != 0) {
                set32(reply, serialAt, codeOr(fault, get32(reply, serialAt) + 1));
            }
            break;
        case FaultKind::wrongPcccCommand:
            set8(reply, at, uint8_t(codeOr(fault, get8(reply, at) ^ 1u)));
            break;
        case FaultKind::wrongTransaction:
            addTo16(reply, at + kTransactionAt, fault.parameter);
            break;
        case FaultKind::wrongPcccType:
            if (exchange.pccc.function == kTypedRead && exchange.pccc.status.ok()) {
                set8(reply, at + kPcccHead, uint8_t(fault.parameter));
            }
            break;
        default:
            break;
    }
}

/// What the message says.
void distortMessage(const Fault& fault, Exchange& exchange) {
    if (exchange.cipAt != 0) {
        distortCip(fault, exchange);
    }
    if (exchange.pcccAt != 0) {
        distortPccc(fault, exchange);
    }
    if (fault.kind == FaultKind::shortReply && exchange.dataItemAt != 0) {
        shorten(exchange, size_t(fault.parameter));
    }
}

Segment piece(const Bytes& reply, size_t at, size_t size, int waitMs) {
    Segment segment;
    segment.bytes.assign(reply.begin() + long(at), reply.begin() + long(at + size));
    segment.waitMs = waitMs;
    return segment;
}

/// The first `head` bytes, then pieces of `size` with a pause before each.
void tear(const Bytes& reply, size_t head, size_t size, int waitMs, std::deque<Segment>* out) {
    size_t at = std::min(head, reply.size());
    out->push_back(piece(reply, 0, at, 0));
    while (at < reply.size()) {
        const size_t next = std::min(size, reply.size() - at);
        out->push_back(piece(reply, at, next, waitMs));
        at += next;
    }
}

/// Only the first bytes, and then what the fault does to the TCP connection.
void breakOff(const Fault& fault, const Bytes& reply, AfterSegment after,
              std::deque<Segment>* out) {
    const size_t half = reply.size() / 2;
    const size_t size =
        fault.parameter < 0 ? half : std::min(size_t(fault.parameter), reply.size());
    out->clear();
    out->push_back(piece(reply, 0, size, 0));
    out->back().after = after;
}

void route(const Fault& fault, const Bytes& reply, Delivery* delivery) {
    std::deque<Segment>& out = delivery->segments;
    switch (fault.kind) {
        case FaultKind::silence:
            out.clear();
            break;
        case FaultKind::cut:
            breakOff(fault, reply, AfterSegment::close, &out);
            break;
        case FaultKind::reset:
            breakOff(fault, reply, AfterSegment::reset, &out);
            break;
        case FaultKind::truncate:
            breakOff(fault, reply, AfterSegment::keep, &out);
            break;
        case FaultKind::torn: {
            const size_t size = size_t(std::max<int64_t>(fault.parameter, 1));
            out.clear();
            tear(reply, size, size, int(fault.parameter2), &out);
            break;
        }
        case FaultKind::tornHeader:
            out.clear();
            tear(reply, size_t(fault.parameter), reply.size(), int(fault.parameter2), &out);
            break;
        case FaultKind::repeat: {
            const std::deque<Segment> once = out;
            for (int64_t i = 1; i < fault.parameter; ++i) {
                out.insert(out.end(), once.begin(), once.end());
            }
            break;
        }
        case FaultKind::late:
            delivery->holdMs = int(fault.parameter);
            break;
        default:
            break;
    }
}

/// A target that reports a status sends nothing after the header.
void applyEncapStatus(Exchange& exchange) {
    if (const Fault* fault = exchange.fault(FaultKind::encapStatus)) {
        exchange.reply.resize(kEncapHeaderSize);
        set32(exchange.reply, kEncapStatusAt, uint32_t(fault->parameter));
        finishReply(exchange.reply);
        exchange.dataItemAt = 0;
        exchange.cipAt = 0;
        exchange.pcccAt = 0;
    }
}

}  // namespace

void applyFaults(Exchange& exchange, Delivery* delivery) {
    delivery->holdMs = 0;
    delivery->segments.clear();
    if (exchange.reply.empty()) {
        return;
    }
    applyEncapStatus(exchange);
    for (const Fault* fault : exchange.faults) {
        distortMessage(*fault, exchange);
    }
    for (const Fault* fault : exchange.faults) {
        distortHeader(*fault, exchange);
        if (exchange.dataItemAt != 0) {
            distortItems(*fault, exchange);
        }
    }
    delivery->segments.push_back(piece(exchange.reply, 0, exchange.reply.size(), 0));
    for (const Fault* fault : exchange.faults) {
        route(*fault, exchange.reply, delivery);
    }
}

}  // namespace sim
