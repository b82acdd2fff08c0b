#include "eip/cip/identity.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "unit/eip/cip/reply_sweeps.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

// CIP Vol. 2, table 2-4.4
Bytes identityReply(const std::string& name, unsigned char claimedLength) {
    const Bytes item =
        bytes(
            "01 00 | 00 02 AF 12 C0 A8 01 14 00 00 00 00 00 00 00 00 | 4D 00 | 0E 00 | 3B 01 | "
            "15 0B | 34 12 | 78 56 34 12") +
        Bytes{claimedLength} + Bytes(name.begin(), name.end()) + Bytes{0x03};
    return message(0x63, 0, 0,
                   bytes("01 00 | 0C 00") +
                       Bytes{static_cast<unsigned char>(item.size()),
                             static_cast<unsigned char>(item.size() >> 8)} +
                       item);
}

TEST(Identity, EveryField) {
    CipIdentity identity;
    memset(&identity, 0xEE, sizeof(identity));
    ASSERT_TRUE(DecodeIdentity(ReplyBuffer(identityReply("2080-LC50", 9)).header(), &identity));
    EXPECT_EQ(1, identity.protocolVersion);
    EXPECT_EQ(44818, identity.port);
    EXPECT_EQ(0xC0A80114u, identity.ipAddress);
    EXPECT_EQ(0x4D, identity.vendorId);
    EXPECT_EQ(0x0E, identity.deviceType);
    EXPECT_EQ(0x013B, identity.productCode);
    EXPECT_EQ(21, identity.majorRevision);
    EXPECT_EQ(11, identity.minorRevision);
    EXPECT_EQ(0x1234, identity.status);
    EXPECT_EQ(0x12345678u, identity.serialNumber);
    EXPECT_STREQ("2080-LC50", identity.productName);
    EXPECT_EQ(3, identity.state);
}

TEST(Identity, ShortestAndLongestName) {
    CipIdentity identity;
    ASSERT_TRUE(DecodeIdentity(ReplyBuffer(identityReply("", 0)).header(), &identity));
    EXPECT_STREQ("", identity.productName);
    EXPECT_EQ(3, identity.state);
    const std::string longest(255, 'x');
    ASSERT_TRUE(DecodeIdentity(ReplyBuffer(identityReply(longest, 255)).header(), &identity));
    EXPECT_EQ(longest, identity.productName);
    EXPECT_EQ(3, identity.state);
}

TEST(Identity, NameLongerThanTheItem) {
    for (int claimed : {10, 11, 100, 255}) {
        CipIdentity identity = {};
        CIPERROR(0, 0, 0);
        EXPECT_FALSE(DecodeIdentity(
            ReplyBuffer(identityReply("2080-LC50", static_cast<unsigned char>(claimed))).header(),
            &identity));
        EXPECT_EQ((CipError{0, -20, 0}), lastError()) << claimed;
    }
}

TEST(Identity, OtherReplies) {
    CipIdentity identity;
    memset(&identity, 0xEE, sizeof(identity));
    const Bytes good = identityReply("2080-LC50", 9);
    Bytes otherCommand = good;
    otherCommand[0] = 0x04;
    Bytes otherItem = good;
    otherItem[26] = 0x0D;
    Bytes noItem = message(0x63, 0, 0, bytes("00 00"));
    for (const Bytes& reply : {otherCommand, otherItem, noItem, message(0x63, 0, 0, Bytes())}) {
        CIPERROR(0, 0, 0);
        EXPECT_FALSE(DecodeIdentity(ReplyBuffer(reply).header(), &identity));
        EXPECT_EQ((CipError{0, -20, 0}), lastError());
    }
    EXPECT_FALSE(DecodeIdentity(nullptr, &identity));
    EXPECT_EQ(filled(sizeof(identity), 0xEE), bytesAt(&identity, sizeof(identity))) << "unchanged";
}

TEST(Identity, ItemTooShortForTheFields) {
    for (size_t length = 0; length <= 33; ++length) {
        const Bytes reply =
            message(0x63, 0, 0,
                    bytes("01 00 | 0C 00") + Bytes{static_cast<unsigned char>(length), 0} +
                        filled(length, 0));
        CipIdentity identity;
        CIPERROR(0, 0, 0);
        EXPECT_FALSE(DecodeIdentity(ReplyBuffer(reply).header(), &identity)) << length;
        EXPECT_EQ((CipError{0, -20, 0}), lastError());
    }
}

TEST(Identity, EveryCutFails) {
    forEachCut(identityReply("2080-LC50", 9), [](const Bytes& cut, size_t size) {
        CipIdentity identity;
        EXPECT_FALSE(DecodeIdentity(ReplyBuffer(cut).header(), &identity)) << size;
    });
}

TEST(Identity, HostileReplies) {
    int taken = 0;
    forEachVariant(identityReply("2080-LC50", 9), [&](const Bytes& variant, size_t) {
        CipIdentity identity;
        if (DecodeIdentity(ReplyBuffer(variant).header(), &identity)) {
            ++taken;
            EXPECT_LT(strnlen(identity.productName, sizeof(identity.productName)),
                      sizeof(identity.productName));
        }
    });
    EXPECT_GT(taken, 1000);
}

}  // namespace
