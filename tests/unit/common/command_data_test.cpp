#include "common/command_data.h"

#include <gtest/gtest.h>

#include "runtime/communicator_command.h"
#include "support/hex_bytes.h"

namespace {

CommunicatorCommand command(qint32 kind, quint32 count) {
    return CommunicatorCommand(kind, count, "DINT0:A");
}

TEST(CommandData, Classification) {
    const struct {
        qint32 kind;
        bool bit, byte, word, doubleWord, block;
    } rows[] = {
        {0, true, false, false, false, false},   {1, false, true, false, false, false},
        {2, false, false, true, false, false},   {3, false, false, false, true, false},
        {4, false, false, false, false, false},  {5, false, false, false, false, true},
        {6, true, false, false, false, false},   {7, false, false, false, false, false},
        {-1, false, false, false, false, false},
    };
    for (const auto& row : rows) {
        const CommunicatorCommand asked = command(row.kind, 1);
        EXPECT_EQ(row.bit, isBitCommand(asked)) << row.kind;
        EXPECT_EQ(row.byte, isByteCommand(asked)) << row.kind;
        EXPECT_EQ(row.word, isWordCommand(asked)) << row.kind;
        EXPECT_EQ(row.doubleWord, isDoubleWordCommand(asked)) << row.kind;
        EXPECT_EQ(row.block, isBlockCommand(asked)) << row.kind;
    }
}

TEST(CommandData, BitData) {
    const struct {
        qint32 kind;
        quint32 count;
        const char* data;
        const char* result;
    } rows[] = {
        // no bit command, or far too long
        {1, 1, "ff", ""},
        {3, 1, "ffffffff", ""},
        {5, 2, "ffff", ""},
        {0, 0xFFFFFFFFu, "ff", ""},
        {0, 64 * 1024 * 8 + 1, "ff", ""},
        // bits of kind 0
        {0, 0, "ff", "01"},
        {0, 1, "fe", "00"},
        {0, 3, "ff", "07"},
        {0, 9, "ffff", "ff01"},
        {0, 9, "ff", "ff00"},
        {0, 8, "ffff", "ff"},
        {0, 5, "", "00"},
        // kind 6 has one byte
        {6, 0, "ff", "01"},
        {6, 4, "ff", "0f"},
        {6, 8, "ffff", "ff"},
        {6, 100, "ffff", "ff"},
        {6, 0xFFFFFFFFu, "ffff", "ff"},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(row.result,
                     getBitData(command(row.kind, row.count), hex(row.data)).toHex().constData())
            << row.kind << " " << row.count << " " << row.data;
    }
}

TEST(CommandData, SafeLengthIsInQuadWords) {
    const struct {
        qint32 kind;
        quint32 count;
        int length;
    } rows[] = {
        {0, 0, 8},           {0, 64, 8},          {0, 65, 16},         {1, 0, 0},
        {1, 1, 8},           {1, 8, 8},           {1, 9, 16},          {2, 5, 16},
        {3, 2, 8},           {4, 1, 8},           {4, 2, 16},          {5, 1024, 1024},
        {6, 5, 8},           {1, 65535, 65536},   {1, 65536, 65536},   {1, 65537, 0},
        {2, 0x80000001u, 0}, {5, 0xFFFFFFFFu, 0}, {0, 0xFFFFFFFFu, 0},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.length, GetSafeDataLen(command(row.kind, row.count)))
            << row.kind << " " << row.count;
    }
}

TEST(CommandData, SafeDataIsTheCommandsDataAndZeros) {
    const struct {
        qint32 kind;
        quint32 count;
        const char* data;
        const char* result;
    } rows[] = {
        {2, 1, "0102", "0102000000000000"},
        {2, 1, "010203", "0102000000000000"},
        {2, 1, "01", "0100000000000000"},
        {2, 1, "", "0000000000000000"},
        {5, 9, "0102030405060708090a", "01020304050607080900000000000000"},
        {1, 0, "01", ""},
        {5, 0xFFFFFFFFu, "01", ""},
    };
    for (const auto& row : rows) {
        EXPECT_STREQ(row.result,
                     ToSafeData(command(row.kind, row.count), hex(row.data)).toHex().constData())
            << row.kind << " " << row.count << " " << row.data;
    }
}

TEST(CommandData, ANegativeSizeIsRefused) {
    class Negative : public CommunicatorCommand {
     public:
        int getDataSize() const override { return -100; }
    };
    EXPECT_EQ(0, GetSafeDataLen(Negative()));
    EXPECT_TRUE(ToSafeData(Negative(), "x").isEmpty());
    EXPECT_TRUE(getBitData(Negative(), "x").isEmpty());
}

TEST(CommandData, PartsOfAnAddress) {
    const struct {
        const char* address;
        const char* prefix;
        const char* device;
    } rows[] = {
        {"DINT0:COUNTER", "DINT0", "COUNTER"},
        {"real0:Levels[4]", "real0", "Levels[4]"},
        {"INT0:A0:B", "INT0", "A0:B"},
        {"COUNTER", "", "COUNTER"},
        {":COUNTER", "", "COUNTER"},
        {"DINT0:", "DINT0", ""},
        {"", "", ""},
        {":", "", ""},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(row.prefix, ExtractPrefixSymbol(row.address).toStdString()) << row.address;
        EXPECT_EQ(row.device, ExtractPLCDeviceAddress(row.address).toStdString()) << row.address;
    }
}

}  // namespace
