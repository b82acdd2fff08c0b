#include "apps/micro800/controller/trace/service_text.h"

#include <QVector>

#include "apps/micro800/controller/trace/path_text.h"
#include "apps/micro800/format/cip_types.h"
#include "eip/cip/cip_messages.h"

namespace {

const quint32 kReplyBit = 0x80;
const quint32 kPartialTransfer = 0x06;
const quint32 kReadTag = 0x4C;
const quint32 kForwardClose = 0x4E;
const quint32 kForwardOpen = 0x54;
const quint32 kReadTagFragmented = 0x52;
const quint32 kListAttributes = 0x55;

struct NamedField {
    const char* name;
    int size;
};

// Vol. 1, table 3-5.16.
const QVector<NamedField> kOpenRequest = {
    {"priority, time tick", 1}, {"time-out ticks", 1},      {"O->T connection id", 4},
    {"T->O connection id", 4},  {"connection serial", 2},   {"originator vendor", 2},
    {"originator serial", 4},   {"time-out multiplier", 1}, {"reserved", 3},
    {"O->T interval, us", 4},   {"O->T parameters", 2},     {"T->O interval, us", 4},
    {"T->O parameters", 2},     {"transport class", 1},     {"connection path size", 1},
};
// Table 3-5.18.
const QVector<NamedField> kOpenReply = {
    {"O->T connection id", 4}, {"T->O connection id", 4}, {"connection serial", 2},
    {"originator vendor", 2},  {"originator serial", 4},  {"O->T interval, us", 4},
    {"T->O interval, us", 4},  {"application reply", 1},  {"reserved", 1},
};
// Table 3-5.21.
const QVector<NamedField> kCloseRequest = {
    {"priority, time tick", 1},
    {"time-out ticks", 1},
    {"connection serial", 2},
    {"originator vendor", 2},
    {"originator serial", 4},
    {"connection path size", 1},
    {"reserved", 1},
};
const QVector<NamedField> kCloseReply = {
    {"connection serial", 2}, {"originator vendor", 2}, {"originator serial", 4},
    {"application reply", 1}, {"reserved", 1},
};

QString serviceName(quint32 service) {
    switch (service) {
        case 0x01:
            return QStringLiteral("Get_Attributes_All");
        case 0x03:
            return QStringLiteral("Get_Attribute_List");
        case 0x0E:
            return QStringLiteral("Get_Attribute_Single");
        case kReadTag:
            return QStringLiteral("Read Tag");
        case kReadTagFragmented:
            return QStringLiteral("Read Tag Fragmented");
        case 0x4D:
            return QStringLiteral("Write Tag");
        case kForwardClose:
            return QStringLiteral("Forward Close");
        case kForwardOpen:
            return QStringLiteral("Forward Open");
        case kListAttributes:
            return QStringLiteral("Get_Instance_Attribute_List");
        default:
            return QString();
    }
}

void addFields(FieldLines& fields, const QVector<NamedField>& table) {
    for (const NamedField& row : table) {
        if (fields.left() > 0) {
            fields.field(row.name, row.size);
        }
    }
}

/// Data of a request whose service has a form of its own; what is after it stays.
void addRequestData(FieldLines& fields, quint32 service, int end) {
    if (service == kReadTag && fields.left() > end) {
        fields.number("elements", 2);
    } else if (service == kReadTagFragmented && fields.left() > end) {
        fields.number("elements", 2);
        fields.number("byte offset", 4);
    } else if (service == kForwardOpen) {
        addFields(fields, kOpenRequest);
    } else if (service == kForwardClose) {
        addFields(fields, kCloseRequest);
    } else if (service == kListAttributes && fields.left() > end) {
        const quint32 count = fields.number("attributes", 2);
        for (quint32 i = 0; i < count && fields.left() > end; ++i) {
            fields.number("attribute", 2);
        }
    }
}

void addRequest(FieldLines& fields, int end) {
    const quint32 service = fields.peek(1);
    fields.field("service", 1, serviceName(service));
    const int pathSize = int(2 * fields.number("path size in words", 1));
    if (pathSize > 0 && fields.left() > end) {
        fields.field("path", pathSize, requestPathText(fields.ahead(pathSize)));
    }
    addRequestData(fields, service, end);
}

void addReply(FieldLines& fields, int end) {
    const quint32 service = fields.peek(1) & ~kReplyBit;
    fields.field("reply service", 1, serviceName(service));
    fields.field("reserved", 1);
    const quint32 status = fields.peek(1);
    fields.field("general status", 1, QLatin1String(CIPGetMRErrMsg(int32_t(status), 0)));
    const int extraSize = int(2 * fields.number("additional status size", 1));
    if (extraSize > 0) {
        fields.field("additional status", extraSize);
    }
    const bool hasData = status == 0 || status == kPartialTransfer;
    if (!hasData || fields.left() <= end) {
        return;
    }
    if (service == kReadTag || service == kReadTagFragmented) {
        fields.field("data type", 2, cipTypeName(int(fields.peek(2))));
    } else if (service == kForwardOpen) {
        addFields(fields, kOpenReply);
    } else if (service == kForwardClose) {
        addFields(fields, kCloseReply);
    }
}

}  // namespace

void addService(FieldLines& fields, int size, bool isReply) {
    const int end = fields.left() - size;  // what is left of the message after the service
    if (size <= 0) {
        return;
    }
    if (isReply) {
        addReply(fields, end);
    } else {
        addRequest(fields, end);
    }
}
