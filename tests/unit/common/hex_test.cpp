#include "common/hex.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "unit/common/debug_lines.h"

namespace {

/// The text in memory of exactly its size: a byte read after it shows under the sanitizer.
unsigned int value(const char* text) {
    const size_t length = std::strlen(text);
    const std::unique_ptr<char[]> exact(new char[length]);
    std::memcpy(exact.get(), text, length);
    return HexToUInt(exact.get(), static_cast<int>(length));
}

TEST(HexToUInt, BadTextIsZero) {
    for (const char* text :
         {"", "g", "0x", "0X", "x1", "0y1", " 1", "1 ", "-1", "+1", "12g4", "1.0", "0x0x1", "00x1",
          "100000000", "0xFFFFFFFFF", "FFFFFFFFFFFFFFFFF"}) {
        EXPECT_EQ(0u, value(text)) << text;
    }
    EXPECT_EQ(0u, HexToUInt(nullptr, 4));
    EXPECT_EQ(0u, HexToUInt("12", -1));
    const char withZero[] = {'1', '\0', '2'};
    EXPECT_EQ(0u, HexToUInt(withZero, 3));
}

TEST(HexToUInt, Numbers) {
    const struct {
        const char* text;
        unsigned int value;
    } rows[] = {
        {"0", 0},
        {"1", 1},
        {"F", 15},
        {"aF", 0xAF},
        {"0x0", 0},
        {"0x1234", 0x1234},
        {"0Xabcd", 0xABCD},
        {"00000000001", 1},
        {"FFFFFFFF", 0xFFFFFFFFu},
        {"0xFFFFFFFF", 0xFFFFFFFFu},
        {"0x89abcdef", 0x89ABCDEFu},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.value, value(row.text)) << row.text;
    }
}

TEST(HexToUInt, ReadsNoFurtherThanTheLength) {
    EXPECT_EQ(0x12u, HexToUInt("1234", 2));
    EXPECT_EQ(0u, HexToUInt("0x12", 1));
    EXPECT_EQ(0u, HexToUInt("0x12", 2));
    EXPECT_EQ(1u, HexToUInt("0x12", 3));
    EXPECT_EQ(0u, HexToUInt("1234", 0));
}

TEST(SpacedHex, TwoDigitsAByte) {
    EXPECT_EQ("", spacedHex(QByteArray()).toStdString());
    EXPECT_EQ("0A", spacedHex("\n").toStdString());
    EXPECT_EQ("00 0F FF", spacedHex(QByteArray::fromHex("000fff")).toStdString());
}

TEST(DumpByteArray, NoBytes) {
    DebugLines debug;
    dumpByteArray(QByteArray());
    EXPECT_EQ(QStringList("(empty)"), debug.taken());
}

TEST(DumpByteArray, SixteenBytesALine) {
    QByteArray data;
    for (int i = 0; i < 18; ++i) {
        data.append(static_cast<char>(0xF0 + i));
    }
    {
        DebugLines debug;
        dumpByteArray(data.left(16));
        EXPECT_EQ(QStringList("0000: F0 F1 F2 F3 F4 F5 F6 F7 F8 F9 FA FB FC FD FE FF"),
                  debug.taken());
    }
    DebugLines debug;
    dumpByteArray(data);
    ASSERT_EQ(2, debug.taken().size());
    EXPECT_EQ("0010: 00 01", debug.taken().at(1).toStdString());
}

}  // namespace
