#ifndef COMMON_CRC_H
#define COMMON_CRC_H

#include <QtGlobal>

// One byte's step of a cyclic redundancy check: takes the CRC so far, returns the CRC with the
// byte. The initial value and what is done to the last CRC belong to the caller; each step names
// the variants of the CRC catalogue that it makes, with their check value (the CRC of the nine
// characters "123456789"). Any thread.

/// Polynomial 0x8005, reflected 0xA001.
/// CRC-16/ARC: initial 0, check 0xBB3D. CRC-16/MODBUS: initial 0xFFFF, check 0x4B37.
quint16 update_crc_16(quint16 crc, unsigned char byte);

/// Polynomial 0x1021, most significant bit first.
/// CRC-16/XMODEM: initial 0, check 0x31C3. CRC-16/IBM-3740 (also called CCITT-FALSE): initial
/// 0xFFFF, check 0x29B1. CRC-16/SPI-FUJITSU: initial 0x1D0F, check 0xE5CC.
quint16 update_crc_ccitt(quint16 crc, unsigned char byte);

/// Polynomial 0x1021, reflected 0x8408.
/// CRC-16/KERMIT: initial 0, check 0x2189.
quint16 update_crc_kermit(quint16 crc, unsigned char byte);

/// Polynomial 0x3D65, reflected 0xA6BC.
/// CRC-16/DNP: initial 0, last CRC inverted, check 0xEA82 (on the line low byte first).
quint16 update_crc_dnp(quint16 crc, unsigned char byte);

/// Polynomial 0x04C11DB7, reflected 0xEDB88320.
/// CRC-32/ISO-HDLC: initial 0xFFFFFFFF, last CRC inverted, check 0xCBF43926.
quint32 update_crc_32(quint32 crc, unsigned char byte);

/// Polynomial 0x8005, most significant bit first: shifts once a byte and mixes in the byte
/// together with the one before it (0 for the first).
/// SICK: initial 0, bytes of the last CRC swapped, check 0x56A6 (0xA656 before the swap).
quint16 update_crc_sick(quint16 crc, unsigned char byte, unsigned char previousByte);

#endif
