#include "apps/simulator/wire/encapsulation.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

const char kHeader[] = "6F00 1000 04030201 00000000 A1A2A3A4A5A6A7A8 00000000";

TEST(EncapHeader, IsReadFieldByField) {
    sim::EncapHeader header;
    ASSERT_TRUE(
        decodeHeader(hex("7000 3412 04030201 08070605 A1A2A3A4A5A6A7A8 0C0B0A09 FFFF"), &header));
    EXPECT_EQ(0x0070, header.command);
    EXPECT_EQ(0x1234, header.length);
    EXPECT_EQ(0x01020304u, header.session);
    EXPECT_EQ(0x05060708u, header.status);
    EXPECT_EQ("a1a2a3a4a5a6a7a8", hexOf(sim::ByteView(header.context, 8)));
    EXPECT_EQ(0x090A0B0Cu, header.options);
}

TEST(EncapHeader, NeedsTwentyFourBytes) {
    const sim::Bytes whole = hex(kHeader);
    sim::EncapHeader header;
    for (size_t size = 0; size < whole.size(); ++size) {
        EXPECT_FALSE(decodeHeader(sim::ByteView(whole.data(), size), &header)) << size;
    }
    EXPECT_TRUE(decodeHeader(whole, &header));
}

TEST(EncapReply, RepeatsCommandAndContext) {
    sim::EncapHeader request;
    ASSERT_TRUE(decodeHeader(hex(kHeader), &request));
    sim::Bytes out = hex("FFFF");
    beginReply(out, request, 0x11223344);
    sim::put16(out, 0xABCD);
    sim::finishReply(out);
    EXPECT_EQ(hexText("6F00 0200 44332211 00000000 A1A2A3A4A5A6A7A8 00000000 CDAB"), hexOf(out));
}

TEST(CommonPacket, HasAnAddressAndADataItem) {
    const sim::Bytes body = hex("00000000 0500 0200 A100 0400 01020304 B100 0300 AABBCC");
    sim::CommonPacket packet;
    ASSERT_TRUE(decodeCommonPacket(body, &packet));
    EXPECT_EQ(sim::kConnectedAddress, packet.addressType);
    EXPECT_EQ("01020304", hexOf(packet.address));
    EXPECT_EQ(sim::kConnectedData, packet.dataType);
    EXPECT_EQ("aabbcc", hexOf(packet.data));
    for (size_t size = 0; size < body.size(); ++size) {
        EXPECT_FALSE(decodeCommonPacket(sim::ByteView(body.data(), size), &packet)) << size;
    }
}

TEST(CommonPacket, IsNothingElse) {
    const struct {
        const char* why;
        const char* bytes;
    } rows[] = {
        {"interface handle", "01000000 0000 0200 0000 0000 B200 0000"},
        {"one item", "00000000 0000 0100 0000 0000 B200 0000"},
        {"three items", "00000000 0000 0300 0000 0000 B200 0000 0000 0000"},
        {"a byte too many", "00000000 0000 0200 0000 0000 B200 0000 00"},
        {"address item past the end", "00000000 0000 0200 A100 FFFF 01020304"},
        {"data item past the end", "00000000 0000 0200 0000 0000 B200 0200 AA"},
    };
    for (const auto& row : rows) {
        sim::CommonPacket packet;
        EXPECT_FALSE(decodeCommonPacket(hex(row.bytes), &packet)) << row.why;
    }
}

TEST(CommonPacket, IsBuiltWithTheLengthOfItsData) {
    const sim::Bytes address = hex("01020304");
    sim::CommonPacket packet;
    packet.addressType = sim::kConnectedAddress;
    packet.address = address;
    packet.dataType = sim::kConnectedData;
    sim::Bytes out = hex("EE");
    const size_t dataItemAt = beginCommonPacket(out, packet);
    sim::putBytes(out, hex("AABBCC"));
    sim::finishCommonPacket(out, dataItemAt);
    EXPECT_EQ(hexText("EE 00000000 0000 0200 A100 0400 01020304 B100 0300 AABBCC"), hexOf(out));
}

}  // namespace
