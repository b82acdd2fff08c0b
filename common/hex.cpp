#include "common/hex.h"

#include <QDebug>

namespace {

const int kBytesPerLine = 16;

/// 0 to 15, or -1.
int digitValue(char c) {
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return -1;
}

bool hasHexPrefix(const char* text, int length) {
    return length >= 2 && text[0] == '0' && (text[1] == 'x' || text[1] == 'X');
}

}  // namespace

unsigned int HexToUInt(const char* text, int length) {
    if (text == nullptr) {
        return 0;
    }
    unsigned int value = 0;
    for (int i = hasHexPrefix(text, length) ? 2 : 0; i < length; ++i) {
        const int digit = digitValue(text[i]);
        if (digit < 0 || value > 0x0FFFFFFFu) {
            return 0;
        }
        value = value << 4 | static_cast<unsigned int>(digit);
    }
    return value;
}

QByteArray spacedHex(const QByteArray& data) {
    const QByteArray digits = data.toHex().toUpper();
    QByteArray spaced;
    for (int i = 0; i < digits.size(); i += 2) {
        if (i > 0) {
            spaced += ' ';
        }
        spaced += digits.mid(i, 2);
    }
    return spaced;
}

void dumpByteArray(const QByteArray& data) {
    if (data.isEmpty()) {
        qDebug("(empty)");
    }
    for (int at = 0; at < data.size(); at += kBytesPerLine) {
        qDebug("%04X: %s", static_cast<unsigned int>(at),
               spacedHex(data.mid(at, kBytesPerLine)).constData());
    }
}
