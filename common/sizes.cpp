#include "common/sizes.h"

namespace {

quint32 unitsFor(quint32 count, quint32 perUnit) {
    return count / perUnit + (count % perUnit == 0 ? 0 : 1);
}

QByteArray filledToUnits(const QByteArray& data, int unit) {
    const int missing = (unit - data.size() % unit) % unit;
    return data + QByteArray(missing, '\0');
}

}  // namespace

quint32 NumOfBitsToNumOfBytes(quint32 bits) {
    return unitsFor(bits, 8);
}
quint32 NumOfBitsToNumOfWords(quint32 bits) {
    return unitsFor(bits, 16);
}
quint32 NumOfBitsToNumOfDWords(quint32 bits) {
    return unitsFor(bits, 32);
}
quint32 NumOfBytesToNumOfWords(quint32 bytes) {
    return unitsFor(bytes, 2);
}
quint32 NumOfBytesToNumOfDWords(quint32 bytes) {
    return unitsFor(bytes, 4);
}
quint32 NumOfBytesToNumOfQuadWords(quint32 bytes) {
    return unitsFor(bytes, 8);
}

QByteArray To16bitsData(const QByteArray& data) {
    return filledToUnits(data, 2);
}
QByteArray To32bitsData(const QByteArray& data) {
    return filledToUnits(data, 4);
}
QByteArray To64bitsData(const QByteArray& data) {
    return filledToUnits(data, 8);
}
