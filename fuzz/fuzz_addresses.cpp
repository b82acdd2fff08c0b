// Wild addresses and array declarations.

#include <cstdint>
#include <vector>

#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"
#include "eip/cip/request_path.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    static DriverABMicro800Eth driver;
    const QString text = QString::fromLatin1(reinterpret_cast<const char*>(data), int(size));
    (void)driver.parseVarName(text);
    LgxArrayDef def;
    if (driver.arrayDefFromStr(text.left(text.size() / 2), def)) {
        (void)def.size();
        (void)driver.strToValueOffset(text.mid(text.size() / 2), def, 8);
    }
    if (driver.isArray(text) && driver.isArray1(text)) {
        (void)driver.numberFrom(int(size), driver.prefixSymbolToType(driver.arrayPrefixSymbol()));
    }
    // Measured first, filled into exactly that many bytes then.
    const QByteArray name = text.toLatin1();
    const int length = _BuildIOI(nullptr, name.constData());
    if (length >= 0) {
        std::vector<unsigned char> path(static_cast<size_t>(length));
        if (_BuildIOI(path.data(), name.constData()) != length) {
            __builtin_trap();
        }
    }
    return 0;
}
