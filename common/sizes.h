#ifndef COMMON_SIZES_H
#define COMMON_SIZES_H

#include <QByteArray>
#include <QtGlobal>

// The number of units for so many smaller ones, rounded up: words of 2 bytes, double words of 4,
// quad words of 8. Right for every count, no sum overflows. Any thread.

quint32 NumOfBitsToNumOfBytes(quint32 bits);
quint32 NumOfBitsToNumOfWords(quint32 bits);
quint32 NumOfBitsToNumOfDWords(quint32 bits);
quint32 NumOfBytesToNumOfWords(quint32 bytes);
quint32 NumOfBytesToNumOfDWords(quint32 bytes);
quint32 NumOfBytesToNumOfQuadWords(quint32 bytes);

/// `data` filled up with zero bytes to whole units of 16, 32 or 64 bits.
QByteArray To16bitsData(const QByteArray& data);
QByteArray To32bitsData(const QByteArray& data);
QByteArray To64bitsData(const QByteArray& data);

#endif
