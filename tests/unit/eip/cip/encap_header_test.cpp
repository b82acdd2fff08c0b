#include "eip/cip/encap_header.h"

#include <gtest/gtest.h>

#include <cstring>
#include <set>

#include "unit/eip/cip/request_buffer.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

TEST(EncapHeader, InitZeroesAndFills) {
    RequestBuffer buffer;
    memset(buffer.memory, 0xEE, 24);
    _InitHeader(buffer.header(), 0x11223344, 0x55667788, 0x99AABBCC);
    EXPECT_EQ("00 00 00 00 44 33 22 11 00 00 00 00 88 77 66 55 CC BB AA 99 00 00 00 00",
              hexOf(bytesAt(buffer.memory, 24)));
}

TEST(EncapHeader, FillLeavesTheOtherFields) {
    RequestBuffer buffer;
    memset(buffer.memory, 0xEE, 24);
    _FillHeader(buffer.header(), 0x11223344, 0x55667788, 0x99AABBCC);
    EXPECT_EQ("EE EE EE EE 44 33 22 11 EE EE EE EE 88 77 66 55 CC BB AA 99 EE EE EE EE",
              hexOf(bytesAt(buffer.memory, 24)));
}

TEST(EncapHeader, AppendsAreLittleEndianAndCounted) {
    RequestBuffer buffer;
    EXPECT_EQ(1, _AddBYTE2Header(buffer.header(), 0xA1));
    EXPECT_EQ(3, _AddINT2Header(buffer.header(), 0xB1B2));
    EXPECT_EQ(7, _AddDINT2Header(buffer.header(), 0xC1C2C3C4));
    const unsigned char tab[] = {1, 2, 3};
    EXPECT_EQ(10, _Addtab2Header(buffer.header(), tab, 3));
    EXPECT_EQ(12, _AddHeader(buffer.header(), tab, 2));
    EXPECT_EQ(18, _AddRR(buffer.header(), 0xD1D2D3D4, 0xE1E2));
    EXPECT_EQ("A1 B2 B1 C4 C3 C2 C1 01 02 03 01 02 D4 D3 D2 D1 E2 E1", hexOf(buffer.body()));
    EXPECT_EQ("12 00", hexOf(bytesAt(buffer.memory + 2, 2)));
}

TEST(EncapHeader, NothingFitsBehind1000Bytes) {
    RequestBuffer buffer;
    const Bytes data = filled(2000, 0x77);
    EXPECT_EQ(0, _AddHeader(buffer.header(), data.data(), 1001));
    EXPECT_EQ(filled(1024, 0), buffer.all()) << "unchanged";
    EXPECT_EQ(999, _AddHeader(buffer.header(), data.data(), 999));
    const Bytes before = buffer.all();
    EXPECT_EQ(0, _AddINT2Header(buffer.header(), 1));
    EXPECT_EQ(0, _AddDINT2Header(buffer.header(), 1));
    EXPECT_EQ(0, _AddRR(buffer.header(), 1, 1));
    EXPECT_EQ(0, _Addtab2Header(buffer.header(), data.data(), 2));
    EXPECT_EQ(0, _AddHeader(buffer.header(), data.data(), INT32_MAX));
    EXPECT_EQ(0, _AddHeader(buffer.header(), data.data(), -1));
    EXPECT_EQ(before, buffer.all()) << "unchanged";
    EXPECT_EQ(1000, _AddBYTE2Header(buffer.header(), 0x99));
    EXPECT_EQ(0, _AddBYTE2Header(buffer.header(), 0x99));
    EXPECT_EQ(0x99, buffer.memory[1023]);
}

TEST(EncapHeader, LengthFieldAboveTheLimitTakesNothing) {
    RequestBuffer buffer;
    buffer.memory[2] = 0xFF;
    buffer.memory[3] = 0xFF;
    EXPECT_EQ(0, _AddBYTE2Header(buffer.header(), 1));
}

TEST(EncapHeader, StatusOfAReply) {
    EXPECT_EQ(0x64, _GetEipStatus(ReplyBuffer(message(0x6F, 1, 0x64, Bytes())).header()));
    EXPECT_EQ(0, _GetEipStatus(ReplyBuffer(message(0x6F, 1, 0, Bytes())).header()));
    CIPERROR(0, 0, 0);
    EXPECT_EQ(-1, _GetEipStatus(nullptr));
    EXPECT_EQ((CipError{0, -20, 0}), lastError());
}

TEST(EncapHeader, FieldsOfAHeader) {
    const ReplyBuffer reply(message(0x0070, 0x12345678, 0, filled(0x102, 0)));
    EXPECT_EQ(0x70, _GetEncapCommand(reply.header()));
    EXPECT_EQ(0x102, _GetEncapLength(reply.header()));
    EXPECT_EQ(0x12345678u, _GetEncapSessionHandle(reply.header()));
}

TEST(EncapHeader, EveryCommandThatIsEIP) {
    const std::set<int> commands = {0x00, 0x01, 0x04, 0x63, 0x64, 0x65,
                                    0x66, 0x6F, 0x70, 0x72, 0x73};
    for (int command = 0; command <= 0xFFFF; ++command) {
        const unsigned char head[24] = {static_cast<unsigned char>(command),
                                        static_cast<unsigned char>(command >> 8)};
        ASSERT_EQ(commands.count(command) == 1, IsEIP(head)) << command;
    }
    EXPECT_FALSE(IsEIP(nullptr));
}

}  // namespace
