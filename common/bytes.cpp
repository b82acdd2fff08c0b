#include "common/bytes.h"

#include <QtEndian>
#include <algorithm>

namespace {

template <typename Value>
Value valueOf(const QByteArray& data) {
    const QByteArray whole = data.left(sizeof(Value)) + QByteArray(sizeof(Value), '\0');
    return qFromLittleEndian<Value>(reinterpret_cast<const uchar*>(whole.constData()));
}

template <typename Value>
QByteArray bytesOf(Value value) {
    QByteArray data(sizeof(Value), '\0');
    qToLittleEndian<Value>(value, reinterpret_cast<uchar*>(data.data()));
    return data;
}

template <typename Value>
QByteArray bytesOfAll(const QVector<Value>& values, bool bigEndian) {
    QByteArray data(values.size() * static_cast<int>(sizeof(Value)), '\0');
    uchar* out = reinterpret_cast<uchar*>(data.data());
    for (int i = 0; i < values.size(); ++i, out += sizeof(Value)) {
        if (bigEndian) {
            qToBigEndian<Value>(values.at(i), out);
        } else {
            qToLittleEndian<Value>(values.at(i), out);
        }
    }
    return data;
}

template <typename Value>
QVector<Value> valuesOfBigEndian(const QByteArray& data) {
    QVector<Value> values(data.size() / static_cast<int>(sizeof(Value)));
    const uchar* in = reinterpret_cast<const uchar*>(data.constData());
    for (int i = 0; i < values.size(); ++i, in += sizeof(Value)) {
        values[i] = qFromBigEndian<Value>(in);
    }
    return values;
}

}  // namespace

qint32 QByteArrayToInt(const QByteArray& data) {
    return valueOf<qint32>(data);
}
quint16 QByteArrayToWord(const QByteArray& data) {
    return valueOf<quint16>(data);
}
qint16 QByteArrayToShort(const QByteArray& data) {
    return valueOf<qint16>(data);
}

QByteArray intToByteArray(qint32 value) {
    return bytesOf<qint32>(value);
}
QByteArray wordToByteArray(quint16 value) {
    return bytesOf<quint16>(value);
}
QByteArray shortToByteArray(qint16 value) {
    return bytesOf<qint16>(value);
}

void appendBigEndianUShort(QByteArray& data, quint16 value) {
    data.append(static_cast<char>(value >> 8));
    data.append(static_cast<char>(value & 0xFF));
}

bool isBigEndian() {
    return Q_BYTE_ORDER == Q_BIG_ENDIAN;
}

QByteArray toBigEndianULongArray(const QVector<quint32>& values) {
    return bytesOfAll(values, true);
}

QByteArray toBigEndianUShortArray(const QVector<quint16>& values) {
    return bytesOfAll(values, true);
}

QByteArray toLittleEndianULongArray(const QVector<quint32>& values) {
    return bytesOfAll(values, false);
}

QByteArray toLittleEndianUShortArray(const QVector<quint16>& values) {
    return bytesOfAll(values, false);
}

QVector<quint32> fromBigEndianULongArray(const QByteArray& data) {
    return valuesOfBigEndian<quint32>(data);
}

QVector<quint16> fromBigEndianUShortArray(const QByteArray& data) {
    return valuesOfBigEndian<quint16>(data);
}

QByteArray reverseArray(const QByteArray& data) {
    QByteArray reversed = data;
    ReverseArray(reinterpret_cast<unsigned char*>(reversed.data()), reversed.size());
    return reversed;
}

void ReverseArray(unsigned char* data, int length) {
    if (length > 1) {
        std::reverse(data, data + length);
    }
}

void RotateArray(unsigned char* data, int length, int count) {
    if (length < 2) {
        return;
    }
    const int places = count % length;
    std::rotate(data, data + (places < 0 ? places + length : places), data + length);
}
