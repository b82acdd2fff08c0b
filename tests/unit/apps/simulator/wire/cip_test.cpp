#include "apps/simulator/wire/cip.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

TEST(CipRequest, IsServicePathAndData) {
    const sim::Bytes bytes = hex("4C 02 91014100 0100");
    sim::CipRequest request;
    ASSERT_TRUE(decodeCipRequest(bytes, &request));
    EXPECT_EQ(sim::kReadTag, request.service);
    EXPECT_EQ("91014100", hexOf(request.path));
    EXPECT_EQ("0100", hexOf(request.data));
    EXPECT_FALSE(request.pathTooLong);
}

TEST(CipRequest, TellsAPathThatEndsBehindTheRequest) {
    const sim::Bytes bytes = hex("4C 03 91014100 01");
    sim::CipRequest request;
    ASSERT_TRUE(decodeCipRequest(bytes, &request));
    EXPECT_TRUE(request.pathTooLong);
    EXPECT_TRUE(request.path.empty());
}

TEST(CipRequest, NeedsAServiceAndAPathSize) {
    sim::CipRequest request;
    EXPECT_FALSE(decodeCipRequest(hex("4C"), &request));
    EXPECT_FALSE(decodeCipRequest(sim::ByteView(), &request));
}

TEST(ReplyHead, CarriesTheStatus) {
    sim::Bytes out;
    putReplyHead(out, 0x4C, sim::CipStatus());
    EXPECT_EQ("cc000000", hexOf(out));
    out.clear();
    putReplyHead(out, 0x4C, sim::CipStatus(0x05));
    EXPECT_EQ("cc000500", hexOf(out));
    out.clear();
    putReplyHead(out, 0x54, sim::CipStatus(0x01, 0x0311));
    EXPECT_EQ("d40001011103", hexOf(out));
}

TEST(CipServiceName, IsNullForOthers) {
    EXPECT_STREQ("WriteTag", sim::cipServiceName(0x4D, 0));
    EXPECT_STREQ("ExecutePCCC", sim::cipServiceName(0x4B, 0x67));
    EXPECT_STREQ("ListInstances", sim::cipServiceName(0x4B, 0x6B));
    EXPECT_EQ(nullptr, sim::cipServiceName(0x4B, 0x06));
    EXPECT_STREQ("UnconnectedSend", sim::cipServiceName(0x52, 0x06));
    EXPECT_STREQ("ReadTagFragmented", sim::cipServiceName(0x52, 0));
    EXPECT_EQ(nullptr, sim::cipServiceName(0x52, 0x02));
    EXPECT_STREQ("GetAttributesAll", sim::cipServiceName(0x01, 0x01));
    EXPECT_STREQ("GetAttributeList", sim::cipServiceName(0x03, 0x01));
    EXPECT_STREQ("GetAttributeSingle", sim::cipServiceName(0x0E, 0x01));
    EXPECT_STREQ("GetInstanceAttributeList", sim::cipServiceName(0x55, 0x6B));
    EXPECT_STREQ("WriteTagFragmented", sim::cipServiceName(0x53, 0));
}

}  // namespace
