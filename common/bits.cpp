#include "common/bits.h"

#include <functional>

#include "common/sizes.h"

namespace {

const int kLargestBit = 0x7FFFFFFF;

/// The largest size of a byte array, a little below an int's range.
const qint64 kLargestExpansion = 0x7FFFFF00;

/// The value with only `bit` set, 0 when the type has no such bit.
template <typename Value>
Value maskOf(int bit) {
    const int width = static_cast<int>(8 * sizeof(Value));
    return static_cast<Value>(bit >= 0 && bit < width ? Q_UINT64_C(1) << bit : 0);
}

unsigned char* bytesOf(char* data) {
    return reinterpret_cast<unsigned char*>(data);
}
const unsigned char* bytesOf(const char* data) {
    return reinterpret_cast<const unsigned char*>(data);
}

bool holdsBit(const QByteArray& data, int bitIndex) {
    return bitIndex >= 0 && bitIndex / 8 < data.size();
}

qint64 bitsIn(const QByteArray& data) {
    return static_cast<qint64>(data.size()) * 8;
}

/// Whether bit `destinationBit` lies after bit `sourceBit` in memory.
bool liesBehind(const unsigned char* destination, int destinationBit, const unsigned char* source,
                int sourceBit) {
    const unsigned char* to = destination + destinationBit / 8;
    const unsigned char* from = source + sourceBit / 8;
    return to == from ? destinationBit % 8 > sourceBit % 8
                      : std::greater<const unsigned char*>()(to, from);
}

}  // namespace

void setBit(quint8& value, int bit) {
    value |= maskOf<quint8>(bit);
}
void setBit(quint16& value, int bit) {
    value |= maskOf<quint16>(bit);
}
void setBit(quint32& value, int bit) {
    value |= maskOf<quint32>(bit);
}

void clearBit(quint8& value, int bit) {
    value = value & static_cast<quint8>(~maskOf<quint8>(bit));
}
void clearBit(quint16& value, int bit) {
    value = value & static_cast<quint16>(~maskOf<quint16>(bit));
}
void clearBit(quint32& value, int bit) {
    value &= ~maskOf<quint32>(bit);
}

bool getBit(quint8 value, int bit) {
    return (value & maskOf<quint8>(bit)) != 0;
}
bool getBit(quint16 value, int bit) {
    return (value & maskOf<quint16>(bit)) != 0;
}
bool getBit(quint32 value, int bit) {
    return (value & maskOf<quint32>(bit)) != 0;
}

bool getBit(const QByteArray& data, int bitIndex) {
    return holdsBit(data, bitIndex) && getBit(data.constData(), bitIndex);
}

void setBit(QByteArray& data, int bitIndex, bool on) {
    if (holdsBit(data, bitIndex)) {
        setBit(data.data(), bitIndex, on);
    }
}

bool getBit(const unsigned char* data, int bitIndex) {
    return bitIndex >= 0 && getBit(data[bitIndex / 8], bitIndex % 8);
}

bool getBit(const char* data, int bitIndex) {
    return getBit(bytesOf(data), bitIndex);
}

void setBit(unsigned char* data, int bitIndex, bool on) {
    if (bitIndex < 0) {
        return;
    }
    if (on) {
        setBit(data[bitIndex / 8], bitIndex % 8);
    } else {
        clearBit(data[bitIndex / 8], bitIndex % 8);
    }
}

void setBit(char* data, int bitIndex, bool on) {
    setBit(bytesOf(data), bitIndex, on);
}

void CopyBits(unsigned char* destination, int destinationBit, const unsigned char* source,
              int sourceBit, int count) {
    if (destinationBit < 0 || sourceBit < 0 || count < 1) {
        return;
    }
    // No index passes an int's range.
    const int copied = qMin(count, kLargestBit - qMax(destinationBit, sourceBit));
    // Overlapping bits are copied from the end that is overwritten last.
    const bool backwards = liesBehind(destination, destinationBit, source, sourceBit);
    for (int i = 0; i < copied; ++i) {
        const int offset = backwards ? copied - 1 - i : i;
        setBit(destination, destinationBit + offset, getBit(source, sourceBit + offset));
    }
}

void CopyBits(QByteArray& destination, int destinationBit, const QByteArray& source, int sourceBit,
              int count) {
    if (destinationBit < 0 || sourceBit < 0) {
        return;
    }
    const qint64 room = qMin(bitsIn(destination) - destinationBit, bitsIn(source) - sourceBit);
    const qint64 copied = qMin<qint64>(room, count);
    if (copied < 1) {
        return;
    }
    // data() first: it may give the destination memory of its own, which a source that is the
    // same array then shares.
    unsigned char* to = bytesOf(destination.data());
    CopyBits(to, destinationBit, bytesOf(source.constData()), sourceBit, static_cast<int>(copied));
}

void RightShiftNBits(unsigned char* data, int length, int bits) {
    if (bits < 1) {
        return;
    }
    const int bytes = bits / 8;
    const int rest = bits % 8;
    for (int i = 0; i < length; ++i) {
        const bool inside = bytes < length - i;
        const bool nextInside = bytes < length - i - 1;
        const unsigned int low = inside ? data[i + bytes] : 0u;
        const unsigned int high = nextInside ? data[i + bytes + 1] : 0u;
        data[i] = static_cast<unsigned char>((low | high << 8) >> rest);
    }
}

QByteArray FitBitArray(const QByteArray& data, quint32 bitCount) {
    const int size = static_cast<int>(NumOfBitsToNumOfBytes(bitCount));
    QByteArray fitted = data.left(size);
    if (fitted.size() < size) {
        fitted.append(QByteArray(size - fitted.size(), '\0'));
    }
    clearUnnecessaryBits(fitted, bitCount);
    return fitted;
}

void clearUnnecessaryBits(QByteArray& data, quint32 bitCount) {
    const qint64 firstByte = bitCount / 8;
    if (firstByte >= data.size()) {
        return;
    }
    unsigned char* bytes = bytesOf(data.data());
    bytes[firstByte] &= static_cast<unsigned char>((1u << bitCount % 8) - 1u);
    for (qint64 i = firstByte + 1; i < data.size(); ++i) {
        bytes[i] = 0;
    }
}

QByteArray ExpandBitsToBytes(const QByteArray& data, quint32 bitCount) {
    const qint64 bits = qMin<qint64>(bitCount, bitsIn(data));
    const int count = static_cast<int>(qMin(bits, kLargestExpansion));
    QByteArray expanded(count, '\0');
    char* out = expanded.data();
    for (int i = 0; i < count; ++i) {
        out[i] = getBit(data.constData(), i) ? 1 : 0;
    }
    return expanded;
}
