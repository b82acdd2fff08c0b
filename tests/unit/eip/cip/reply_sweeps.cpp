#include "unit/eip/cip/reply_sweeps.h"

namespace {

/// Makes the body as long as a changed length field says.
Bytes asTransported(Bytes message) {
    message.resize(24 + size_t(message[2] | message[3] << 8), 0);
    return message;
}

void useChanged(const Bytes& whole, size_t at, const Bytes& field, const VariantUser& use) {
    Bytes variant = whole;
    for (size_t i = 0; i < field.size(); ++i) {
        variant[at + i] = field[i];
    }
    if (variant != whole) {
        use(asTransported(variant), at);
    }
}

}  // namespace

void forEachCut(const Bytes& whole, const VariantUser& use) {
    for (size_t size = 24; size < whole.size(); ++size) {
        use(cutMessage(whole, size), size);
    }
}

void forEachChangedByte(const Bytes& whole, const VariantUser& use) {
    for (size_t at = 0; at < whole.size(); ++at) {
        const unsigned char old = whole[at];
        for (int value : {0x00, 0x01, 0x02, 0x7F, 0x80, 0xFE, 0xFF, old + 1, old - 1, old ^ 0x80,
                          old ^ 0x40, ~old}) {
            useChanged(whole, at, Bytes{static_cast<unsigned char>(value)}, use);
        }
    }
}

void forEachWildField(const Bytes& whole, const VariantUser& use) {
    for (size_t at = 0; at + 2 <= whole.size(); ++at) {
        for (const char* field : {"FF FF", "00 80", "FF 7F", "00 00", "FE FF", "00 01"}) {
            useChanged(whole, at, bytes(field), use);
        }
    }
    for (size_t at = 0; at + 4 <= whole.size(); ++at) {
        for (const char* field : {"FF FF FF FF", "00 00 00 80", "FF FF FF 7F", "00 00 00 00"}) {
            useChanged(whole, at, bytes(field), use);
        }
    }
}

void forEachVariant(const Bytes& whole, const VariantUser& use) {
    forEachCut(whole, use);
    forEachChangedByte(whole, use);
    forEachWildField(whole, use);
}
