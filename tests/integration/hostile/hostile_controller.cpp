#include "integration/hostile/hostile_rig.h"

namespace {

const int kRegister = 0x65;
const int kSendRRData = 0x6F;
const int kSendUnitData = 0x70;
const int kForwardOpen = 0x54;
const int kForwardClose = 0x4E;
const int kReadTag = 0x4C;
const int kWriteTag = 0x4D;
const int kReadFragment = 0x52;
const int kWriteFragment = 0x53;

// The position of the message-router request in a message.
const int kUnconnected = 40;
const int kConnected = 46;

int word(const QByteArray& bytes, int at) {
    return int(numberAt(bytes, at, 2));
}

int serviceOf(const QByteArray& request) {
    const int at = word(request, 0) == kSendUnitData ? kConnected : kUnconnected;
    return request.size() > at ? int(numberAt(request, at, 1)) : 0;
}

/// The bytes after the path of a tag request.
QByteArray argumentsOf(const QByteArray& request) {
    return request.mid(kConnected + 2 + 2 * int(numberAt(request, kConnected + 1, 1)));
}

int elementsOf(const QByteArray& request) {
    return word(argumentsOf(request), serviceOf(request) == kWriteFragment ? 2 : 0);
}

int offsetOf(const QByteArray& request) {
    switch (serviceOf(request)) {
        case kReadFragment:
            return int(numberAt(argumentsOf(request), 2, 4));
        case kWriteFragment:
            return int(numberAt(argumentsOf(request), 4, 4));
        default:
            return 0;
    }
}

/// The path begins with the name of V: a symbol of one letter.
bool isForV(const QByteArray& request) {
    return request.mid(kConnected + 2, 3) == QByteArray("\x91\x01V");
}

struct Message {
    int command;
    int service;
};

Message messageOf(Exchange::Kind kind) {
    switch (kind) {
        case Exchange::kRegister:
            return Message{kRegister, 0};
        case Exchange::kOpen:
            return Message{kSendRRData, kForwardOpen};
        case Exchange::kClose:
            return Message{kSendRRData, kForwardClose};
        case Exchange::kPiece:
            return Message{kSendUnitData, kReadFragment};
        case Exchange::kWrite:
            return Message{kSendUnitData, kWriteTag};
        case Exchange::kWritePiece:
            return Message{kSendUnitData, kWriteFragment};
        default:
            return Message{kSendUnitData, kReadTag};
    }
}

QByteArray littleEndian(int value, int size) {
    return withNumber(QByteArray(size, '\0'), 0, size, quint32(value));
}

QByteArray message(const QByteArray& request, const QByteArray& session, const QByteArray& body) {
    return request.left(2) + littleEndian(body.size(), 2) + session + QByteArray(4, '\0') +
           request.mid(12, 8) + QByteArray(4, '\0') + body;
}

}  // namespace

HostileController::HostileController(const Exchange& of)
    : exchange(of),
      breaks(false),
      scripted(ScriptedController::Script{
          [this](const QByteArray& request) { return answer(request); }}) {}

void HostileController::arm(const HostileCase& hostile) {
    const std::lock_guard<std::mutex> lock(mutex);
    armed.reset(new HostileCase(hostile));
    last = Met();
}

void HostileController::breakConnection() {
    const std::lock_guard<std::mutex> lock(mutex);
    breaks = true;
}

bool HostileController::hasBroken() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return !breaks;
}

HostileController::Met HostileController::met() const {
    const std::lock_guard<std::mutex> lock(mutex);
    return last;
}

bool HostileController::isArmedFor(const QByteArray& request) const {
    const Message wanted = messageOf(exchange.kind);
    if (!armed || word(request, 0) != wanted.command ||
        (wanted.service != 0 && serviceOf(request) != wanted.service)) {
        return false;
    }
    return wanted.command != kSendUnitData ||
           (isForV(request) && offsetOf(request) == exchange.offset);
}

ScriptedController::Answer HostileController::answer(const QByteArray& request) {
    const std::lock_guard<std::mutex> lock(mutex);
    ScriptedController::Answer good;
    const QByteArray reply = goodReply(request);
    if (breaks && word(request, 0) == kSendUnitData) {
        breaks = false;
        const int sequence = word(reply, 44);
        good.pieces << withNumber(reply, 44, 2, quint32(sequence - 1));
        return good;
    }
    if (isArmedFor(request)) {
        last.request = request;
        last.sent = outgoing(*armed, request, reply);
        last.served = true;
        armed.reset();
        return last.sent.answer;
    }
    if (last.served && word(request, 0) == kSendUnitData && serviceOf(request) == kReadTag &&
        isForV(request)) {
        ++last.readsSince;
    }
    if (!reply.isEmpty()) {
        good.pieces << reply;
    }
    return good;
}

/// What a controller in order sends; the lengths are counted here.
QByteArray HostileController::goodReply(const QByteArray& request) const {
    const QByteArray prefix(6, '\0');
    switch (word(request, 0)) {
        case kRegister:
            return message(request, QByteArray::fromHex("11000000"),
                           QByteArray::fromHex("01000000"));
        case kSendRRData: {
            const QByteArray reply = goodRouterReply(request);
            return message(request, request.mid(4, 4),
                           prefix + QByteArray::fromHex("020000000000b200") +
                               littleEndian(reply.size(), 2) + reply);
        }
        case kSendUnitData: {
            const QByteArray reply = goodRouterReply(request);
            return message(request, request.mid(4, 4),
                           prefix + QByteArray::fromHex("0200a10004000100fe80b100") +
                               littleEndian(reply.size() + 2, 2) + request.mid(44, 2) + reply);
        }
        default:
            return QByteArray();  // UnRegisterSession has no answer
    }
}

QByteArray HostileController::goodRouterReply(const QByteArray& request) const {
    const int service = serviceOf(request);
    switch (service) {
        case kForwardOpen:
            return QByteArray::fromHex(
                "d4000000020000800100fe8002001b504433221180841e0080841e000000");
        case kForwardClose:
            return QByteArray::fromHex("ce00000002001b50443322110000");
        case kReadTag:
        case kReadFragment:
            return isForV(request) ? readReply(service, elementsOf(request), offsetOf(request))
                                   : QByteArray::fromHex("cc000000c400") + otherValue();
        default:
            return QByteArray(1, static_cast<char>(service | 0x80)) + QByteArray(3, '\0');
    }
}

/// V from an offset on; a controller with little room gives no more than a part.
QByteArray HostileController::readReply(int service, int elements, int offset) const {
    const int size = elementSizeOf(exchange.type);
    QByteArray data = exchange.value;
    bool isPart = false;
    if (size > 0) {
        data = data.mid(offset, elements * size - offset);
        const bool hasParts =
            exchange.kind == Exchange::kFirstPart || exchange.kind == Exchange::kPiece;
        isPart = hasParts && data.size() > kPartBytes;
        data = isPart ? data.left(kPartBytes) : data;
    }
    QByteArray head(4, '\0');
    head[0] = static_cast<char>(service | 0x80);
    head[2] = isPart ? 6 : 0;
    return head + littleEndian(exchange.type, 2) + data;
}
