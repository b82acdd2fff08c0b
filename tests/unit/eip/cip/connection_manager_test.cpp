#include "eip/cip/connection_manager.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "eip/cip/cip_trace.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

class ConnectionManager : public testing::Test {
 protected:
    ConnectionManager() : session(NewSession(1000, &transport)) { session->sessionHandle = 0x77; }
    ~ConnectionManager() override {
        DeleteSession(session);
        _cip_debuglevel = 0;
    }

    _Eip_Connection* connection(const Bytes& path) {
        _Eip_Connection* made = static_cast<_Eip_Connection*>(calloc(1, sizeof(_Eip_Connection)));
        made->session = session;
        made->connectionSerial = 0xB1B2;
        made->vendorId = 0xC1C2;
        made->originatorSerial = 0xD1D2D3D4;
        made->pathLength = static_cast<uint8_t>(path.size());
        std::copy(path.begin(), path.end(), made->path);
        return made;
    }

    void playReply(const std::string& reply) { transport.play(unconnectedReply(0x77, reply)); }

    ScriptedTransport transport;
    _Eip_Session* session;
};

TEST(ConnectionDefaults, Values) {
    EXPECT_EQ(0x004D, _OriginatorVendorID);
    EXPECT_EQ(0x38BE3B1Fu, _OriginatorSerialNumber);
    EXPECT_EQ(0x07, _Priority);
    EXPECT_EQ(0x9A, _TimeOut_Ticks);
    EXPECT_EQ(0x43F8, _Parameters);
    EXPECT_EQ(0xA3, _Transport);
    EXPECT_EQ(0x02, _TimeOutMultiplier);
}

TEST_F(ConnectionManager, DefaultsAreAProgramsToSet) {
    const uint8_t priority = _Priority;
    const uint8_t ticks = _TimeOut_Ticks;
    _Priority = 0x0A;
    _TimeOut_Ticks = 0x0E;
    _Forward_Close(connection(bytes("20 02 24 01")));
    _Priority = priority;
    _TimeOut_Ticks = ticks;
    EXPECT_EQ("4E 02 20 06 24 01 0A 0E", hexOf(bytesAt(transport.requests.at(0).data() + 40, 8)));
}

TEST_F(ConnectionManager, CloseRequestBytes) {
    // CIP Vol. 1, 3-5.5.3, in SendRRData (Vol. 2, 2-4.7)
    EXPECT_EQ(-1, _Forward_Close(connection(bytes("20 02 24 01"))));
    EXPECT_EQ(
        hexOf(bytes("6F 00 26 00 77 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 | "
                    "00 00 00 00 01 00 | 02 00 00 00 00 00 B2 00 16 00 | "
                    "4E 02 20 06 24 01 | "
                    "07 9A | B2 B1 | C2 C1 | D4 D3 D2 D1 | 02 00 | 20 02 24 01")),
        hexOf(transport.requests.at(0)));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
}

TEST_F(ConnectionManager, CloseWithoutWaiting) {
    playReply("CE 00 00 00");
    EXPECT_EQ(62, _SendForwardClose(connection(bytes("20 02 24 01"))));
    EXPECT_TRUE(transport.timeouts.empty()) << "nothing is awaited";
    EXPECT_EQ(
        hexOf(bytes("6F 00 26 00 77 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 | "
                    "00 00 00 00 01 00 | 02 00 00 00 00 00 B2 00 16 00 | "
                    "4E 02 20 06 24 01 | "
                    "07 9A | B2 B1 | C2 C1 | D4 D3 D2 D1 | 02 00 | 20 02 24 01")),
        hexOf(transport.requests.at(0)));
    EXPECT_EQ((CipError{0, 0, 0}), lastError());
    EXPECT_EQ(40 + 6 + 12 + 256, _SendForwardClose(connection(filled(255, 0x5A))));
    transport.sendResult = 0;
    EXPECT_EQ(0, _SendForwardClose(connection(bytes("20 02 24 01"))));
    EXPECT_EQ(-1, _SendForwardClose(nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    session->transport = nullptr;
    EXPECT_EQ(-1, _SendForwardClose(connection(bytes("20 02 24 01"))));
    EXPECT_EQ((CipError{0, -6, 0}), lastError());
}

TEST_F(ConnectionManager, OddPathsArePadded) {
    _ExForward_Close(session, 0x11, 0x12, 1, 2, 3, CM_PATH, 3);
    EXPECT_EQ(hexOf(bytes("4E 02 20 06 24 01 | 11 12 | 01 00 | 02 00 | 03 00 00 00 | 02 00 | "
                          "20 06 24 00")),
              hexOf(bytesAt(transport.requests.at(0).data() + 40, 22)));
}

TEST_F(ConnectionManager, LongestPath) {
    playReply("CE 00 00 00");
    EXPECT_EQ(0, _Forward_Close(connection(filled(255, 0x5A))));
    const Bytes& request = transport.requests.at(0);
    ASSERT_EQ(40u + 6 + 12 + 256, request.size());
    EXPECT_EQ("80 00 5A", hexOf(bytesAt(request.data() + 56, 3)));
    EXPECT_EQ("5A 00", hexOf(bytesAt(request.data() + request.size() - 2, 2)));
}

TEST_F(ConnectionManager, BadArguments) {
    EXPECT_EQ(-1, _Forward_Close(nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    const Bytes path = filled(256, 0);
    EXPECT_EQ(-1, _ExForward_Close(session, 1, 2, 3, 4, 5, path.data(), 256));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ(-1, _ExForward_Close(session, 1, 2, 3, 4, 5, nullptr, 2));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(-1, _ExForward_Close(nullptr, 1, 2, 3, 4, 5, CM_PATH, 4));
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(ConnectionManager, ResultIsTheGeneralStatus) {
    playReply("CE 00 00 00 | B2 B1 | C2 C1 | D4 D3 D2 D1 | 00 00");
    EXPECT_EQ(0, _Forward_Close(connection(bytes("20 02 24 01"))));
    EXPECT_EQ((CipError{3, 0, 0}), lastError());
    playReply("CE 00 01 01 07 01");
    EXPECT_EQ(1, _Forward_Close(connection(bytes("20 02 24 01"))));
    EXPECT_EQ((CipError{3, 1, 0x0107}), lastError());
}

TEST_F(ConnectionManager, ReplyOfAnotherService) {
    playReply("D4 00 00 00");
    EXPECT_EQ(-1, _Forward_Close(connection(bytes("20 02 24 01"))));
    EXPECT_EQ((CipError{0, -20, 0}), lastError());
}

TEST_F(ConnectionManager, CloseIsTraced) {
    playReply("CE 00 00 00 11 22");
    _cip_debuglevel = 3;
    testing::internal::CaptureStdout();
    _ExForward_Close(session, 1, 2, 3, 4, 5, CM_PATH, 4);
    fflush(stdout);
    const std::string text = testing::internal::GetCapturedStdout();
    const size_t at = text.find("_ExForward_Close : reply=0x");
    ASSERT_NE(std::string::npos, at);
    EXPECT_EQ(text.size() - 5, text.find(" (6)\n", at));
}

TEST_F(ConnectionManager, DeleteSetsThePointerToNull) {
    _Eip_Connection* made = connection(Bytes());
    DeleteConnection(&made);
    EXPECT_EQ(nullptr, made);
    DeleteConnection(&made);
    DeleteConnection(nullptr);
    EXPECT_TRUE(transport.requests.empty());
}

}  // namespace
