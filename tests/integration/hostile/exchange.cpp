// The good answers, written out from the standard (CIP Networks Library Vol. 1, 2-4 and 3-5; Vol.
// 2, 2-3 and 2-6) byte by byte. V has the values a1 a2 ... in them, otherwise b1 b2
// ...

#include "integration/hostile/exchange.h"

namespace {

/// Length of the body, length of the data item, message-router reply.
QByteArray connected(const char* length, const char* itemLength, const QByteArray& router) {
    return QByteArray("command: 70 00 length#: ") + length +
           " session: @4+4 status: 00 00 00 00 context: @12+8 options: 00 00 00 00"
           " interface: 00 00 00 00 timeout: 00 00 items#: 02 00"
           " addressType: a1 00 addressLength#: 04 00 connection: 01 00 fe 80"
           " dataType: b1 00 dataLength#: " +
           itemLength + " sequence: @44+2 " + router;
}

QByteArray unconnected(const char* length, const char* itemLength, const QByteArray& router) {
    return QByteArray("command: 6f 00 length#: ") + length +
           " session: @4+4 status: 00 00 00 00 context: @12+8 options: 00 00 00 00"
           " interface: 00 00 00 00 timeout: 00 00 items#: 02 00"
           " addressType: 00 00 addressLength#: 00 00"
           " dataType: b2 00 dataLength#: " +
           itemLength + ' ' + router;
}

QByteArray router(const char* service, const char* general, const char* data = "") {
    return QByteArray("service: ") + service + " reserved: 00 general: " + general +
           " words#: 00 " + data;
}

Exchange exchange(const char* name, Exchange::Kind kind, const QByteArray& reply) {
    Exchange made = Exchange();
    made.name = name;
    made.kind = kind;
    made.access = CommunicatorCommand(kUnitDoubleWord, 1, "DINT0:V");
    made.reply = reply;
    made.type = 0xC4;
    made.value = QByteArray::fromHex("b1b2b3b4");
    made.asked = 1;
    return made;
}

QList<Exchange> openings() {
    Exchange registering =
        exchange("RegisterSession", Exchange::kRegister,
                 "command: 65 00 length#: 04 00 session: 11 00 00 00 status: 00 00 00 00"
                 " context: @12+8 options: 00 00 00 00 version: 01 00 flags: 00 00");
    Exchange opening = exchange(
        "ForwardOpen", Exchange::kOpen,
        unconnected("2e 00", "1e 00",
                    router("d4", "00",
                           "toTarget: 02 00 00 80 toOriginator: 01 00 fe 80 serial: 02 00"
                           " vendor: 1b 50 originator: 44 33 22 11 toTargetApi: 80 84 1e 00"
                           " toOriginatorApi: 80 84 1e 00 applicationSize#: 00 reserved2: 00")));
    Exchange closing =
        exchange("ForwardClose", Exchange::kClose,
                 unconnected("1e 00", "0e 00",
                             router("ce", "00",
                                    "serial: 02 00 vendor: 1b 50 originator: 44 33 22 11"
                                    " applicationSize#: 00 reserved2: 00")));
    QList<Exchange> all({registering, opening, closing});
    all[0].hasEveryStatus = true;
    all[1].hasEveryStatus = true;
    all[1].hasEveryService = true;
    return all;
}

struct ReadRow {
    const char* name;
    const char* address;
    int kind;
    unsigned count;
    int type;
    const char* length;
    const char* itemLength;
    const char* data;   ///< of the reply
    const char* value;  ///< at all other times
};

const ReadRow kReads[] = {
    {"ReadBool", "BOOL0:V", kUnitBit, 1, 0xC1, "1d 00", "09 00", "type: c1 00 value: 01", "ff"},
    {"ReadSint", "SINT0:V", kUnitByte, 1, 0xC2, "1d 00", "09 00", "type: c2 00 value: a1", "b1"},
    {"ReadInt", "INT0:V", kUnitWord, 1, 0xC3, "1e 00", "0a 00", "type: c3 00 value: a1 a2", "b1b2"},
    {"ReadDint", "DINT0:V", kUnitDoubleWord, 1, 0xC4, "20 00", "0c 00",
     "type: c4 00 value: a1 a2 a3 a4", "b1b2b3b4"},
    {"ReadUsint", "USINT0:V", kUnitByte, 1, 0xC6, "1d 00", "09 00", "type: c6 00 value: a1", "b1"},
    {"ReadUint", "UINT0:V", kUnitWord, 1, 0xC7, "1e 00", "0a 00", "type: c7 00 value: a1 a2",
     "b1b2"},
    {"ReadUdint", "UDINT0:V", kUnitDoubleWord, 1, 0xC8, "20 00", "0c 00",
     "type: c8 00 value: a1 a2 a3 a4", "b1b2b3b4"},
    {"ReadReal", "REAL0:V", kUnitDoubleWord, 1, 0xCA, "20 00", "0c 00",
     "type: ca 00 value: a1 a2 a3 a4", "b1b2b3b4"},
    {"ReadLreal", "LREAL0:V", kUnitQuadWord, 1, 0xCB, "24 00", "10 00",
     "type: cb 00 value: a1 a2 a3 a4 a5 a6 a7 a8", "b1b2b3b4b5b6b7b8"},
    {"ReadString", "STRING0:V", kUnitBlock, 8, 0xDA, "22 00", "0e 00",
     "type: da 00 characters#: 05 value: a1 a2 a3 a4 a5", "03b1b2b3"},
    {"ReadBools", "BOOL0:V[0]", kUnitByte, 3, 0xC1, "1f 00", "0b 00", "type: c1 00 value: 01 00 01",
     "ff01ff"},
    {"ReadInts", "INT0:V[4]", kUnitWord, 3, 0xC3, "22 00", "0e 00",
     "type: c3 00 value: a1 a2 a3 a4 a5 a6", "b1b2b3b4b5b6"},
    {"ReadUsints", "USINT0:V[4]", kUnitByte, 3, 0xC6, "1f 00", "0b 00",
     "type: c6 00 value: a1 a2 a3", "b1b2b3"},
    {"ReadReals", "REAL0:V[1,2]", kUnitDoubleWord, 3, 0xCA, "28 00", "14 00",
     "type: ca 00 value: a1 a2 a3 a4 a5 a6 a7 a8 a9 aa ab ac", "b1b2b3b4b5b6b7b8b9babbbc"},
    {"ReadLreals", "LREAL0:V[1]", kUnitQuadWord, 2, 0xCB, "2c 00", "18 00",
     "type: cb 00 value: a1 a2 a3 a4 a5 a6 a7 a8 a9 aa ab ac ad ae af a0",
     "b1b2b3b4b5b6b7b8b9babbbcbdbebfb0"},
};

bool isElement(const QString& address) {
    return address.endsWith(QLatin1Char(']'));
}

Exchange readFrom(const ReadRow& row) {
    Exchange made = exchange(row.name, Exchange::kRead,
                             connected(row.length, row.itemLength, router("cc", "00", row.data)));
    made.access = CommunicatorCommand(row.kind, row.count, row.address);
    made.type = row.type;
    made.value = QByteArray::fromHex(row.value);
    made.asked = isElement(row.address) ? int(row.count) : 1;
    return made;
}

QList<Exchange> reads() {
    QList<Exchange> all;
    for (const ReadRow& row : kReads) {
        all << readFrom(row);
        all.last().hasEveryStatus = row.type == 0xC4;
        all.last().hasEveryService = row.type == 0xC4 || row.type == 0xDA;
    }
    // An element of an array that the project declares, which nothing polls.
    const ReadRow declared = {
        "ReadDeclared", "INT0:V[3]", kUnitWord, 2,
        0xC3,           "20 00",     "0c 00",   "type: c3 00 value: a1 a2 a3 a4",
        "b1b2b3b4"};
    all << readFrom(declared);
    all.last().declaration = "INT0:V[0..9]";
    return all;
}

/// Six DINTs, two of them at a time.
Exchange inParts(const char* name, Exchange::Kind kind, int offset, const char* service,
                 const char* general) {
    Exchange made =
        exchange(name, kind,
                 connected("24 00", "10 00",
                           router(service, general, "type: c4 00 value: a1 a2 a3 a4 a5 a6 a7 a8")));
    made.access = CommunicatorCommand(kUnitDoubleWord, 6, "DINT0:V[0]");
    made.value = QByteArray::fromHex(
        "b0b1b2b3b4b5b6b7"
        "b8b9babbbcbdbebf"
        "e0e1e2e3e4e5e6e7");
    made.asked = 6;
    made.offset = offset;
    return made;
}

QList<Exchange> partReads() {
    QList<Exchange> all({inParts("ReadFirstPart", Exchange::kFirstPart, 0, "cc", "06"),
                         inParts("ReadMiddlePiece", Exchange::kPiece, 8, "d2", "06"),
                         inParts("ReadLastPiece", Exchange::kPiece, 16, "d2", "00")});
    all[1].hasEveryStatus = true;
    all[1].hasEveryService = true;
    return all;
}

QList<Exchange> writes() {
    const QByteArray written = connected("1a 00", "06 00", router("cd", "00"));
    const QByteArray pieceWritten = connected("1a 00", "06 00", router("d3", "00"));
    Exchange dint = exchange("WriteDint", Exchange::kWrite, written);
    dint.toWrite = QByteArray::fromHex("d1d2d3d4");
    dint.hasEveryStatus = true;
    dint.hasEveryService = true;
    Exchange text = exchange("WriteString", Exchange::kWrite, written);
    text.access = CommunicatorCommand(kUnitBlock, 3, "STRING0:V");
    text.type = 0xDA;
    text.value = QByteArray::fromHex("03b1b2b3");
    text.toWrite = "abc";
    Exchange element = exchange("WriteElement", Exchange::kWrite, written);
    element.access = CommunicatorCommand(kUnitDoubleWord, 1, "DINT0:V[7]");
    element.toWrite = dint.toWrite;
    // 600 bytes: two pieces.
    Exchange first = exchange("WriteFirstPiece", Exchange::kWritePiece, pieceWritten);
    first.access = CommunicatorCommand(kUnitDoubleWord, 150, "DINT0:V[0]");
    first.toWrite = QByteArray(600, '\xd1');
    Exchange last = first;
    last.name = "WriteLastPiece";
    last.offset = 484;
    return {dint, text, element, first, last};
}

QList<Exchange> polled() {
    Exchange dint = readFrom(kReads[3]);
    dint.name = "PollDint";
    Exchange text = readFrom(kReads[9]);
    text.name = "PollString";
    // Elements 2 and 3 of an array that is polled whole.
    Exchange first = inParts("PollFirstPart", Exchange::kFirstPart, 0, "cc", "06");
    Exchange last = inParts("PollLastPiece", Exchange::kPiece, 16, "d2", "00");
    first.sliceAt = 4;
    last.sliceAt = 12;
    for (Exchange* array : {&first, &last}) {
        array->access = CommunicatorCommand(kUnitDoubleWord, 2,
                                            array->sliceAt == 4 ? "DINT0:V[1]" : "DINT0:V[3]");
        array->declaration = "DINT0:V[0..5]";
    }
    QList<Exchange> all({dint, text, first, last});
    for (Exchange& one : all) {
        one.isPolled = true;
    }
    return all;
}

}  // namespace

bool Exchange::goesOn() const {
    switch (kind) {
        case kRegister:
        case kOpen:
        case kFirstPart:
            return true;
        case kPiece:
            return offset == kPartBytes;
        case kWritePiece:
            return offset == 0;
        default:
            return false;
    }
}

void PrintTo(const Exchange& exchange, std::ostream* out) {
    *out << exchange.name.constData();
}

const char kOtherTag[] = "OTHER";

QByteArray otherValue() {
    return QByteArray::fromHex("c1c2c3c4");
}

QByteArray otherReply() {
    return connected("20 00", "0c 00", router("cc", "00", "type: c4 00 value: c1 c2 c3 c4"));
}

int elementSizeOf(int type) {
    switch (type) {
        case 0xC1:
        case 0xC2:
        case 0xC6:
            return 1;
        case 0xC3:
        case 0xC7:
            return 2;
        case 0xC4:
        case 0xC8:
        case 0xCA:
        case 0xD3:
            return 4;
        case 0xCB:
            return 8;
        default:
            return 0;
    }
}

QList<Exchange> allExchanges() {
    return openings() + reads() + partReads() + writes() + polled();
}
