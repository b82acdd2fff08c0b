#include "common/bits.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "support/hex_bytes.h"

namespace {

unsigned char* bytesOf(QByteArray* data) {
    return reinterpret_cast<unsigned char*>(data->data());
}

// --- bits of a value

template <typename Value>
class BitsOfAValue : public ::testing::Test {};
typedef ::testing::Types<quint8, quint16, quint32> Values;
TYPED_TEST_SUITE(BitsOfAValue, Values);

TYPED_TEST(BitsOfAValue, SetAndClearEachBit) {
    const int width = static_cast<int>(8 * sizeof(TypeParam));
    for (int bit = 0; bit < width; ++bit) {
        TypeParam value = 0;
        setBit(value, bit);
        EXPECT_EQ(Q_UINT64_C(1) << bit, value) << bit;
        for (int other = 0; other < width; ++other) {
            EXPECT_EQ(other == bit, getBit(value, other)) << bit << " " << other;
        }
        value = static_cast<TypeParam>(~TypeParam(0));
        clearBit(value, bit);
        EXPECT_EQ(static_cast<TypeParam>(~(Q_UINT64_C(1) << bit)), value) << bit;
        EXPECT_FALSE(getBit(value, bit)) << bit;
    }
}

TYPED_TEST(BitsOfAValue, BitsThatItDoesNotHave) {
    const int width = static_cast<int>(8 * sizeof(TypeParam));
    for (int bit : {-1, width, 64, 65, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        TypeParam none = 0;
        TypeParam all = static_cast<TypeParam>(~TypeParam(0));
        setBit(none, bit);
        EXPECT_EQ(0u, none) << bit;
        clearBit(all, bit);
        EXPECT_EQ(static_cast<TypeParam>(~TypeParam(0)), all) << bit;
        EXPECT_FALSE(getBit(all, bit)) << bit;
    }
}

// --- bits of bytes

TEST(BitsOfBytes, ArrayBitsOutsideAreIgnored) {
    QByteArray data = hex("ffff");
    for (int index : {-1, 16, 17, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        EXPECT_FALSE(getBit(data, index)) << index;
        setBit(data, index, false);
        EXPECT_EQ("ffff", data.toHex().toStdString()) << index;
    }
    QByteArray empty;
    setBit(empty, 0, true);
    EXPECT_FALSE(getBit(empty, 0));
    EXPECT_TRUE(empty.isEmpty());
}

TEST(BitsOfBytes, LeastSignificantBitFirst) {
    QByteArray data = hex("0000");
    setBit(data, 0, true);
    setBit(data, 9, true);
    setBit(data, 15, true);
    EXPECT_EQ("0182", data.toHex().toStdString());
    EXPECT_TRUE(getBit(data, 9));
    EXPECT_FALSE(getBit(data, 8));
    setBit(data, 9, false);
    setBit(data, 8, false);
    EXPECT_EQ("0180", data.toHex().toStdString());
}

TEST(BitsOfBytes, CopiesOfAnArrayKeepTheirBits) {
    QByteArray data = hex("00");
    const QByteArray copy = data;
    setBit(data, 3, true);
    EXPECT_EQ("08", data.toHex().toStdString());
    EXPECT_EQ("00", copy.toHex().toStdString());
}

TEST(BitsOfBytes, Pointers) {
    unsigned char bytes[2] = {0, 0};
    setBit(bytes, 10, true);
    EXPECT_EQ(4, bytes[1]);
    EXPECT_TRUE(getBit(static_cast<const unsigned char*>(bytes), 10));
    EXPECT_FALSE(getBit(static_cast<const unsigned char*>(bytes), -6));
    setBit(bytes, -1, true);
    EXPECT_EQ(0, bytes[0]);
    setBit(bytes, 10, false);
    EXPECT_EQ(0, bytes[1]);

    // A zero byte does not end characters: they are bytes like any others.
    char chars[2] = {0, 0};
    setBit(chars, 15, true);
    EXPECT_EQ('\x80', chars[1]);
    EXPECT_TRUE(getBit(static_cast<const char*>(chars), 15));
    EXPECT_FALSE(getBit(static_cast<const char*>(chars), 14));
}

// --- CopyBits

TEST(CopyBits, NothingToCopy) {
    unsigned char to[1] = {0xA5};
    const unsigned char from[1] = {0xFF};
    CopyBits(to, 0, from, 0, 0);
    CopyBits(to, 0, from, 0, -1);
    CopyBits(to, -1, from, 0, 4);
    CopyBits(to, 0, from, -1, 4);
    EXPECT_EQ(0xA5, to[0]);
}

TEST(CopyBits, LeavesTheBitsAround) {
    unsigned char to[3] = {0xFF, 0xFF, 0xFF};
    const unsigned char from[2] = {0x00, 0x00};
    CopyBits(to, 6, from, 3, 11);  // bits 6 to 16
    EXPECT_EQ(0x3F, to[0]);
    EXPECT_EQ(0x00, to[1]);
    EXPECT_EQ(0xFE, to[2]);
}

TEST(CopyBits, OverlappingAsIfThroughASecondBuffer) {
    std::mt19937 random(1);
    for (int round = 0; round < 2000; ++round) {
        QByteArray data(6, '\0');
        for (int i = 0; i < data.size(); ++i) {
            data[i] = static_cast<char>(random());
        }
        const int count = static_cast<int>(random() % 49);
        const int to = static_cast<int>(random() % (49 - count));
        const int from = static_cast<int>(random() % (49 - count));
        std::vector<bool> expected(48);
        for (int i = 0; i < 48; ++i) {
            expected[i] = getBit(data, i >= to && i < to + count ? from + i - to : i);
        }
        unsigned char* bytes = bytesOf(&data);
        CopyBits(bytes, to, bytes, from, count);
        for (int i = 0; i < 48; ++i) {
            ASSERT_EQ(expected[i], getBit(data, i)) << to << " " << from << " " << count;
        }
    }
}

TEST(CopyBits, ArraysAreCutToWhatBothHold) {
    // A byte of ones lies after the source's two: it must not enter.
    const QByteArray from = QByteArray::fromRawData("\xFF\xFF\xFF", 2);
    const struct {
        int destinationBit, sourceBit, count;
        const char* result;
    } rows[] = {
        {0, 0, 8, "ff00"},          {0, 0, 0x7FFFFFFF, "ffff"}, {12, 0, 100, "00f0"},
        {0, 12, 100, "0f00"},       {16, 0, 1, "0000"},         {0, 16, 1, "0000"},
        {0x7FFFFFFF, 0, 5, "0000"}, {0, 0x7FFFFFFF, 5, "0000"}, {-1, 0, 5, "0000"},
        {0, -1, 5, "0000"},         {0, 0, -5, "0000"},         {3, 9, 2, "1800"},
    };
    for (const auto& row : rows) {
        QByteArray to = hex("0000");
        CopyBits(to, row.destinationBit, from, row.sourceBit, row.count);
        EXPECT_STREQ(row.result, to.toHex().constData())
            << row.destinationBit << " " << row.sourceBit << " " << row.count;
        EXPECT_EQ('\0', to.constData()[to.size()]) << row.destinationBit;
    }
}

TEST(CopyBits, AnArrayOntoItself) {
    QByteArray data = hex("8100");
    const QByteArray copy = data;
    CopyBits(data, 8, data, 0, 8);
    EXPECT_EQ("8181", data.toHex().toStdString());
    EXPECT_EQ("8100", copy.toHex().toStdString());
}

// --- shifts and sizes

TEST(RightShiftNBits, MovesBitsDown) {
    // As one number, least significant byte first: 0xF0C381.
    const struct {
        int bits;
        const char* result;
    } rows[] = {
        {-1, "81c3f0"}, {0, "81c3f0"},  {1, "c06178"},    {4, "380c0f"},          {7, "87e101"},
        {8, "c3f000"},  {9, "617800"},  {16, "f00000"},   {20, "0f0000"},         {23, "010000"},
        {24, "000000"}, {25, "000000"}, {1000, "000000"}, {0x7FFFFFFF, "000000"},
    };
    for (const auto& row : rows) {
        QByteArray data = hex("81c3f0ffffff");  // the bytes after the three must not enter
        RightShiftNBits(bytesOf(&data), 3, row.bits);
        EXPECT_STREQ(row.result, data.left(3).toHex().constData()) << row.bits;
        EXPECT_STREQ("ffffff", data.mid(3).toHex().constData()) << row.bits;
    }
}

TEST(RightShiftNBits, NoBytes) {
    unsigned char byte = 0xFF;
    RightShiftNBits(&byte, 0, 1);
    RightShiftNBits(&byte, -1, 1);
    EXPECT_EQ(0xFF, byte);
}

TEST(FitBitArray, CutsFillsAndClears) {
    const struct {
        const char* data;
        quint32 bits;
        const char* result;
    } rows[] = {
        {"ffff", 0, ""},     {"ffff", 1, "01"},    {"ffff", 8, "ff"},
        {"ffff", 9, "ff01"}, {"ffff", 16, "ffff"}, {"ffff", 17, "ffff00"},
        {"", 3, "00"},       {"", 0, ""},          {"ffff", 33, "ffff000000"},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(row.result, FitBitArray(hex(row.data), row.bits).toHex().constData())
            << row.data << " " << row.bits;
    }
}

TEST(ClearUnnecessaryBits, KeepsTheSize) {
    const struct {
        quint32 bits;
        const char* result;
    } rows[] = {
        {0, "000000"},  {1, "010000"},  {7, "7f0000"},  {8, "ff0000"},           {12, "ff0f00"},
        {23, "ffff7f"}, {24, "ffffff"}, {25, "ffffff"}, {0xFFFFFFFFu, "ffffff"},
    };
    for (const auto& row : rows) {
        QByteArray data = hex("ffffff");
        clearUnnecessaryBits(data, row.bits);
        EXPECT_STREQ(row.result, data.toHex().constData()) << row.bits;
    }
    QByteArray empty;
    clearUnnecessaryBits(empty, 0);
    EXPECT_TRUE(empty.isEmpty());
}

TEST(ExpandBitsToBytes, OneByteABit) {
    EXPECT_EQ("010001000000000101", ExpandBitsToBytes(hex("85ff"), 9).toHex().toStdString());
    EXPECT_EQ("010001", ExpandBitsToBytes(hex("85"), 3).toHex().toStdString());
    EXPECT_EQ("", ExpandBitsToBytes(hex("85"), 0).toHex().toStdString());
    EXPECT_EQ(16, ExpandBitsToBytes(hex("85ff"), 0xFFFFFFFFu).size());
    EXPECT_EQ(0, ExpandBitsToBytes(QByteArray(), 8).size());
}

TEST(BitsOfWords, EachBitAloneOfEachWidth) {
    for (int bit = 0; bit < 32; ++bit) {
        quint32 all = 0xFFFFFFFF;
        clearBit(all, bit);
        EXPECT_EQ(0xFFFFFFFF - (Q_UINT64_C(1) << bit), all) << bit;
        quint32 alone = 1u << bit;
        EXPECT_TRUE(getBit(alone, bit)) << bit;
        clearBit(alone, bit);
        EXPECT_EQ(0u, alone) << bit;
        EXPECT_FALSE(getBit(alone, bit)) << bit;
    }
    for (int bit = 0; bit < 16; ++bit) {
        quint16 alone = static_cast<quint16>(1u << bit);
        EXPECT_TRUE(getBit(alone, bit)) << bit;
        clearBit(alone, bit);
        EXPECT_EQ(0u, alone) << bit;
        EXPECT_FALSE(getBit(alone, bit)) << bit;
    }
    for (int bit = 0; bit < 8; ++bit) {
        quint8 alone = static_cast<quint8>(1u << bit);
        EXPECT_TRUE(getBit(alone, bit)) << bit;
        clearBit(alone, bit);
        EXPECT_EQ(0u, alone) << bit;
        EXPECT_FALSE(getBit(alone, bit)) << bit;
    }
}

}  // namespace
