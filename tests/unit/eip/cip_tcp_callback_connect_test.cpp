// How the transport connects, against real sockets on loopback.

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <net/if.h>
#include <netinet/tcp.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "eip/cip_tcp_callback.h"
#include "support/reserved_port.h"
#include "unit/eip/tcp_transport.h"

namespace {

TEST(TcpConnect, BeginsWithoutAConnection) {
    CipTcpCallback transport;
    EXPECT_FALSE(transport.isConnected());
    EXPECT_EQ(QString("Success(0)"), transport.lastError());
    transport.disconnect();
    EXPECT_FALSE(transport.isConnected());
}

TEST(TcpConnect, ConnectsAndDisconnects) {
    LoopbackServer server;
    CipTcpCallback transport;
    EXPECT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
    EXPECT_TRUE(transport.isConnected());
    EXPECT_EQ(QString("Success(0)"), transport.lastError());
    ASSERT_TRUE(server.accept());
    transport.disconnect();
    EXPECT_FALSE(transport.isConnected());
    EXPECT_TRUE(server.peerClosed());
    EXPECT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
    EXPECT_TRUE(server.accept());
}

/// A descriptor that was closed may be another file's by now, or none: no wait looks at it. Here it
/// is below those of the pipes, so that a wait for them would.
TEST(TcpConnect, NoWaitLooksAtTheSocketOfAConnectionThatIsGone) {
    LoopbackServer server;
    const int low = dup(STDERR_FILENO);
    ASSERT_GE(low, 0);
    Transport transport;
    transport.onPipe = [&](int pipe) { transport.take(pipe); };
    close(low);
    ASSERT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
    ASSERT_GE(fcntl(low, F_GETFL), 0) << "the socket has the free number";
    transport.disconnect();
    ASSERT_EQ(-1, fcntl(low, F_GETFL));

    ASSERT_EQ(2, transport.sendClientPipe(0, "a\n", 2));
    transport.sleep(kSoonMs);
    EXPECT_EQ(std::vector<int>({0}), transport.served);
    ASSERT_EQ(2, transport.sendClientPipe(1, "b\n", 2));
    transport.emptyRxBuffer();
    EXPECT_EQ(std::vector<int>({0, 1}), transport.served);
    // The number is a file's that is always readable, and no reply of a controller.
    const int file = open("/dev/zero", O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(low, file);
    CIPERROR(0, 0, 0);
    EXPECT_FALSE(transport.awaitData(20));
    EXPECT_EQ(CIP_INTERNAL_RECEIVE_TIMEOUT, cip_errno());
    close(file);
}

TEST(TcpConnect, TakesHostNames) {
    LoopbackServer server;
    CipTcpCallback transport;
    EXPECT_EQ(1, transport.connect("localhost", server.port(), kSoonMs));
}

/// The lookup refuses it; the older way to read an address does not.
TEST(TcpConnect, TakesAnAddressWithABlankBehindIt) {
    LoopbackServer server;
    CipTcpCallback transport;
    EXPECT_EQ(1, transport.connect("127.0.0.1 ", server.port(), kSoonMs));
    EXPECT_TRUE(server.accept());
}

TEST(TcpConnect, RefusesWhatIsNoHost) {
    for (const char* host : {static_cast<const char*>(nullptr), "", "not a host"}) {
        CipTcpCallback transport;
        const std::set<int> before = openDescriptors();
        errno = 0;
        EXPECT_EQ(0, transport.connect(host, 44818, 1000)) << (host ? host : "null");
        EXPECT_FALSE(transport.lastError().startsWith("Success")) << (host ? host : "null");
        EXPECT_FALSE(transport.isConnected());
        EXPECT_EQ(before, openDescriptors());
    }
}

TEST(TcpConnect, WhileConnectedMakesNoNewSocket) {
    LoopbackServer server;
    CipTcpCallback transport;
    ASSERT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
    ASSERT_TRUE(server.accept());
    const std::set<int> before = openDescriptors();
    EXPECT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
    EXPECT_EQ(1, transport.connect("not a host", 1, 0));
    EXPECT_EQ(before, openDescriptors());
    EXPECT_FALSE(server.accept(50));
}

TEST(TcpConnect, SetsTheSocketUp) {
    LoopbackServer server;
    CipTcpCallback transport;
    const std::set<int> before = openDescriptors();
    ASSERT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
    const std::set<int> made = minus(openDescriptors(), before);
    ASSERT_EQ(1u, made.size());
    const int sock = *made.begin();
    int noDelay = 0;
    socklen_t size = sizeof noDelay;
    EXPECT_EQ(0, getsockopt(sock, IPPROTO_TCP, TCP_NODELAY, &noDelay, &size));
    EXPECT_NE(0, noDelay);
    EXPECT_TRUE(fcntl(sock, F_GETFL) & O_NONBLOCK);
    EXPECT_TRUE(fcntl(sock, F_GETFD) & FD_CLOEXEC);
}

TEST(TcpConnect, TellsWhyItWasRefused) {
    const ReservedPort server;
    CipTcpCallback transport;
    const std::set<int> before = openDescriptors();
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(0, transport.connect("127.0.0.1", server.port(), kSoonMs));
        EXPECT_EQ(QString("Connection refused(111)"), transport.lastError());
        EXPECT_FALSE(transport.isConnected());
        EXPECT_EQ(before, openDescriptors());
    }
}

TEST(TcpConnect, GivesUpAfterItsTime) {
    DeafServer server;
    CipTcpCallback transport;
    const std::set<int> before = openDescriptors();
    for (int ms : {120, 0}) {
        const Stopwatch watch;
        EXPECT_EQ(0, transport.connect("127.0.0.1", server.port(), static_cast<unsigned>(ms)));
        EXPECT_GE(watch.ms(), ms);
        EXPECT_LT(watch.ms(), ms + kSoonMs);
        EXPECT_EQ(QString("Connection timed out(110)"), transport.lastError());
        EXPECT_EQ(before, openDescriptors());
    }
}

TEST(TcpConnect, ServesThePipesMeanwhile) {
    DeafServer server;
    Transport transport;
    transport.onPipe = [&](int pipe) { transport.take(pipe); };
    ASSERT_EQ(2, transport.sendClientPipe(1, "b\n", 2));
    ASSERT_EQ(2, transport.sendClientPipe(0, "a\n", 2));
    const Stopwatch watch;
    EXPECT_EQ(0, transport.connect("127.0.0.1", server.port(), 120));
    EXPECT_GE(watch.ms(), 119);  // a round of no time counts as a millisecond
    EXPECT_EQ(std::vector<int>({0, 1}), transport.served);
    EXPECT_EQ(QString("Connection timed out(110)"), transport.lastError());
}

TEST(TcpConnect, EndsEvenWhenNobodyReadsAReadablePipe) {
    DeafServer server;
    Transport transport;
    ASSERT_EQ(2, transport.sendClientPipe(0, "a\n", 2));
    EXPECT_EQ(0, transport.connect("127.0.0.1", server.port(), 60));
    EXPECT_GE(transport.served.size(), 2u);
    EXPECT_LE(transport.served.size(), 61u);
    EXPECT_EQ(QString("Connection timed out(110)"), transport.lastError());
}

TEST(TcpConnect, KeepsItsTimeUnderSignals) {
    DeafServer server;
    CipTcpCallback transport;
    const SignalRain rain;
    const Stopwatch watch;
    EXPECT_EQ(0, transport.connect("127.0.0.1", server.port(), 200));
    EXPECT_LT(watch.ms(), kSoonMs);
    EXPECT_EQ(QString("Connection timed out(110)"), transport.lastError());
}

TEST_F(Connected, ResetShowsAsAPendingErrorOnce) {
    server.reset();
    const Stopwatch watch;
    while (transport.isConnected() && watch.ms() < kSoonMs) {
        std::this_thread::yield();
    }
    EXPECT_EQ(QString("Connection reset by peer(104)"), transport.lastError());
}

TEST_F(Connected, ConnectReplacesABrokenSocket) {
    server.reset();
    const std::set<int> before = openDescriptors();
    // The check inside meets the pending error, closes the socket and connects anew.
    const Stopwatch watch;
    while (!server.accept(0) && watch.ms() < kSoonMs) {
        EXPECT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
    }
    EXPECT_EQ(before.size() + 1, openDescriptors().size());  // the server's side of it
    EXPECT_TRUE(server.send(message("x")));
    EXPECT_EQ(message("x"), receive(transport));
}

/// In a network of the child's own, whose only port for sockets that ask for any is the one that is
/// asked for: 0 when no attempt connected and the port is free after them, -1 without the rights
/// to make such a network.
int connectToTheOnlyPort() {
    const pid_t child = fork();
    if (child == 0) {
        ifreq loopback = ifreq();
        strcpy(loopback.ifr_name, "lo");
        loopback.ifr_flags = IFF_UP;
        const bool isolated =
            unshare(CLONE_NEWNET) == 0 || unshare(CLONE_NEWUSER | CLONE_NEWNET) == 0;
        const int inThere = socket(AF_INET, SOCK_DGRAM, 0);
        FILE* const range = fopen("/proc/sys/net/ipv4/ip_local_port_range", "w");
        const bool ready = isolated && ioctl(inThere, SIOCSIFFLAGS, &loopback) == 0 && range &&
                           fputs("40000 40001", range) >= 0 && fclose(range) == 0;
        if (!ready) {
            _exit(2);
        }
        for (int i = 0; i < 20; ++i) {
            CipTcpCallback transport;
            if (transport.connect("127.0.0.1", 40000, kSoonMs) != 0 ||
                transport.lastError() != "Connection refused(111)") {
                _exit(1);
            }
        }
        _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    const int code = WIFEXITED(status) ? WEXITSTATUS(status) : 1;
    return code == 2 ? -1 : code;
}

/// The controller is a program of this machine that does not run yet.
TEST(TcpConnect, DoesNotConnectToItself) {
    const int result = connectToTheOnlyPort();
    if (result < 0) {
        GTEST_SKIP() << "no rights to make a network";
    }
    EXPECT_EQ(0, result);
}

}  // namespace
