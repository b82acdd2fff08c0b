#include <gtest/gtest.h>

#include <algorithm>

#include <string>

#include "eip/cip/connection_manager.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

class ConnectPLC : public testing::Test {
 protected:
    ConnectPLC() : session(NewSession(1000, &transport)) { session->sessionHandle = 0x77; }
    ~ConnectPLC() override { DeleteSession(session); }

    _Eip_Connection* open2(const unsigned char* route = nullptr, unsigned char length = 0,
                           int plcKind = 3) {
        return _ConnectPLCOverCNET2(session, plcKind, 5, 247, 0x80FE0001, 2, 0x501B, 0x11223344, 2,
                                    2000, _Transport, route, length);
    }

    _Eip_Connection* openCnet(const unsigned char* route, unsigned char length, int plcKind) {
        return _ConnectPLCOverCNET(session, plcKind, 5, 247, 0x80FE0001, 2, 0x501B, 0x11223344, 2,
                                   2000, _Transport, route, length);
    }

    _Eip_Connection* openDhp(char channel, const unsigned char* route, unsigned char length,
                             int plcKind) {
        return _ConnectPLCOverDHP(session, plcKind, 5, 247, 0x80FE0001, 2, 0x501B, 0x11223344, 2,
                                  2000, _Transport, channel, route, length);
    }

    /// The message-router request that went out last.
    std::string request(size_t from = 0, size_t count = 1000) const {
        const Bytes& whole = transport.requests.back();
        const size_t begin = 40 + from;
        const size_t end = std::min(whole.size(), begin + count);
        return hexOf(Bytes(whole.begin() + static_cast<std::ptrdiff_t>(begin),
                           whole.begin() + static_cast<std::ptrdiff_t>(end)));
    }

    ScriptedTransport transport;
    _Eip_Session* session;
};

const size_t kParametersOToT = 6 + 26;
const size_t kParametersTToO = 6 + 32;
const size_t kTransport = 6 + 34;

TEST_F(ConnectPLC, Cnet2RequestBytes) {
    // Forward Open, CIP Vol. 1, 3-5.5.2
    EXPECT_EQ(nullptr, open2());
    EXPECT_EQ(hexOf(bytes("54 02 20 06 24 01 | 05 F7 | 02 00 00 80 | 01 00 FE 80 | 02 00 | 1B 50 | "
                          "44 33 22 11 | 02 00 00 00 | 80 84 1E 00 | F8 43 | 80 84 1E 00 | F8 43 | "
                          "A3 | 02 | 20 02 24 01")),
              request());
}

TEST_F(ConnectPLC, CnetRequestBytes) {
    // Forward Open, CIP Vol. 1, 3-5.5.2; the route is port 1 (backplane) to slot 3, port 2
    // (ControlNet) to node 5, port 1 to slot 0 (port segments, C-1.4.1)
    const unsigned char route[] = {0x01, 0x03, 0x02, 0x05, 0x01, 0x00};
    EXPECT_EQ(nullptr, openCnet(route, sizeof(route), 1));
    EXPECT_EQ(hexOf(bytes("54 02 20 06 24 01 | 05 F7 | 00 00 00 00 | 01 00 FE 80 | 02 00 | 1B 50 | "
                          "44 33 22 11 | 02 00 00 00 | 80 84 1E 00 | 02 43 | 80 84 1E 00 | 02 43 | "
                          "A3 | 05 | 01 03 02 05 01 00 20 02 24 01")),
              request());
}

TEST_F(ConnectPLC, DhpRequestBytes) {
    // Forward Open, CIP Vol. 1, 3-5.5.2; connection point 1 of an instance of class 0xA6 (logical
    // segments, C-1.4.2) in slot 4
    const unsigned char route[] = {0x01, 0x04};
    const char expected[] =
        "54 02 20 06 24 01 | 05 F7 | 00 00 00 00 | 01 00 FE 80 | 02 00 | 1B 50 | 44 33 22 11 | "
        "02 00 00 00 | 80 84 1E 00 | 02 43 | 80 84 1E 00 | 02 43 | A3 | 04 | 01 04 ";
    for (char channel : {'A', 'a'}) {
        EXPECT_EQ(nullptr, openDhp(channel, route, 2, 2));
        EXPECT_EQ(hexOf(bytes(std::string(expected) + "20 A6 24 01 2C 01")), request());
    }
    for (char channel : {'B', 'b'}) {
        EXPECT_EQ(nullptr, openDhp(channel, route, 2, 2));
        EXPECT_EQ(hexOf(bytes(std::string(expected) + "20 A6 24 02 2C 01")), request());
    }
}

TEST_F(ConnectPLC, UnknownChannels) {
    for (char channel : {'C', '\0', '1', '@'}) {
        EXPECT_EQ(nullptr, openDhp(channel, nullptr, 0, 1));
        EXPECT_EQ((CipError{0, -1, 0}), lastError());
    }
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(ConnectPLC, ParametersByKindOfController) {
    const struct {
        int kind;
        const char* field;
    } rows[] = {{1, "02 43"}, {2, "02 43"}, {3, "F8 43"},
                {0, "F8 43"}, {4, "F8 43"}, {-1, "F8 43"}};
    for (const auto& row : rows) {
        open2(nullptr, 0, row.kind);
        EXPECT_EQ(row.field, request(kParametersOToT, 2)) << row.kind;
        EXPECT_EQ(row.field, request(kParametersTToO, 2)) << row.kind;
        openCnet(nullptr, 0, row.kind);
        EXPECT_EQ(row.field, request(kParametersOToT, 2)) << row.kind;
        openDhp('A', nullptr, 0, row.kind);
        EXPECT_EQ(row.field, request(kParametersTToO, 2)) << row.kind;
    }
}

TEST_F(ConnectPLC, RoutePathComesBeforeTheRouter) {
    const unsigned char route[] = {0x01, 0x02};
    open2(route, 2);
    EXPECT_EQ("A3 03 01 02 20 02 24 01", request(kTransport));
    open2(route, 0);
    EXPECT_EQ("A3 02 20 02 24 01", request(kTransport));
    open2(nullptr, 2);
    EXPECT_EQ("A3 02 20 02 24 01", request(kTransport));
}

TEST_F(ConnectPLC, OddPathsArePadded) {
    const unsigned char route[] = {0x0F};
    open2(route, 1);
    EXPECT_EQ("A3 03 0F 20 02 24 01 00", request(kTransport));
}

TEST_F(ConnectPLC, PathsThatTheRecordCannotHoldAreRefused) {
    const Bytes route = filled(255, 0x01);
    for (int length : {252, 253, 255}) {
        const unsigned char size = static_cast<unsigned char>(length);
        EXPECT_EQ(nullptr, open2(route.data(), size));
        EXPECT_EQ((CipError{0, -31, 0}), lastError()) << length;
        EXPECT_EQ(nullptr, openCnet(route.data(), size, 1));
        EXPECT_EQ(nullptr, openDhp('A', route.data(), size, 1));
        EXPECT_EQ((CipError{0, -31, 0}), lastError()) << length;
    }
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(ConnectPLC, LongestPath) {
    const Bytes route = filled(251, 0x01);
    transport.play(unconnectedReply(0x77, "D4 00 00 00 | 02 00 00 80 | 01 00 FE 80"));
    _Eip_Connection* connection = open2(route.data(), 251);
    ASSERT_TRUE(connection);
    EXPECT_EQ(255, connection->pathLength);
    EXPECT_EQ(hexOf(filled(251, 1) + bytes("20 02 24 01")), hexOf(bytesAt(connection->path, 255)));
    DeleteConnection(&connection);
}

TEST_F(ConnectPLC, TargetChoosesTheId) {
    transport.play(unconnectedReply(0x77, "D4 00 00 00 | 44 33 22 11 | 01 00 FE 80"));
    _Eip_Connection* connection = openDhp('B', nullptr, 0, 1);
    ASSERT_TRUE(connection);
    EXPECT_EQ(0x11223344u, connection->oToTConnectionId);
    EXPECT_EQ(6, connection->pathLength);
    DeleteConnection(&connection);
    transport.play(unconnectedReply(0x77, "D4 00 01 01 15 03"));
    EXPECT_EQ(nullptr, openCnet(nullptr, 0, 1));
    EXPECT_EQ((CipError{3, 1, 0x0315}), lastError());
}

}  // namespace
