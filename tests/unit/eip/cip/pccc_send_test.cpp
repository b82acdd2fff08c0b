#include "eip/cip/pccc_send.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "eip/cip/cip_trace.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

class PcccSend : public testing::Test {
 protected:
    PcccSend() : session(NewSession(1000, &transport)), connection(), dhp(), target() {
        session->sessionHandle = 0x77;
        connection.session = session;
        connection.oToTConnectionId = 0x11223344;
        target.session = session;
    }
    ~PcccSend() override {
        DeleteSession(session);
        _cip_debuglevel = 0;
    }

    typedef _PCCC_Reply* (*Send)(const _PCCC_Target*, const void*, int, int*);

    /// Sends a request (transaction 0x1234) and returns the PCCC reply as text.
    std::string send(Send way) {
        const Bytes request = bytes("0F 00 34 12 A2 02 07 89 00 00");
        int size = -1;
        _PCCC_Reply* reply = way(&target, request.data(), static_cast<int>(request.size()), &size);
        const std::string text = reply ? hexOf(bytesAt(reply, static_cast<size_t>(size))) : "null";
        EXPECT_TRUE(reply || size == 0);
        free(reply);
        return text;
    }

    std::string sendUnconnected() { return send(_SendUnConnectedPCCCRequest); }
    std::string sendConnected() {
        connection.sequenceCount = 0;
        target.connection = &connection;
        return send(_SendConnectedPCCCRequest);
    }

    ScriptedTransport transport;
    _Eip_Session* session;
    _Eip_Connection connection;
    _DHP_Header dhp;
    _PCCC_Target target;
};

const char kGood[] = "CB 00 00 00 | 07 06 04 89 67 45 23 | 4F 00 34 12 2A 00";

TEST_F(PcccSend, RequestorId) {
    EXPECT_EQ("07 06 04 89 67 45 23", hexOf(bytesAt(_PCCC_RequestorID, sizeof(_PCCC_RequestorID))));
}

TEST_F(PcccSend, UnconnectedRequestBytes) {
    // Execute PCCC (service 4B) to the PCCC object, class 67: requestor id, then the DF1 command
    EXPECT_EQ("null", sendUnconnected());
    EXPECT_EQ(
        hexOf(bytes("4B 02 20 67 24 01 | 07 06 04 89 67 45 23 | "
                    "0F 00 34 12 A2 02 07 89 00 00")),
        hexOf(bytesAt(transport.requests.at(0).data() + 40, transport.requests.at(0).size() - 40)));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
}

TEST_F(PcccSend, RoutedRequestBytes) {
    // The same in an Unconnected Send (CIP Vol. 1, 3-5.5.4): 23 bytes and one to even them
    const unsigned char route[] = {0x01, 0x03};
    target.routePath = route;
    target.routePathLength = 2;
    EXPECT_EQ("null", sendUnconnected());
    EXPECT_EQ(
        hexOf(bytes("52 02 20 06 24 01 | 07 9A | 17 00 | 4B 02 20 67 24 01 | "
                    "07 06 04 89 67 45 23 | 0F 00 34 12 A2 02 07 89 00 00 | 00 | 01 00 | "
                    "01 03")),
        hexOf(bytesAt(transport.requests.at(0).data() + 40, transport.requests.at(0).size() - 40)));
    transport.play(unconnectedReply(0x77, kGood));
    EXPECT_EQ("4F 00 34 12 2A 00", sendUnconnected());
    transport.play(unconnectedReply(0x77, "D2 00 01 01 12 03 01"));
    EXPECT_EQ("null", sendUnconnected());
    EXPECT_EQ((CipError{3, 1, 0x0312}), lastError());
}

TEST_F(PcccSend, ConnectedRequestBytes) {
    EXPECT_EQ("null", sendConnected());
    EXPECT_EQ(
        hexOf(bytes("A1 00 04 00 44 33 22 11 | B1 00 19 00 01 00 | 4B 02 20 67 24 01 | "
                    "07 06 04 89 67 45 23 | 0F 00 34 12 A2 02 07 89 00 00")),
        hexOf(bytesAt(transport.requests.at(0).data() + 32, transport.requests.at(0).size() - 32)));
}

TEST_F(PcccSend, DhpRequestBytes) {
    dhp.destinationLink = 0x0102;
    dhp.destinationNode = 0x0304;
    dhp.sourceLink = 0x0506;
    dhp.sourceNode = 0x0708;
    target.dhp = &dhp;
    EXPECT_EQ("null", sendConnected());
    EXPECT_EQ(
        hexOf(bytes("A1 00 04 00 44 33 22 11 | B1 00 14 00 01 00 | "
                    "02 01 04 03 06 05 08 07 | 0F 00 34 12 A2 02 07 89 00 00")),
        hexOf(bytesAt(transport.requests.at(0).data() + 32, transport.requests.at(0).size() - 32)));
}

TEST_F(PcccSend, Replies) {
    transport.play(unconnectedReply(0x77, kGood));
    EXPECT_EQ("4F 00 34 12 2A 00", sendUnconnected());
    transport.play(connectedReply(0x77, 1, kGood));
    EXPECT_EQ("4F 00 34 12 2A 00", sendConnected());
    transport.play(connectedReply(0x77, 1, "CB 00 00 00 | 07 06 04 89 67 45 23 | 4F 10 34 12"));
    EXPECT_EQ("4F 10 34 12", sendConnected()) << "its status is the caller's to judge";
    target.dhp = &dhp;
    transport.play(connectedReply(0x77, 1, "06 05 08 07 02 01 04 03 | 4F 00 34 12 2A 00"));
    EXPECT_EQ("4F 00 34 12 2A 00", sendConnected());
}

TEST_F(PcccSend, RefusedByTheObject) {
    transport.play(unconnectedReply(0x77, "CB 00 08 00"));
    EXPECT_EQ("null", sendUnconnected());
    EXPECT_EQ((CipError{3, 8, 0}), lastError());
    transport.play(connectedReply(0x77, 1, "CB 00 01 01 00 01 00"));
    EXPECT_EQ("null", sendConnected());
    EXPECT_EQ((CipError{3, 1, 0x0100}), lastError());
    transport.play(unconnectedReply(0x77, "CB 00 08 00 | 07 06 04 89 67 45 23 | 4F 00 34 12"));
    EXPECT_EQ("null", sendUnconnected());
    EXPECT_EQ((CipError{3, 8, 0}), lastError());
}

TEST_F(PcccSend, RepliesToSomethingElse) {
    const CipError unsolicited{0, -7, 0};
    const CipError invalid{0, -20, 0};
    const struct {
        const char* reply;
        CipError error;
    } rows[] = {
        {"CB 00 00 00 | 07 06 04 89 67 45 24 | 4F 00 34 12", unsolicited},  // requestor
        {"CB 00 00 00 | 08 06 04 89 67 45 23 | 4F 00 34 12", unsolicited},
        {"CB 00 00 00 | 07 06 04 89 67 45 23 | 4F 00 35 12", unsolicited},  // transaction
        {"CB 00 00 00 | 07 06 04 89 67 45 23 | 4F 00 34 13", unsolicited},
        {"CB 00 00 00 | 07 06 04 89 67 45 23 | 0F 00 34 12", unsolicited},  // a request
        {"CB 00 00 00 | 07 06 04 89 67 45 23 | 46 00 34 12", unsolicited},  // another command
        {"CB 00 00 00 | 07 06 04 89 67 45 23 | 4F 00 34", invalid},         // cut
        {"CB 00 00 00 | 07 06 04 89 67 45 23", invalid},
        {"CB 00 00 00 | 07 06 04 89 67 45", invalid},
        {"CB 00 00 00", invalid},
        {"CC 00 00 00 | 07 06 04 89 67 45 23 | 4F 00 34 12", invalid},  // another service
    };
    for (const auto& row : rows) {
        transport.play(unconnectedReply(0x77, row.reply));
        EXPECT_EQ("null", sendUnconnected());
        EXPECT_EQ(row.error, lastError()) << row.reply;
        transport.play(connectedReply(0x77, 1, row.reply));
        EXPECT_EQ("null", sendConnected());
        EXPECT_EQ(row.error, lastError()) << row.reply;
    }
}

TEST_F(PcccSend, DhpRepliesThatDoNotHoldTogether) {
    target.dhp = &dhp;
    for (const char* reply : {"", "06 05 08 07 02 01 04", "06 05 08 07 02 01 04 03",
                              "06 05 08 07 02 01 04 03 | 4F 00 34"}) {
        transport.play(connectedReply(0x77, 1, reply));
        EXPECT_EQ("null", sendConnected());
        EXPECT_EQ((CipError{0, -20, 0}), lastError()) << reply;
    }
    transport.play(connectedReply(0x77, 1, "06 05 08 07 02 01 04 03 | 4F 00 00 12"));
    EXPECT_EQ("null", sendConnected());
    EXPECT_EQ((CipError{0, -7, 0}), lastError());
}

TEST_F(PcccSend, BadArguments) {
    const Bytes request = filled(2000, 0x0F);
    for (Send way : {_SendUnConnectedPCCCRequest, _SendConnectedPCCCRequest}) {
        EXPECT_EQ(nullptr, way(nullptr, request.data(), 10, nullptr));
        EXPECT_EQ((CipError{0, -1, 0}), lastError());
        EXPECT_EQ(nullptr, way(&target, nullptr, 10, nullptr));
        EXPECT_EQ((CipError{0, -8, 0}), lastError());
        for (int length : {0, 3, -1}) {
            EXPECT_EQ(nullptr, way(&target, request.data(), length, nullptr));
            EXPECT_EQ((CipError{0, -8, 0}), lastError()) << length;
        }
        target.connection = &connection;
        for (int length : {980, 994, 1000, 1001, INT32_MAX}) {
            EXPECT_EQ(nullptr, way(&target, request.data(), length, nullptr));
            EXPECT_EQ((CipError{0, -31, 0}), lastError()) << length;
        }
    }
    target.dhp = &dhp;
    EXPECT_EQ(nullptr, _SendConnectedPCCCRequest(&target, request.data(), 993, nullptr));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ("null", sendUnconnected());
    EXPECT_EQ((CipError{0, -22, 0}), lastError());
    target.connection = nullptr;
    EXPECT_EQ(nullptr, _SendConnectedPCCCRequest(&target, request.data(), 10, nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    target.session = nullptr;
    EXPECT_EQ(nullptr, _SendConnectedPCCCRequest(&target, request.data(), 10, nullptr));
    target.dhp = nullptr;
    EXPECT_EQ(nullptr, _SendUnConnectedPCCCRequest(&target, request.data(), 10, nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_TRUE(transport.requests.empty());
}

std::string traceOf(const std::function<void()>& call) {
    _cip_debuglevel = 2;
    testing::internal::CaptureStdout();
    call();
    fflush(stdout);
    _cip_debuglevel = 0;
    return testing::internal::GetCapturedStdout();
}

TEST_F(PcccSend, Trace) {
    const auto contains = [](const std::string& text, const std::string& line) {
        return text.find(line) != std::string::npos;
    };
    transport.play(unconnectedReply(0x77, kGood));
    std::string text = traceOf([this] { sendUnconnected(); });
    EXPECT_EQ(0u, text.find("->Entering SendUnConnectedPCCCRequest \n"));
    EXPECT_TRUE(contains(text, "->Exiting SendUnConnectedPCCCRequest : size=6 (0x"));

    transport.play(unconnectedReply(0x77, "CB 00 08 00"));
    text = traceOf([this] { sendUnconnected(); });
    EXPECT_TRUE(
        contains(text, "!Exiting SendUnConnectedPCCCRequest with error : MR error: 0008H\n"));

    transport.play(connectedReply(0x77, 1, kGood));
    text = traceOf([this] { sendConnected(); });
    EXPECT_EQ(0u, text.find("->Entering SendConnectedPCCCRequest method is NOT DH+\n"));
    EXPECT_TRUE(contains(text, "->Exiting SendUnConnectedPCCCRequest : size=6 (0x"));

    target.dhp = &dhp;
    text = traceOf([this] { sendConnected(); });
    EXPECT_EQ(0u, text.find("->Entering SendConnectedPCCCRequest method is DH+\n"));
    EXPECT_TRUE(
        contains(text, "!Exiting SendConnectedPCCCRequest with error : Internal: timeout\n"));
}

}  // namespace
