#ifndef COMMON_BYTES_H
#define COMMON_BYTES_H

#include <QByteArray>
#include <QVector>
#include <QtGlobal>

// Values to bytes and back. The bytes of a single value are least significant first, as the
// runtime's value arrays have them; where another order is meant, the name says it. Everything
// here is free of state and may be called from any thread.

/// The value of the first 4 (int) or 2 bytes; bytes that are missing count as zero, bytes that
/// are too many are ignored.
qint32 QByteArrayToInt(const QByteArray& data);
quint16 QByteArrayToWord(const QByteArray& data);
qint16 QByteArrayToShort(const QByteArray& data);

/// The value's 4 (int) or 2 bytes.
QByteArray intToByteArray(qint32 value);
QByteArray wordToByteArray(quint16 value);
QByteArray shortToByteArray(qint16 value);

/// Appends the high byte, then the low byte.
void appendBigEndianUShort(QByteArray& data, quint16 value);

/// Whether this machine keeps the most significant byte first.
bool isBigEndian();

/// Arrays of values as bytes, 4 (ULong) or 2 (UShort) each, in the order the name says.
QByteArray toBigEndianULongArray(const QVector<quint32>& values);
QByteArray toBigEndianUShortArray(const QVector<quint16>& values);
QByteArray toLittleEndianULongArray(const QVector<quint32>& values);
QByteArray toLittleEndianUShortArray(const QVector<quint16>& values);

/// The values of such bytes. Bytes at the end that make no whole value are left out.
QVector<quint32> fromBigEndianULongArray(const QByteArray& data);
QVector<quint16> fromBigEndianUShortArray(const QByteArray& data);

/// A copy with the bytes in opposite order.
QByteArray reverseArray(const QByteArray& data);
/// Turns the order of `length` bytes round in place; a length below 2 changes nothing.
void ReverseArray(unsigned char* data, int length);

/// Moves `length` bytes round by `count` places in place: byte `count` becomes byte 0. Negative
/// counts move the other way; counts beyond the length go round.
void RotateArray(unsigned char* data, int length, int count);

#endif
