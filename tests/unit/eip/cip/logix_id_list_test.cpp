#include "eip/cip/logix_id_list.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "unit/eip/cip/scripted_transport.h"

namespace {

class IdList : public testing::Test {
 protected:
    IdList() : session(NewSession(1000, &transport)) { session->sessionHandle = 0x77; }
    ~IdList() override { DeleteSession(session); }

    std::string list() {
        const unsigned char route[] = {0x01, 0x00};
        _Id_List* read = _GetIdList(session, route, 2);
        const std::string text =
            read ? hexOf(bytesAt(_GetIdListData(read), static_cast<size_t>(read->length))) : "null";
        free(read);
        return text;
    }

    ScriptedTransport transport;
    _Eip_Session* session;
};

TEST_F(IdList, RequestBytes) {
    // In an Unconnected Send (CIP Vol. 1, 3-5.5.4)
    EXPECT_EQ("null", list());
    EXPECT_EQ(hexOf(bytes("52 02 20 06 24 01 | 07 9A | 06 00 | 4B 02 20 6B 24 00 | 01 00 | 01 00")),
              hexOf(bytesAt(transport.requests.at(0).data() + 40, 20)));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
}

TEST_F(IdList, DataBehindTheirLength) {
    transport.play(unconnectedReply(0x77, "CB 00 00 00 | 11 22 33 44 55 66 77 88"));
    EXPECT_EQ("11 22 33 44 55 66 77 88", list());
    transport.play(unconnectedReply(0x77, "CB 00 06 00 | 11 22"));
    EXPECT_EQ("11 22", list()) << "more is waiting";
    EXPECT_EQ((CipError{3, 6, 0}), lastError());
    transport.play(unconnectedReply(0x77, "CB 00 00 00"));
    EXPECT_EQ("", list());
    transport.play(unconnectedReply(0x77, "CB 00 06 01 34 12 | AA"));
    EXPECT_EQ("AA", list());
}

TEST_F(IdList, Refusals) {
    transport.play(unconnectedReply(0x77, "CB 00 05 00 | 11 22"));
    EXPECT_EQ("null", list());
    EXPECT_EQ((CipError{3, 5, 0}), lastError());
    transport.play(unconnectedReply(0x77, "D2 00 06 00 | 11 22"));
    EXPECT_EQ("null", list()) << "a router's";
    EXPECT_EQ((CipError{3, 6, 0}), lastError());
    EXPECT_EQ(nullptr, _GetIdList(nullptr, nullptr, 0));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
}

}  // namespace
