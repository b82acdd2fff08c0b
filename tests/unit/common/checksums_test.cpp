#include "common/checksums.h"

#include <gtest/gtest.h>

#include <QByteArray>

namespace {

TEST(Checksums, NothingIsZero) {
    for (int length : {0, -1, -0x7FFFFFFF - 1}) {
        EXPECT_EQ(0, UInt8CheckSum("x", length)) << length;
        EXPECT_EQ(0, UShortCheckSum("x", length)) << length;
        EXPECT_EQ(0, XorUInt8CheckSum("x", length)) << length;
        EXPECT_EQ(0, CRC16Calculate("x", length)) << length;
        EXPECT_EQ(0, UInt8CheckSum(nullptr, length)) << length;
    }
}

TEST(Checksums, Sums) {
    EXPECT_EQ(0x01, UInt8CheckSum("\xFF\x02", 2));
    EXPECT_EQ(0x0101, UShortCheckSum("\xFF\x02", 2));
    EXPECT_EQ(0xFF, UInt8CheckSum("\xFF\x02", 1));
    // 300 bytes of 0xFF: 76500 = 0x12AD4
    const QByteArray many(300, '\xFF');
    EXPECT_EQ(0xD4, UInt8CheckSum(many.constData(), many.size()));
    EXPECT_EQ(0x2AD4, UShortCheckSum(many.constData(), many.size()));
}

TEST(Checksums, ExclusiveOr) {
    EXPECT_EQ(0xF0, XorUInt8CheckSum("\xFF\x0F", 2));
    EXPECT_EQ(0xFF, XorUInt8CheckSum("\xFF\x0F", 1));
    EXPECT_EQ(0x00, XorUInt8CheckSum("\x5A\x5A", 2));
}

TEST(Checksums, Crc16) {
    EXPECT_EQ(0xBB3D, CRC16Calculate("123456789", 9));  // check value of CRC-16/ARC
    EXPECT_EQ(0xC0C1, CRC16Calculate("\x01", 1));
    EXPECT_EQ(0, CRC16Calculate("\0\0\0", 3));
}

}  // namespace
