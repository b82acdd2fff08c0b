#include "apps/micro800/controller/identity_query.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <thread>

#include "support/loopback.h"
#include "support/reserved_port.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

const int kAmpleMs = 10000;

/// ListIdentity (CIP Vol. 2, 2-4.4): the request, and a reply of 24 + 2 + 4 + 34 + 9 bytes.
const QByteArray kRequest = QByteArray::fromHex("63000000" + QByteArray(40, '0'));
const QByteArray kReply = QByteArray::fromHex(
    "63003100 00000000 00000000 0000000000000000 00000000"
    "0100 0c00 2b00"
    "0100 0002 af12 c0a80114 0000000000000000"
    "0100 0e00 ba00 0c0b 3400 dec08060"
    "09 323038302d4c433530 03");

/// Answers one request on one connection and hangs up.
class OneAnswer {
 public:
    explicit OneAnswer(const QByteArray& answer)
        : thread([this, answer] {
              if (server.accept()) {
                  received = server.receive(static_cast<size_t>(kRequest.size()));
                  server.send(answer.toStdString());
                  server.hangUp();
              }
          }) {}
    ~OneAnswer() {
        if (thread.joinable()) {
            thread.join();
        }
    }

    Connection connection() const {
        Connection connection;
        connection.host = "127.0.0.1";
        connection.port = server.port();
        connection.timeoutMs = kAmpleMs;
        return connection;
    }
    QByteArray request() {
        thread.join();
        return QByteArray::fromStdString(received);
    }

 private:
    LoopbackServer server;
    std::string received;
    std::thread thread;
};

struct Outcome {
    bool ok = false;
    CipIdentity identity = {};
    QString problem;  ///< with PORT for the server's port
};

Outcome outcomeOf(const Connection& connection) {
    Outcome outcome;
    outcome.ok = queryIdentity(connection, TraceSink(), &outcome.identity, &outcome.problem);
    outcome.problem.replace(QString::number(connection.port), "PORT");
    return outcome;
}

Outcome answered(const QByteArray& answer) {
    OneAnswer server(answer);
    return outcomeOf(server.connection());
}

/// The first `size` bytes of the reply, with a length field that agrees.
QByteArray consistentCut(int size) {
    QByteArray cut = kReply.left(size);
    cut[2] = static_cast<char>(size - 24);
    return cut;
}

const QString kBrokeOff =
    "127.0.0.1 port PORT broke off its answer; try again, and check that the port is the "
    "controller's EtherNet/IP port";

TEST(QueryIdentity, UnknownHost) {
    Connection connection;
    connection.host = QString(70, 'a');  // a label has 63 characters at most: no server is asked
    const Outcome outcome = outcomeOf(connection);
    EXPECT_FALSE(outcome.ok);
    EXPECT_TRUE(outcome.problem.startsWith("host " + connection.host + " is unknown: "))
        << qPrintable(outcome.problem);
    EXPECT_TRUE(outcome.problem.endsWith("; check the name, or give the controller's IP address"));
}

TEST(QueryIdentity, NobodyListens) {
    Connection connection;
    connection.host = "127.0.0.1";
    const ReservedPort nobody;
    connection.port = nobody.port();
    const Outcome outcome = outcomeOf(connection);
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.problem,
              QString("nothing answers at 127.0.0.1 port PORT: Connection refused(111); check "
                      "address, port and cable, and that the controller has power"));
}

TEST(QueryIdentity, AHostThatDoesNotTakeTheConnection) {
    DeafServer server;
    Connection connection;
    connection.host = "127.0.0.1";
    connection.port = server.port();
    connection.timeoutMs = 50;
    EXPECT_EQ(outcomeOf(connection).problem,
              QString("nothing answers at 127.0.0.1 port PORT: Connection timed out(110); check "
                      "address, port and cable, and that the controller has power"));
}

TEST(QueryIdentity, AHostThatDoesNotAnswer) {
    LoopbackServer server;  // its system takes the connection
    Connection connection;
    connection.host = "127.0.0.1";
    connection.port = server.port();
    connection.timeoutMs = 50;
    EXPECT_EQ(outcomeOf(connection).problem,
              QString("127.0.0.1 port PORT takes the connection but gives no whole answer within "
                      "50 ms; allow more time with --timeout, and check that the port is the "
                      "controller's EtherNet/IP port"));
}

TEST(QueryIdentity, ARefusal) {
    QByteArray refusal = kReply.left(24);
    refusal[2] = 0;
    refusal[8] = 0x01;
    const Outcome outcome = answered(refusal);
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.problem,
              QString("127.0.0.1 port PORT refuses to identify itself: EIP error: 0001H (The "
                      "sender issued an invalid or unsupported encapsulation command); check that "
                      "the port is the controller's EtherNet/IP port"));
}

TEST(QueryIdentity, AnAnswerToSomethingElse) {
    QByteArray other = kReply;
    other[0] = 0x04;
    const Outcome outcome = answered(other);
    EXPECT_FALSE(outcome.ok);
    EXPECT_EQ(outcome.problem, QString("127.0.0.1 port PORT answers, but not with an identity: "
                                       "Internal: unsolicited message; check that the port is the "
                                       "controller's EtherNet/IP port"));
}

TEST(QueryIdentity, EveryAnswerThatBreaksOff) {
    for (int size = 0; size < kReply.size(); ++size) {
        const Outcome outcome = answered(kReply.left(size));
        EXPECT_FALSE(outcome.ok) << size;
        EXPECT_EQ(outcome.problem, kBrokeOff) << size;
    }
}

TEST(QueryIdentity, EveryAnswerThatIsTooShort) {
    for (int size = 24; size < kReply.size(); ++size) {
        const Outcome outcome = answered(consistentCut(size));
        EXPECT_FALSE(outcome.ok) << size;
        EXPECT_EQ(outcome.problem, QString("127.0.0.1 port PORT answers, but not with an identity: "
                                           "Internal: invalid reply; check that the port is the "
                                           "controller's EtherNet/IP port"))
            << size;
    }
}

TEST(QueryIdentity, NoWildByteDoesHarm) {
    for (int at = 0; at < kReply.size(); ++at) {
        for (const char wild : {'\x00', '\x7F', '\x80', '\xFF'}) {
            QByteArray answer = kReply;
            answer[at] = wild;
            const Outcome outcome = answered(answer);
            EXPECT_EQ(outcome.ok, outcome.problem.isEmpty()) << at;
            EXPECT_LT(strnlen(outcome.identity.productName, sizeof outcome.identity.productName),
                      sizeof outcome.identity.productName);
        }
    }
}

TEST(QueryIdentity, AnIdentity) {
    OneAnswer server(kReply);
    Connection connection = server.connection();
    connection.host = "localhost";
    const Outcome outcome = outcomeOf(connection);
    EXPECT_TRUE(outcome.ok) << qPrintable(outcome.problem);
    EXPECT_EQ(server.request(), kRequest);
    EXPECT_EQ(outcome.identity.vendorId, 1);
    EXPECT_EQ(outcome.identity.deviceType, 14);
    EXPECT_EQ(outcome.identity.serialNumber, 0x6080C0DEu);
    EXPECT_STREQ(outcome.identity.productName, "2080-LC50");
    EXPECT_EQ(outcome.identity.state, 3);
}

}  // namespace
