#include "common/sizes.h"

#include <gtest/gtest.h>

namespace {

typedef quint32 (*UnitsOf)(quint32);

TEST(Sizes, RoundUpAndNeverOverflow) {
    const struct {
        const char* name;
        UnitsOf unitsOf;
        quint32 perUnit;
    } rows[] = {
        {"bits to bytes", NumOfBitsToNumOfBytes, 8},
        {"bits to words", NumOfBitsToNumOfWords, 16},
        {"bits to double words", NumOfBitsToNumOfDWords, 32},
        {"bytes to words", NumOfBytesToNumOfWords, 2},
        {"bytes to double words", NumOfBytesToNumOfDWords, 4},
        {"bytes to quad words", NumOfBytesToNumOfQuadWords, 8},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(0u, row.unitsOf(0)) << row.name;
        EXPECT_EQ(1u, row.unitsOf(1)) << row.name;
        EXPECT_EQ(1u, row.unitsOf(row.perUnit)) << row.name;
        EXPECT_EQ(2u, row.unitsOf(row.perUnit + 1)) << row.name;
        EXPECT_EQ(100u, row.unitsOf(100 * row.perUnit)) << row.name;
        EXPECT_EQ(Q_UINT64_C(0x100000000) / row.perUnit, row.unitsOf(0xFFFFFFFFu)) << row.name;
    }
}

TEST(Sizes, DataIsFilledToWholeUnits) {
    const struct {
        const char* data;
        const char* to16;
        const char* to32;
        const char* to64;
    } rows[] = {
        {"", "", "", ""},
        {"01", "0100", "01000000", "0100000000000000"},
        {"0102", "0102", "01020000", "0102000000000000"},
        {"0102030405", "010203040500", "0102030405000000", "0102030405000000"},
        {"0102030405060708", "0102030405060708", "0102030405060708", "0102030405060708"},
    };
    for (const auto& row : rows) {
        const QByteArray data = QByteArray::fromHex(row.data);
        EXPECT_STREQ(row.to16, To16bitsData(data).toHex().constData());
        EXPECT_STREQ(row.to32, To32bitsData(data).toHex().constData());
        EXPECT_STREQ(row.to64, To64bitsData(data).toHex().constData());
    }
}

}  // namespace
