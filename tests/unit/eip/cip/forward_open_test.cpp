#include <gtest/gtest.h>

#include <string>

#include "eip/cip/connection_manager.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

class ForwardOpen : public testing::Test {
 protected:
    ForwardOpen() : session(NewSession(1000, &transport)) { session->sessionHandle = 0x77; }
    ~ForwardOpen() override { DeleteSession(session); }

    void playReply(const std::string& reply) { transport.play(unconnectedReply(0x77, reply)); }

    _Eip_Connection* open() {
        return _Forward_Open2(session, 5, 247, 0x80FE0001, 2, 0x501B, 0x11223344, 2, 2000, 0x43F8,
                              0xA3, ROUTER_PATH, sizeof(ROUTER_PATH));
    }

    /// The message-router request that went out last.
    Bytes request() const {
        const Bytes& whole = transport.requests.back();
        return Bytes(whole.begin() + 40, whole.end());
    }

    ScriptedTransport transport;
    _Eip_Session* session;
};

// Reply data (CIP Vol. 1, 3-5.5.2): O->T id, T->O id, serial, vendor, originator serial, O->T API,
// T->O API, application reply size, reserved.
const char kGoodReply[] =
    "D4 00 00 00 | 02 00 00 80 | 01 00 FE 80 | 02 00 | 1B 50 | 44 33 22 11 | "
    "80 84 1E 00 | 80 84 1E 00 | 00 00";

TEST_F(ForwardOpen, RequestBytes) {
    // CIP Vol. 1, 3-5.5.2, in SendRRData (Vol. 2, 2-4.7)
    EXPECT_EQ(nullptr, open());
    EXPECT_EQ(hexOf(bytes(
                  "6F 00 3E 00 77 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 | "
                  "00 00 00 00 01 00 | 02 00 00 00 00 00 B2 00 2E 00 | "
                  "54 02 20 06 24 01 | "
                  "05 F7 | 02 00 00 80 | 01 00 FE 80 | 02 00 | 1B 50 | 44 33 22 11 | 02 00 00 00 | "
                  "80 84 1E 00 | F8 43 | 80 84 1E 00 | F8 43 | A3 | 02 | 20 02 24 01")),
              hexOf(transport.requests.at(0)));
}

TEST_F(ForwardOpen, BadPaths) {
    EXPECT_EQ(nullptr, _Forward_Open(session, 5, 247, 1, 2, 3, 4, 2, 1, 5, 6, nullptr, 4));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(nullptr, _Forward_Open2(session, 5, 247, 1, 2, 3, 4, 2, 1, 5, 6, CM_PATH, -1));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(nullptr, _Forward_Open(nullptr, 5, 247, 1, 2, 3, 4, 2, 1, 5, 6, CM_PATH, 4));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
}

TEST_F(ForwardOpen, WithoutAPath) {
    playReply(kGoodReply);
    _Eip_Connection* made = _Forward_Open(session, 5, 247, 0x80FE0001, 2, 0x501B, 0x11223344, 2,
                                          2000, 0x43F8, 0xA3, nullptr, 0);
    ASSERT_NE(nullptr, made);
    EXPECT_EQ(0, made->pathLength);
    EXPECT_EQ(6u + 36u, request().size());
    EXPECT_EQ(0, request().back()) << "the path's size in words";
    DeleteConnection(&made);
}

TEST_F(ForwardOpen, EveryFieldOfTheCaller) {
    _Forward_Open(session, 0x11, 0x12, 0xA1A2A3A4, 0xB1B2, 0xC1C2, 0xD1D2D3D4, 0xE1, 3, 0xF1F2,
                  0x21, CM_PATH, 3);
    EXPECT_EQ(hexOf(bytes("54 02 20 06 24 01 | 11 12 | 00 00 00 00 | A4 A3 A2 A1 | B2 B1 | C2 C1 | "
                          "D4 D3 D2 D1 | E1 00 00 00 | B8 0B 00 00 | F2 F1 | B8 0B 00 00 | F2 F1 | "
                          "21 | 02 | 20 06 24 00")),
              hexOf(request()));
}

TEST_F(ForwardOpen, SecondFormDerivesTheOtherId) {
    const struct {
        uint32_t tToO;
        const char* oToT;
    } rows[] = {{0x80FE0001, "02 00 00 80"},
                {0x00FE000F, "10 00 00 00"},
                {0xFFFFFFFF, "10 00 00 80"},
                {0x7FFFFFF0, "01 00 00 00"}};
    for (const auto& row : rows) {
        _Forward_Open2(session, 5, 247, row.tToO, 2, 3, 4, 2, 1, 5, 6, CM_PATH, 4);
        EXPECT_EQ(row.oToT, hexOf(bytesAt(request().data() + 6 + 2, 4)));
    }
}

TEST_F(ForwardOpen, IntervalsAreHeldWithin32Bits) {
    _Forward_Open(session, 5, 247, 1, 2, 3, 4, 2, UINT32_MAX, 5, 6, CM_PATH, 4);
    EXPECT_EQ("FF FF FF FF", hexOf(bytesAt(request().data() + 6 + 22, 4)));
    _Forward_Open(session, 5, 247, 1, 2, 3, 4, 2, 4294967, 5, 6, CM_PATH, 4);
    EXPECT_EQ("D8 FE FF FF", hexOf(bytesAt(request().data() + 6 + 22, 4)));
}

TEST_F(ForwardOpen, NoReply) {
    EXPECT_EQ(nullptr, open());
    EXPECT_EQ((CipError{0, -5, 0}), lastError());
}

TEST_F(ForwardOpen, RefusedByTheController) {
    playReply("D4 00 01 01 13 01 | 02 00 | 1B 50 | 44 33 22 11 | 00 00");
    EXPECT_EQ(nullptr, open());
    EXPECT_EQ((CipError{3, 1, 0x0113}), lastError());
    EXPECT_STREQ("MR error: 0001H, 0113H", cip_err_msg());
    playReply("D4 00 08 00");
    EXPECT_EQ(nullptr, open());
    EXPECT_EQ((CipError{3, 8, 0}), lastError());
}

TEST_F(ForwardOpen, ReplyWithoutBothIds) {
    for (int size = 0; size < 8; ++size) {
        playReply("D4 00 00 00 " + hexOf(filled(static_cast<size_t>(size), 0x11)));
        EXPECT_EQ(nullptr, open()) << size;
        EXPECT_EQ((CipError{0, -20, 0}), lastError()) << size;
    }
    playReply("D4 00 00 01 01 02 | 01 02 03 04 05 06 07");
    EXPECT_EQ(nullptr, open());
    EXPECT_EQ((CipError{0, -20, 0}), lastError()) << "additional status is no data";
}

TEST_F(ForwardOpen, RecordOfAnOpenConnection) {
    playReply("D4 00 00 00 | A4 A3 A2 A1 | B4 B3 B2 B1");
    _Eip_Connection* connection = open();
    ASSERT_TRUE(connection);
    EXPECT_EQ(session, connection->session);
    EXPECT_EQ(filled(8, 0), bytesAt(connection->reserved, 8));
    EXPECT_EQ(2, connection->connectionSerial);
    EXPECT_EQ(0x501B, connection->vendorId);
    EXPECT_EQ(0x11223344u, connection->originatorSerial);
    EXPECT_EQ(0xA1A2A3A4u, connection->oToTConnectionId);
    EXPECT_EQ(0xB1B2B3B4u, connection->tToOConnectionId);
    EXPECT_EQ(0, connection->sequenceCount);
    EXPECT_EQ(4, connection->pathLength);
    EXPECT_EQ("20 02 24 01", hexOf(bytesAt(connection->path, 4)));
    DeleteConnection(&connection);
    EXPECT_EQ(nullptr, connection);
}

/// Bits 0 to 8 of the network connection parameters (CIP Vol. 1, 3-5.5.1.1).
TEST_F(ForwardOpen, SizeOfTheConnection) {
    const struct {
        uint16_t parameters;
        int size;
        int requestLimit;  ///< without the sequence count
    } rows[] = {{0x43F8, 504, 502}, {0x4302, 258, 256},     {0x43FF, 511, 509},
                {0x4202, 2, 0},     {0x4200, 0, INT32_MAX}, {0xFE00, 0, INT32_MAX}};
    for (const auto& row : rows) {
        playReply(kGoodReply);
        _Eip_Connection* connection =
            _Forward_Open(session, 5, 247, 0x80FE0001, 2, 0x501B, 0x11223344, 2, 2000,
                          row.parameters, 0xA3, ROUTER_PATH, 4);
        ASSERT_TRUE(connection);
        EXPECT_EQ(row.size, connection->connectionSize);
        EXPECT_EQ(row.requestLimit, _GetConnectedRequestLimit(connection));
        DeleteConnection(&connection);
    }
    EXPECT_EQ(INT32_MAX, _GetConnectedRequestLimit(nullptr));
}

TEST_F(ForwardOpen, WholeReply) {
    playReply(kGoodReply);
    _Eip_Connection* connection = open();
    ASSERT_TRUE(connection);
    EXPECT_EQ(0x80000002u, connection->oToTConnectionId);
    EXPECT_EQ(0x80FE0001u, connection->tToOConnectionId);
    DeleteConnection(&connection);
}

}  // namespace
