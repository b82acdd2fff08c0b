#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "eip/cip/cip_trace.h"
#include "eip/cip/session.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

class RequestsTest : public testing::Test {
 protected:
    RequestsTest() : session(NewSession(2500, &transport)) {
        session->sessionHandle = 0x11223344;
        memcpy(session->senderContext, "ABCDEFGH", 8);
        _SetItem(&address, 0x0000, 0);
    }
    ~RequestsTest() override {
        DeleteSession(session);
        _cip_debuglevel = 0;
    }

    _Eip_Item* data(uint16_t length) {
        _SetItem(&dataItem, 0x00B2, length);
        return &dataItem;
    }

    ScriptedTransport transport;
    _Eip_Session* session;
    _Eip_Item address;
    _Eip_Item dataItem;
};

TEST_F(RequestsTest, BuildUnconnected) {
    _Encap_Header* request =
        _BuildRequest(session, &address, nullptr, data(3), "\xD1\xD2\xD3", 2500);
    ASSERT_TRUE(request);
    EXPECT_EQ(
        "00 00 13 00 44 33 22 11 00 00 00 00 41 42 43 44 45 46 47 48 00 00 00 00 "
        "00 00 00 00 02 00 02 00 00 00 00 00 B2 00 03 00 D1 D2 D3",
        hexOf(bytesAt(request, 43)));
    EXPECT_EQ((CipError{0, 0, 0}), lastError());
    free(request);
}

TEST_F(RequestsTest, LengthAndTimeoutFields) {
    const Bytes payload = filled(1000, 0);
    for (uint16_t n : {0, 1, 2, 100, 900, 984}) {
        _Encap_Header* request =
            _BuildRequest(session, &address, nullptr, data(n), payload.data(), 0);
        ASSERT_TRUE(request) << n;
        EXPECT_EQ(6 + 2 + 4 + 4 + n, _GetEncapLength(request));
        free(request);
    }
    const struct {
        uint32_t ms;
        const char* field;
    } rows[] = {{0, "00 00"},        {999, "00 00"},      {1000, "01 00"},      {2500, "02 00"},
                {65535999, "FF FF"}, {65536000, "FF FF"}, {UINT32_MAX, "FF FF"}};
    for (const auto& row : rows) {
        _Encap_Header* request = _BuildRequest(session, &address, nullptr, data(0), "", row.ms);
        EXPECT_EQ(row.field, hexOf(bytesAt(reinterpret_cast<char*>(request) + 28, 2)));
        free(request);
    }
}

TEST_F(RequestsTest, NothingBeyond1000Bytes) {
    const Bytes payload = filled(70000, 0);
    for (uint16_t n : {985, 986, 1000, 1001, 0x7FFF, 0xFFFF}) {
        CIPERROR(0, 0, 0);
        EXPECT_EQ(nullptr, _BuildRequest(session, &address, nullptr, data(n), payload.data(), 0));
        EXPECT_EQ((CipError{0, -31, 0}), lastError()) << n;
        EXPECT_EQ(nullptr, _SendRRData(session, &address, nullptr, data(n), payload.data()));
        EXPECT_EQ((CipError{0, -31, 0}), lastError()) << n;
        EXPECT_EQ(-1, _SendData(session, 0x6F, &address, nullptr, data(n), payload.data()));
        EXPECT_EQ((CipError{0, -31, 0}), lastError()) << n;
    }
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(RequestsTest, UnknownItems) {
    _Eip_Item unknown;
    _SetItem(&unknown, 0x1234, 0);
    EXPECT_EQ(nullptr, _BuildRequest(session, &unknown, nullptr, data(0), "", 0));
    EXPECT_EQ((CipError{0, -10, 0}), lastError());
    EXPECT_EQ(nullptr, _BuildRequest(session, &address, nullptr, &unknown, "", 0));
    EXPECT_EQ((CipError{0, -10, 0}), lastError());
}

TEST_F(RequestsTest, BadArguments) {
    EXPECT_EQ(nullptr, _BuildRequest(nullptr, &address, nullptr, data(0), "", 0));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(nullptr, _BuildRequest(session, nullptr, nullptr, data(0), "", 0));
    EXPECT_EQ(nullptr, _BuildRequest(session, &address, nullptr, nullptr, "", 0));
    EXPECT_EQ(nullptr, _SendRRData(nullptr, &address, nullptr, data(0), ""));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(-1, _SendData(nullptr, 0x6F, &address, nullptr, data(0), ""));
}

TEST_F(RequestsTest, WaitsForTheReply) {
    const Bytes answer = message(0x6F, 1, 0, bytes("AA BB"));
    transport.play(answer);
    _Encap_Header* reply = _SendRRData(session, &address, nullptr, data(2), "xy");
    ASSERT_TRUE(reply);
    EXPECT_EQ(hexOf(answer), hexOf(bytesAt(reply, answer.size())));
    EXPECT_EQ(std::vector<int>{2500}, transport.timeouts);
    EXPECT_EQ("6F 00 12 00", hexOf(bytesAt(transport.requests.at(0).data(), 4)));
    free(reply);

    transport.play(answer);
    free(_SendUnitData(session, &address, nullptr, data(2), "xy"));
    EXPECT_EQ("70 00 12 00", hexOf(bytesAt(transport.requests.at(1).data(), 4)));
}

TEST_F(RequestsTest, LostReplyIsNeverSuccess) {
    transport.lose();
    EXPECT_EQ(nullptr, _SendRRData(session, &address, nullptr, data(0), ""));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
    EXPECT_STREQ("Internal: timeout", cip_err_msg());
}

TEST_F(RequestsTest, TransportsReasonStays) {
    transport.lose([] { CIPERROR(0, -41, 0); });
    EXPECT_EQ(nullptr, _SendUnitData(session, &address, nullptr, data(0), ""));
    EXPECT_EQ((CipError{0, -41, 0}), lastError());
    transport.lose([] { CIPERROR(1, 104, 0); });
    EXPECT_EQ(nullptr, _SendUnitData(session, &address, nullptr, data(0), ""));
    EXPECT_EQ((CipError{1, 104, 0}), lastError());
    transport.lose([] { CIPERROR(2, 0, 0); });
    EXPECT_EQ(nullptr, _SendUnitData(session, &address, nullptr, data(0), ""));
    EXPECT_EQ((CipError{2, 0, 0}), lastError());
}

TEST_F(RequestsTest, ErrorsOfEarlierCallsAreCleared) {
    CIPERROR(5, 4, 0);
    transport.lose();
    EXPECT_EQ(nullptr, _SendRRData(session, &address, nullptr, data(0), ""));
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
}

TEST_F(RequestsTest, SendOnly) {
    EXPECT_EQ(24 + 18, _SendData(session, 0x6F, &address, nullptr, data(2), "xy"));
    EXPECT_TRUE(transport.timeouts.empty());
    EXPECT_EQ("6F 00 12 00", hexOf(bytesAt(transport.requests.at(0).data(), 4)));
    transport.sendResult = -4;
    EXPECT_EQ(-4, _SendData(session, 0x6F, &address, nullptr, data(2), "xy"));
}

TEST_F(RequestsTest, NoTransport) {
    session->transport = nullptr;
    EXPECT_EQ(nullptr, _SendRRData(session, &address, nullptr, data(0), ""));
    EXPECT_EQ((CipError{0, -6, 0}), lastError());
    EXPECT_EQ(-1, CipSendData(nullptr, nullptr));
    EXPECT_EQ(nullptr, CipRecvData(nullptr, 1));
    EXPECT_EQ(nullptr, CipSendData_WaitReply(nullptr, nullptr, 1, 1));
    EXPECT_EQ(-1, CipSendData(&transport, nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(nullptr, CipSendData_WaitReply(&transport, nullptr, 1, 1));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(0, _CipOpenSock());
}

TEST_F(RequestsTest, TraceOfAnExchange) {
    _cip_debuglevel = 2;
    testing::internal::CaptureStdout();
    _Encap_Header* request = _BuildRequest(session, &address, nullptr, data(3), "abc", 0);
    fflush(stdout);
    char expected[256];
    snprintf(expected, sizeof(expected),
             "->Entering BuildRequest \n<-Exiting BuildRequest : size=43 (%p)\n",
             static_cast<void*>(request));
    EXPECT_EQ(expected, testing::internal::GetCapturedStdout());
    free(request);

    testing::internal::CaptureStdout();
    EXPECT_EQ(nullptr, _SendRRData(session, &address, nullptr, data(1001), ""));
    EXPECT_EQ(-1, _SendData(session, 0x6F, &address, nullptr, data(1001), ""));
    fflush(stdout);
    EXPECT_EQ(
        "->Entering SendData_WaitReply\n->Entering BuildRequest \n"
        "!Exiting BuildRequest with error : Internal: buffer too small\n"
        "!Exiting SendData with error : Internal: buffer too small\n"
        "->Entering SendData \n->Entering BuildRequest \n"
        "!Exiting BuildRequest with error : Internal: buffer too small\n"
        "!Exiting SendData with error : Internal: buffer too small\n",
        testing::internal::GetCapturedStdout());
}

TEST_F(RequestsTest, TraceOfSending) {
    _cip_debuglevel = 2;
    testing::internal::CaptureStdout();
    _SendRRData(session, &address, nullptr, data(0), "");
    _SendData(session, 0x6F, &address, nullptr, data(0), "");
    fflush(stdout);
    const std::string text = testing::internal::GetCapturedStdout();
    EXPECT_EQ(0u, text.find("->Entering SendData_WaitReply\n->Entering BuildRequest \n"));
    EXPECT_NE(std::string::npos, text.find("<-Exiting SendData_WaitReply : (nil)\n"));
    EXPECT_NE(std::string::npos, text.find("->Entering SendData \n"));
    EXPECT_EQ(text.size() - strlen("<-Exiting SendData\n"), text.find("<-Exiting SendData\n"));
}

TEST_F(RequestsTest, DumpsAtLevelThree) {
    _cip_debuglevel = 3;
    testing::internal::CaptureStdout();
    free(_BuildRequest(session, &address, nullptr, data(1), "\xEE", 0));
    fflush(stdout);
    EXPECT_NE(std::string::npos, testing::internal::GetCapturedStdout().find(" (0040) :\tEE \n"));
}

}  // namespace
