#include "unit/apps/simulator/controller_fixture.h"

namespace {

TEST_F(ControllerTest, RegistersASession) {
    const std::string reply = serve(kRegister);
    EXPECT_NE(0u, m_session.handle);
    EXPECT_EQ(expected("6500 0400 SSSSSSSS 00000000 A1A2A3A4A5A6A7A8 00000000 0100 0000"), reply);
}

TEST_F(ControllerTest, RefusesToRegister) {
    EXPECT_EQ(hexText("6500 0000 00000000 65000000 0000000000000000 00000000"),
              serve("6500 0300 00000000 00000000 0000000000000000 00000000 0100 00"));
    EXPECT_EQ(hexText("6500 0000 00000000 65000000 0000000000000000 00000000"),
              serve("6500 0500 00000000 00000000 0000000000000000 00000000 0100 0000 00"));
    EXPECT_EQ(hexText("6500 0400 00000000 69000000 0000000000000000 00000000 0100 0000"),
              serve("6500 0400 00000000 00000000 0000000000000000 00000000 0200 0000"));
    EXPECT_EQ(hexText("6500 0400 00000000 69000000 0000000000000000 00000000 0100 0000"),
              serve("6500 0400 00000000 00000000 0000000000000000 00000000 0100 0100"));
    EXPECT_EQ(0u, m_session.handle);
    registerSession();
    const uint32_t handle = m_session.handle;
    EXPECT_EQ(hexText("6500 0400 00000000 01000000 A1A2A3A4A5A6A7A8 00000000 0100 0000"),
              serve(kRegister));
    EXPECT_EQ(handle, m_session.handle);
}

TEST_F(ControllerTest, UnRegisterEndsTheTcpConnectionWithoutAnAnswer) {
    registerSession();
    EXPECT_EQ("", serve("6600 0000 77777777 00000000 0000000000000000 00000000"));
    EXPECT_FALSE(m_exchange.closeTcp);
    EXPECT_EQ("", serve("6600 0000 SSSSSSSS 00000000 0000000000000000 00000000"));
    EXPECT_TRUE(m_exchange.closeTcp);
}

TEST_F(ControllerTest, ListsIdentityServicesAndInterfaces) {
    EXPECT_EQ(hexText("6300 3700 00000000 00000000 0102030405060708 00000000 0100"
                      "0C00 3100 0100 0002 AF12 7F000001 0000000000000000"
                      "0100 0E00 BA00 0C0B 3400 DEC08060 0F 323038302D4C4335302D3438515742 03"),
              serve("6300 0000 00000000 00000000 0102030405060708 00000000"));
    EXPECT_EQ(hexText("0400 1A00 00000000 00000000 0000000000000000 00000000 0100"
                      "0001 1400 0100 2000 436F6D6D756E69636174696F6E730000"),
              serve("0400 0000 00000000 00000000 0000000000000000 00000000"));
    EXPECT_EQ(hexText("6400 0200 00000000 00000000 0000000000000000 00000000 0000"),
              serve("6400 0000 00000000 00000000 0000000000000000 00000000"));
    EXPECT_EQ(hexText("6300 0000 00000000 65000000 0000000000000000 00000000"),
              serve("6300 0100 00000000 00000000 0000000000000000 00000000 00"));
}

TEST_F(ControllerTest, RefusesUnknownCommandsAndIgnoresSome) {
    EXPECT_EQ(hexText("9900 0000 00000000 01000000 0102030405060708 00000000"),
              serve("9900 0200 00000000 00000000 0102030405060708 00000000 AABB"));
    EXPECT_EQ("", serve("0000 0200 00000000 00000000 0000000000000000 00000000 AABB"));
    EXPECT_STREQ("NOP", m_exchange.note);
    EXPECT_EQ("", serve("6300 0000 00000000 01000000 0000000000000000 00000000"));
    EXPECT_EQ("", serve("6300 0000 00000000 00000000 0000000000000000 01000000"));
    EXPECT_EQ("", serve("6300 0000 00000000"));
}

TEST_F(ControllerTest, NeedsItsSession) {
    EXPECT_EQ(hexText("6F00 0000 00000000 64000000 0000000000000000 00000000"),
              serve("6F00 0000 00000000 00000000 0000000000000000 00000000"));
    const std::string refused = hexText("7000 0000 44332211 64000000 0000000000000000 00000000");
    const std::string body =
        "00000000 0000 0200 A100 0400 01000000 B100 0A00 0100 4C 02 91014100 0100";
    EXPECT_EQ(refused, serve("7000 1E00 44332211 00000000 0000000000000000 00000000" + body));
    registerSession();
    EXPECT_EQ(refused, serve("7000 1E00 44332211 00000000 0000000000000000 00000000" + body));
    EXPECT_EQ(hexText("6F00 0000 00000000 64000000 0000000000000000 00000000"),
              serve("6F00 0000 00000000 00000000 0000000000000000 00000000"));
}

TEST_F(ControllerTest, RefusesMalformedPackets) {
    openConnection();
    const std::string length = expected("7000 0000 SSSSSSSS 65000000 0000000000000000 00000000");
    const std::string data = expected("7000 0000 SSSSSSSS 03000000 0000000000000000 00000000");
    const std::string unconnected =
        expected("6F00 0000 SSSSSSSS 03000000 0000000000000000 00000000");
    const std::string unit = "7000 0000 SSSSSSSS 00000000 0000000000000000 00000000";
    const std::string rr = "6F00 0000 SSSSSSSS 00000000 0000000000000000 00000000";
    const std::string prefix = "00000000 0000 0200";
    EXPECT_EQ(length, serve(unit));
    EXPECT_EQ(length, serve(unit + "00000000 0000 02"));
    EXPECT_EQ(data, serve(unit + prefix));
    EXPECT_EQ(data, serve(unit + prefix + "A100 0300 000000 B100 0200 0100"));
    EXPECT_EQ(data, serve(unit + prefix + "A100 0400 CCCCCCCC B100 0100 01"));
    EXPECT_EQ(data, serve(unit + prefix + "A100 0400 CCCCCCCC B200 0200 0100"));
    EXPECT_EQ(data, serve(unit + prefix + "0000 0000 B100 0200 0100"));
    EXPECT_EQ(data, serve(unit + prefix + "A100 0400 CCCCCCCC B100 0300 0100 4C"));  // no path size
    EXPECT_EQ(unconnected, serve(rr + prefix + "0000 0000 B200 0100 4C"));
    EXPECT_EQ(unconnected, serve(rr + prefix + "A100 0400 CCCCCCCC B200 0800 4C02910141000100"));
    EXPECT_EQ(unconnected, serve(rr + prefix + "0000 0100 00 B200 0800 4C02910141000100"));
    EXPECT_EQ(unconnected, serve(rr + prefix + "0000 0000 B100 0800 4C02910141000100"));
}

TEST_F(ControllerTest, OpensAndClosesAConnection) {
    registerSession();
    const std::string opened = serve(kOpen);
    m_connection = sim::get32(m_exchange.reply, 44);
    EXPECT_EQ(expected("6F00 2E00 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 0000 0000 B200 1E00"
                       "D4 00 00 00 CCCCCCCC 0100FE80 0200 1B50 44332211 80841E00 80841E00 00 00"),
              opened);
    EXPECT_EQ(expected("6F00 1E00 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 0000 0000 B200 0E00"
                       "CE 00 00 00 0200 1B50 44332211 00 00"),
              serve(kClose));
    EXPECT_EQ(expected("6F00 2000 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 0000 0000 B200 1000"
                       "CE 00 01 01 0701 0200 1B50 44332211 00 00"),
              serve(kClose));
    EXPECT_EQ("", serve(kReadA));
    EXPECT_STREQ("no such connection", m_exchange.note);
}

TEST_F(ControllerTest, ReadsAndWritesOnAConnection) {
    openConnection();
    EXPECT_EQ(expected("7000 2000 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0100"
                       "CC 00 00 00 C400 2A000000"),
              serve(kReadA));
    EXPECT_EQ("A", m_exchange.path.text());
    EXPECT_EQ(expected("7000 1A00 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 A100 0400 0100FE80 B100 0600 0200 CD 00 00 00"),
              serve(kWriteA));
    EXPECT_EQ("07000000", hexOf(m_exchange.written));
    EXPECT_EQ("07000000", hexOf(sim::ByteView(m_tags.find("A")->bytes(0), 4)));
}

/// A connected request with this message-router request in it.
std::string connected(const std::string& cip) {
    sim::Bytes length;
    sim::put16(length, uint16_t(2 + hex(cip).size()));
    return "7000 0000 SSSSSSSS 00000000 0000000000000000 00000000"
           "00000000 0000 0200 A100 0400 CCCCCCCC B100 " +
           hexOf(length) + "0900" + cip;
}

TEST_F(ControllerTest, AnswersServicesWithTheirStatus) {
    openConnection();
    const struct {
        const char* why;
        const char* request;
        const char* reply;
    } rows[] = {
        {"unknown tag", "4C 02 91024E4F 0100", "CC000500"},
        {"past the end", "4C 02 91014100 0200", "CC00FF010521"},
        {"wrong type", "4D 02 91014100 C300 0100 0100", "CD00FF010721"},
        {"too little data", "4D 02 91014100 C400 0100 01", "CD001300"},
        {"read fragmented", "52 02 91014100 0100 00000000", "D2000800"},
        {"multiple service packet", "0A 02 20022401 0100 0400 4C02910141000100", "8A000800"},
        {"get attributes all", "01 02 20012401", "81000800"},
        {"service 0", "00 00", "80000800"},
        {"a service with the reply flag", "CC 02 91014100 0100", "CC000800"},
        {"no path", "4C 00 0100", "CC000400"},
        {"an unreadable path", "4C 02 91054100 0100", "CC000400"},
        {"a path past the end", "4C 09 91014100 0100", "CC002600"},
        {"a tag service for an object", "4C 02 20022401 0100", "CC000500"},
        {"a connection service for a tag", "54 02 91014100 0100", "D4000500"},
        {"a connection service for another object", "4E 02 20022401", "CE000500"},
        {"a connection service for another instance", "4E 02 20062402", "CE000500"},
        {"a Forward Open without data", "54 02 20062401", "D4001300"},
    };
    for (const auto& row : rows) {
        serve(connected(row.request));
        ASSERT_LT(46u, m_exchange.reply.size()) << row.why;
        EXPECT_EQ(hexText(row.reply), hexOf(sim::ByteView(m_exchange.reply).from(46))) << row.why;
    }
}

TEST_F(ControllerTest, ServesTagsWithoutAConnectionToo) {
    registerSession();
    EXPECT_EQ(expected("6F00 1A00 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 0000 0000 B200 0A00 CC 00 00 00 C400 2A000000"),
              serve("6F00 1800 SSSSSSSS 00000000 0000000000000000 00000000"
                    "00000000 0000 0200 0000 0000 B200 0800 4C 02 91014100 0100"));
}

TEST_F(ControllerTest, RefusesAReplyThatNoFrameHolds) {
    addTag("BIG:SINT[65535]");
    openConnection();
    // 52 bytes from the header to the type, and 65507 elements, make a body of 65535.
    serve(connected("4C 03 9103 424947 00 E3FF"));
    EXPECT_EQ(24u + 65535, m_exchange.reply.size());
    EXPECT_EQ(65535, sim::get16(m_exchange.reply, 2));
    serve(connected("4C 03 9103 424947 00 E4FF"));
    EXPECT_EQ("cc001100", hexOf(sim::ByteView(m_exchange.reply).from(46)));
}

TEST_F(ControllerTest, DropsAnIdleConnectionButKeepsTheSession) {
    openConnection();
    m_nowMs = 32000;
    EXPECT_NE("", serve(kReadA));
    m_nowMs = 64001;
    EXPECT_EQ("", serve(kReadA));
    EXPECT_FALSE(m_exchange.closeTcp);
    serve(kOpen);
    EXPECT_TRUE(m_exchange.status.ok());
    const uint32_t old = m_connection;
    m_connection = sim::get32(m_exchange.reply, 44);
    EXPECT_NE(old, m_connection);
    EXPECT_NE("", serve(kReadA));
}

TEST_F(ControllerTest, ForgetsTheConnectionsOfATcpConnection) {
    openConnection();
    m_controller->disconnected(m_session);
    EXPECT_EQ("", serve(kReadA));
    serve(kOpen);
    EXPECT_TRUE(m_exchange.status.ok());
    m_connection = sim::get32(m_exchange.reply, 44);
    EXPECT_NE("", serve(kReadA));
    m_controller->dropConnections();
    EXPECT_EQ("", serve(kReadA));
}

TEST_F(ControllerTest, AnotherTcpConnectionCannotUseTheConnection) {
    openConnection();
    const uint32_t connection = m_connection;
    m_session = sim::EncapSession();
    m_session.owner = 2;
    registerSession();
    m_connection = connection;
    EXPECT_EQ("", serve(kReadA));
}

TEST_F(ControllerTest, KnowsNothingOfTheRequestBefore) {
    openConnection();
    serve(kWriteA);
    EXPECT_LT(0u, m_exchange.cipAt);
    serve("6300 0000 00000000 00000000 0000000000000000 00000000");
    EXPECT_EQ(0u, m_exchange.cipAt);
    EXPECT_EQ(0u, m_exchange.dataItemAt);
    EXPECT_EQ(-1, m_exchange.service);
    EXPECT_EQ(-1, m_exchange.access.type);
    EXPECT_FALSE(m_exchange.connected);
    EXPECT_FALSE(m_exchange.path.isSymbolic());
    EXPECT_TRUE(m_exchange.written.empty());
    serve("6600 0000 SSSSSSSS 00000000 0000000000000000 00000000");
    EXPECT_TRUE(m_exchange.closeTcp);
    serve(kReadA);
    EXPECT_FALSE(m_exchange.closeTcp);
    EXPECT_FALSE(m_exchange.note);
}

TEST_F(ControllerTest, RefusesByFaultWithoutTakingEffect) {
    addFault("refuse-register:69x1");
    EXPECT_EQ(hexText("6500 0400 00000000 69000000 A1A2A3A4A5A6A7A8 00000000 0100 0000"),
              serve(kRegister));
    EXPECT_EQ(0u, m_session.handle);
    registerSession();

    addFault("refuse-open:0311x1");
    serve(kOpen);
    EXPECT_EQ(hexText("D4000101 1103 0200 1B50 44332211 00 00"),
              hexOf(sim::ByteView(m_exchange.reply).from(40)));
    serve(kOpen);
    EXPECT_TRUE(m_exchange.status.ok());
    m_connection = sim::get32(m_exchange.reply, 44);

    addFault("status:FF,2107@1x1@on=write");
    serve(kWriteA);
    EXPECT_EQ("cd00ff010721", hexOf(sim::ByteView(m_exchange.reply).from(46)));
    EXPECT_EQ("2a000000", hexOf(sim::ByteView(m_tags.find("A")->bytes(0), 4)));
    serve(kWriteA);
    EXPECT_EQ("cd000000", hexOf(sim::ByteView(m_exchange.reply).from(46)));
}

TEST_F(ControllerTest, CountsFaultsOnceARequest) {
    openConnection();
    addFault("silence@2x1@tag=A");
    addFault("late:1@3@on=any");
    serve(kReadA);
    EXPECT_TRUE(m_exchange.faults.empty());
    serve(kReadA);
    ASSERT_EQ(1u, m_exchange.faults.size());
    EXPECT_EQ(sim::FaultKind::silence, m_exchange.faults[0]->kind);
    serve("9900 0000 00000000 00000000 0000000000000000 00000000");
    ASSERT_EQ(1u, m_exchange.faults.size());
    EXPECT_EQ(sim::FaultKind::late, m_exchange.faults[0]->kind);
}

}  // namespace
