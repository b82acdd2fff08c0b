#ifndef COMMON_CHECKSUMS_H
#define COMMON_CHECKSUMS_H

#include <QtGlobal>

// Checks over `length` bytes, 0 for a length below 1. Any thread.

/// Sum of the bytes modulo 256.
quint8 UInt8CheckSum(const void* data, int length);
/// Sum of the bytes modulo 65536.
quint16 UShortCheckSum(const void* data, int length);
/// Exclusive or of the bytes.
quint8 XorUInt8CheckSum(const void* data, int length);
/// CRC-16/ARC: update_crc_16() over the bytes from the initial value 0.
quint16 CRC16Calculate(const void* data, int length);

#endif
