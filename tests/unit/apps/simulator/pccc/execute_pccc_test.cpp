#include "apps/simulator/pccc/execute_pccc.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

int decoded(const char* text, std::string* requestor = nullptr, std::string* command = nullptr) {
    const sim::Bytes data = hex(text);
    sim::ExecutePcccRequest request;
    const sim::CipStatus status = decodeExecutePccc(data, &request);
    if (status.ok() && requestor) {
        *requestor = hexOf(request.requestor);
        *command = hexOf(request.command);
    }
    return status.general;
}

TEST(ExecutePccc, HasARequestorAndACommand) {
    std::string requestor;
    std::string command;
    EXPECT_EQ(0, decoded("07 0604 89674523 0F00", &requestor, &command));
    EXPECT_EQ("07060489674523", requestor);
    EXPECT_EQ("0f00", command);
    EXPECT_EQ(0, decoded("09 0604 89674523 AABB 0F", &requestor, &command));
    EXPECT_EQ("09060489674523aabb", requestor);
    EXPECT_EQ("0f", command);
    EXPECT_EQ(0, decoded("07 0604 89674523", &requestor, &command));
    EXPECT_EQ("", command);
}

TEST(ExecutePccc, IsRefused) {
    EXPECT_EQ(0x13, decoded(""));
    EXPECT_EQ(0x13, decoded("07"));
    EXPECT_EQ(0x13, decoded("07 0604 896745"));
    EXPECT_EQ(0x20, decoded("06 0604 896745 0F"));
    EXPECT_EQ(0x20, decoded("00"));
}

TEST(DhpHeader, GoesBackWhereItCameFrom) {
    const sim::Bytes bytes = hex("0100 0203 0400 0506 FF");
    sim::ByteReader reader(bytes);
    sim::DhpHeader header;
    ASSERT_TRUE(takeDhpHeader(reader, &header));
    EXPECT_EQ(1u, reader.left());
    EXPECT_EQ(0x0302, header.destinationNode);
    sim::Bytes answer;
    putDhpAnswerHeader(answer, header);
    EXPECT_EQ(hexText("0400 0506 0100 0203"), hexOf(answer));
    sim::ByteReader shorter(sim::ByteView(bytes.data(), 7));
    EXPECT_FALSE(takeDhpHeader(shorter, &header));
}

}  // namespace
