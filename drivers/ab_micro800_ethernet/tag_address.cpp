// From the address that the operator entered to the tag name and type that the controller knows.

#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"

namespace {

const int kSymbolEndLength = 2;  // the "0:" that ends a prefix symbol and precedes the name

struct PrefixSize {
    const char* prefix;
    int bytes;
};

// In the order of the tests: an unsigned type's name ends in that of the signed one.
const PrefixSize kPrefixSizes[] = {
    {"USINT", 1}, {"LREAL", 8}, {"UDINT", 4}, {"DINT", 4}, {"SINT", 1},
    {"UINT", 2},  {"REAL", 4},  {"BOOL", 1},  {"INT", 2},
};

}  // namespace

int DriverABMicro800Eth::findNamePos(const QString& address) const {
    return address.indexOf(QLatin1String("0:"));
}

QString DriverABMicro800Eth::varNameFrom(const QString& address, int pos) const {
    return address.mid(pos + kSymbolEndLength).toUpper();
}

QString DriverABMicro800Eth::prefixSymbolFrom(const QString& address, int pos) const {
    return address.left(pos + 1);
}

QString DriverABMicro800Eth::parseVarName(const QString& address) const {
    const int pos = findNamePos(address);
    return pos < 0 ? QString() : varNameFrom(address, pos);
}

_LGX_Data_Type DriverABMicro800Eth::prefixSymbolToType(const QString& symbol) const {
    return prefixTypes.value(symbol, _LGX_Data_Type(0));
}

int DriverABMicro800Eth::prefixSymbolToDataSize(const QString& symbol) const {
    for (const PrefixSize& entry : kPrefixSizes) {
        if (symbol.startsWith(QLatin1String(entry.prefix), Qt::CaseInsensitive)) {
            return entry.bytes;
        }
    }
    return -1;
}

int DriverABMicro800Eth::numberFrom(int byteCount, _LGX_Data_Type type) const {
    const int elementSize = _GetLGXDataSize(type);
    if (elementSize < 1) {
        return 1;
    }
    return byteCount / elementSize + (byteCount % elementSize > 0 ? 1 : 0);
}

bool DriverABMicro800Eth::isArray(const QString& address) {
    return elementMatcher.indexIn(address) >= 0;
}

QString DriverABMicro800Eth::arrayPrefixSymbol() const {
    return elementMatcher.cap(1);
}

QString DriverABMicro800Eth::arrayElementName() const {
    return elementMatcher.cap(2).toUpper();
}

QString DriverABMicro800Eth::arrayName() const {
    return elementMatcher.cap(3).toUpper();
}

QString DriverABMicro800Eth::arrayIndex() const {
    return elementMatcher.cap(4);
}

bool DriverABMicro800Eth::isArray1(const QString& address) {
    return elementMatcher1.indexIn(address) >= 0;
}

QString DriverABMicro800Eth::arrayPrefixSymbol1() const {
    return elementMatcher1.cap(1);
}

QString DriverABMicro800Eth::arrayElementName1() const {
    return elementMatcher1.cap(2).toUpper();
}

QString DriverABMicro800Eth::arrayName1() const {
    return elementMatcher1.cap(3).toUpper();
}
