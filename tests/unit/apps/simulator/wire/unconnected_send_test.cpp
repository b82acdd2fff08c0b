#include "apps/simulator/wire/unconnected_send.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

/// General status, or the message and the route.
std::string decoded(const std::string& text) {
    const sim::Bytes data = hex(text);
    sim::UnconnectedSend request;
    const sim::CipStatus status = decodeUnconnectedSend(data, &request);
    return status.ok() ? hexOf(request.message) + "|" + hexOf(request.route)
                       : std::to_string(status.general);
}

TEST(UnconnectedSend, HasAMessageAndARoute) {
    EXPECT_EQ("4c02|0100", decoded("07 9A 0200 4C02 01 00 0100"));
    EXPECT_EQ("4c0291|", decoded("07 9A 0300 4C0291 00 00 00"));
    EXPECT_EQ("|01000203", decoded("07 9A 0000 02 00 01000203"));
}

TEST(UnconnectedSend, ChecksItsLength) {
    const sim::Bytes whole = hex("07 9A 0300 4C0291 00 02 00 01000203");
    for (size_t size = 0; size < whole.size(); ++size) {
        sim::UnconnectedSend request;
        const sim::ByteView part(whole.data(), size);
        EXPECT_EQ(0x13, decodeUnconnectedSend(part, &request).general) << size;
    }
    EXPECT_EQ("21", decoded("07 9A 0200 4C02 01 00 0100 00"));
    EXPECT_EQ("19", decoded("07 9A FFFF 4C02 01 00 0100"));
}

}  // namespace
