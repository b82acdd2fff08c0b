#include "eip/cip/session.h"

#include <gtest/gtest.h>

#include <cstring>
#include <memory>

#include "unit/eip/cip/scripted_transport.h"

namespace {

class SessionTest : public testing::Test {
 protected:
    SessionTest() : session(NewSession(750, &transport)) {}
    ~SessionTest() override { DeleteSession(session); }

    ScriptedTransport transport;
    _Eip_Session* session;
};

// RegisterSession reply (CIP Vol. 2, 2-4.4): protocol version 1, no flags.
const Bytes kVersionOne = bytes("01 00 00 00");

TEST_F(SessionTest, NewSessionIsUnregistered) {
    EXPECT_EQ(&transport, session->transport);
    EXPECT_EQ(0u, session->sessionHandle);
    EXPECT_EQ(750u, session->timeoutMs);
    EXPECT_EQ(filled(8, 0), bytesAt(session->senderContext, 8));
    EXPECT_EQ(0u, session->reserved[0]);
    EXPECT_EQ(0u, session->reserved[1]);
}

TEST_F(SessionTest, OlderFormHasNoTransport) {
    _Eip_Session* older = _OpenSession("192.168.1.20", 44818, 1234);
    ASSERT_TRUE(older);
    EXPECT_EQ(nullptr, older->transport);
    EXPECT_EQ(1234u, older->timeoutMs);
    EXPECT_EQ(0u, older->sessionHandle);
    EXPECT_EQ(-1, _RegisterSession(older));
    EXPECT_EQ((CipError{0, -6, 0}), lastError());
    CIPERROR(3, 4, 5);
    CloseSession(older);
    EXPECT_EQ((CipError{0, 0, 0}), lastError());
}

TEST_F(SessionTest, TimeoutsAreHeldWithin32Bits) {
    _Eip_Session* patient = NewSession(~0ul, &transport);
    EXPECT_EQ(UINT32_MAX, patient->timeoutMs);
    _RegisterSession(patient);
    EXPECT_EQ(std::vector<int>{INT32_MAX}, transport.timeouts);
    DeleteSession(patient);
}

TEST_F(SessionTest, NullSessionsAreRefused) {
    EXPECT_EQ(-1, _RegisterSession(nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(-1, _UnRegisterSession(nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    DeleteSession(nullptr);
    CloseSession(nullptr);
}

TEST_F(SessionTest, RegisterRequestBytes) {
    // CIP Vol. 2, 2-4.4
    transport.play(message(0x65, 7, 0, kVersionOne));
    EXPECT_EQ(0, _RegisterSession(session));
    ASSERT_EQ(1u, transport.requests.size());
    EXPECT_EQ("65 00 04 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00",
              hexOf(transport.requests[0]));
    EXPECT_EQ(std::vector<int>{750}, transport.timeouts);
}

TEST_F(SessionTest, RegisterSendsTheContextAndNoOldHandle) {
    memcpy(session->senderContext, "ABCDEFGH", 8);
    session->sessionHandle = 99;
    _RegisterSession(session);
    EXPECT_EQ("65 00 04 00 00 00 00 00 00 00 00 00 41 42 43 44 45 46 47 48 00 00 00 00 01 00 00 00",
              hexOf(transport.requests.at(0)));
}

TEST_F(SessionTest, RegisterTakesTheHandle) {
    transport.play(message(0x65, 0x89ABCDEF, 0, kVersionOne));
    EXPECT_EQ(0, _RegisterSession(session));
    EXPECT_EQ(0x89ABCDEFu, session->sessionHandle);
    EXPECT_EQ((CipError{2, 0, 0}), lastError());
}

TEST_F(SessionTest, RegisteringAgainOverwritesTheHandle) {
    transport.play(message(0x65, 1, 0, kVersionOne));
    transport.play(message(0x65, 2, 0, kVersionOne));
    _RegisterSession(session);
    _RegisterSession(session);
    EXPECT_EQ(2u, session->sessionHandle);
}

TEST_F(SessionTest, RefusedRegistration) {
    session->sessionHandle = 99;
    transport.play(message(0x65, 5, 0x69, kVersionOne));
    EXPECT_EQ(0x69, _RegisterSession(session));
    EXPECT_EQ(0u, session->sessionHandle);
    EXPECT_EQ((CipError{2, 0x69, 0}), lastError());
    EXPECT_STREQ("EIP error: 0069H", cip_err_msg());
}

TEST_F(SessionTest, RegistrationWithoutReply) {
    session->sessionHandle = 99;
    transport.lose();
    EXPECT_EQ(-1, _RegisterSession(session));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
    EXPECT_EQ(0u, session->sessionHandle);
}

TEST_F(SessionTest, RegistrationAnsweredWithAnotherCommand) {
    transport.play(message(0x66, 5, 0, kVersionOne));
    EXPECT_EQ(-1, _RegisterSession(session));
    EXPECT_EQ((CipError{0, -7, 0}), lastError());
    EXPECT_EQ(0u, session->sessionHandle);
}

TEST_F(SessionTest, RegistrationThatCannotBeSent) {
    transport.sendResult = -3;
    EXPECT_EQ(-3, _RegisterSession(session));
    EXPECT_TRUE(transport.timeouts.empty()) << "no reply is awaited";
}

TEST_F(SessionTest, UnregisterRequestBytes) {
    session->sessionHandle = 0x0A0B0C0D;
    memcpy(session->senderContext, "ABCDEFGH", 8);
    EXPECT_EQ(24, _UnRegisterSession(session));
    EXPECT_EQ("66 00 00 00 0D 0C 0B 0A 00 00 00 00 41 42 43 44 45 46 47 48 00 00 00 00",
              hexOf(transport.requests.at(0)));
    EXPECT_TRUE(transport.timeouts.empty()) << "no reply is awaited";
    EXPECT_EQ(0x0A0B0C0Du, session->sessionHandle) << "stays in the record";
}

TEST_F(SessionTest, UnregisterGivesTheSendResult) {
    transport.sendResult = 0;
    EXPECT_EQ(0, _UnRegisterSession(session));
    transport.sendResult = -2;
    EXPECT_EQ(-2, _UnRegisterSession(session));
}

}  // namespace
