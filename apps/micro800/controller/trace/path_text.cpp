#include "apps/micro800/controller/trace/path_text.h"

#include <QStringList>

namespace {

const int kSymbol = 0x91;
const int kLogicalTypeMask = 0xFC;
const int kLogicalFormMask = 0x03;
const int kClass = 0x20;
const int kInstance = 0x24;
const int kElement = 0x28;
const int kAttribute = 0x30;

/// Bytes of a logical segment's number by the form in its two lowest bits; the longer ones have a
/// pad byte before it.
const int kNumberSizes[] = {1, 2, 4, 0};

int byteAt(const QByteArray& path, int at) {
    return at < path.size() ? static_cast<unsigned char>(path.at(at)) : 0;
}

struct Logical {
    int kind;
    quint32 number;
};

/// Takes the logical segment at `*at`; false when it is none.
bool takeLogical(const QByteArray& path, int* at, Logical* logical) {
    const int head = byteAt(path, *at);
    const int size = kNumberSizes[head & kLogicalFormMask];
    const int from = *at + (size == 1 ? 1 : 2);
    if (size == 0 || size > path.size() - from) {
        return false;
    }
    *logical = {head & kLogicalTypeMask, 0};
    for (int i = size - 1; i >= 0; --i) {
        logical->number = logical->number << 8 | quint32(byteAt(path, from + i));
    }
    *at = from + size;
    return true;
}

/// The name or the indexes that a symbolic path goes on with.
struct SymbolicText {
    QString text;
    QStringList indexes;

    void endIndexes() {
        if (!indexes.isEmpty()) {
            text += QLatin1Char('[') + indexes.join(QLatin1Char(',')) + QLatin1Char(']');
            indexes.clear();
        }
    }
    void addName(const QString& name) {
        endIndexes();
        text += (text.isEmpty() ? QString() : QStringLiteral(".")) + name;
    }
};

QString objectText(const Logical& logical) {
    switch (logical.kind) {
        case kClass:
            return QStringLiteral("class 0x%1").arg(QString::number(logical.number, 16).toUpper());
        case kInstance:
            return QStringLiteral("instance %1").arg(logical.number);
        case kAttribute:
            return QStringLiteral("attribute %1").arg(logical.number);
        default:
            return QString();
    }
}

}  // namespace

QString requestPathText(const QByteArray& path) {
    SymbolicText symbolic;
    QStringList objects;
    int at = 0;
    Logical logical = {0, 0};
    while (at < path.size()) {
        if (byteAt(path, at) == kSymbol) {
            const int length = byteAt(path, at + 1);
            symbolic.addName(QString::fromLatin1(path.mid(at + 2, length)));
            at += 2 + length + length % 2;
        } else if (!takeLogical(path, &at, &logical)) {
            break;
        } else if (logical.kind == kElement) {
            symbolic.indexes << QString::number(logical.number);
        } else if (!objectText(logical).isEmpty()) {
            objects << objectText(logical);
        }
    }
    symbolic.endIndexes();
    if (!symbolic.text.isEmpty()) {
        objects.prepend(symbolic.text);
    }
    return objects.join(QLatin1String(", "));
}
