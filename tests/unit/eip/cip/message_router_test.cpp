#include "eip/cip/message_router.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "unit/eip/cip/scripted_transport.h"

namespace {

class MessageRouter : public testing::Test {
 protected:
    MessageRouter() : session(NewSession(1000, &transport)) { session->sessionHandle = 0x77; }
    ~MessageRouter() override { DeleteSession(session); }

    /// Sends service 0x54 and returns the reply's bytes as text, "null" without one.
    std::string send() {
        int size = -1;
        _MR_Reply* reply = _SendMRRequest(session, 0x54, CM_PATH, 4, "\x01\x02\x03", 3, &size);
        const std::string text = reply ? hexOf(bytesAt(reply, static_cast<size_t>(size))) : "null";
        EXPECT_TRUE(reply || size == 0) << size;
        free(reply);
        return text;
    }

    void playReply(const std::string& items) {
        transport.play(message(0x6F, 0x77, 0, bytes("00 00 00 00 00 00 " + items)));
    }

    ScriptedTransport transport;
    _Eip_Session* session;
};

TEST(MessageRouterPaths, Bytes) {
    EXPECT_EQ("20 06 24 01", hexOf(bytesAt(CM_PATH, sizeof(CM_PATH))));
    EXPECT_EQ("20 02 24 01", hexOf(bytesAt(ROUTER_PATH, sizeof(ROUTER_PATH))));
    EXPECT_EQ("20 66 24 01", hexOf(bytesAt(BACKPLANE_DATA_PATH, sizeof(BACKPLANE_DATA_PATH))));
    EXPECT_EQ("20 67 24 01", hexOf(bytesAt(PCCC_PATH, sizeof(PCCC_PATH))));
    EXPECT_EQ("20 A6 24 01 2C 01", hexOf(bytesAt(DHPA_PROXY_PATH, sizeof(DHPA_PROXY_PATH))));
    EXPECT_EQ("20 A6 24 02 2C 01", hexOf(bytesAt(DHPB_PROXY_PATH, sizeof(DHPB_PROXY_PATH))));
}

TEST_F(MessageRouter, BuildRequest) {
    int size = 0;
    unsigned char* request = _BuildMRRequest(0x54, CM_PATH, 4, "\xAA\xBB", 2, &size);
    EXPECT_EQ("54 02 20 06 24 01 AA BB", hexOf(bytesAt(request, static_cast<size_t>(size))));
    free(request);
    request = _BuildMRRequest(0x01, nullptr, 0, nullptr, 0, &size);
    EXPECT_EQ("01 00", hexOf(bytesAt(request, static_cast<size_t>(size))));
    free(request);
}

TEST_F(MessageRouter, BuildRequestRefusesWhatDoesNotFit) {
    const Bytes path = filled(600, 0);
    const Bytes data = filled(2000, 0);
    const struct {
        int pathLength;
        int dataLength;
        int error;
    } rows[] = {{511, 0, -31},   {512, 0, -31},       {INT32_MAX, 0, -31}, {4, 995, -31},
                {510, 489, -31}, {0, INT32_MAX, -31}, {-1, 0, -1},         {4, -1, -1}};
    for (const auto& row : rows) {
        int size = 77;
        EXPECT_EQ(nullptr, _BuildMRRequest(1, path.data(), row.pathLength, data.data(),
                                           row.dataLength, &size));
        EXPECT_EQ((CipError{0, row.error, 0}), lastError());
        EXPECT_EQ(0, size);
    }
    int size = 77;
    EXPECT_EQ(nullptr, _BuildMRRequest(1, nullptr, 4, data.data(), 2, &size));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(nullptr, _BuildMRRequest(1, path.data(), 4, nullptr, 2, &size));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(0, size);
    unsigned char* request = _BuildMRRequest(1, path.data(), 510, data.data(), 488, &size);
    ASSERT_TRUE(request);
    EXPECT_EQ(1000, size);
    EXPECT_EQ(255, request[1]);
    free(request);
}

TEST_F(MessageRouter, RequestGoesOutUnconnected) {
    send();
    EXPECT_EQ(
        "6F 00 19 00 77 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
        "00 00 00 00 01 00 02 00 00 00 00 00 B2 00 09 00 54 02 20 06 24 01 01 02 03",
        hexOf(transport.requests.at(0)));
}

TEST_F(MessageRouter, NoReply) {
    EXPECT_EQ("null", send());
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
    EXPECT_EQ(nullptr, _SendMRRequest(nullptr, 1, CM_PATH, 4, nullptr, 0, nullptr));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
}

TEST_F(MessageRouter, RawReplyIsHandedOutUnchecked) {
    const Bytes answer = message(0x99, 5, 6, bytes("01"));
    transport.play(answer);
    _Encap_Header* reply = _ExSendMRRequest(session, "\x01\x00", 2);
    ASSERT_TRUE(reply);
    EXPECT_EQ(hexOf(answer), hexOf(bytesAt(reply, answer.size())));
    free(reply);
    EXPECT_EQ(nullptr, _ExSendMRRequest(session, nullptr, 2));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(nullptr, _ExSendMRRequest(session, "", -1));
    EXPECT_EQ(nullptr, _ExSendMRRequest(session, "", 70000));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
}

TEST_F(MessageRouter, RefusedByTheEncapsulation) {
    for (uint32_t session : {0x77u, 0u}) {
        transport.play(message(0x6F, session, 0x64, Bytes()));
        EXPECT_EQ("null", send());
        EXPECT_EQ((CipError{2, 0x64, 0}), lastError());
    }
    transport.play(message(0x6F, 0x77, 3, bytes("00 00 00 00 00 00 01 00 00 00 00 00")));
    EXPECT_EQ("null", send());
    EXPECT_EQ((CipError{2, 3, 0}), lastError());
}

TEST_F(MessageRouter, EncapsulationStatusBesideADataItem) {
    const char* const body = "00 00 00 00 00 00 02 00 00 00 00 00 B2 00 06 00 D4 00 01 01 13 01";
    transport.play(message(0x6F, 0x77, 3, bytes(body)));
    EXPECT_EQ("D4 00 01 01 13 01", send());
    EXPECT_EQ((CipError{3, 1, 0x0113}), lastError());
    transport.play(message(0x6F, 0x78, 3, bytes(body)));
    EXPECT_EQ("null", send()) << "of another session";
    EXPECT_EQ((CipError{0, -7, 0}), lastError());
}

TEST_F(MessageRouter, NoDataItem) {
    transport.play(message(0x6F, 0x77, 0, Bytes()));
    EXPECT_EQ("null", send());
    EXPECT_EQ((CipError{2, 0, 0}), lastError());
    playReply("01 00 00 00 00 00");
    EXPECT_EQ("null", send());
    EXPECT_EQ((CipError{2, 0, 0}), lastError());
}

TEST_F(MessageRouter, AnotherCommandOrSession) {
    const Bytes body = bytes("00 00 00 00 00 00 02 00 00 00 00 00 B2 00 04 00 D4 00 00 00");
    transport.play(message(0x70, 0x77, 0, body));
    EXPECT_EQ("null", send());
    EXPECT_EQ((CipError{0, -7, 0}), lastError());
    transport.play(message(0x6F, 0x78, 0, body));
    EXPECT_EQ("null", send());
    EXPECT_EQ((CipError{0, -7, 0}), lastError());
}

TEST_F(MessageRouter, RepliesThatDoNotHoldTogether) {
    for (const char* items : {
             "02 00 | 00 00 00 00 | B2 00 05 00 D4 00 00 00",     // data item past the end
             "02 00 | 00 00 00 00",                               // announced, not there
             "02 00 | 00 00 00 00 | B2 00 03 00 D4 00 00",        // head not whole
             "02 00 | 00 00 00 00 | B2 00 00 00",                 // empty
             "02 00 | 00 00 00 00 | B2 00 04 00 D4 00 01 01",     // additional status not there
             "02 00 | 00 00 00 00 | B2 00 05 00 D4 00 01 01 00",  // half of it
             "02 00 | 00 00 00 00 | B2 00 06 00 D4 00 01 FF 00 01",
             "02 00 | 00 00 00 00 | A1 00 04 00 D4 00 00 00",  // another kind of item
             "02 00 | 00 00 00 00 | B2 00 04 00 CE 00 00 00",  // another service's reply
             "02 00 | 00 00 00 00 | B2 00 04 00 54 00 00 00",  // the request itself
         }) {
        playReply(items);
        EXPECT_EQ("null", send()) << items;
        EXPECT_EQ((CipError{0, -20, 0}), lastError()) << items;
    }
}

TEST_F(MessageRouter, StatusIsRecordedAndTheReplyHandedOut) {
    const struct {
        const char* reply;
        CipError error;
    } rows[] = {
        {"D4 00 00 00", {3, 0, 0}},
        {"D4 00 05 00", {3, 5, 0}},
        {"D4 00 01 01 13 01", {3, 1, 0x0113}},
        {"D4 00 01 01 00 80", {3, 1, -32768}},
        {"D4 00 01 02 78 56 34 12", {3, 1, 0x12345678}},
        {"D4 00 01 03 01 00 02 00 03 00", {3, 1, 0}},
        {"D4 00 00 00 AA BB CC", {3, 0, 0}},
    };
    for (const auto& row : rows) {
        const size_t size = bytes(row.reply).size();
        playReply("02 00 00 00 00 00 B2 00 " + hexOf(Bytes{static_cast<unsigned char>(size), 0}) +
                  " " + row.reply);
        EXPECT_EQ(row.reply, send());
        EXPECT_EQ(row.error, lastError());
    }
}

TEST_F(MessageRouter, OtherKindsOfDataItems) {
    playReply("02 00 | 00 00 00 00 | B1 00 07 00 01 00 D4 00 00 00 EE");
    EXPECT_EQ("D4 00 00 00 EE", send());
    playReply("02 00 | 00 00 00 00 | 00 80 20 00 " + hexOf(filled(24, 0)) +
              " D4 00 00 00 01 02 03 04");
    EXPECT_EQ("D4 00 00 00", send());
    playReply("02 00 | 00 00 00 00 | 00 80 1B 00 " + hexOf(filled(27, 0)));
    EXPECT_EQ("null", send());
}

TEST_F(MessageRouter, MoreItemsMayFollow) {
    playReply("03 00 | 00 00 00 00 | B2 00 05 00 D4 00 00 00 AB | 00 80 01 00 00");
    EXPECT_EQ("D4 00 00 00 AB", send());
}

TEST_F(MessageRouter, SizeIsOptional) {
    playReply("02 00 | 00 00 00 00 | B2 00 04 00 D4 00 00 00");
    _MR_Reply* reply = _SendMRRequest(session, 0x54, CM_PATH, 4, nullptr, 0, nullptr);
    EXPECT_TRUE(reply);
    free(reply);
}

TEST_F(MessageRouter, ReadersOfAnEncapsulatedReply) {
    const ReplyBuffer reply(message(0x6F, 0x77, 0,
                                    bytes("00 00 00 00 00 00 02 00 00 00 00 00 B2 00 09 00 "
                                          "D4 00 01 01 13 01 AA BB CC")));
    const _MR_Reply* found = _GetMRReply(reply.header());
    EXPECT_EQ(reply.as<unsigned char>() + 40, reinterpret_cast<const unsigned char*>(found));
    EXPECT_EQ(found, _GetCMReply(reply.header()));
    EXPECT_EQ(9, _GetMRReplySize(reply.header()));
    EXPECT_EQ(3, _GetMRDataSize(reply.header()));
    EXPECT_EQ(reply.as<unsigned char>() + 46, _GetMRData(found));
    EXPECT_EQ(0x0113, _GetMRExtendedStatus(found));
}

TEST_F(MessageRouter, ReadersWithoutAReply) {
    const ReplyBuffer empty(message(0x6F, 0x77, 0, Bytes()));
    for (const _Encap_Header* reply :
         {empty.header(), static_cast<const _Encap_Header*>(nullptr)}) {
        CIPERROR(0, 0, 0);
        EXPECT_EQ(nullptr, _GetMRReply(reply));
        EXPECT_EQ((CipError{0, -20, 0}), lastError());
        EXPECT_EQ(0, _GetMRReplySize(reply));
        EXPECT_EQ(0, _GetMRDataSize(reply));
    }
    EXPECT_EQ(nullptr, _GetMRData(nullptr));
    EXPECT_EQ(-1, _GetMRExtendedStatus(nullptr));
}

}  // namespace
