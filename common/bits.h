#ifndef COMMON_BITS_H
#define COMMON_BITS_H

#include <QByteArray>
#include <QtGlobal>

// Bits are numbered from 0, least significant first. In a row of bytes bit i is bit i mod 8 of
// byte i / 8. Everything here is free of state and may be called from any thread.

/// Sets one bit of `value`. A bit number that the value does not have changes nothing.
void setBit(quint8& value, int bit);
void setBit(quint16& value, int bit);
void setBit(quint32& value, int bit);

/// Clears one bit of `value`. A bit number that the value does not have changes nothing.
void clearBit(quint8& value, int bit);
void clearBit(quint16& value, int bit);
void clearBit(quint32& value, int bit);

/// Whether the bit is set. A bit that the value does not have is not set.
bool getBit(quint8 value, int bit);
bool getBit(quint16 value, int bit);
bool getBit(quint32 value, int bit);

/// One bit of an array; a bit outside the array is not set, respectively not changed.
bool getBit(const QByteArray& data, int bitIndex);
void setBit(QByteArray& data, int bitIndex, bool on);

/// One bit of bytes whose number only the caller knows: `data` must contain byte bitIndex / 8.
/// A negative index is not set, respectively changes nothing.
bool getBit(const unsigned char* data, int bitIndex);
bool getBit(const char* data, int bitIndex);
void setBit(unsigned char* data, int bitIndex, bool on);
void setBit(char* data, int bitIndex, bool on);

/// Copies `count` bits to bit `destinationBit` of `destination`, leaving the bits around them.
/// Source and destination may overlap. Negative positions or counts copy nothing; otherwise both
/// must contain the bits named.
void CopyBits(unsigned char* destination, int destinationBit, const unsigned char* source,
              int sourceBit, int count);
/// The same between arrays. Bits outside either array are not copied.
void CopyBits(QByteArray& destination, int destinationBit, const QByteArray& source, int sourceBit,
              int count);

/// Moves the bits of `length` bytes down by `bits`: bit i takes bit i + bits, zeros fill
/// the end. A shift below 1 changes nothing.
void RightShiftNBits(unsigned char* data, int length, int bits);

/// `data` as exactly the bytes that `bitCount` bits need: cut or filled with zeros, the bits
/// after the last one cleared.
QByteArray FitBitArray(const QByteArray& data, quint32 bitCount);

/// Clears every bit from `bitCount` on; the size stays.
void clearUnnecessaryBits(QByteArray& data, quint32 bitCount);

/// One byte, 0 or 1, for each of the first `bitCount` bits, for no more than the array contains.
QByteArray ExpandBitsToBytes(const QByteArray& data, quint32 bitCount);

#endif
