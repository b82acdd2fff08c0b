#include "eip/cip/unconnected_send.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "unit/eip/cip/scripted_transport.h"

namespace {

class UnconnectedSend : public testing::Test {
 protected:
    UnconnectedSend() : session(NewSession(1000, &transport)) { session->sessionHandle = 0x77; }
    ~UnconnectedSend() override { DeleteSession(session); }

    /// Sends a request along a route and returns the reply's bytes as text, "null" without one.
    std::string send(const std::string& request, const std::string& route) {
        const Bytes embedded = bytes(request);
        const Bytes path = bytes(route);
        int size = -1;
        _MR_Reply* reply = _UnconnectedSend(session, 0x07, 0x9A, embedded.data(),
                                            static_cast<int>(embedded.size()), path.data(),
                                            static_cast<int>(path.size()), &size);
        const std::string text = reply ? hexOf(bytesAt(reply, static_cast<size_t>(size))) : "null";
        EXPECT_TRUE(reply || size == 0);
        free(reply);
        return text;
    }

    ScriptedTransport transport;
    _Eip_Session* session;
};

const char kGetAttribute[] = "0E 03 20 01 24 01 30 07";

TEST_F(UnconnectedSend, RequestBytes) {
    // CIP Vol. 1, 3-5.5.4, in SendRRData (Vol. 2, 2-4.7): Get_Attribute_Single of the identity
    // object's attribute 7 through the backplane to slot 2
    EXPECT_EQ("null", send(kGetAttribute, "01 02"));
    EXPECT_EQ(
        hexOf(bytes("6F 00 26 00 77 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 | "
                    "00 00 00 00 01 00 | 02 00 00 00 00 00 B2 00 16 00 | "
                    "52 02 20 06 24 01 | 07 9A | 08 00 | 0E 03 20 01 24 01 30 07 | 01 00 | 01 02")),
        hexOf(transport.requests.at(0)));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
}

TEST_F(UnconnectedSend, OddRequestsAndRoutesArePadded) {
    send("10 01 20 01 AA", "12 34 56");
    const Bytes& request = transport.requests.at(0);
    EXPECT_EQ(hexOf(bytes("07 9A | 05 00 | 10 01 20 01 AA 00 | 02 00 | 12 34 56 00")),
              hexOf(bytesAt(request.data() + 46, request.size() - 46)));
}

TEST_F(UnconnectedSend, RouteMayBeEmpty) {
    send(kGetAttribute, "");
    const Bytes& request = transport.requests.at(0);
    EXPECT_EQ("00 00", hexOf(bytesAt(request.data() + request.size() - 2, 2)));
}

TEST_F(UnconnectedSend, NothingToSend) {
    int size = 77;
    EXPECT_EQ(nullptr, _UnconnectedSend(session, 7, 0x9A, nullptr, 4, CM_PATH, 4, &size));
    EXPECT_EQ((CipError{0, -8, 0}), lastError());
    EXPECT_STREQ("Internal: nothing to send", cip_err_msg());
    EXPECT_EQ(0, size);
    for (int length : {0, -1}) {
        EXPECT_EQ(nullptr, _UnconnectedSend(session, 7, 0x9A, "x", length, CM_PATH, 4, nullptr));
        EXPECT_EQ((CipError{0, -8, 0}), lastError());
    }
    EXPECT_TRUE(transport.requests.empty());
    _UnconnectedSend(session, 7, 0x9A, "x", 1, CM_PATH, 4, nullptr);
    EXPECT_EQ(1u, transport.requests.size()) << "one byte is something";
}

TEST_F(UnconnectedSend, BadArguments) {
    const Bytes data = filled(2000, 0);
    EXPECT_EQ(nullptr, _UnconnectedSend(session, 7, 0x9A, "xx", 2, nullptr, 2, nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(nullptr, _UnconnectedSend(session, 7, 0x9A, "xx", 2, CM_PATH, -2, nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(nullptr, _UnconnectedSend(nullptr, 7, 0x9A, "xx", 2, CM_PATH, 2, nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    for (int length : {980, 1000, 1001, 0x10000, INT32_MAX}) {
        EXPECT_EQ(nullptr,
                  _UnconnectedSend(session, 7, 0x9A, data.data(), length, CM_PATH, 4, nullptr));
        EXPECT_EQ((CipError{0, -31, 0}), lastError()) << length;
    }
    for (int length : {511, 512, INT32_MAX}) {
        EXPECT_EQ(nullptr,
                  _UnconnectedSend(session, 7, 0x9A, "xx", 2, data.data(), length, nullptr));
        EXPECT_EQ((CipError{0, -31, 0}), lastError()) << length;
    }
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(UnconnectedSend, ReplyOfTheEmbeddedRequest) {
    transport.play(unconnectedReply(0x77, "8E 00 00 00 05 41 42"));
    EXPECT_EQ("8E 00 00 00 05 41 42", send(kGetAttribute, "01 02"));
    EXPECT_EQ((CipError{3, 0, 0}), lastError());
    transport.play(unconnectedReply(0x77, "8E 00 14 00"));
    EXPECT_EQ("8E 00 14 00", send(kGetAttribute, "01 02"));
    EXPECT_EQ((CipError{3, 0x14, 0}), lastError());
}

TEST_F(UnconnectedSend, RefusalOnTheWay) {
    // general status 01, extended 0204 (time-out), one word of the route left
    transport.play(unconnectedReply(0x77, "D2 00 01 01 04 02 01"));
    EXPECT_EQ("D2 00 01 01 04 02 01", send(kGetAttribute, "01 02"));
    EXPECT_EQ((CipError{3, 1, 0x0204}), lastError());
}

TEST_F(UnconnectedSend, RepliesThatAnswerSomethingElse) {
    for (const char* reply : {"D2 00 00 00 05 41 42",  // success without the embedded reply
                              "CC 00 00 00 C4 00 01 00 00 00", "0E 00 00 00", "52 00 01 00"}) {
        transport.play(unconnectedReply(0x77, reply));
        EXPECT_EQ("null", send(kGetAttribute, "01 02"));
        EXPECT_EQ((CipError{0, -20, 0}), lastError()) << reply;
    }
}

}  // namespace
