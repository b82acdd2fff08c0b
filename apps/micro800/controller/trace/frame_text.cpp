#include "apps/micro800/controller/trace/frame_text.h"

#include <QMap>

#include "apps/micro800/controller/trace/field_lines.h"
#include "apps/micro800/controller/trace/service_text.h"
#include "apps/micro800/format/cip_types.h"
#include "eip/cip/common_packet.h"

namespace {

const char* commandName(quint32 command) {
    switch (command) {
        case ENCAP_NOP:
            return "NOP";
        case ENCAP_LIST_SERVICES:
            return "ListServices";
        case ENCAP_LIST_IDENTITY:
            return "ListIdentity";
        case ENCAP_LIST_INTERFACES:
            return "ListInterfaces";
        case ENCAP_REGISTER_SESSION:
            return "RegisterSession";
        case ENCAP_UNREGISTER_SESSION:
            return "UnRegisterSession";
        case ENCAP_SEND_RR_DATA:
            return "SendRRData";
        case ENCAP_SEND_UNIT_DATA:
            return "SendUnitData";
        default:
            return "unknown command";
    }
}

const quint32 kIdentityItem = 0x000C;

const char* itemName(quint32 type) {
    switch (type) {
        case CPF_NULL_ADDRESS:
            return "null address";
        case kIdentityItem:
            return "identity";
        case CPF_CONNECTED_ADDRESS:
            return "connected address";
        case CPF_CONNECTED_DATA:
            return "connected data";
        case CPF_UNCONNECTED_DATA:
            return "unconnected data";
        case CPF_SOCKADDR_O_TO_T:
        case CPF_SOCKADDR_T_TO_O:
            return "socket address";
        default:
            return "unknown item";
    }
}

// Vol. 2, table 2-4.4.
void addIdentity(FieldLines& fields) {
    fields.number("protocol version", 2);
    fields.field("socket address", 16);
    fields.number("vendor id", 2);
    fields.number("device type", 2);
    fields.number("product code", 2);
    fields.field("revision", 2, QStringLiteral("%1.%2").arg(fields.peek(1)).arg(fields.peek(1, 1)));
    fields.field("status", 2);
    fields.field("serial number", 4);
    fields.field("product name", int(fields.number("name length", 1)));
    fields.number("state", 1);
}

void addItem(FieldLines& fields, bool isReply) {
    const quint32 type = fields.peek(2);
    fields.field("item type", 2, QLatin1String(itemName(type)));
    const int length = int(fields.number("item length", 2));
    const int endsWith = fields.left() - length;  // negative: the item is not whole
    if (type == kIdentityItem) {
        addIdentity(fields);
    } else if (type == CPF_CONNECTED_ADDRESS) {
        fields.field("connection id", 4);
    } else if (type == CPF_CONNECTED_DATA) {
        fields.number("sequence count", 2);
        addService(fields, fields.left() - qMax(endsWith, 0), isReply);
    } else if (type == CPF_UNCONNECTED_DATA) {
        addService(fields, fields.left() - qMax(endsWith, 0), isReply);
    }
    if (fields.left() > qMax(endsWith, 0)) {
        fields.field("data", fields.left() - qMax(endsWith, 0));
    }
}

void addItems(FieldLines& fields, bool isReply) {
    if (fields.left() == 0) {
        return;
    }
    const quint32 count = fields.number("item count", 2);
    for (quint32 i = 0; i < count && fields.left() > 0; ++i) {
        addItem(fields, isReply);
    }
}

void addBody(FieldLines& fields, quint32 command, bool isReply) {
    if (command == ENCAP_REGISTER_SESSION && fields.left() > 0) {
        fields.number("protocol version", 2);
        fields.field("option flags", 2);
    } else if (command == ENCAP_LIST_IDENTITY) {
        addItems(fields, isReply);
    } else if ((command == ENCAP_SEND_RR_DATA || command == ENCAP_SEND_UNIT_DATA) &&
               fields.left() > 0) {
        fields.field("interface handle", 4);
        fields.number("time-out", 2);
        addItems(fields, isReply);
    }
    fields.rest("data");
}

}  // namespace

QStringList frameText(const QByteArray& message, bool isReply) {
    FieldLines fields(message);
    const quint32 command = fields.peek(2);
    fields.lines << QStringLiteral("%1 %2 %3, %4 bytes")
                        .arg(QLatin1String(isReply ? "<" : ">"),
                             QLatin1String(commandName(command)),
                             QLatin1String(isReply ? "reply" : "request"),
                             QString::number(message.size()));
    fields.field("command", 2, QLatin1String(commandName(command)));
    fields.number("length", 2);
    fields.field("session handle", 4);
    fields.field("status", 4);
    fields.field("sender context", 8);
    fields.field("options", 4);
    addBody(fields, command, isReply);
    return fields.lines;
}
