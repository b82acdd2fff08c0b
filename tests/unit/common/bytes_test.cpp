#include "common/bytes.h"

#include <gtest/gtest.h>

#include <cstring>

#include "support/hex_bytes.h"

namespace {

TEST(Bytes, ValuesOfBytes) {
    EXPECT_EQ(0x04030201, QByteArrayToInt(hex("01020304")));
    EXPECT_EQ(-2, QByteArrayToInt(hex("feffffff")));
    EXPECT_EQ(0x0201, QByteArrayToWord(hex("0102")));
    EXPECT_EQ(0xFFFE, QByteArrayToWord(hex("feff")));
    EXPECT_EQ(-2, QByteArrayToShort(hex("feff")));
}

TEST(Bytes, MissingBytesAreZeroAndFurtherOnesUnread) {
    EXPECT_EQ(0, QByteArrayToInt(QByteArray()));
    EXPECT_EQ(0xFF, QByteArrayToInt(hex("ff")));
    EXPECT_EQ(0x030201, QByteArrayToInt(hex("010203")));
    EXPECT_EQ(0x04030201, QByteArrayToInt(hex("0102030405")));
    EXPECT_EQ(0, QByteArrayToWord(QByteArray()));
    EXPECT_EQ(0xFF, QByteArrayToWord(hex("ff")));
    EXPECT_EQ(0xFF, QByteArrayToShort(hex("ff")));
    EXPECT_EQ(0x0201, QByteArrayToShort(hex("010203")));
}

TEST(Bytes, BytesOfValues) {
    EXPECT_EQ("04030201", intToByteArray(0x01020304).toHex().toStdString());
    EXPECT_EQ("ffffffff", intToByteArray(-1).toHex().toStdString());
    EXPECT_EQ("0201", wordToByteArray(0x0102).toHex().toStdString());
    EXPECT_EQ("0080", shortToByteArray(-32768).toHex().toStdString());
}

TEST(Bytes, ThereAndBack) {
    for (qint32 value : {0, 1, -1, 0x7FFFFFFF, -0x7FFFFFFF - 1, 0x12345678}) {
        EXPECT_EQ(value, QByteArrayToInt(intToByteArray(value)));
    }
    for (int value = 0; value <= 0xFFFF; ++value) {
        const quint16 word = static_cast<quint16>(value);
        ASSERT_EQ(word, QByteArrayToWord(wordToByteArray(word)));
        const qint16 number = static_cast<qint16>(word);
        ASSERT_EQ(number, QByteArrayToShort(shortToByteArray(number)));
    }
}

TEST(Bytes, AppendBigEndianUShort) {
    QByteArray data = hex("aa");
    appendBigEndianUShort(data, 0x0102);
    appendBigEndianUShort(data, 0xFFFE);
    EXPECT_EQ("aa0102fffe", data.toHex().toStdString());
}

TEST(Bytes, IsBigEndianTellsThisMachine) {
    const quint16 one = 1;
    unsigned char first = 0;
    std::memcpy(&first, &one, 1);
    EXPECT_EQ(first == 0, isBigEndian());
}

TEST(Bytes, ArraysOfValues) {
    const QVector<quint32> longs = {0x01020304, 0xFFFEFDFC};
    const QVector<quint16> shorts = {0x0102, 0xFFFE, 0};
    EXPECT_EQ("01020304fffefdfc", toBigEndianULongArray(longs).toHex().toStdString());
    EXPECT_EQ("04030201fcfdfeff", toLittleEndianULongArray(longs).toHex().toStdString());
    EXPECT_EQ("0102fffe0000", toBigEndianUShortArray(shorts).toHex().toStdString());
    EXPECT_EQ("0201feff0000", toLittleEndianUShortArray(shorts).toHex().toStdString());
    EXPECT_EQ(longs, fromBigEndianULongArray(hex("01020304fffefdfc")));
    EXPECT_EQ(shorts, fromBigEndianUShortArray(hex("0102fffe0000")));
}

TEST(Bytes, ArraysOfNothingAndOfPieces) {
    EXPECT_TRUE(toBigEndianULongArray(QVector<quint32>()).isEmpty());
    EXPECT_TRUE(toLittleEndianUShortArray(QVector<quint16>()).isEmpty());
    EXPECT_TRUE(fromBigEndianULongArray(hex("010203")).isEmpty());
    EXPECT_EQ(QVector<quint32>({0x01020304}), fromBigEndianULongArray(hex("01020304050607")));
    EXPECT_TRUE(fromBigEndianUShortArray(hex("01")).isEmpty());
    EXPECT_EQ(QVector<quint16>({0x0102}), fromBigEndianUShortArray(hex("010203")));
}

TEST(Bytes, ReverseACopy) {
    const QByteArray data = hex("010203");
    EXPECT_EQ("030201", reverseArray(data).toHex().toStdString());
    EXPECT_EQ("010203", data.toHex().toStdString());
    EXPECT_EQ("04030201", reverseArray(hex("01020304")).toHex().toStdString());
    EXPECT_EQ("01", reverseArray(hex("01")).toHex().toStdString());
    EXPECT_TRUE(reverseArray(QByteArray()).isEmpty());
}

TEST(Bytes, ReverseInPlace) {
    unsigned char data[] = {1, 2, 3, 4};
    ReverseArray(data, 3);
    EXPECT_EQ(hex("03020104"), QByteArray(reinterpret_cast<char*>(data), 4));
    ReverseArray(data, 1);
    ReverseArray(data, 0);
    ReverseArray(data, -4);
    ReverseArray(nullptr, 0);
    EXPECT_EQ(hex("03020104"), QByteArray(reinterpret_cast<char*>(data), 4));
}

TEST(Bytes, Rotate) {
    const struct {
        int length;
        int count;
        const char* result;
    } rows[] = {
        {5, 0, "0102030405"},
        {5, 1, "0203040501"},
        {5, 4, "0501020304"},
        {5, 5, "0102030405"},
        {5, 7, "0304050102"},
        {5, -1, "0501020304"},
        {5, -7, "0405010203"},
        {3, 1, "0203010405"},
        {1, 3, "0102030405"},
        {0, 3, "0102030405"},
        {-2, 3, "0102030405"},
        {5, 0x7FFFFFFF, "0304050102"},
        {5, -0x7FFFFFFF - 1, "0304050102"},
    };
    for (const auto& row : rows) {
        unsigned char data[] = {1, 2, 3, 4, 5};
        RotateArray(data, row.length, row.count);
        EXPECT_STREQ(row.result, QByteArray(reinterpret_cast<char*>(data), 5).toHex().constData())
            << row.length << " " << row.count;
    }
}

}  // namespace
