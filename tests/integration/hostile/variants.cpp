#include "integration/hostile/variants.h"

#include <QSet>

namespace {

const int kHeader = 24;
/// What a word of status is filled with: 2105, "beyond the end of the object".
const char kStatusWord[] = "\x05\x21";

QByteArray number(quint32 value) {
    return QByteArray::number(value, 16);
}

class Maker {
 public:
    explicit Maker(const Exchange& of) : exchange(of), good(ReplyText::from(of.reply)) {}

    QList<Variant> make() {
        add("as it is", good.bytes);
        addCuts();
        addQuantities();
        addStatuses();
        addData();
        addOtherEncapsulation();
        if (good.hasField("sequence")) {
            addOtherSequences();
        }
        if (good.hasField("service")) {
            addOtherItems();
            addOtherServices();
        }
        if (good.hasField("type")) {
            addOtherTypes();
        }
        addOtherReplies();
        return variants;
    }

 private:
    void add(const QByteArray& name, const QByteArray& bytes, const QList<Echo>& echoes,
             bool hangsUp = false) {
        QByteArray key = bytes + (hangsUp ? "\1" : "\0");
        for (const Echo& echo : echoes) {
            key += number(quint32(echo.at)) + '+' + number(quint32(echo.from)) + '+' +
                   number(quint32(echo.plus)) + ',';
        }
        if (!made.contains(key)) {
            made << key;
            variants << Variant{name, bytes, echoes, hangsUp};
        }
    }
    void add(const QByteArray& name, const QByteArray& bytes, bool hangsUp = false) {
        add(name, bytes, good.echoes, hangsUp);
    }

    QByteArray with(const QByteArray& field, quint32 value) const {
        const ReplyField& at = good.field(field);
        return withNumber(good.bytes, at.at, at.size, value);
    }

    /// A reply with `tail` in the place of all from `at` on, and lengths that count it.
    QByteArray withTail(int at, const QByteArray& tail) const {
        QByteArray bytes = good.bytes.left(at) + tail;
        bytes = withNumber(bytes, 2, 2, quint32(bytes.size() - kHeader));
        if (good.hasField("dataLength") && at >= good.field("dataLength").at + 2) {
            const int behind = good.field("dataLength").at + 2;
            bytes = withNumber(bytes, behind - 2, 2, quint32(bytes.size() - behind));
        }
        return bytes;
    }

    void addCuts() {
        for (int size = 0; size < good.bytes.size(); ++size) {
            const QByteArray cut = good.bytes.left(size);
            const QByteArray name = "cut to " + QByteArray::number(size);
            add(name + ", then nothing", cut);
            add(name + ", then the end", cut, true);
            if (size >= kHeader) {
                add(name + ", header counts it", withNumber(cut, 2, 2, quint32(size - kHeader)));
            }
        }
    }

    void addQuantities() {
        for (const ReplyField& field : good.fields) {
            if (!field.saysHowMuch) {
                continue;
            }
            const quint32 value = numberAt(good.bytes, field.at, field.size);
            const quint32 most = field.size == 1 ? 0xFF : 0xFFFF;
            for (const quint32 other :
                 {0u, 1u, value - 1, value + 1, most / 2, most / 2 + 1, most}) {
                add(field.name + ' ' + number(other & most),
                    withNumber(good.bytes, field.at, field.size, other));
            }
        }
    }

    void addStatuses() {
        for (const quint32 status : {1u, 2u, 3u, 0x64u, 0x65u, 0x69u, 0x80000000u, 0xFFFFFFFFu}) {
            const QByteArray name = "encapsulation status " + number(status);
            add(name, with("status", status));
            add(name + ", no body", withNumber(with("status", status).left(kHeader), 2, 2, 0));
        }
        if (!good.hasField("service")) {
            for (quint32 status = 0; exchange.hasEveryStatus && status < 256; ++status) {
                add("encapsulation status " + number(status), with("status", status));
            }
            return;
        }
        for (int status = 0; status < 256; ++status) {
            const bool isUsual = status < 9 || status == 0x1E || status >= 0xFE;
            for (const int words : {0, 1, 2, 8, 255}) {
                if (exchange.hasEveryStatus || isUsual) {
                    addStatus(status, words);
                }
            }
        }
    }

    void addStatus(int status, int words) {
        const QByteArray name =
            "status " + number(quint32(status)) + ", words " + QByteArray::number(words);
        const int general = good.field("general").at;
        QByteArray tail;
        tail.append(char(status)).append(char(words));
        for (int i = 0; i < words; ++i) {
            tail += kStatusWord;
        }
        add(name, withTail(general, tail));
        // A good reply has its data after them.
        if (status == 0 || status == 6 || words == 1) {
            add(name + ", then data", withTail(general, tail + good.bytes.mid(general + 2)));
        }
        if (words > 0 && exchange.hasEveryStatus && (status < 9 || status == 0xFF)) {
            add(name + ", last one cut", withTail(general, tail.left(tail.size() - 1)));
        }
    }

    /// Lengths that agree, around more or less data than the request asked for.
    void addData() {
        if (!good.hasField("value")) {
            return;
        }
        const int at = good.field("value").at;
        const QByteArray value = good.bytes.mid(at);
        for (int size = 0; size <= value.size() + 9; ++size) {
            const QByteArray data = value + QByteArray::fromHex("f1f2f3f4f5f6f7f8f9");
            add("data bytes " + QByteArray::number(size), withTail(at, data.left(size)));
        }
        add("data bytes 490", withTail(at, value + QByteArray(490 - value.size(), '\xf1')));
        add("data bytes 4000", withTail(at, value + QByteArray(4000 - value.size(), '\xf1')));
        add("data bytes 60000", withTail(at, value + QByteArray(60000 - value.size(), '\xf1')));
    }

    void addOtherEncapsulation() {
        for (const quint32 command : {0x00u, 0x01u, 0x04u, 0x63u, 0x64u, 0x65u, 0x66u, 0x6Fu, 0x70u,
                                      0x72u, 0x73u, 0x7000u, 0xFFFFu}) {
            add("command " + number(command), with("command", command));
        }
        for (const quint32 handle : {0u, 1u, 0x1100u, 0x80000000u, 0xFFFFFFFFu}) {
            add("session " + number(handle), with("session", handle), echoesWithout(4));
        }
        for (const quint32 options : {1u, 0xFFFFFFFFu}) {
            add("options " + number(options), with("options", options));
        }
        add("another context", with("context", 1), echoesWithout(12));
        add("full context", with("context", 0xFFFFFFFF), echoesWithout(12));
    }

    QList<Echo> echoesWithout(int from) const {
        QList<Echo> left;
        for (const Echo& echo : good.echoes) {
            if (echo.from != from) {
                left << echo;
            }
        }
        return left;
    }

    void addOtherSequences() {
        for (const int plus : {-2, -1, 1, 2, 0x100, 0x8000}) {
            QList<Echo> echoes = good.echoes;
            echoes.last().plus = plus;
            add("sequence " + QByteArray::number(plus), good.bytes, echoes);
        }
    }

    void addOtherItems() {
        const quint32 types[] = {0x00,   0x0C,   0x86,   0xA1,   0xB1,   0xB2,   0x0100,
                                 0x8000, 0x8001, 0x8002, 0x8003, 0xA100, 0xB100, 0xFFFF};
        for (const char* field : {"addressType", "dataType"}) {
            for (const quint32 type : types) {
                add(QByteArray(field) + ' ' + number(type), with(field, type));
            }
        }
        if (good.hasField("connection")) {
            for (const quint32 id : {0u, 1u, 2u, 0x80000002u, 0xFFFFFFFFu}) {
                add("connection " + number(id), with("connection", id));
            }
        }
        for (const quint32 handle : {1u, 0xFFFFFFFFu}) {
            add("interface " + number(handle), with("interface", handle));
        }
        // The items the other way round.
        const int items = good.field("addressType").at;
        const int data = good.field("dataType").at;
        add("items swapped",
            good.bytes.left(items) + good.bytes.mid(data) + good.bytes.mid(items, data - items));
    }

    void addOtherServices() {
        for (quint32 service = 0; service < 256; ++service) {
            const bool isUsual = service >= 0xCA && service <= 0xD5;
            if (exchange.hasEveryService || isUsual || service == 0x8A ||
                service == numberAt(good.bytes, good.field("service").at, 1) - 0x80) {
                add("service " + number(service), with("service", service));
            }
        }
        // As one of several in a packet, and a packet of none.
        const int at = good.field("service").at;
        const QByteArray one = good.bytes.mid(at);
        const QByteArray packet = QByteArray::fromHex("8a000000");
        add("packed", withTail(at, packet + QByteArray::fromHex("01000400") + one));
        add("packed twice",
            withTail(at, packet + QByteArray::fromHex("020006000a00") + one.left(4) + one));
        add("packed none", withTail(at, packet + QByteArray::fromHex("0000")));
    }

    void addOtherTypes() {
        for (quint32 type = 0; type < 256; ++type) {
            if (exchange.hasEveryService || (type >= 0xC0 && type <= 0xDF) || type < 3) {
                add("type " + number(type), with("type", type));
            }
        }
        for (const quint32 type : {0x01C4u, 0xC400u, 0x02A0u, 0x8FCEu, 0xFFC4u, 0xFFFFu}) {
            add("type " + number(type), with("type", type));
        }
    }

    /// The good answers of all other exchanges, in place of this one's, and one that comes late.
    void addOtherReplies() {
        for (const Exchange& other : allExchanges()) {
            const ReplyText reply = ReplyText::from(other.reply);
            // No request but a connected one has a sequence count.
            if (other.name != exchange.name &&
                (good.hasField("sequence") || !reply.hasField("sequence"))) {
                add("the answer to " + other.name, reply.bytes, reply.echoes);
            }
        }
        if (good.hasField("sequence")) {
            const ReplyText late = ReplyText::from(otherReply());
            QList<Echo> echoes = late.echoes;
            echoes.last().plus = -1;
            add("the late answer to another tag", late.bytes, echoes);
        }
    }

    const Exchange& exchange;
    const ReplyText good;
    QList<Variant> variants;
    QSet<QByteArray> made;
};

}  // namespace

QList<Variant> variantsOf(const Exchange& exchange) {
    return Maker(exchange).make();
}
