#include "integration/hostile/verdict.h"

#include <QRegularExpression>
#include <QString>

namespace {

const int kHeader = 24;
const int kRegister = 0x65;
const int kSendRRData = 0x6F;
const int kSendUnitData = 0x70;
const int kReadTag = 0xCC;
const int kReadFragment = 0xD2;
const int kWriteTag = 0xCD;
const int kWriteFragment = 0xD3;
const int kShortString = 0xDA;
const int kPartial = 6;
const int kUnsupportedService = 8;

quint32 word(const QByteArray& bytes, int at) {
    return numberAt(bytes, at, 2);
}

Verdict refused(const QByteArray& reason = QByteArray()) {
    return Verdict{false, QByteArray(), reason};
}

Verdict invalid() {
    return refused("Internal: invalid reply");
}

Verdict unsolicited() {
    return refused("Internal: unsolicited message");
}

/// A message-router reply (CIP Vol. 1, 2-4.2), or why there is none.
struct RouterReply {
    bool isThere;
    Verdict otherwise;
    int service;
    int status;
    int words;
    QByteArray additional;
    QByteArray data;
};

RouterReply none(const Verdict& otherwise) {
    RouterReply reply = RouterReply();
    reply.otherwise = otherwise;
    return reply;
}

RouterReply routerReplyFrom(const QByteArray& bytes) {
    if (bytes.size() < 4) {
        return none(invalid());
    }
    RouterReply reply = RouterReply();
    reply.service = int(numberAt(bytes, 0, 1));
    reply.status = int(numberAt(bytes, 2, 1));
    reply.words = int(numberAt(bytes, 3, 1));
    if (bytes.size() < 4 + 2 * reply.words) {
        return none(invalid());
    }
    reply.isThere = true;
    reply.additional = bytes.mid(4, 2 * reply.words);
    reply.data = bytes.mid(4 + 2 * reply.words);
    return reply;
}

struct Item {
    int type;
    QByteArray data;
};

/// The first two items of the common packet format (Vol. 2, 2-6.2); false when they are not there.
bool takeItems(const QByteArray& packet, Item* address, Item* data) {
    int at = 2;
    for (Item* item : {address, data}) {
        if (packet.size() < at + 4 || packet.size() < at + 4 + int(word(packet, at + 2))) {
            return false;
        }
        item->type = int(word(packet, at));
        item->data = packet.mid(at + 4, int(word(packet, at + 2)));
        at += 4 + item->data.size();
    }
    return true;
}

/// What is wrong with a message before its items are looked at; isGood: nothing.
Verdict envelope(const QByteArray& request, const QByteArray& message, int command) {
    const quint32 status = numberAt(message, 8, 4);
    const quint32 sent = numberAt(message, 0, 2);
    const bool hasItems = sent == quint32(kSendRRData) || sent == quint32(kSendUnitData);
    if (message.size() < kHeader + 8 && status != 0) {
        return refused(
            "EIP error: " + QByteArray::number(status, 16).toUpper().rightJustified(4, '0') + 'H');
    }
    if (sent != quint32(command) || message.mid(4, 4) != request.mid(4, 4)) {
        // The items of a refused message may be elsewhere, or nowhere; either text is right.
        return status != 0 || !hasItems ? refused() : unsolicited();
    }
    return Verdict{true, QByteArray(), QByteArray()};
}

RouterReply connectedReply(const QByteArray& request, const QByteArray& message) {
    const Verdict outer = envelope(request, message, kSendUnitData);
    if (!outer.isGood) {
        return none(outer);
    }
    Item address = Item();
    Item data = Item();
    if (message.size() < kHeader + 8 || word(message, kHeader + 6) < 2 ||
        !takeItems(message.mid(kHeader + 6), &address, &data)) {
        return none(refused());
    }
    if (address.type != 0xA1 || address.data.size() != 4 || data.type != 0xB1 ||
        data.data.size() < 2) {
        return none(invalid());
    }
    if (data.data.left(2) != request.mid(44, 2)) {
        return none(unsolicited());
    }
    return routerReplyFrom(data.data.mid(2));
}

/// The address item of an unconnected reply is not looked at, and targets may wrap the reply in
/// another item.
RouterReply unconnectedReply(const QByteArray& request, const QByteArray& message) {
    const Verdict outer = envelope(request, message, kSendRRData);
    if (!outer.isGood) {
        return none(outer);
    }
    Item address = Item();
    Item data = Item();
    if (message.size() < kHeader + 8 || word(message, kHeader + 6) < 2 ||
        !takeItems(message.mid(kHeader + 6), &address, &data)) {
        return none(refused());
    }
    switch (data.type) {
        case 0xB2:
            return routerReplyFrom(data.data);
        case 0xB1:
            return routerReplyFrom(data.data.mid(2));
        case 0x8000:
            return routerReplyFrom(data.data.mid(24));
        default:
            return none(invalid());
    }
}

QByteArray hex(quint32 number) {
    return QByteArray::number(number, 16).toUpper().rightJustified(4, '0');
}

/// The controller's own refusal: general status, and how many words there are in its high byte, of
/// which the operator sees one bit; 01FF comes with the word itself.
Verdict tagRefusal(int status, int words, const QByteArray& additional) {
    const int seen = (status | words << 8) & 0x1FF;
    QByteArray reason = "AB error: " + hex(quint32(seen)) + 'H';
    if (seen == 0x1FF) {
        reason += ", " + hex(words == 1 ? word(additional, 0) : 0) + 'H';
    }
    return refused(reason);
}

Verdict tagRefusal(const RouterReply& reply) {
    return tagRefusal(reply.status, reply.words, reply.additional);
}

bool isRefusal(const RouterReply& reply) {
    return reply.status != 0 || reply.words != 0;
}

/// A value as long as the access asks, zeros after one that is shorter.
Verdict fitted(const Exchange& exchange, QByteArray value) {
    const int wanted = exchange.access.getDataSize();
    value = value.mid(exchange.sliceAt, wanted);
    value.append(wanted - value.size(), '\0');
    return Verdict{true, value, QByteArray()};
}

/// The worker hands no longer value to the driver; a part of what is cached it does.
const int kLongestValue = 2043;

/// All elements in one reply.
Verdict wholeRead(const Exchange& exchange, const RouterReply& reply) {
    if (reply.data.size() < 2) {
        return refused();
    }
    const int type = int(word(reply.data, 0));
    QByteArray data = reply.data.mid(2);
    if (type == kShortString) {
        const int length = data.isEmpty() ? 0 : int(numberAt(data, 0, 1));
        if (data.isEmpty() || data.size() < 1 + length) {
            return refused();
        }
        return fitted(exchange, data.mid(1, length));
    }
    const int size = elementSizeOf(type);
    if (size == 0 || data.size() < size) {
        return refused("Internal: unknown error");
    }
    if (data.size() / size < exchange.asked) {
        return invalid();
    }
    const bool isTooLong = data.size() > kLongestValue && !exchange.isPolled;
    return isTooLong ? refused("Internal: buffer too small") : fitted(exchange, data);
}

/// The first reply to a read says that there is more.
Verdict firstPart(const Exchange& exchange, const RouterReply& reply) {
    const int type = reply.data.size() < 2 ? 0 : int(word(reply.data, 0));
    const QByteArray data = reply.data.mid(2);
    const int whole = elementSizeOf(type) * exchange.asked;
    if (data.isEmpty() || whole == 0 || data.size() == whole) {
        return tagRefusal(kPartial, 0, QByteArray());
    }
    // The rest comes with V's own type.
    if (data.size() > whole || type != exchange.type) {
        return invalid();
    }
    return fitted(exchange, data + exchange.value.mid(data.size()));
}

Verdict read(const Exchange& exchange, const RouterReply& reply) {
    if (reply.service == kReadTag && reply.status == kPartial && reply.words == 0) {
        return firstPart(exchange, reply);
    }
    if (reply.service != kReadTag) {
        return refused();
    }
    return isRefusal(reply) ? tagRefusal(reply) : wholeRead(exchange, reply);
}

Verdict readPiece(const Exchange& exchange, const RouterReply& reply) {
    if (reply.service != kReadFragment) {
        return invalid();
    }
    const bool isPart = reply.status == kPartial && reply.words == 0;
    const bool isFirst = exchange.offset == kPartBytes;
    if (isFirst && reply.status == kUnsupportedService && reply.words == 0) {
        return tagRefusal(kPartial, 0, QByteArray());
    }
    if (!isPart && isRefusal(reply)) {
        return tagRefusal(reply);
    }
    const int missing = exchange.value.size() - exchange.offset;
    const int type = reply.data.size() < 2 ? 0 : int(word(reply.data, 0));
    const QByteArray data = reply.data.mid(2);
    if (type != exchange.type || data.isEmpty() || data.size() > missing ||
        (!isPart && data.size() < missing)) {
        return invalid();
    }
    return fitted(exchange, exchange.value.left(exchange.offset) + data +
                                exchange.value.mid(exchange.offset + data.size()));
}

Verdict write(const RouterReply& reply, int service) {
    if (reply.service != service) {
        return refused();
    }
    return isRefusal(reply) ? tagRefusal(reply) : Verdict{true, QByteArray(), QByteArray()};
}

/// Not the message router's own text, when the connection manager says no.
Verdict openRefusal(const RouterReply& reply) {
    QByteArray reason = "MR error: " + hex(quint32(reply.status)) + 'H';
    if (reply.status == 1) {
        const quint32 extended = reply.words == 1   ? word(reply.additional, 0)
                                 : reply.words == 2 ? numberAt(reply.additional, 0, 4)
                                                    : 0;
        reason += ", " + hex(extended) + 'H';
    }
    return refused(reason);
}

Verdict forwardOpen(const Exchange& exchange, const RouterReply& reply) {
    if (reply.service != 0xD4) {
        return invalid();
    }
    if (reply.status != 0) {
        return openRefusal(reply);
    }
    return reply.data.size() < 8 ? invalid() : fitted(exchange, exchange.value);
}

Verdict registerSession(const Exchange& exchange, const QByteArray& message) {
    const quint32 status = numberAt(message, 8, 4);
    if (word(message, 0) != quint32(kRegister)) {
        return unsolicited();
    }
    if (status != 0) {
        return refused("EIP error: " + hex(status) + 'H');
    }
    return fitted(exchange, exchange.value);
}

Verdict tagAccess(const Exchange& exchange, const RouterReply& reply) {
    if (!reply.isThere) {
        return reply.otherwise;
    }
    switch (exchange.kind) {
        case Exchange::kPiece:
            return readPiece(exchange, reply);
        case Exchange::kWrite:
            return write(reply, kWriteTag);
        case Exchange::kWritePiece:
            return write(reply, kWriteFragment);
        default:
            return read(exchange, reply);
    }
}

}  // namespace

int firstMessageSize(const QByteArray& stream) {
    if (stream.size() < kHeader) {
        return -1;
    }
    const int size = kHeader + int(word(stream, 2));
    return stream.size() < size ? -1 : size;
}

Verdict verdictOf(const Exchange& exchange, const QByteArray& request, const QByteArray& stream) {
    if (exchange.kind == Exchange::kClose) {
        // The connection is being closed because the read failed; nobody looks at this answer.
        return unsolicited();
    }
    const int size = firstMessageSize(stream);
    if (size < 0) {
        return refused();
    }
    const QByteArray message = stream.left(size);
    if (exchange.kind == Exchange::kRegister) {
        return registerSession(exchange, message);
    }
    if (exchange.kind == Exchange::kOpen) {
        const RouterReply reply = unconnectedReply(request, message);
        return reply.isThere ? forwardOpen(exchange, reply) : reply.otherwise;
    }
    return tagAccess(exchange, connectedReply(request, message));
}

bool isDocumentedReason(const QByteArray& reason) {
    static const QRegularExpression documented(QStringLiteral(
        "^(Internal: (timeout|unsolicited message|item type unknow|invalid reply|out of range|"
        "unsupported service|buffer too small|unsupported data type|receive timeout|receive "
        "error|unknown error)|"
        "EIP error: [0-9A-F]{4,8}H|MR error: [0-9A-F]{4}H(, [0-9A-F]{4,8}H)?|"
        "AB error: [0-9A-F]{4}H(, [0-9A-F]{4,8}H)?)"
        "(; 0 to \\d+ of \\d+ elements written)?$"));
    return documented.match(QString::fromLatin1(reason)).hasMatch();
}
