#include "unit/apps/simulator/controller_fixture.h"

namespace {

TEST_F(ControllerTest, RegistersASession) {
    const std::string reply = serve(kRegister);
    EXPECT_NE(0u, session.handle);
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
    EXPECT_EQ(0u, session.handle);
    registerSession();
    const uint32_t handle = session.handle;
    EXPECT_EQ(hexText("6500 0400 00000000 01000000 A1A2A3A4A5A6A7A8 00000000 0100 0000"),
              serve(kRegister));
    EXPECT_EQ(handle, session.handle);
}

TEST_F(ControllerTest, UnRegisterEndsTheTcpConnectionWithoutAnAnswer) {
    registerSession();
    EXPECT_EQ("", serve("6600 0000 77777777 00000000 0000000000000000 00000000"));
    EXPECT_FALSE(exchange.closeTcp);
    EXPECT_EQ("", serve("6600 0000 SSSSSSSS 00000000 0000000000000000 00000000"));
    EXPECT_TRUE(exchange.closeTcp);
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
    EXPECT_STREQ("NOP", exchange.note);
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
    connection = sim::get32(exchange.reply, 44);
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
    EXPECT_STREQ("no such connection", exchange.note);
}

TEST_F(ControllerTest, ReadsAndWritesOnAConnection) {
    openConnection();
    EXPECT_EQ(expected("7000 2000 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 A100 0400 0100FE80 B100 0C00 0100"
                       "CC 00 00 00 C400 2A000000"),
              serve(kReadA));
    EXPECT_EQ("A", exchange.path.text());
    EXPECT_EQ(expected("7000 1A00 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 A100 0400 0100FE80 B100 0600 0200 CD 00 00 00"),
              serve(kWriteA));
    EXPECT_EQ("07000000", hexOf(exchange.written));
    EXPECT_EQ("07000000", hexOf(sim::ByteView(tags.find("A")->bytes(0), 4)));
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
        {"a piece", "52 02 91014100 0100 00000000", "D2000000 C400 2A000000"},
        {"a piece from behind the end", "52 02 91014100 0100 04000000", "D200FF010521"},
        {"a piece of an object", "52 02 20022401 0100 00000000", "D2000800"},
        {"a piece to write", "53 02 91014100 C400 0100 00000000 2A000000", "D3000000"},
        {"surplus data", "4D 02 91014100 C400 0100 2A00000000", "CD001500"},
        {"multiple service packet", "0A 02 20022401 0100 0400 4C02910141000100", "8A000800"},
        {"the identity", "01 02 20012401",
         "81000000 0100 0E00 BA00 0C 0B 3400 DEC08060 0F 323038302D4C4335302D3438515742"},
        {"its product code", "0E 03 20012401 3003", "8E000000 BA00"},
        {"its state and something unknown", "03 02 20012401 0200 0800 6300",
         "83000A00 0200 0800 0000 03 6300 1400"},
        {"an attribute of another instance", "0E 03 20012402 3003", "8E000500"},
        {"an attribute of another object", "0E 03 20062401 3001", "8E000800"},
        {"large forward open", "5B 02 20062401", "DB000800"},
        {"the names and types of the tags", "55 02 206B2400 0200 0100 0200",
         "D5000000 01000000 0100 41 C400"},
        {"attributes from another instance on", "55 03 206B25000200 0100 0200", "D5000000"},
        {"a symbol without attributes", "55 02 206B2400", "D5001300"},
        {"attributes of no symbol", "55 02 20012401 0100 0100", "D5000800"},
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
        ASSERT_LT(46u, exchange.reply.size()) << row.why;
        EXPECT_EQ(hexText(row.reply), hexOf(sim::ByteView(exchange.reply).from(46))) << row.why;
    }
}

TEST_F(ControllerTest, ServesTagsWithoutAConnectionToo) {
    registerSession();
    EXPECT_EQ(expected("6F00 1A00 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 0000 0000 B200 0A00 CC 00 00 00 C400 2A000000"),
              serve("6F00 1800 SSSSSSSS 00000000 0000000000000000 00000000"
                    "00000000 0000 0200 0000 0000 B200 0800 4C 02 91014100 0100"));
}

class SizedConnection : public ControllerTest {
 protected:
    /// Opens a connection that is granted `size` bytes a message.
    void openSized(size_t size) {
        settings.connections.largestSize = size;
        makeController();
        addTag("B:DINT[0..4]=1,2,3,4,5");
        openConnection();
    }
    std::string answer(const char* cip) {
        serve(connected(cip));
        return exchange.reply.empty() ? "" : hexOf(sim::ByteView(exchange.reply).from(46));
    }
};

TEST_F(SizedConnection, AnswersWithWholeElements) {
    // Sequence count, head of the reply and type; 12 bytes are left, and 3 more.
    openSized(2 + 4 + 2 + 15);
    EXPECT_EQ(hexText("CC 00 06 00 C400 01000000 02000000 03000000"),
              answer("4C 02 91014200 0500"));
    EXPECT_EQ(hexText("D2 00 00 00 C400 04000000 05000000"),
              answer("52 02 91014200 0500 0C000000"));
    EXPECT_EQ(12, exchange.access.offset);
    EXPECT_EQ("", answer("4D 02 91014200 C400 0300 01000000 02000000 03000000"));
    EXPECT_STREQ("larger than the connection", exchange.note);
    EXPECT_EQ("cd000000", answer("4D 02 91014200 C400 0200 06000000 07000000"));
    EXPECT_EQ(hexText("CC 00 06 00 C400 06000000 07000000 03000000"),
              answer("4C 02 91014200 0500"));
}

TEST_F(SizedConnection, HoldsARequestOfExactlyItsSize) {
    openSized(2 + 2 + 4 + 2 + 2 + 4);
    EXPECT_EQ("cd000000", answer("4D 02 91014200 C400 0100 09000000"));
    EXPECT_EQ("09000000", hexOf(exchange.written));
    EXPECT_EQ("", answer("4D 02 91014200 C400 0200 09000000 00"));
}

TEST_F(SizedConnection, IsNoLargerThanItsOriginatorAsksFor) {
    settings.connections.largestSize = 511;
    makeController();
    addTag("BIG:SINT[0..999]");
    openConnection();  // 504 bytes
    answer("4C 03 9103 424947 00 E803");
    EXPECT_EQ("cc000600c200", hexOf(sim::ByteView(exchange.reply.data() + 46, 6)));
    EXPECT_EQ(44u + 504, exchange.reply.size());
}

TEST_F(SizedConnection, RefusesWhatHasNoPieces) {
    openSized(2 + 4 + 4 + 3);
    EXPECT_EQ(hexText("CB 00 11 00"), answer("4B 02 206B2400"));
}

TEST_F(ControllerTest, DropsAnIdleConnectionButKeepsTheSession) {
    openConnection();
    nowMs = 32000;
    EXPECT_NE("", serve(kReadA));
    nowMs = 64001;
    EXPECT_EQ("", serve(kReadA));
    EXPECT_FALSE(exchange.closeTcp);
    serve(kOpen);
    EXPECT_TRUE(exchange.status.ok());
    const uint32_t old = connection;
    connection = sim::get32(exchange.reply, 44);
    EXPECT_NE(old, connection);
    EXPECT_NE("", serve(kReadA));
}

TEST_F(ControllerTest, ForgetsTheConnectionsOfATcpConnection) {
    openConnection();
    controller->disconnected(session);
    EXPECT_EQ("", serve(kReadA));
    serve(kOpen);
    EXPECT_TRUE(exchange.status.ok());
    connection = sim::get32(exchange.reply, 44);
    EXPECT_NE("", serve(kReadA));
    controller->dropConnections();
    EXPECT_EQ("", serve(kReadA));
}

TEST_F(ControllerTest, AnotherTcpConnectionCannotUseTheConnection) {
    openConnection();
    const uint32_t others = connection;
    session = sim::EncapSession();
    session.owner = 2;
    registerSession();
    connection = others;
    EXPECT_EQ("", serve(kReadA));
}

TEST_F(ControllerTest, KnowsNothingOfTheRequestBefore) {
    openConnection();
    serve(kWriteA);
    EXPECT_LT(0u, exchange.cipAt);
    serve("6300 0000 00000000 00000000 0000000000000000 00000000");
    EXPECT_EQ(0u, exchange.cipAt);
    EXPECT_EQ(0u, exchange.dataItemAt);
    EXPECT_EQ(-1, exchange.service);
    EXPECT_EQ(-1, exchange.access.type);
    EXPECT_FALSE(exchange.connected);
    EXPECT_FALSE(exchange.path.isSymbolic());
    EXPECT_TRUE(exchange.written.empty());
    serve("6600 0000 SSSSSSSS 00000000 0000000000000000 00000000");
    EXPECT_TRUE(exchange.closeTcp);
    serve(kReadA);
    EXPECT_FALSE(exchange.closeTcp);
    EXPECT_FALSE(exchange.note);
}

TEST_F(ControllerTest, RefusesByFaultWithoutTakingEffect) {
    addFault("refuse-register:69x1");
    EXPECT_EQ(hexText("6500 0400 00000000 69000000 A1A2A3A4A5A6A7A8 00000000 0100 0000"),
              serve(kRegister));
    EXPECT_EQ(0u, session.handle);
    registerSession();

    addFault("refuse-open:0311x1");
    serve(kOpen);
    EXPECT_EQ(hexText("D4000101 1103 0200 1B50 44332211 00 00"),
              hexOf(sim::ByteView(exchange.reply).from(40)));
    serve(kOpen);
    EXPECT_TRUE(exchange.status.ok());
    connection = sim::get32(exchange.reply, 44);

    addFault("status:FF,2107@1x1@on=write");
    serve(kWriteA);
    EXPECT_EQ("cd00ff010721", hexOf(sim::ByteView(exchange.reply).from(46)));
    EXPECT_EQ("2a000000", hexOf(sim::ByteView(tags.find("A")->bytes(0), 4)));
    serve(kWriteA);
    EXPECT_EQ("cd000000", hexOf(sim::ByteView(exchange.reply).from(46)));
}

TEST_F(ControllerTest, DoesNotCarryOutAMessageTwice) {
    openConnection();
    const sim::Bytes write = frame(kWriteA);
    const std::string answer = serveBytes(write);
    EXPECT_EQ(expected("7000 1A00 SSSSSSSS 00000000 0000000000000000 00000000"
                       "00000000 0000 0200 A100 0400 0100FE80 B100 0600 0200 CD000000"),
              answer);
    // The same sequence count again: the same answer, whatever is asked now, in a message of its
    // own.
    sim::Bytes other = frame(kWriteA);
    other[other.size() - 4] = 9;
    other[12] = 0xC1;  // sender context
    EXPECT_EQ(answer.substr(0, 24) + "c1" + answer.substr(26), serveBytes(other));
    EXPECT_STREQ("sequence count of the message before", exchange.note);
    sim::Bytes read = frame(kReadA);
    EXPECT_EQ("07000000", serveBytes(read).substr(2 * 52));
    EXPECT_FALSE(exchange.note);
    // And after another message it is a new one.
    serveBytes(other);
    EXPECT_FALSE(exchange.note);
    sim::set16(read, kSequenceAt, 3);
    EXPECT_EQ("09000000", serveBytes(read).substr(2 * 52));
}

TEST_F(ControllerTest, TakesAnySequenceCountFirst) {
    openConnection();
    sim::Bytes read = frame(kReadA);
    sim::set16(read, kSequenceAt, 0);
    EXPECT_EQ("2a000000", serveBytes(read).substr(2 * 52));
    EXPECT_FALSE(exchange.note);
}

TEST_F(ControllerTest, CountsFaultsOnceARequest) {
    openConnection();
    addFault("silence@2x1@tag=A");
    addFault("late:1@3@on=any");
    serve(kReadA);
    EXPECT_TRUE(exchange.faults.empty());
    serve(kReadA);
    ASSERT_EQ(1u, exchange.faults.size());
    EXPECT_EQ(sim::FaultKind::silence, exchange.faults[0]->kind);
    serve("9900 0000 00000000 00000000 0000000000000000 00000000");
    ASSERT_EQ(1u, exchange.faults.size());
    EXPECT_EQ(sim::FaultKind::late, exchange.faults[0]->kind);
}

}  // namespace
