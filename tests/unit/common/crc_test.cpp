#include "common/crc.h"

#include <gtest/gtest.h>

namespace {

// The published check values are the CRCs of these nine characters.
const char kCheckText[] = "123456789";

template <typename Crc>
Crc over(Crc (*step)(Crc, unsigned char), Crc initial) {
    Crc crc = initial;
    for (const char* c = kCheckText; *c != '\0'; ++c) {
        crc = step(crc, static_cast<unsigned char>(*c));
    }
    return crc;
}

TEST(Crc, CheckValuesOfTheSixteenBitCrcs) {
    const struct {
        const char* name;
        quint16 (*step)(quint16, unsigned char);
        quint16 initial;
        quint16 finalXor;
        quint16 check;
    } rows[] = {
        {"CRC-16/ARC", update_crc_16, 0x0000, 0x0000, 0xBB3D},
        {"CRC-16/MODBUS", update_crc_16, 0xFFFF, 0x0000, 0x4B37},
        {"CRC-16/USB", update_crc_16, 0xFFFF, 0xFFFF, 0xB4C8},
        {"CRC-16/XMODEM", update_crc_ccitt, 0x0000, 0x0000, 0x31C3},
        {"CRC-16/IBM-3740", update_crc_ccitt, 0xFFFF, 0x0000, 0x29B1},
        {"CRC-16/SPI-FUJITSU", update_crc_ccitt, 0x1D0F, 0x0000, 0xE5CC},
        {"CRC-16/GENIBUS", update_crc_ccitt, 0xFFFF, 0xFFFF, 0xD64E},
        {"CRC-16/KERMIT", update_crc_kermit, 0x0000, 0x0000, 0x2189},
        {"CRC-16/IBM-SDLC", update_crc_kermit, 0xFFFF, 0xFFFF, 0x906E},
        {"CRC-16/DNP", update_crc_dnp, 0x0000, 0xFFFF, 0xEA82},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.check, over(row.step, row.initial) ^ row.finalXor) << row.name;
    }
}

TEST(Crc, CheckValuesOfTheThirtyTwoBitCrcs) {
    EXPECT_EQ(0xCBF43926u, over(update_crc_32, 0xFFFFFFFFu) ^ 0xFFFFFFFFu);  // CRC-32/ISO-HDLC
    EXPECT_EQ(0x340BC6D9u, over(update_crc_32, 0xFFFFFFFFu));                // CRC-32/JAMCRC
}

TEST(Crc, CheckValueOfSick) {
    quint16 crc = 0;
    unsigned char previous = 0;
    for (const char* c = kCheckText; *c != '\0'; ++c) {
        crc = update_crc_sick(crc, static_cast<unsigned char>(*c), previous);
        previous = static_cast<unsigned char>(*c);
    }
    EXPECT_EQ(0xA656, crc);
    EXPECT_EQ(0x56A6, (crc << 8 | crc >> 8) & 0xFFFF);
}

/// One step by the definition, bit by bit.
quint32 reflectedByBits(quint32 crc, unsigned char byte, quint32 polynomial) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) {
        crc = crc & 1 ? crc >> 1 ^ polynomial : crc >> 1;
    }
    return crc;
}

quint16 forwardByBits(quint16 crc, unsigned char byte, quint16 polynomial) {
    unsigned int value = crc ^ static_cast<unsigned int>(byte) << 8;
    for (int bit = 0; bit < 8; ++bit) {
        value = value & 0x8000 ? value << 1 ^ polynomial : value << 1;
    }
    return static_cast<quint16>(value);
}

TEST(Crc, EveryByteStepsByTheDefinition) {
    const quint16 words[] = {0x0000, 0x00FF, 0xFF00, 0xFFFF, 0x8001, 0x1234};
    const quint32 doubles[] = {0x00000000u, 0xFFFFFFFFu, 0x80000001u, 0x12345678u};
    for (int value = 0; value < 256; ++value) {
        const unsigned char byte = static_cast<unsigned char>(value);
        for (quint16 crc : words) {
            EXPECT_EQ(reflectedByBits(crc, byte, 0xA001), update_crc_16(crc, byte));
            EXPECT_EQ(reflectedByBits(crc, byte, 0x8408), update_crc_kermit(crc, byte));
            EXPECT_EQ(reflectedByBits(crc, byte, 0xA6BC), update_crc_dnp(crc, byte));
            EXPECT_EQ(forwardByBits(crc, byte, 0x1021), update_crc_ccitt(crc, byte));
        }
        for (quint32 crc : doubles) {
            EXPECT_EQ(reflectedByBits(crc, byte, 0xEDB88320u), update_crc_32(crc, byte));
        }
    }
}

}  // namespace
