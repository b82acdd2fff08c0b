#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "eip/cip/cip_trace.h"
#include "eip/cip/connection_manager.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

class ConnectedSend : public testing::Test {
 protected:
    ConnectedSend() : session(NewSession(1000, &transport)), connection() {
        session->sessionHandle = 0x77;
        connection.session = session;
        connection.oToTConnectionId = 0xA1A2A3A4;
    }
    ~ConnectedSend() override {
        DeleteSession(session);
        _cip_debuglevel = 0;
    }

    /// Sends a request and returns the item's bytes with what follows it, "null" without one.
    std::string send() {
        _Eip_Item* item = _ConnectedSend(session, &connection, "\x4C\x00", 2);
        const std::string text = item ? hexOf(bytesAt(item, 6u + _GetItemLength(item))) : "null";
        free(item);
        return text;
    }

    void playBody(const std::string& body) { transport.play(message(0x70, 0x77, 0, bytes(body))); }

    ScriptedTransport transport;
    _Eip_Session* session;
    _Eip_Connection connection;
};

const char kGoodBody[] =
    "00 00 00 00 00 00 | 02 00 | A1 00 04 00 01 00 FE 80 | B1 00 08 00 01 00 CC 00 00 00 C1 00";

TEST_F(ConnectedSend, RequestBytes) {
    // CIP Vol. 2, 2-4.8
    EXPECT_EQ("null", send());
    EXPECT_EQ(
        hexOf(bytes("70 00 18 00 77 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 | "
                    "00 00 00 00 01 00 | 02 00 | A1 00 04 00 A4 A3 A2 A1 | "
                    "B1 00 04 00 01 00 4C 00")),
        hexOf(transport.requests.at(0)));
}

TEST_F(ConnectedSend, SequenceCountsUpAndWraps) {
    for (int expected : {1, 2, 3}) {
        send();
        EXPECT_EQ(expected, connection.sequenceCount);
        EXPECT_EQ(expected, transport.requests.back().at(44));
    }
    connection.sequenceCount = 0xFFFE;
    send();
    EXPECT_EQ("FF FF", hexOf(bytesAt(transport.requests.back().data() + 44, 2)));
    send();
    EXPECT_EQ("00 00", hexOf(bytesAt(transport.requests.back().data() + 44, 2)));
    EXPECT_EQ(0, connection.sequenceCount);
    send();
    EXPECT_EQ(1, connection.sequenceCount);
}

TEST_F(ConnectedSend, BadArguments) {
    EXPECT_EQ(nullptr, _ConnectedSend(nullptr, &connection, "", 0));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(nullptr, _ConnectedSend(session, nullptr, "", 0));
    EXPECT_EQ(nullptr, _ConnectedSend(session, &connection, nullptr, 0));
    const Bytes request = filled(1001, 0);
    for (int length : {-1, 979, 1000, 1001, 0x10000, INT32_MAX}) {
        EXPECT_EQ(nullptr, _ConnectedSend(session, &connection, request.data(), length));
        EXPECT_EQ((CipError{0, -31, 0}), lastError()) << length;
    }
    EXPECT_TRUE(transport.requests.empty());
    EXPECT_EQ(0, connection.sequenceCount);
    EXPECT_EQ(nullptr, _ConnectedSend(session, &connection, request.data(), 978));
    EXPECT_EQ(1, connection.sequenceCount);
    EXPECT_EQ(1024u, transport.requests.at(0).size());
}

TEST_F(ConnectedSend, NothingGoesOutThatTheConnectionDoesNotCarry) {
    const Bytes request = filled(600, 0);
    connection.connectionSize = 504;
    EXPECT_EQ(nullptr, _ConnectedSend(session, &connection, request.data(), 503));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ(0, connection.sequenceCount);
    EXPECT_TRUE(transport.requests.empty());
    EXPECT_EQ(nullptr, _ConnectedSend(session, &connection, request.data(), 502));
    // Length of the connected data item: the sequence count and 502 bytes.
    EXPECT_EQ("B1 00 F8 01", hexOf(bytesAt(transport.requests.at(0).data() + 40, 4)));
}

TEST_F(ConnectedSend, NoReply) {
    EXPECT_EQ("null", send());
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
    transport.lose([] { CIPERROR(0, -41, 0); });
    EXPECT_EQ("null", send());
    EXPECT_EQ((CipError{0, -41, 0}), lastError());
}

TEST_F(ConnectedSend, CopyOfTheItem) {
    playBody(kGoodBody);
    EXPECT_EQ("B1 00 08 00 01 00 CC 00 00 00 C1 00 00 00", send());
    EXPECT_EQ((CipError{2, 0, 0}), lastError());
}

TEST_F(ConnectedSend, EncapsulationRefusal) {
    for (uint32_t session : {0x77u, 0u}) {
        transport.play(message(0x70, session, 0x64, Bytes()));
        EXPECT_EQ("null", send());
        EXPECT_EQ((CipError{2, 0x64, 0}), lastError());
    }
    transport.play(message(0x70, 0x77, 0x64, bytes("00 00 00 00 00 00 | 00 00")));
    EXPECT_EQ("null", send());
    EXPECT_EQ((CipError{2, 0x64, 0}), lastError());
}

TEST_F(ConnectedSend, EncapsulationStatusBesideADataItem) {
    transport.play(message(0x70, 0x77, 1, bytes(kGoodBody)));
    EXPECT_EQ("B1 00 08 00 01 00 CC 00 00 00 C1 00 00 00", send());
    EXPECT_EQ((CipError{2, 1, 0}), lastError());
    connection.sequenceCount = 0;
    transport.play(message(0x70, 0x78, 1, bytes(kGoodBody)));
    EXPECT_EQ("null", send()) << "of another session";
    EXPECT_EQ((CipError{0, -7, 0}), lastError());
    connection.sequenceCount = 1;
    transport.play(message(0x70, 0x77, 1, bytes(kGoodBody)));
    EXPECT_EQ("null", send()) << "of another request";
    EXPECT_EQ((CipError{0, -7, 0}), lastError());
}

TEST_F(ConnectedSend, WhatATargetAddsIsTaken) {
    for (const char* body : {
             // another interface handle
             "01 00 00 00 00 00 | 02 00 | A1 00 04 00 01 00 FE 80 | B1 00 06 00 01 00 CD 00 00 00",
             // socket address items (Vol. 2, table 2-6.9), an item of an unknown type
             "00 00 00 00 00 00 | 03 00 | A1 00 04 00 01 00 FE 80 | B1 00 06 00 01 00 CD 00 00 00 |"
             "00 80 10 00 00 02 AF 12 C0 A8 01 14 00 00 00 00 00 00 00 00",
             "00 00 00 00 00 00 | 04 00 | A1 00 04 00 01 00 FE 80 | B1 00 06 00 01 00 CD 00 00 00 |"
             "00 80 00 00 | 34 12 01 00 00",
             // an item that is announced and not there, bytes that nothing announces
             "00 00 00 00 00 00 | 03 00 | A1 00 04 00 01 00 FE 80 | B1 00 06 00 01 00 CD 00 00 00",
             "00 00 00 00 00 00 | 02 00 | A1 00 04 00 01 00 FE 80 | B1 00 06 00 01 00 CD 00 00 00 |"
             "CC",
         }) {
        connection.sequenceCount = 0;
        playBody(body);
        EXPECT_EQ("B1 00 06 00 01 00 CD 00 00 00 00 00", send()) << body;
        EXPECT_EQ((CipError{2, 0, 0}), lastError()) << body;
    }
}

TEST_F(ConnectedSend, NoDataItem) {
    for (const char* body :
         {"", "00 00 00 00 00 00 | 00 00", "00 00 00 00 00 00 | 01 00 | A1 00 04 00 01 00 FE 80"}) {
        playBody(body);
        EXPECT_EQ("null", send()) << body;
        EXPECT_EQ((CipError{2, 0, 0}), lastError()) << body;
    }
}

TEST_F(ConnectedSend, AnotherCommand) {
    for (uint16_t command : {0x6F, 0x63, 0x65, 0x00, 0xFFFF}) {
        connection.sequenceCount = 0;
        transport.play(message(command, 0x77, 0, bytes(kGoodBody)));
        EXPECT_EQ("null", send());
        EXPECT_EQ((CipError{0, -7, 0}), lastError()) << command;
    }
}

TEST_F(ConnectedSend, AnotherSession) {
    transport.play(message(0x70, 0x78, 0, bytes(kGoodBody)));
    EXPECT_EQ("null", send());
    EXPECT_EQ((CipError{0, -7, 0}), lastError());
}

TEST_F(ConnectedSend, AnotherSequenceCount) {
    for (uint16_t before : {1, 0xFFFF, 0x0100}) {
        connection.sequenceCount = before;
        playBody(kGoodBody);
        EXPECT_EQ("null", send());
        EXPECT_EQ((CipError{0, -7, 0}), lastError()) << before;
    }
}

TEST_F(ConnectedSend, ItemsThatDoNotHoldTogether) {
    for (const char* body : {
             // address item of another type, of another length
             "00 00 00 00 00 00 | 02 00 | 00 00 04 00 01 00 FE 80 | B1 00 02 00 01 00",
             "00 00 00 00 00 00 | 02 00 | 00 00 00 00 | B1 00 02 00 01 00",
             "00 00 00 00 00 00 | 02 00 | A1 00 02 00 01 00 | B1 00 02 00 01 00",
             "00 00 00 00 00 00 | 02 00 | A1 00 FF FF 01 00 FE 80 | B1 00 02 00 01 00",
             // data item of another type, past the end, without a sequence count
             "00 00 00 00 00 00 | 02 00 | A1 00 04 00 01 00 FE 80 | B2 00 02 00 01 00",
             "00 00 00 00 00 00 | 02 00 | A1 00 04 00 01 00 FE 80 | B1 00 03 00 01 00",
             "00 00 00 00 00 00 | 02 00 | A1 00 04 00 01 00 FE 80 | B1 00 FF FF 01 00",
             "00 00 00 00 00 00 | 02 00 | A1 00 04 00 01 00 FE 80 | B1 00 01 00 01",
             "00 00 00 00 00 00 | 02 00 | A1 00 04 00 01 00 FE 80 | B1 00 00 00",
             // fewer bytes than a count, an item that is not there
             "00 00 00 00 00 00 | 02",
             "00 00 00 00 00 00 | 02 00 | A1 00 04 00 01 00 FE 80",
         }) {
        connection.sequenceCount = 0;
        playBody(body);
        EXPECT_EQ("null", send()) << body;
        EXPECT_EQ((CipError{0, -20, 0}), lastError()) << body;
    }
}

TEST_F(ConnectedSend, EveryCutFails) {
    const Bytes whole = message(0x70, 0x77, 0, bytes(kGoodBody));
    for (size_t size = 24; size < whole.size(); ++size) {
        connection.sequenceCount = 0;
        transport.play(cutMessage(whole, size));
        EXPECT_EQ("null", send()) << size;
        EXPECT_NE((CipError{0, 0, 0}), lastError()) << size;
    }
}

TEST_F(ConnectedSend, Trace) {
    _cip_debuglevel = 2;
    testing::internal::CaptureStdout();
    send();
    fflush(stdout);
    std::string text = testing::internal::GetCapturedStdout();
    EXPECT_EQ(0u, text.find("->Entering ConnectedSend \n"));
    EXPECT_NE(std::string::npos, text.find("!Exiting ConnectedSend with no response\n"));

    playBody("");
    testing::internal::CaptureStdout();
    send();
    fflush(stdout);
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find(
                                     "!Exiting ConnectedSend with error : EIP error: 0000H\n"));

    connection.sequenceCount = 0;
    playBody(kGoodBody);
    testing::internal::CaptureStdout();
    send();
    fflush(stdout);
    EXPECT_NE(std::string::npos,
              testing::internal::GetCapturedStdout().find("<-Exiting ConnectedSend : size=14 (0x"));
}

}  // namespace
