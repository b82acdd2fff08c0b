#include "apps/micro800/recording/message_facts.h"

#include <QtEndian>

#include "apps/micro800/controller/trace/path_text.h"

namespace {

// CIP Networks Library Vol. 2, 2-3 and 2-6.
const int kHeader = 24;
const int kStatusAt = 8;
const int kItemCountAt = kHeader + 4 + 2;
const int kItemHead = 2 + 2;
const quint16 kConnectedData = 0x00B1;
const quint16 kUnconnectedData = 0x00B2;
const int kSequenceSize = 2;
const int kRequestHead = 1 + 1;
const int kReplyHead = 1 + 1 + 1 + 1;
const int kGeneralStatusAt = 2;
const unsigned char kReplyFlag = 0x80;

quint16 word(const QByteArray& bytes, int at) {
    return qFromLittleEndian<quint16>(bytes.constData() + at);
}

QString commandName(quint16 command) {
    switch (command) {
        case 0x0000:
            return QStringLiteral("NOP");
        case 0x0063:
            return QStringLiteral("ListIdentity");
        case 0x0065:
            return QStringLiteral("RegisterSession");
        case 0x0066:
            return QStringLiteral("UnRegisterSession");
        default:
            return QStringLiteral("command 0x%1").arg(command, 4, 16, QLatin1Char('0'));
    }
}

QString serviceName(int service) {
    switch (service) {
        case 0x4C:
            return QStringLiteral("Read Tag");
        case 0x4D:
            return QStringLiteral("Write Tag");
        case 0x52:
            return QStringLiteral("Read Tag Fragmented");
        case 0x53:
            return QStringLiteral("Write Tag Fragmented");
        case 0x54:
            return QStringLiteral("Forward Open");
        case 0x4E:
            return QStringLiteral("Forward Close");
        default:
            return QStringLiteral("service 0x%1").arg(service, 2, 16, QLatin1Char('0'));
    }
}

/// The message-router message in the data item; empty without a whole one.
QByteArray routerMessage(const QByteArray& message) {
    int at = kItemCountAt + 2;
    while (message.size() - at >= kItemHead) {
        const quint16 type = word(message, at);
        const int size = word(message, at + 2);
        at += kItemHead;
        if (size > message.size() - at) {
            return QByteArray();
        }
        if (type == kUnconnectedData) {
            return message.mid(at, size);
        }
        if (type == kConnectedData) {
            return message.mid(at + kSequenceSize, size - kSequenceSize);
        }
        at += size;
    }
    return QByteArray();
}

void takeRequest(const QByteArray& router, MessageFacts* facts) {
    const int pathSize = 2 * static_cast<unsigned char>(router.at(1));
    facts->name = serviceName(static_cast<unsigned char>(router.at(0)));
    if (pathSize <= router.size() - kRequestHead) {
        facts->tag = requestPathText(router.mid(kRequestHead, pathSize));
    }
}

void takeReply(const QByteArray& router, MessageFacts* facts) {
    facts->name = serviceName(static_cast<unsigned char>(router.at(0)) & ~kReplyFlag);
    facts->status = static_cast<unsigned char>(router.at(kGeneralStatusAt));
    facts->good = facts->status == 0;
}

}  // namespace

MessageFacts messageFacts(const QByteArray& message, bool isReply) {
    MessageFacts facts;
    if (message.size() < kHeader || kHeader + word(message, 2) > message.size()) {
        facts.name = QStringLiteral("%1 bytes of a message").arg(message.size());
        return facts;
    }
    facts.name = commandName(word(message, 0));
    const bool refused = message.mid(kStatusAt, 4) != QByteArray(4, 0);
    facts.good = isReply && !refused;
    const QByteArray router = routerMessage(message);
    if (!isReply && router.size() >= kRequestHead) {
        takeRequest(router, &facts);
    } else if (isReply && !refused && router.size() >= kReplyHead) {
        takeReply(router, &facts);
    }
    return facts;
}

QString messageText(const QByteArray& message, bool isReply) {
    const MessageFacts facts = messageFacts(message, isReply);
    if (!isReply) {
        return facts.tag.isEmpty() ? facts.name : facts.name + QLatin1Char(' ') + facts.tag;
    }
    if (facts.good) {
        return QStringLiteral("%1 good").arg(facts.name);
    }
    if (facts.status < 0) {
        return QStringLiteral("%1, no good answer").arg(facts.name);
    }
    return QStringLiteral("%1 refused with status %2")
        .arg(facts.name)
        .arg(facts.status, 2, 16, QLatin1Char('0'));
}
