#include <cstdlib>

#include "eip/cip/identity.h"
#include "integration/client/client_rig.h"

namespace {

class Lists : public ClientTest {
 protected:
    void SetUp() override { startClient(); }

    /// What follows the header of a list's reply, "null" without one.
    std::string list(_Encap_Header* (*send)(_Eip_Session*),
                     const _Encap_Header* (*read)(const _Encap_Header*)) {
        _Encap_Header* reply = send(session);
        const _Encap_Header* whole = read(reply);
        EXPECT_EQ(reply, whole);
        const std::string text =
            whole ? hexOf(bytesAt(whole + 1, size_t(_GetEncapLength(whole)))) : "null";
        free(reply);
        return text;
    }
};

// CIP Vol. 2, 2-4.6: one item 0x0100, version 1, capability TCP (bit 5), name of 16 bytes.
TEST_F(Lists, Services) {
    EXPECT_EQ("01 00 00 01 14 00 01 00 20 00 43 6F 6D 6D 75 6E 69 63 61 74 69 6F 6E 73 00 00",
              list(_ListServices, _GetServices));
    EXPECT_EQ((CipError{2, 0, 0}), lastError());
    _Encap_Header* reply = _ListServices(session);
    const _Eip_CPF* items = _GetEipCPF(reply);
    ASSERT_TRUE(items);
    EXPECT_EQ(0x0100, _GetItemType(_GetItem(items, 1)));
    free(reply);
}

// 2-4.8: no interface is a count of 0.
TEST_F(Lists, Interfaces) {
    EXPECT_EQ("00 00", list(_ListInterfaces, _GetInterfaces));
    EXPECT_EQ((CipError{2, 0, 0}), lastError());
    _Encap_Header* reply = _ListInterfaces(session);
    ASSERT_TRUE(_GetEipCPF(reply));
    EXPECT_EQ(nullptr, _GetItem(_GetEipCPF(reply), 1));
    EXPECT_EQ(nullptr, _GetAdressItem(reply));
    free(reply);
}

TEST_F(Lists, Identity) {
    _Encap_Header* reply = _ListIdentity(session);
    ASSERT_EQ(reply, _GetIdentity(reply));
    CipIdentity identity = {};
    EXPECT_TRUE(DecodeIdentity(reply, &identity));
    EXPECT_EQ(0x7F000001u, identity.ipAddress);
    EXPECT_EQ(simulator->port(), identity.port);
    EXPECT_EQ(1, identity.vendorId);
    EXPECT_STREQ("2080-LC50-48QWB", identity.productName);
    free(reply);
}

TEST_F(Lists, CutShort) {
    for (int missing = 1; missing <= 26; ++missing) {
        command("fault none");
        command(QString("fault encap-length-short:%1@on=any").arg(missing));
        _Encap_Header* reply = _ListServices(session);
        ASSERT_TRUE(reply) << missing;
        EXPECT_EQ(missing <= 24, _GetServices(reply) != nullptr) << missing;
        EXPECT_EQ(nullptr, _GetAdressItem(reply)) << missing;
        EXPECT_EQ(kInvalidReply, lastError()) << missing;
        free(reply);
    }
}

TEST_F(Lists, Refused) {
    command("fault encap-status:01@on=any");
    EXPECT_EQ(nullptr, _ListServices(session));
    EXPECT_EQ((CipError{2, 1, 0}), lastError());
    EXPECT_EQ(nullptr, _ListInterfaces(session));
    EXPECT_EQ((CipError{2, 1, 0}), lastError());
}

}  // namespace
