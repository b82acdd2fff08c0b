#include "apps/simulator/objects/connection_manager.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "unit/apps/simulator/hex.h"

namespace {

using sim::Bytes;
using sim::CipStatus;
using sim::ConnectionManager;

const uint64_t kOwner = 7;

/// A Forward Open for the message router: RPI 2 s, multiplier 2, so 32 s without traffic.
Bytes openData(uint8_t serial = 2) {
    Bytes data =
        hex("05 F7 02000080 0100FE80 0200 1B50 44332211 02 000000"
            "80841E00 F843 80841E00 F843 A3 02 20022401");
    data[10] = serial;
    return data;
}

Bytes closeData(uint8_t serial = 2) {
    Bytes data = hex("07 9A 0200 1B50 44332211 02 00 20022401");
    data[2] = serial;
    return data;
}

sim::ConnectionSettings settings(size_t limit, int64_t timeoutMs, std::vector<Bytes> paths = {}) {
    sim::ConnectionSettings given;
    given.limit = limit;
    given.timeoutMs = timeoutMs;
    given.paths = std::move(paths);
    return given;
}

std::string text(const CipStatus& status) {
    char text[16];
    std::snprintf(text, sizeof text, status.hasExtended ? "%02X/%04X" : "%02X", status.general,
                  status.extended);
    return text;
}

std::string open(ConnectionManager& manager, const Bytes& data, int64_t now = 0) {
    Bytes reply;
    return text(manager.forwardOpen(kOwner, data, now, &reply));
}

std::string close(ConnectionManager& manager, const Bytes& data, int64_t now = 0) {
    Bytes reply;
    return text(manager.forwardClose(data, now, &reply));
}

TEST(ForwardOpen, AnswersIdsTriadAndIntervals) {
    ConnectionManager manager(settings(16, 0));
    Bytes reply;
    ASSERT_TRUE(manager.forwardOpen(kOwner, openData(), 0, &reply).ok());
    ASSERT_EQ(26u, reply.size());
    const uint32_t id = sim::get32(reply, 0);
    EXPECT_NE(0u, id);
    EXPECT_EQ(hexText("0100FE80 0200 1B50 44332211 80841E00 80841E00 00 00"),
              hexOf(sim::ByteView(reply).from(4)));
    ASSERT_TRUE(manager.use(id, kOwner, 0));
    EXPECT_EQ(0x80FE0001u, manager.use(id, kOwner, 0)->toOriginatorId);
}

TEST(ForwardOpen, GrantsNoMoreThanTheSettingsSay) {
    sim::ConnectionSettings given;
    Bytes data = openData();
    data[26] = 0xF4;  // O->T 244, T->O 504 bytes
    data[27] = 0x42;
    const struct {
        size_t largest;
        size_t toTarget;
        size_t toOriginator;
    } rows[] = {{511, 244, 504}, {300, 244, 300}, {100, 100, 100}};
    for (const auto& row : rows) {
        given.largestSize = row.largest;
        ConnectionManager manager(given);
        Bytes reply;
        ASSERT_TRUE(manager.forwardOpen(kOwner, data, 0, &reply).ok());
        const sim::CipConnection* connection = manager.use(sim::get32(reply, 0), kOwner, 0);
        ASSERT_TRUE(connection);
        EXPECT_EQ(row.toTarget, connection->toTargetSize) << row.largest;
        EXPECT_EQ(row.toOriginator, connection->toOriginatorSize) << row.largest;
    }
}

TEST(ForwardOpen, RefusesSizesThatHoldNoValue) {
    for (const size_t at : {size_t(26), size_t(32)}) {
        ConnectionManager manager(settings(16, 0));
        Bytes data = openData();
        data[at] = 7;
        data[at + 1] = 0x42;
        EXPECT_EQ("01/0109", open(manager, data)) << at;
        data[at] = 8;
        EXPECT_EQ("00", open(manager, data)) << at;
    }
}

TEST(ForwardOpen, GivesEveryConnectionAnIdOfItsOwn) {
    ConnectionManager manager(settings(16, 0));
    Bytes first;
    Bytes second;
    ASSERT_TRUE(manager.forwardOpen(kOwner, openData(2), 0, &first).ok());
    ASSERT_TRUE(manager.forwardOpen(kOwner, openData(3), 0, &second).ok());
    EXPECT_NE(sim::get32(first, 0), sim::get32(second, 0));
    EXPECT_EQ(2u, manager.count(0));
}

TEST(ForwardOpen, RefusesOtherPaths) {
    ConnectionManager manager(settings(16, 0));
    const char* const paths[] = {"00", "03 010020022401", "02 20022402", "02 20062401", "01 2002"};
    for (const char* path : paths) {
        Bytes data = openData();
        data.resize(35);
        sim::putBytes(data, hex(path));
        EXPECT_EQ("01/0311", open(manager, data)) << path;
    }
    Bytes reply;
    Bytes data = openData();
    data.back() = 2;
    manager.forwardOpen(kOwner, data, 0, &reply);
    EXPECT_EQ(hexText("0200 1B50 44332211 00 00"), hexOf(reply));
    EXPECT_EQ(0u, manager.count(0));
}

TEST(ForwardOpen, TakesPathsThatWereNamed) {
    ConnectionManager manager(settings(16, 0,
                                       {hex("010020022401"), hex("0100"), hex("20A624012C01"),
                                        hex("010020A624022C01"), hex("20A624032C01")}));
    const struct {
        const char* path;
        bool toDhpProxy;
    } rows[] = {
        {"02 20022401", false},    {"03 010020022401", false},    {"01 0100", false},
        {"03 20A624012C01", true}, {"04 010020A624022C01", true}, {"03 20A624032C01", false},
    };
    uint8_t serial = 0;
    for (const auto& row : rows) {
        Bytes data = openData(++serial);
        data.resize(35);
        sim::putBytes(data, hex(row.path));
        Bytes reply;
        ASSERT_EQ("00", text(manager.forwardOpen(kOwner, data, 0, &reply))) << row.path;
        EXPECT_EQ(row.toDhpProxy, manager.use(sim::get32(reply, 0), kOwner, 0)->toDhpProxy)
            << row.path;
    }
    Bytes data = openData(++serial);
    data.resize(35);
    sim::putBytes(data, hex("03 010120022401"));
    EXPECT_EQ("01/0311", open(manager, data));
    EXPECT_TRUE(manager.accepts(hex("0100")));
    EXPECT_FALSE(manager.accepts(hex("01000100")));
    EXPECT_FALSE(manager.accepts(Bytes()));
}

TEST(ForwardOpen, RefusesOneConnectionTooMany) {
    ConnectionManager manager(settings(2, 0));
    EXPECT_EQ("00", open(manager, openData(1)));
    EXPECT_EQ("00", open(manager, openData(2)));
    EXPECT_EQ("01/0113", open(manager, openData(3)));
    EXPECT_EQ("00", close(manager, closeData(1)));
    EXPECT_EQ("00", open(manager, openData(3)));
}

TEST(ForwardOpen, RefusesATriadTwice) {
    ConnectionManager manager(settings(16, 0));
    EXPECT_EQ("00", open(manager, openData()));
    EXPECT_EQ("01/0100", open(manager, openData()));
    EXPECT_EQ(1u, manager.count(0));
}

TEST(ForwardOpen, RefusesOtherTransports) {
    ConnectionManager manager(settings(16, 0));
    Bytes data = openData();
    data[34] = 0x81;  // class 1
    EXPECT_EQ("01/0103", open(manager, data));
    data[34] = 0x23;  // class 3 without the server bit is class 3 all the same
    EXPECT_EQ("00", open(manager, data));
}

TEST(ForwardOpen, RefusesReservedMultipliers) {
    ConnectionManager manager(settings(16, 0));
    Bytes data = openData();
    data[18] = 8;
    EXPECT_EQ("01/0108", open(manager, data));
    data[18] = 7;
    EXPECT_EQ("00", open(manager, data));
}

TEST(ForwardOpen, RefusesConnectionsThatAreNotPointToPointWithOneOwner) {
    for (const size_t at : {size_t(27), size_t(33)}) {
        // Null, multicast, reserved; with the bit of a redundant owner.
        for (const uint8_t high : {0x03, 0x23, 0x63, 0xC3}) {
            ConnectionManager manager(settings(16, 0));
            Bytes data = openData();
            data[at] = high;
            EXPECT_EQ("01/0108", open(manager, data)) << at << " " << int(high);
        }
        ConnectionManager manager(settings(16, 0));
        Bytes data = openData();
        data[at] = 0x4D;  // of fixed size, urgent
        EXPECT_EQ("00", open(manager, data)) << at;
    }
}

TEST(ForwardOpen, RefusesIntervalsOfNoTime) {
    for (const size_t at : {size_t(22), size_t(28)}) {
        ConnectionManager manager(settings(16, 0));
        Bytes data = openData();
        std::fill(data.begin() + long(at), data.begin() + long(at) + 4, uint8_t(0));
        EXPECT_EQ("01/0111", open(manager, data)) << at;
        data[at] = 1;
        EXPECT_EQ("00", open(manager, data)) << at;
    }
}

TEST(ForwardOpen, ChecksItsLength) {
    ConnectionManager manager(settings(16, 0));
    const Bytes whole = openData();
    for (size_t size = 0; size < whole.size(); ++size) {
        Bytes reply;
        const sim::ByteView part(whole.data(), size);
        EXPECT_EQ("13", text(manager.forwardOpen(kOwner, part, 0, &reply))) << size;
        EXPECT_EQ(size < 18 ? 0u : 10u, reply.size()) << size;
    }
    Bytes longer = whole;
    longer.push_back(0);
    EXPECT_EQ("15", open(manager, longer));
    EXPECT_EQ(0u, manager.count(0));
}

TEST(ForwardClose, ClosesTheConnectionOfTheTriad) {
    ConnectionManager manager(settings(16, 0));
    Bytes opened;
    manager.forwardOpen(kOwner, openData(2), 0, &opened);
    EXPECT_EQ("00", open(manager, openData(3)));
    Bytes reply;
    EXPECT_TRUE(manager.forwardClose(closeData(2), 0, &reply).ok());
    EXPECT_EQ(hexText("0200 1B50 44332211 00 00"), hexOf(reply));
    EXPECT_FALSE(manager.use(sim::get32(opened, 0), kOwner, 0));
    EXPECT_EQ(1u, manager.count(0));
    EXPECT_EQ("01/0107", close(manager, closeData(2)));
}

TEST(ForwardClose, ChecksItsLength) {
    ConnectionManager manager(settings(16, 0));
    EXPECT_EQ("00", open(manager, openData()));
    const Bytes whole = closeData();
    for (size_t size = 0; size < whole.size(); ++size) {
        Bytes reply;
        EXPECT_EQ("13", text(manager.forwardClose(sim::ByteView(whole.data(), size), 0, &reply)));
    }
    Bytes longer = whole;
    longer.push_back(0);
    EXPECT_EQ("15", close(manager, longer));
    EXPECT_EQ(1u, manager.count(0));
}

TEST(ForwardClose, RefusesUnknownTriads) {
    ConnectionManager manager(settings(16, 0));
    EXPECT_EQ("00", open(manager, openData()));
    for (const size_t at : {size_t(2), size_t(4), size_t(6)}) {
        Bytes data = closeData();
        data[at] ^= 1;
        Bytes reply;
        EXPECT_EQ("01/0107", text(manager.forwardClose(data, 0, &reply))) << at;
        EXPECT_EQ(10u, reply.size());
    }
}

TEST(Connection, IsDroppedAfterFourTimesTwoToTheMultiplierIntervals) {
    ConnectionManager manager(settings(16, 0));
    Bytes reply;
    manager.forwardOpen(kOwner, openData(), 1000, &reply);
    const uint32_t id = sim::get32(reply, 0);
    EXPECT_TRUE(manager.use(id, kOwner, 1000 + 32000));
    EXPECT_TRUE(manager.use(id, kOwner, 1000 + 64000));
    EXPECT_FALSE(manager.use(id, kOwner, 1000 + 96001));
    EXPECT_EQ(0u, manager.count(1000 + 96001));
    EXPECT_EQ("01/0107", close(manager, closeData(), 1000 + 96001));
}

TEST(Connection, HasTenSecondsForItsFirstMessage) {
    ConnectionManager manager(settings(16, 0));
    Bytes data = openData();
    sim::set32(data, 22, 10000);  // 10 ms, so 40 ms with this multiplier
    data[18] = 0;
    Bytes reply;
    ASSERT_TRUE(manager.forwardOpen(kOwner, data, 0, &reply).ok());
    const uint32_t id = sim::get32(reply, 0);
    EXPECT_TRUE(manager.use(id, kOwner, 10000));
    EXPECT_TRUE(manager.use(id, kOwner, 10040));
    EXPECT_FALSE(manager.use(id, kOwner, 10081));
    ASSERT_TRUE(manager.forwardOpen(kOwner, data, 20000, &reply).ok());
    EXPECT_EQ(1u, manager.count(30000));
    EXPECT_EQ(0u, manager.count(30001));
}

TEST(Connection, TimesOutAsItsMultiplierSays) {
    for (uint8_t multiplier = 0; multiplier < 8; ++multiplier) {
        ConnectionManager manager(settings(16, 0));
        Bytes data = openData();
        data[18] = multiplier;
        Bytes reply;
        ASSERT_TRUE(manager.forwardOpen(kOwner, data, 0, &reply).ok());
        ASSERT_TRUE(manager.use(sim::get32(reply, 0), kOwner, 0));
        const int64_t limit = int64_t(8000) << multiplier;
        EXPECT_EQ(1u, manager.count(limit)) << int(multiplier);
        EXPECT_EQ(0u, manager.count(limit + 1)) << int(multiplier);
    }
}

TEST(Connection, OfATriadThatTimedOutCanBeOpenedAgain) {
    ConnectionManager manager(settings(1, 0));
    EXPECT_EQ("00", open(manager, openData(), 0));
    EXPECT_EQ("01/0100", open(manager, openData(), 32000));
    EXPECT_EQ("00", open(manager, openData(), 32001));
}

TEST(Connection, HasTheTimeOutOfTheSettings) {
    ConnectionManager manager(settings(16, 50));
    EXPECT_EQ("00", open(manager, openData(), 0));
    EXPECT_EQ(1u, manager.count(50));
    EXPECT_EQ(0u, manager.count(51));
}

TEST(Connection, BelongsToItsTcpConnection) {
    ConnectionManager manager(settings(16, 0));
    Bytes reply;
    manager.forwardOpen(kOwner, openData(2), 0, &reply);
    const uint32_t id = sim::get32(reply, 0);
    manager.forwardOpen(kOwner + 1, openData(3), 0, &reply);
    EXPECT_FALSE(manager.use(id, kOwner + 1, 0));
    EXPECT_FALSE(manager.use(id + 2, kOwner, 0));
    manager.release(kOwner);
    EXPECT_FALSE(manager.use(id, kOwner, 0));
    EXPECT_EQ(1u, manager.count(0));
    manager.dropAll();
    EXPECT_EQ(0u, manager.count(0));
}

TEST(Connection, OutlivesItsTcpConnectionWhenItIsKept) {
    sim::ConnectionSettings given = settings(1, 0);
    given.keep = true;
    ConnectionManager manager(given);
    EXPECT_EQ("00", open(manager, openData(2), 0));
    manager.release(kOwner);
    EXPECT_EQ(1u, manager.count(32000));
    Bytes reply;
    EXPECT_EQ("01/0113", text(manager.forwardOpen(kOwner + 1, openData(3), 1000, &reply)));
    EXPECT_EQ("01/0100", text(manager.forwardOpen(kOwner + 1, openData(2), 1000, &reply)));
    EXPECT_EQ("00", close(manager, closeData(2), 1000));
    EXPECT_EQ("00", text(manager.forwardOpen(kOwner + 1, openData(3), 1000, &reply)));
    manager.release(kOwner + 1);
    EXPECT_EQ("00", open(manager, openData(4), 1000 + 32001));
}

}  // namespace
