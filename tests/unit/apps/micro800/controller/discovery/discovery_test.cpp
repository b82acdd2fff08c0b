#include "apps/micro800/controller/discovery/discovery.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

#include "support/hex_bytes.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

/// A ListIdentity reply (CIP Vol. 2, 2-4.4) of 24 + 2 + 4 + 34 + 9 bytes.
const QByteArray kReply =
    hex("63003100 00000000 00000000 0000000000000000 00000000"
        "0100 0c00 2b00"
        "0100 0002 af12 c0a80114 0000000000000000"
        "0100 0e00 ba00 0c0b 3400 dec08060"
        "09 323038302d4c433530 03");

/// Answers the first datagram on a UDP port of loopback with these datagrams.
class Responder {
 public:
    explicit Responder(const QList<QByteArray>& answers)
        : descriptor(socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
        sockaddr_in own = {};
        own.sin_family = AF_INET;
        own.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        socklen_t size = sizeof own;
        EXPECT_EQ(0, bind(descriptor, reinterpret_cast<sockaddr*>(&own), size));
        EXPECT_EQ(0, getsockname(descriptor, reinterpret_cast<sockaddr*>(&own), &size));
        port = ntohs(own.sin_port);
        thread = std::thread([this, answers] { serve(answers); });
    }
    ~Responder() {
        thread.join();
        close(descriptor);
    }
    unsigned short port = 0;
    QByteArray request;

 private:
    void serve(const QList<QByteArray>& answers) {
        pollfd waited = {descriptor, POLLIN, 0};
        char bytes[2000];
        sockaddr_in from = {};
        socklen_t size = sizeof from;
        if (poll(&waited, 1, 10000) != 1) {
            return;
        }
        const ssize_t got =
            recvfrom(descriptor, bytes, sizeof bytes, 0, reinterpret_cast<sockaddr*>(&from), &size);
        request = QByteArray(bytes, int(got));
        for (const QByteArray& answer : answers) {
            sendto(descriptor, answer.constData(), size_t(answer.size()), 0,
                   reinterpret_cast<sockaddr*>(&from), size);
        }
    }

    const int descriptor;
    std::thread thread;
};

QStringList answersOf(const QList<QByteArray>& datagrams, QByteArray* request = nullptr) {
    QStringList names;
    Responder responder(datagrams);
    DiscoveryPlan plan;
    plan.broadcasts = QStringList("127.0.0.1");
    plan.port = responder.port;
    plan.timeoutMs = 200;
    QString problem;
    EXPECT_TRUE(discover(
        plan, TraceSink(),
        [&names](const QString& sender, const CipIdentity& identity) {
            names << sender + ' ' + identity.productName;
        },
        &problem))
        << qPrintable(problem);
    if (request) {
        *request = responder.request;
    }
    return names;
}

TEST(Discover, AsksAndTakesTheAnswer) {
    QByteArray request;
    EXPECT_EQ(answersOf({kReply}, &request), QStringList("127.0.0.1 2080-LC50"));
    // The longest delay that a device may take: 500 ms.
    EXPECT_EQ(request, hex("63000000 00000000 00000000 f401000000000000 00000000"));
}

TEST(Discover, TakesWhatIsAnIdentityAmongWhatIsNone) {
    QByteArray refused = kReply;
    refused[8] = 1;
    QByteArray otherCommand = kReply;
    otherCommand[0] = 0x65;
    QByteArray longer = kReply;
    longer[2] = 0x32;
    QByteArray noItem = kReply;
    noItem[24] = 0;
    EXPECT_EQ(answersOf({QByteArray(), "x", refused, otherCommand, longer, noItem, kReply.left(23),
                         kReply.left(24), kReply.left(60), kReply + "behind"}),
              QStringList("127.0.0.1 2080-LC50"));
}

TEST(Discover, TakesNoBeginningOfAnIdentity) {
    QList<QByteArray> beginnings;
    for (int size = 24; size < kReply.size(); ++size) {
        beginnings << kReply.left(size);
        beginnings.last()[2] = char(size - 24);
    }
    EXPECT_EQ(answersOf(beginnings), QStringList());
}

}  // namespace
