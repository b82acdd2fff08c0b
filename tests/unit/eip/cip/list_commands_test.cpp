#include <gtest/gtest.h>

#include <cstdlib>

#include "eip/cip/session.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

struct List {
    _Encap_Header* (*send)(_Eip_Session*);
    uint16_t command;
    const char* request;
};

void PrintTo(const List& list, std::ostream* out) {
    *out << "command " << list.command;
}

class ListCommands : public testing::TestWithParam<List> {
 protected:
    ListCommands() : session(NewSession(300, &transport)) { session->sessionHandle = 0x11223344; }
    ~ListCommands() override { DeleteSession(session); }

    ScriptedTransport transport;
    _Eip_Session* session;
};

TEST_P(ListCommands, RequestBytes) {
    EXPECT_EQ(nullptr, GetParam().send(session));
    EXPECT_EQ(GetParam().request, hexOf(transport.requests.at(0)));
    EXPECT_EQ(std::vector<int>{300}, transport.timeouts);
}

TEST_P(ListCommands, NothingToSendOver) {
    EXPECT_EQ(nullptr, GetParam().send(nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    session->transport = nullptr;
    EXPECT_EQ(nullptr, GetParam().send(session));
    EXPECT_EQ((CipError{0, -6, 0}), lastError());
}

TEST_P(ListCommands, FailedSendAwaitsNothing) {
    transport.sendResult = -1;
    EXPECT_EQ(nullptr, GetParam().send(session));
    EXPECT_TRUE(transport.timeouts.empty());
}

TEST_P(ListCommands, NoReply) {
    EXPECT_EQ(nullptr, GetParam().send(session));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
}

TEST_P(ListCommands, ReplyToAnotherCommand) {
    transport.play(message(0x65, 0, 0, bytes("00 00")));
    EXPECT_EQ(nullptr, GetParam().send(session));
    EXPECT_EQ((CipError{0, -7, 0}), lastError());
}

TEST_P(ListCommands, RefusedByTheTarget) {
    transport.play(message(GetParam().command, 0, 1, Bytes()));
    EXPECT_EQ(nullptr, GetParam().send(session));
    EXPECT_EQ((CipError{2, 1, 0}), lastError());
}

TEST_P(ListCommands, WholeReply) {
    const Bytes whole = message(GetParam().command, 0, 0, bytes("01 00 0C 00 01 00 AA"));
    transport.play(whole);
    _Encap_Header* reply = GetParam().send(session);
    ASSERT_TRUE(reply);
    EXPECT_EQ(hexOf(whole), hexOf(bytesAt(reply, whole.size())));
    EXPECT_EQ((CipError{2, 0, 0}), lastError());
    free(reply);
}

const char kTail[] = "00 00 44 33 22 11 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00";

const std::string kServices = std::string("04 00 ") + kTail;
const std::string kIdentity = std::string("63 00 ") + kTail;
const std::string kInterfaces = std::string("64 00 ") + kTail;

INSTANTIATE_TEST_SUITE_P(All, ListCommands,
                         testing::Values(List{_ListServices, 0x04, kServices.c_str()},
                                         List{_ListIdentity, 0x63, kIdentity.c_str()},
                                         List{_ListInterfaces, 0x64, kInterfaces.c_str()}));

}  // namespace
