// The program itself over TCP, by a bare socket and bytes written out by hand.

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <QFile>
#include <QTemporaryFile>
#include <cstdlib>
#include <memory>
#include <vector>

#include "support/sanitizer.h"
#include "support/simulator_process.h"
#include "unit/apps/simulator/hex.h"
#include "unit/apps/simulator/wire_client.h"

namespace {

const char kHead[] = "SSSSSSSS 00000000 0000000000000000 00000000 00000000 0000 0200 A100 0400";

/// Read Tag of one element of A with this sequence count.
std::string readA(int sequence) {
    sim::Bytes count;
    sim::put16(count, uint16_t(sequence));
    return std::string("7000 1E00") + kHead + "CCCCCCCC B100 0A00" + hexOf(count) +
           "4C 02 91014100 0100";
}

/// The answer to it, with these four bytes as the value.
std::string valueOfA(int sequence, const char* value) {
    sim::Bytes count;
    sim::put16(count, uint16_t(sequence));
    return std::string("7000 2000") + kHead + "0100FE80 B100 0C00" + hexOf(count) +
           "CC 00 00 00 C400" + value;
}

/// A simulated controller with the DINT A = 42 and a client connected to it.
class ServerTest : public testing::Test {
 protected:
    void start(const QStringList& more = QStringList()) {
        simulator = std::make_unique<SimulatorProcess>(QStringList{"--tag", "A:DINT=42"} + more);
        ASSERT_TRUE(simulator->start()) << simulator->error();
        client = std::make_unique<WireClient>(simulator->port());
        ASSERT_TRUE(client->open());
    }

    std::string command(const char* line) { return simulator->command(line); }
    /// The value of A in a read, or what came instead.
    std::string read(int sequence) {
        const std::string reply = client->exchange(readA(sequence));
        const std::string value = reply.size() == 2 * 56 ? reply.substr(2 * 52) : "";
        return reply == client->expected(valueOfA(sequence, value.c_str())) ? value : reply;
    }

    std::unique_ptr<SimulatorProcess> simulator;
    std::unique_ptr<WireClient> client;
};

TEST_F(ServerTest, ReadsAndWrites) {
    start();
    EXPECT_EQ(client->expected(valueOfA(1, "2A000000")), client->exchange(readA(1)));
    EXPECT_EQ(
        client->expected(std::string("7000 1A00") + kHead + "0100FE80 B100 0600 0200 CD 00 00 00"),
        client->exchange(std::string("7000 2400") + kHead +
                         "CCCCCCCC B100 1000 0200 4D 02 91014100 C400 0100 07000000"));
    EXPECT_EQ("07000000", read(3));
    EXPECT_EQ("ok 7", command("get A"));
    EXPECT_EQ("ok", command("set A=-1"));
    EXPECT_EQ("ffffffff", read(4));
}

TEST_F(ServerTest, ReadsAndWritesInPiecesOnASmallConnection) {
    start({"--tag", "B:DINT[0..4]=1,2,3,4,5", "--connection-size", "27"});
    // 27 bytes: sequence count, head and type leave 19, which contain four elements.
    EXPECT_EQ(client->expected(std::string("7000 2C00") + kHead +
                               "0100FE80 B100 1800 0100 CC 00 06 00 C400"
                               "01000000 02000000 03000000 04000000"),
              client->exchange(std::string("7000 1E00") + kHead +
                               "CCCCCCCC B100 0A00 0100 4C 02 91014200 0500"));
    EXPECT_EQ(client->expected(std::string("7000 2000") + kHead +
                               "0100FE80 B100 0C00 0200 D2 00 00 00 C400 05000000"),
              client->exchange(std::string("7000 2200") + kHead +
                               "CCCCCCCC B100 0E00 0200 52 02 91014200 0500 10000000"));
    // A piece of two elements is 24 bytes; a write of four would be 28 and meets silence.
    EXPECT_EQ(
        client->expected(std::string("7000 1A00") + kHead + "0100FE80 B100 0600 0300 D3 00 00 00"),
        client->exchange(std::string("7000 2C00") + kHead +
                         "CCCCCCCC B100 1800 0300 53 02 91014200 C400 0500 0C000000"
                         "08000000 09000000"));
    ASSERT_TRUE(client->send(std::string("7000 3000") + kHead +
                             "CCCCCCCC B100 1C00 0400 4D 02 91014200 C400 0400"
                             "06000000 07000000 08000000 09000000"));
    EXPECT_EQ("2a000000", read(5));
    EXPECT_EQ("ok 1,2,3,8,9", command("get B"));
}

TEST_F(ServerTest, AnswersListIdentity) {
    start();
    sim::Bytes port;
    sim::put16(port, simulator->port());
    std::swap(port[0], port[1]);
    EXPECT_EQ(client->expected("6300 3700 00000000 00000000 0102030405060708 00000000 0100"
                               "0C00 3100 0100 0002" +
                               hexOf(port) +
                               "7F000001 0000000000000000 0100 0E00 BA00 0C0B 3400 DEC08060"
                               "0F 323038302D4C4335302D3438515742 03"),
              client->exchange("6300 0000 00000000 00000000 0102030405060708 00000000"));
}

TEST_F(ServerTest, PlaysSavedValues) {
    QTemporaryFile saved;
    ASSERT_TRUE(saved.open());
    saved.write(R"({"format": "micro800-values/1", "values": [)"
                R"({"address": "DINT0:A", "type": "DINT", "value": 77},)"
                R"({"address": "INT0:B[0..1]", "type": "INT", "value": [5, -6]}]})");
    saved.close();
    simulator = std::make_unique<SimulatorProcess>(
        QStringList{"--tag", "C:DINT", "--tags", saved.fileName()});
    ASSERT_TRUE(simulator->start()) << simulator->error();
    client = std::make_unique<WireClient>(simulator->port());
    ASSERT_TRUE(client->open());
    EXPECT_EQ("4d000000", read(1));
    EXPECT_EQ("ok 5,-6", command("get B"));
}

TEST_F(ServerTest, AnswersWhatClientsAskBeforeTheFirstRead) {
    start({"--tag", "B:INT[0..9]", "--tag", "C:INT[1..9]"});
    const std::string unconnected =
        "SSSSSSSS 00000000 0000000000000000 00000000 00000000 0000 0200 "
        "0000 0000 B200";
    EXPECT_EQ(client->expected("6F00 3200 " + unconnected +
                               "2200 81 00 00 00 0100 0E00 BA00 0C 0B 3400 DEC08060"
                               "0F 323038302D4C4335302D3438515742"),
              client->exchange("6F00 1600 " + unconnected + "0600 01 02 20012401"));
    EXPECT_EQ(client->expected(std::string("7000 1C00") + kHead +
                               "0100FE80 B100 0800 0100 8E 00 00 00 0E00"),
              client->exchange(std::string("7000 1E00") + kHead +
                               "CCCCCCCC B100 0A00 0100 0E 03 20012401 3002"));
    EXPECT_EQ(client->expected(std::string("7000 2C00") + kHead +
                               "0100FE80 B100 1800 0200 D5 00 00 00"
                               "02000000 0100 42 C320 03000000 0100 43 C320"),
              client->exchange(std::string("7000 2400") + kHead +
                               "CCCCCCCC B100 1000 0200 55 03 206B 25000200 0200 0100 0200"));
    EXPECT_EQ(client->expected("6F00 1400 " + unconnected + "0400 DB 00 08 00"),
              client->exchange("6F00 1600 " + unconnected + "0600 5B 02 20062401"));
}

TEST_F(ServerTest, PlaysAFirmware) {
    start({"--profile", "newer", "--unknown-tag-status", "04", "--tag", "LATE:INT[1..9]"});
    // The product code, an unknown tag, and the names of the tags.
    EXPECT_EQ(client->expected(std::string("7000 1C00") + kHead +
                               "0100FE80 B100 0800 0100 8E 00 00 00 0301"),
              client->exchange(std::string("7000 1E00") + kHead +
                               "CCCCCCCC B100 0A00 0100 0E 03 20012401 3003"));
    EXPECT_EQ(
        client->expected(std::string("7000 1A00") + kHead + "0100FE80 B100 0600 0200 CC 00 04 00"),
        client->exchange(std::string("7000 1E00") + kHead +
                         "CCCCCCCC B100 0A00 0200 4C 02 91015A00 0100"));
    EXPECT_EQ(client->expected(std::string("7000 2100") + kHead +
                               "0100FE80 B100 0D00 0300 D5 00 00 00 01000000 0100 41"),
              client->exchange(std::string("7000 2000") + kHead +
                               "CCCCCCCC B100 0C00 0300 55 02 206B2400 0100 0100"));
}

TEST_F(ServerTest, TakesRequestsTornAndTogether) {
    start();
    ASSERT_TRUE(client->sendByteByByte(readA(1)));
    EXPECT_EQ(client->expected(valueOfA(1, "2A000000")), client->receive());
    ASSERT_TRUE(client->send(readA(2) + readA(3) + readA(4).substr(0, 20)));
    EXPECT_EQ(client->expected(valueOfA(2, "2A000000")), client->receive());
    EXPECT_EQ(client->expected(valueOfA(3, "2A000000")), client->receive());
    ASSERT_TRUE(client->send(readA(4).substr(20)));
    EXPECT_EQ(client->expected(valueOfA(4, "2A000000")), client->receive());
}

TEST_F(ServerTest, ClosesTheTcpConnectionOnUnRegisterSession) {
    start();
    ASSERT_TRUE(client->send("6600 0000 SSSSSSSS 00000000 0000000000000000 00000000"));
    EXPECT_EQ("closed", client->receive());
}

TEST_F(ServerTest, ServesSixteenConnectionsAndRefusesOneMore) {
    start();
    std::vector<std::unique_ptr<WireClient>> clients;
    for (uint32_t i = 1; i < 16; ++i) {
        clients.push_back(std::make_unique<WireClient>(simulator->port()));
        ASSERT_TRUE(clients.back()->open(i)) << i;
    }
    WireClient oneTooMany(simulator->port());
    EXPECT_FALSE(oneTooMany.open(99));
    for (const auto& one : clients) {
        ASSERT_TRUE(one->send(readA(1)));
    }
    for (const auto& one : clients) {
        EXPECT_EQ(one->expected(valueOfA(1, "2A000000")), one->receive());
    }
    clients.front()->close();
    // The controller hears of the end before the next connection, but they are two sockets.
    QElapsedTimer waited;
    waited.start();
    bool opened = false;
    while (!opened && waited.elapsed() < 10000) {
        opened = WireClient(simulator->port()).open(100);
    }
    EXPECT_TRUE(opened);
}

TEST_F(ServerTest, KeepsAConnectionAfterItsTcpConnection) {
    QElapsedTimer waited;
    waited.start();
    start({"--connections", "1", "--keep-connections", "--connection-timeout", "300"});
    client->close();
    // Refused as long as the first one counts, however often it is tried.
    do {
        ASSERT_LT(waited.elapsed(), 10000);
        client = std::make_unique<WireClient>(simulator->port());
    } while (!client->open(2));
    EXPECT_LE(300, waited.elapsed());
    EXPECT_EQ("2a000000", read(1));
}

TEST_F(ServerTest, DropsAnIdleConnectionButNotItsSession) {
    start({"--connection-timeout", "1000"});
    EXPECT_EQ("2a000000", read(1));
    EXPECT_EQ("", client->receive(1300));
    ASSERT_TRUE(client->send(readA(2)));
    EXPECT_EQ(client->expected("6400 0200 00000000 00000000 0000000000000000 00000000 0000"),
              client->exchange("6400 0000 00000000 00000000 0000000000000000 00000000"));
    EXPECT_TRUE(simulator->waitForLog(
        1, [](const QJsonObject& request) { return request["note"] == "no such connection"; }));
}

TEST_F(ServerTest, DelaysEveryRequestWithoutHoldingUpOtherConnections) {
    start();
    ASSERT_EQ("ok", command("delay 600"));
    WireClient other(simulator->port());
    QElapsedTimer took;
    qint64 together = 1200;  // as long as one after the other would take
    int number = 1;
    for (int i = 0; i < 5 && together >= 1200; ++i) {
        took.start();
        ASSERT_TRUE(client->send(readA(number)));
        ASSERT_TRUE(other.send("6300 0000 00000000 00000000 0000000000000000 00000000"));
        EXPECT_NE("", other.receive());
        EXPECT_EQ(client->expected(valueOfA(number, "2A000000")), client->receive());
        ++number;
        EXPECT_LE(599, took.elapsed());
        together = took.elapsed();
    }
    EXPECT_GT(1200, together);
    took.restart();
    ASSERT_TRUE(client->send(readA(number) + readA(number + 1)));
    EXPECT_EQ(client->expected(valueOfA(number, "2A000000")), client->receive());
    EXPECT_EQ(client->expected(valueOfA(number + 1, "2A000000")), client->receive());
    EXPECT_LE(1198, took.elapsed());
}

TEST_F(ServerTest, HoldsAnAnswerBackWhileOthersGoOn) {
    start({"--fault", "late:300@2x1"});
    EXPECT_EQ("2a000000", read(1));
    QElapsedTimer took;
    took.start();
    ASSERT_TRUE(client->send(readA(2) + readA(3)));
    EXPECT_EQ(client->expected(valueOfA(3, "2A000000")), client->receive());
    EXPECT_EQ(client->expected(valueOfA(2, "2A000000")), client->receive());
    EXPECT_LE(299, took.elapsed());
}

TEST_F(ServerTest, BreaksAnswersByFault) {
    start();
    ASSERT_EQ("ok", command("fault silencex1"));
    ASSERT_TRUE(client->send(readA(1)));
    EXPECT_EQ("2a000000", read(2));
    ASSERT_EQ("ok", command("fault repeatx1"));
    EXPECT_EQ("2a000000", read(3));
    EXPECT_EQ(client->expected(valueOfA(3, "2A000000")), client->receive());
    ASSERT_EQ("ok", command("fault tornx1"));
    EXPECT_EQ("2a000000", read(4));
    ASSERT_EQ("ok", command("fault torn-headerx1"));
    EXPECT_EQ("2a000000", read(5));
    ASSERT_EQ("ok", command("fault wrong-sequencex1"));
    EXPECT_EQ(client->expected(valueOfA(7, "2A000000")), client->exchange(readA(6)));
    ASSERT_EQ("ok", command("fault truncate:30x1"));
    ASSERT_TRUE(client->send(readA(7)));
    ASSERT_TRUE(client->send("6400 0000 00000000 00000000 0102030405060708 00000000"));
    // The missing 26 bytes are made up by the next answer, which is as long.
    EXPECT_EQ(client->expected(valueOfA(7, "2A000000")).substr(0, 60) +
                  hexText("6400 0200 00000000 00000000 0102030405060708 00000000 0000"),
              client->receive());
}

TEST_F(ServerTest, CutsAndResets) {
    start();
    ASSERT_EQ("ok", command("fault cut:30x1"));
    ASSERT_TRUE(client->send(readA(1)));
    EXPECT_EQ("closed", client->receive());
    EXPECT_EQ(client->expected(valueOfA(1, "2A000000")).substr(0, 60), client->partial());
    WireClient second(simulator->port());
    ASSERT_TRUE(second.open());
    ASSERT_EQ("ok", command("fault resetx1"));
    ASSERT_TRUE(second.send(readA(1)));
    EXPECT_EQ("reset", second.receive());
}

TEST_F(ServerTest, DropsConnectionsByCommand) {
    start();
    ASSERT_EQ("ok", command("drop-connections"));
    ASSERT_TRUE(client->send(readA(1)));
    // The lost request gets no answer; the next one in the same session does.
    ASSERT_TRUE(client->openConnection(0x11223344));
    EXPECT_EQ("2a000000", read(2));
}

TEST_F(ServerTest, ClosesPeersByCommand) {
    start();
    ASSERT_EQ("ok", command("close-peers"));
    EXPECT_EQ("closed", client->receive());
    WireClient second(simulator->port());
    ASSERT_TRUE(second.open());
    ASSERT_EQ("ok", command("reset-peers"));
    EXPECT_EQ("reset", second.receive());
}

TEST_F(ServerTest, GoesDownAndComesBackOnItsPort) {
    start();
    ASSERT_EQ("ok", command("down"));
    EXPECT_EQ("closed", client->receive());
    EXPECT_FALSE(WireClient(simulator->port()).isOpen());
    ASSERT_EQ("ok", command("up"));
    WireClient second(simulator->port());
    EXPECT_TRUE(second.open());
    const quint16 port = simulator->port();
    ASSERT_TRUE(simulator->restart()) << simulator->error();
    EXPECT_EQ(port, simulator->port());
    EXPECT_TRUE(WireClient(port).open());
}

TEST_F(ServerTest, KeepsAnswersForAPeerThatDoesNotReadThem) {
    simulator = std::make_unique<SimulatorProcess>(QStringList{"--tag", "A:DINT[124]"});
    ASSERT_TRUE(simulator->start()) << simulator->error();
    WireClient lazy(simulator->port());
    ASSERT_TRUE(lazy.open());
    std::string readAll = readA(1);
    readAll.replace(readAll.size() - 4, 4, "7C00");
    const int requests = 30000;  // 16 MB of answers
    for (int i = 0; i < requests; ++i) {
        ASSERT_TRUE(lazy.send(readAll));
    }
    WireClient other(simulator->port());
    EXPECT_TRUE(other.open(1));
    for (int i = 0; i < requests; ++i) {
        ASSERT_EQ(2u * (52 + 4 * 124), lazy.receive().size()) << i;
    }
}

TEST_F(ServerTest, LogsRequestsBeforeTheyAreAnswered) {
    start();
    EXPECT_EQ("2a000000", read(1));
    const QList<QJsonObject> log = simulator->log();
    ASSERT_EQ(3, log.size());
    EXPECT_EQ(QString("RegisterSession"), log[0]["command"].toString());
    EXPECT_EQ(QString("ForwardOpen"), log[1]["service"].toString());
    EXPECT_EQ(QString("ReadTag"), log[2]["service"].toString());
    EXPECT_EQ(QString("A"), log[2]["tag"].toString());
    EXPECT_EQ(client->expected(readA(1)), log[2]["request"].toString().toStdString());
    EXPECT_EQ(client->expected(valueOfA(1, "2A000000")), log[2]["reply"].toString().toStdString());
}

TEST_F(ServerTest, RampCountsUp) {
    start({"--ramp", "1"});
    const std::string first = read(1);
    QElapsedTimer waited;
    waited.start();
    std::string later = first;
    for (int i = 2; later == first && waited.elapsed() < 10000; ++i) {
        later = read(i);
    }
    EXPECT_LT(sim::get32(hex(first), 0), sim::get32(hex(later), 0));
    EXPECT_LE(42u, sim::get32(hex(first), 0));
}

TEST_F(ServerTest, AnswersTheListCommandsByUdp) {
    start({"--udp"});
    const int udp = socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in to = {};
    to.sin_family = AF_INET;
    to.sin_port = htons(simulator->port());
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto* address = reinterpret_cast<const sockaddr*>(&to);
    const sim::Bytes torn = hex("6300");
    const sim::Bytes other = hex("6500 0400 00000000 00000000 0102030405060708 00000000 01000000");
    const sim::Bytes options = hex("6300 0000 00000000 00000000 0102030405060708 01000000");
    for (const sim::Bytes* unanswered : {&torn, &other, &options}) {
        sendto(udp, unanswered->data(), unanswered->size(), 0, address, sizeof to);
    }
    const auto ask = [&](const char* request) {
        const sim::Bytes bytes = hex(request);
        sendto(udp, bytes.data(), bytes.size(), 0, address, sizeof to);
        pollfd ready = {udp, POLLIN, 0};
        sim::Bytes reply(512);
        const ssize_t got =
            poll(&ready, 1, 10000) == 1 ? recv(udp, reply.data(), reply.size(), 0) : 0;
        reply.resize(got > 0 ? size_t(got) : 0);
        return reply;
    };
    EXPECT_EQ(hexText("6400 0200 00000000 00000000 0102030405060708 00000000 0000"),
              hexOf(ask("6400 0000 00000000 00000000 0102030405060708 00000000")));
    EXPECT_EQ(hexText("0400 1A00 00000000 00000000 0102030405060708 00000000 0100 0001 1400 0100"
                      "2000 436F6D6D756E69636174696F6E730000"),
              hexOf(ask("0400 0000 00000000 00000000 0102030405060708 00000000")));
    const sim::Bytes reply = ask("6300 0000 00000000 00000000 0102030405060708 00000000");
    close(udp);
    ASSERT_EQ(24u + 0x37, reply.size());
    EXPECT_EQ(hexText("6300 3700 00000000 00000000 0102030405060708 00000000 0100 0C00"),
              hexOf(sim::ByteView(reply.data(), 28)));
    // Behind the item, its version and the address family: the port, high byte first.
    EXPECT_EQ(simulator->port(), reply[34] << 8 | reply[35]);
}

TEST_F(ServerTest, AnswersThatAreHeldBackHaveALimit) {
    start({"--fault", "late:600000"});
    for (int i = 1; i <= 2000; ++i) {
        ASSERT_TRUE(client->send(readA(i)));
    }
    const auto isRead = [](const QJsonObject& request) { return request["service"] == "ReadTag"; };
    EXPECT_TRUE(simulator->waitForLog(1024, isRead));
    EXPECT_FALSE(simulator->waitForLog(1025, isRead, 500));
    // Others are served meanwhile, and the peer's end takes what was kept for it along.
    EXPECT_EQ("ok", command("fault none"));
    client = std::make_unique<WireClient>(simulator->port());
    ASSERT_TRUE(client->open());
    EXPECT_EQ("2a000000", read(1));
}

TEST_F(ServerTest, HeldAnswersMakeRoomForFurtherOnes) {
    start({"--fault", "late:50"});
    for (int i = 1; i <= 1500; ++i) {
        ASSERT_TRUE(client->send(readA(i)));
    }
    for (int i = 1; i <= 1500; ++i) {
        ASSERT_EQ(client->expected(valueOfA(i, "2A000000")), client->receive()) << i;
    }
}

/// Processor time of a process so far, in clock ticks.
long ticksOf(pid_t process) {
    QFile file(QString("/proc/%1/stat").arg(process));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray text = file.readAll();
    const QList<QByteArray> words = text.mid(text.lastIndexOf(')') + 2).split(' ');
    return words.value(11).toLong() + words.value(12).toLong();
}

TEST_F(ServerTest, AFullDescriptorTableCostsNothingAndPasses) {
    if (kSanitized) {
        GTEST_SKIP() << "the sanitizer has no descriptors either";
    }
    start();
    const rlimit few = {24, 24};
    ASSERT_EQ(0, prlimit(simulator->pid(), RLIMIT_NOFILE, &few, nullptr));
    std::vector<std::unique_ptr<WireClient>> crowd;
    for (int i = 0; i < 40; ++i) {
        crowd.push_back(std::make_unique<WireClient>(simulator->port()));
        ASSERT_TRUE(crowd.back()->isOpen());
    }
    EXPECT_EQ("2a000000", read(1));
    const long before = ticksOf(simulator->pid());
    QElapsedTimer second;
    second.start();
    for (int i = 2; second.elapsed() < 1000; ++i) {
        usleep(20000);
        EXPECT_EQ("2a000000", read(i));
    }
    EXPECT_LT(ticksOf(simulator->pid()) - before, sysconf(_SC_CLK_TCK) / 3);
    // The last ones are served as soon as others have gone.
    std::unique_ptr<WireClient> last = std::move(crowd.back());
    crowd.clear();
    EXPECT_TRUE(last->open(0x55667788));
}

TEST(Program, EndsCleanly) {
    SimulatorProcess simulator;
    ASSERT_TRUE(simulator.start()) << simulator.error();
    EXPECT_EQ(0, simulator.stop());
    ASSERT_TRUE(simulator.start()) << simulator.error();
    WireClient client(simulator.port());
    ASSERT_TRUE(client.open());
    EXPECT_EQ(0, simulator.stop(SIGINT));
    EXPECT_EQ("closed", client.receive());
    ASSERT_TRUE(simulator.start()) << simulator.error();
    EXPECT_EQ("ok", simulator.command("quit"));
    EXPECT_EQ("", simulator.command("get A"));
}

TEST(Program, NeedsRightOptionsAndAFreePort) {
    QByteArray output;
    QByteArray errors;
    EXPECT_EQ(2, SimulatorProcess::run({"--tag", "A:X"}, &output, &errors));
    EXPECT_TRUE(errors.startsWith("micro800-sim: tag 'A:X': there is no type 'X'"))
        << errors.data();
    errors.clear();
    EXPECT_EQ(2, SimulatorProcess::run({"--nonsense"}, &output, &errors));
    EXPECT_EQ("micro800-sim: Unknown option 'nonsense'.\nTry 'micro800-sim --help'.\n", errors);
    EXPECT_TRUE(output.isEmpty());
    SimulatorProcess first;
    ASSERT_TRUE(first.start()) << first.error();
    errors.clear();
    EXPECT_EQ(1,
              SimulatorProcess::run({"--port", QString::number(first.port())}, &output, &errors));
    EXPECT_TRUE(errors.contains("The bound address is already in use")) << errors.data();
    EXPECT_EQ(
        1, SimulatorProcess::run({"--port", "0", "--log", "/no/such/dir/log"}, &output, &errors));
    EXPECT_TRUE(output.isEmpty());
}

TEST(Program, HelpsAndTellsItsVersion) {
    QByteArray output;
    QByteArray errors;
    EXPECT_EQ(0, SimulatorProcess::run({"--help"}, &output, &errors));
    EXPECT_TRUE(output.contains("Examples:")) << output.data();
    output.clear();
    EXPECT_EQ(0, SimulatorProcess::run({"--version"}, &output, &errors));
    EXPECT_TRUE(output.startsWith("micro800-sim 1.")) << output.data();
    EXPECT_TRUE(errors.isEmpty()) << errors.data();
}

TEST(Program, ShowsTheSamePageForTheOtherNameOfHelp) {
    QByteArray output;
    QByteArray all;
    QByteArray errors;
    EXPECT_EQ(0, SimulatorProcess::run({"--help"}, &output, &errors));
    EXPECT_EQ(0, SimulatorProcess::run({"--help-all"}, &all, &errors));
    EXPECT_EQ(output, all);
    EXPECT_FALSE(output.contains("--help-all")) << output.data();
}

TEST(Program, FailsWhenItsOutputDoes) {
    for (const char* option : {"--help", "--version", "--port 0"}) {
        const QString line =
            QString("'%1' %2 >/dev/full 2>/dev/null").arg(SimulatorProcess::program(), option);
        const int status = std::system(qPrintable(line));
        EXPECT_TRUE(WIFEXITED(status)) << option;
        EXPECT_EQ(1, WEXITSTATUS(status)) << option;
    }
}

}  // namespace
