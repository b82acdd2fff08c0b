#include "common/crc.h"

namespace {

const quint16 kSickPolynomial = 0x8005;

template <typename Crc>
struct CrcTable {
    Crc of[256];
};

/// Steps of all byte values for a CRC that shifts towards its least significant bit.
template <typename Crc>
constexpr CrcTable<Crc> reflectedTable(Crc polynomial) {
    CrcTable<Crc> table = {};
    for (unsigned int byte = 0; byte < 256; ++byte) {
        Crc crc = static_cast<Crc>(byte);
        for (int bit = 0; bit < 8; ++bit) {
            crc = static_cast<Crc>(crc & 1u ? crc >> 1 ^ polynomial : crc >> 1);
        }
        table.of[byte] = crc;
    }
    return table;
}

/// The same for a 16-bit CRC that shifts towards its most significant bit.
constexpr CrcTable<quint16> forwardTable(quint16 polynomial) {
    CrcTable<quint16> table = {};
    for (unsigned int byte = 0; byte < 256; ++byte) {
        quint16 crc = static_cast<quint16>(byte << 8);
        for (int bit = 0; bit < 8; ++bit) {
            crc = static_cast<quint16>(crc & 0x8000u ? crc << 1 ^ polynomial : crc << 1);
        }
        table.of[byte] = crc;
    }
    return table;
}

constexpr CrcTable<quint16> kCrc16 = reflectedTable<quint16>(0xA001);
constexpr CrcTable<quint16> kKermit = reflectedTable<quint16>(0x8408);
constexpr CrcTable<quint16> kDnp = reflectedTable<quint16>(0xA6BC);
constexpr CrcTable<quint32> kCrc32 = reflectedTable<quint32>(0xEDB88320u);
constexpr CrcTable<quint16> kCcitt = forwardTable(0x1021);

template <typename Crc>
Crc reflectedStep(const CrcTable<Crc>& table, Crc crc, unsigned char byte) {
    return static_cast<Crc>(crc >> 8 ^ table.of[(crc ^ byte) & 0xFFu]);
}

}  // namespace

quint16 update_crc_16(quint16 crc, unsigned char byte) {
    return reflectedStep(kCrc16, crc, byte);
}

quint16 update_crc_ccitt(quint16 crc, unsigned char byte) {
    return static_cast<quint16>(crc << 8 ^ kCcitt.of[(crc >> 8 ^ byte) & 0xFF]);
}

quint16 update_crc_kermit(quint16 crc, unsigned char byte) {
    return reflectedStep(kKermit, crc, byte);
}

quint16 update_crc_dnp(quint16 crc, unsigned char byte) {
    return reflectedStep(kDnp, crc, byte);
}

quint32 update_crc_32(quint32 crc, unsigned char byte) {
    return reflectedStep(kCrc32, crc, byte);
}

quint16 update_crc_sick(quint16 crc, unsigned char byte, unsigned char previousByte) {
    const unsigned int shifted = crc & 0x8000u ? crc << 1 ^ kSickPolynomial : crc << 1;
    return static_cast<quint16>(shifted ^ byte ^ previousByte << 8);
}
