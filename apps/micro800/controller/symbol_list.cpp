#include "apps/micro800/controller/symbol_list.h"

#include <QRegularExpression>
#include <QStringList>

#include "apps/micro800/base/problem.h"
#include "apps/micro800/format/array_declaration.h"
#include "apps/micro800/format/cip_types.h"

namespace {

const int kGetInstanceAttributeList = 0x55;
const int kPartialTransfer = 0x06;

// Attributes of the symbol object.
const int kName = 1;
const int kType = 2;
const int kDimensions = 8;
const int kAttributes[] = {kName, kType, kDimensions};

// The type word.
const int kStructureBit = 0x8000;
const int kSystemBit = 0x1000;
const int kDimensionsShift = 13;
const int kDimensionsMask = 0x03;
const int kTypeCodeMask = 0xFF;
const int kStructureCode = 0xA0;

const int kMostDimensions = 3;

/// More than any of these controllers contains: a list that does not end is none.
const int kMostSymbols = 100000;

void put16(int value, QByteArray* bytes) {
    bytes->append(char(value & 0xFF));
    bytes->append(char(value >> 8 & 0xFF));
}

/// Numbers and bytes one after the other; what is not there ends it.
class Reader {
 public:
    explicit Reader(const QByteArray& data) : bytes(data) {}

    bool atEnd() const { return at == bytes.size(); }
    bool number(int size, quint32* value) {
        if (size > bytes.size() - at) {
            return false;
        }
        *value = 0;
        for (int i = size - 1; i >= 0; --i) {
            *value = *value << 8 | static_cast<unsigned char>(bytes.at(at + i));
        }
        at += size;
        return true;
    }
    bool text(int size, QByteArray* value) {
        if (size > bytes.size() - at) {
            return false;
        }
        *value = bytes.mid(at, size);
        at += size;
        return true;
    }

 private:
    const QByteArray& bytes;
    int at = 0;
};

//  0   4  instance
//  4   2  length of the name
//  6   n  name
//      2  type
//     12  elements of three dimensions
bool takeSymbol(Reader* reader, Symbol* symbol) {
    quint32 length = 0;
    quint32 type = 0;
    if (!reader->number(4, &symbol->instance) || !reader->number(2, &length) ||
        !reader->text(int(length), &symbol->name) || !reader->number(2, &type)) {
        return false;
    }
    symbol->typeWord = int(type);
    const int used = symbol->typeWord >> kDimensionsShift & kDimensionsMask;
    for (int i = 0; i < kMostDimensions; ++i) {
        quint32 elements = 0;
        if (!reader->number(4, &elements)) {
            return false;
        }
        if (i < used) {
            symbol->dimensions.append(elements);
        }
    }
    return true;
}

/// What a variable or a member of a structure can be called.
bool isPlainName(const QByteArray& name) {
    static const QRegularExpression pattern(QStringLiteral("^[A-Za-z_][A-Za-z0-9_.]*\\z"));
    return pattern.match(QString::fromLatin1(name)).hasMatch();
}

/// 20 6B 25 00 and the 16 bits of the instance to begin with.
QByteArray symbolPath(quint32 instance) {
    QByteArray path = QByteArray::fromHex("206b2500");
    put16(int(instance), &path);
    return path;
}

QByteArray attributeList() {
    QByteArray data;
    put16(int(sizeof kAttributes / sizeof *kAttributes), &data);
    for (const int attribute : kAttributes) {
        put16(attribute, &data);
    }
    return data;
}

}  // namespace

bool Symbol::isStructure() const {
    return typeWord & kStructureBit;
}

bool Symbol::isSystem() const {
    return typeWord & kSystemBit;
}

int Symbol::typeCode() const {
    return isStructure() ? kStructureCode : typeWord & kTypeCodeMask;
}

QString Symbol::typeText() const {
    return cipTypeName(typeCode());
}

const TagType* Symbol::tagType() const {
    return isPlainName(name) ? tagTypeForCode(typeCode()) : nullptr;
}

QString Symbol::address() const {
    const TagType* type = tagType();
    if (!type) {
        return QString();
    }
    const QString plain =
        QStringLiteral("%1:%2").arg(QLatin1String(type->prefix), QString::fromLatin1(name));
    QStringList ranges;
    for (const quint32 elements : dimensions) {
        ranges << QStringLiteral("0..%1").arg(qint64(elements) - 1);
    }
    const QString text = ranges.isEmpty()
                             ? plain
                             : QStringLiteral("%1[%2]").arg(plain, ranges.join(QLatin1Char(',')));
    ArrayDeclaration declaration;
    QString ignored;
    const bool isGood = ranges.isEmpty() || parseArrayDeclaration(text, &declaration, &ignored);
    return isGood ? text : QString();
}

QString Symbol::problem() const {
    if (!address().isEmpty()) {
        return QString();
    }
    if (isStructure()) {
        return QStringLiteral("its members are read by name, PREFIX0:NAME.MEMBER");
    }
    if (!tagTypeForCode(typeCode())) {
        return QStringLiteral("no prefix, the panel cannot read it");
    }
    return isPlainName(name) ? QStringLiteral("an array that no project can declare")
                             : QStringLiteral("a name that no address can hold");
}

bool takeSymbols(const QByteArray& data, quint32 last, QVector<Symbol>* symbols) {
    Reader reader(data);
    while (!reader.atEnd()) {
        Symbol symbol;
        if (!takeSymbol(&reader, &symbol) || symbol.instance <= last) {
            return false;
        }
        last = symbol.instance;
        symbols->append(symbol);
    }
    return true;
}

bool listSymbols(const ObjectRequester& request, QVector<Symbol>* symbols, QString* problem) {
    const QString noList = QStringLiteral("the answer is no list of variables");
    for (quint32 last = 0;;) {
        const ObjectReply reply = request(kGetInstanceAttributeList,
                                          symbolPath(last == 0 ? 0 : last + 1), attributeList());
        const bool isPart = reply.answered && reply.status == kPartialTransfer;
        if (!isPart && (!reply.answered || reply.status != 0)) {
            return fail(problem, reply.error);
        }
        const int before = symbols->size();
        if (!takeSymbols(reply.data, last, symbols) || symbols->size() > kMostSymbols) {
            return fail(problem, noList);
        }
        if (!isPart) {
            return true;
        }
        // A further request names the instance in 16 bits.
        if (symbols->size() == before || symbols->last().instance >= 0xFFFF) {
            return fail(problem, noList);
        }
        last = symbols->last().instance;
    }
}
