#include "eip/socket_tools.h"

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <climits>
#include <string>
#include <thread>

#include "support/loopback.h"

namespace {

/// A socket pair that closes itself.
struct Pair {
    Pair() { EXPECT_EQ(0, KCreateSocketPair(fds)); }
    ~Pair() {
        closeEnd(0);
        closeEnd(1);
    }
    void closeEnd(int end) {
        if (fds[end] >= 0) {
            KCloseSocket(fds[end]);
        }
        fds[end] = -1;
    }
    void write(const std::string& text) {
        EXPECT_EQ(ssize_t(text.size()), ::send(fds[1], text.data(), text.size(), 0));
    }
    int fds[2];
};

TEST(KTimevalFrom, SplitsMilliseconds) {
    const struct {
        unsigned long ms;
        long seconds;
        long microseconds;
    } rows[] = {
        {0, 0, 0},       {1, 0, 1000},      {999, 0, 999000}, {1000, 1, 0},
        {1001, 1, 1000}, {2500, 2, 500000}, {60000, 60, 0},   {4294967295ul, 4294967, 295000}};
    for (const auto& row : rows) {
        const timeval time = KTimevalFrom(row.ms);
        EXPECT_EQ(row.seconds, time.tv_sec) << row.ms;
        EXPECT_EQ(row.microseconds, time.tv_usec) << row.ms;
    }
}

timeval timeout(int fd, int option) {
    timeval time = {-1, -1};
    socklen_t size = sizeof time;
    EXPECT_EQ(0, getsockopt(fd, SOL_SOCKET, option, &time, &size));
    return time;
}

TEST(KSocketSetTimeout, SetsTheOneAskedFor) {
    // Multiples of 20 ms: the kernel rounds up to its clock tick.
    const struct {
        unsigned long ms;
        long seconds;
        long microseconds;
    } rows[] = {{40, 0, 40000}, {980, 0, 980000}, {1000, 1, 0}, {2540, 2, 540000}, {0, 0, 0}};
    for (const auto& row : rows) {
        Pair pair;
        EXPECT_EQ(1, KSocketSetTimeout(pair.fds[0], row.ms, true));
        EXPECT_EQ(row.seconds, timeout(pair.fds[0], SO_RCVTIMEO).tv_sec) << row.ms;
        EXPECT_EQ(row.microseconds, timeout(pair.fds[0], SO_RCVTIMEO).tv_usec) << row.ms;
        EXPECT_EQ(0, timeout(pair.fds[0], SO_SNDTIMEO).tv_usec) << row.ms;
        EXPECT_EQ(1, KSocketSetTimeout(pair.fds[1], row.ms, false));
        EXPECT_EQ(row.seconds, timeout(pair.fds[1], SO_SNDTIMEO).tv_sec) << row.ms;
        EXPECT_EQ(row.microseconds, timeout(pair.fds[1], SO_SNDTIMEO).tv_usec) << row.ms;
        EXPECT_EQ(0, timeout(pair.fds[1], SO_RCVTIMEO).tv_usec) << row.ms;
    }
}

TEST(KSocketSetTimeout, ShortFormsAreTheTwoCases) {
    Pair pair;
    EXPECT_EQ(1, KSocketSetRxTimeout(pair.fds[0], 3000));
    EXPECT_EQ(1, KSocketSetTxTimeout(pair.fds[0], 4000));
    EXPECT_EQ(3, timeout(pair.fds[0], SO_RCVTIMEO).tv_sec);
    EXPECT_EQ(4, timeout(pair.fds[0], SO_SNDTIMEO).tv_sec);
}

TEST(KSocketSetTimeout, FailsOnWhatIsNoSocket) {
    int fds[2];
    ASSERT_EQ(0, pipe2(fds, O_CLOEXEC));
    EXPECT_EQ(0, KSocketSetRxTimeout(fds[0], 10));
    EXPECT_EQ(ENOTSOCK, errno);
    close(fds[0]);
    close(fds[1]);
    EXPECT_EQ(0, KSocketSetTxTimeout(-1, 10));
    EXPECT_EQ(EBADF, errno);
}

TEST(KCreateTcpSocket, IsAStreamOverIpv4ClosedOnExec) {
    const int fd = KCreateTcpSocket(IPPROTO_TCP);
    ASSERT_LE(0, fd);
    int domain = 0;
    int type = 0;
    socklen_t size = sizeof domain;
    EXPECT_EQ(0, getsockopt(fd, SOL_SOCKET, SO_DOMAIN, &domain, &size));
    EXPECT_EQ(0, getsockopt(fd, SOL_SOCKET, SO_TYPE, &type, &size));
    EXPECT_EQ(AF_INET, domain);
    EXPECT_EQ(SOCK_STREAM, type);
    EXPECT_TRUE(fcntl(fd, F_GETFD) & FD_CLOEXEC);
    KCloseSocket(fd);
}

TEST(KCreateTcpSocket, AFailureIsTheKernels) {
    EXPECT_EQ(-1, KCreateTcpSocket(IPPROTO_UDP));
    EXPECT_EQ(EPROTONOSUPPORT, errno);
    // No number of a protocol: the answer of an old kernel to a flag that it does not know.
    EXPECT_EQ(-1, KCreateTcpSocket(99999));
    EXPECT_EQ(EINVAL, errno);
}

TEST(KCreateSocketPair, IsAConnectedLocalStreamClosedOnExec) {
    Pair pair;
    for (int fd : pair.fds) {
        int domain = 0;
        int type = 0;
        socklen_t size = sizeof domain;
        EXPECT_EQ(0, getsockopt(fd, SOL_SOCKET, SO_DOMAIN, &domain, &size));
        EXPECT_EQ(0, getsockopt(fd, SOL_SOCKET, SO_TYPE, &type, &size));
        EXPECT_EQ(AF_UNIX, domain);
        EXPECT_EQ(SOCK_STREAM, type);
        EXPECT_TRUE(fcntl(fd, F_GETFD) & FD_CLOEXEC);
    }
    pair.write("x");
    char byte = 0;
    EXPECT_EQ(1, recv(pair.fds[0], &byte, 1, 0));
    EXPECT_EQ('x', byte);
}

/// A process without standard input, output and error, as long as it exists: the numbers that the
/// system gives first are theirs. Nothing may be printed meanwhile.
class NoStandardStreams {
 public:
    NoStandardStreams() {
        for (int fd = 0; fd <= STDERR_FILENO; ++fd) {
            saved[fd] = fcntl(fd, F_DUPFD_CLOEXEC, STDERR_FILENO + 1);
            close(fd);
        }
    }
    ~NoStandardStreams() {
        for (int fd = 0; fd <= STDERR_FILENO; ++fd) {
            dup2(saved[fd], fd);
            close(saved[fd]);
        }
    }

 private:
    int saved[STDERR_FILENO + 1];
};

bool isOpen(int fd) {
    return fcntl(fd, F_GETFD) >= 0;
}

TEST(Sockets, LeaveTheNumbersOfTheStandardStreams) {
    int fds[3] = {-1, -1, -1};
    int result = -1;
    bool taken = true;
    {
        const NoStandardStreams none;
        fds[2] = KCreateTcpSocket(IPPROTO_TCP);
        result = KCreateSocketPair(fds);
        taken = isOpen(0) || isOpen(1) || isOpen(2);
    }
    EXPECT_EQ(0, result);
    EXPECT_FALSE(taken);
    for (const int fd : fds) {
        EXPECT_LT(STDERR_FILENO, fd);
        EXPECT_TRUE(fcntl(fd, F_GETFD) & FD_CLOEXEC) << fd;
    }
    EXPECT_EQ(1, send(fds[0], "x", 1, MSG_NOSIGNAL));
    char byte = 0;
    EXPECT_EQ(1, recv(fds[1], &byte, 1, 0));
    EXPECT_EQ('x', byte);
    for (const int fd : fds) {
        KCloseSocket(fd);
    }
}

TEST(Sockets, WithoutADescriptorAboveTheStandardStreamsThereIsNone) {
    rlimit usual = {};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &usual));
    int fds[2] = {0, 0};
    int pairResult = 0;
    int pairError = 0;
    int tcpSocket = 0;
    bool taken = true;
    {
        const NoStandardStreams none;
        const rlimit three = {STDERR_FILENO + 1, usual.rlim_max};
        setrlimit(RLIMIT_NOFILE, &three);
        pairResult = KCreateSocketPair(fds);
        pairError = errno;
        tcpSocket = KCreateTcpSocket(IPPROTO_TCP);
        taken = isOpen(0) || isOpen(1) || isOpen(2);
        setrlimit(RLIMIT_NOFILE, &usual);
    }
    EXPECT_EQ(-1, pairResult);
    EXPECT_EQ(-1, fds[0]);
    EXPECT_EQ(-1, fds[1]);
    EXPECT_EQ(EMFILE, pairError);
    EXPECT_EQ(-1, tcpSocket);
    EXPECT_FALSE(taken);
}

TEST(Sockets, OnePlaceAboveTheStandardStreamsIsNotEnoughForAPair) {
    rlimit usual = {};
    ASSERT_EQ(0, getrlimit(RLIMIT_NOFILE, &usual));
    int fds[2] = {0, 0};
    int result = 0;
    bool left = true;
    {
        const NoStandardStreams none;
        const int place = KCreateTcpSocket(IPPROTO_TCP);
        KCloseSocket(place);
        const rlimit onePlace = {rlim_t(place) + 1, usual.rlim_max};
        setrlimit(RLIMIT_NOFILE, &onePlace);
        result = KCreateSocketPair(fds);
        left = isOpen(0) || isOpen(1) || isOpen(place);
        setrlimit(RLIMIT_NOFILE, &usual);
    }
    EXPECT_EQ(-1, result);
    EXPECT_EQ(-1, fds[0]);
    EXPECT_EQ(-1, fds[1]);
    EXPECT_FALSE(left);
}

TEST(KSetNonBlockingMode, KeepsTheOtherFlags) {
    int fds[2];
    ASSERT_EQ(0, pipe2(fds, O_CLOEXEC | O_DIRECT));
    const int before = fcntl(fds[1], F_GETFL);
    EXPECT_EQ(1, KSetNonBlockingMode(fds[1], true));
    EXPECT_EQ(before | O_NONBLOCK, fcntl(fds[1], F_GETFL));
    EXPECT_EQ(1, KSetNonBlockingMode(fds[1], true));
    EXPECT_EQ(before | O_NONBLOCK, fcntl(fds[1], F_GETFL));
    EXPECT_EQ(1, KSetNonBlockingMode(fds[1], false));
    EXPECT_EQ(before, fcntl(fds[1], F_GETFL));
    close(fds[0]);
    close(fds[1]);
    EXPECT_EQ(0, KSetNonBlockingMode(fds[0], true));
    EXPECT_EQ(EBADF, errno);
}

TEST(KCloseSocket, Closes) {
    Pair pair;
    const int fd = pair.fds[0];
    pair.closeEnd(0);
    EXPECT_EQ(-1, fcntl(fd, F_GETFD));
}

TEST(KReceiveLine, EndsWithTheLineFeed) {
    Pair pair;
    pair.write("02\t0001\n");
    char buf[32];
    memset(buf, '#', sizeof buf);
    EXPECT_EQ(8, KReceiveLine(pair.fds[0], buf, sizeof buf));
    EXPECT_EQ("02\t0001\n#", std::string(buf, 9));
}

TEST(KReceiveLine, GoesOnUntilTheBytesEndWithOne) {
    Pair pair;
    pair.write("one\ntwo");
    std::thread later([&] { pair.write("!\n"); });
    char buf[32];
    EXPECT_EQ(9, KReceiveLine(pair.fds[0], buf, sizeof buf));
    EXPECT_EQ("one\ntwo!\n", std::string(buf, 9));
    later.join();
}

TEST(KReceiveLine, EndsWithTheBuffer) {
    Pair pair;
    pair.write("abcdef\n");
    char buf[5] = "####";
    EXPECT_EQ(4, KReceiveLine(pair.fds[0], buf, 4));
    EXPECT_EQ("abcd", std::string(buf));
    EXPECT_EQ(3, KReceiveLine(pair.fds[0], buf, 4));
    EXPECT_EQ("ef\n", std::string(buf, 3));
}

TEST(KReceiveLine, EndsWithThePeer) {
    Pair pair;
    pair.write("abc");
    pair.closeEnd(1);
    char buf[8];
    EXPECT_EQ(3, KReceiveLine(pair.fds[0], buf, sizeof buf));
    EXPECT_EQ(0, KReceiveLine(pair.fds[0], buf, sizeof buf));
}

TEST(KReceiveLine, EndsWithThePeerWhateverFailedBefore) {
    Pair pair;
    pair.closeEnd(1);
    char buf[32];
    errno = EINTR;  // of another call: the end of a stream leaves it as it is
    EXPECT_EQ(0, KReceiveLine(pair.fds[0], buf, sizeof buf));
}

TEST(KReceiveLine, EndsWithAFailure) {
    Pair pair;
    KSetNonBlockingMode(pair.fds[0], true);
    char buf[8];
    EXPECT_EQ(0, KReceiveLine(pair.fds[0], buf, sizeof buf));
    EXPECT_EQ(EAGAIN, errno);
    pair.write("ab");
    EXPECT_EQ(2, KReceiveLine(pair.fds[0], buf, sizeof buf));
    EXPECT_EQ(0, KReceiveLine(-1, buf, sizeof buf));
}

TEST(KReceiveLine, ReadsNothingWithoutRoom) {
    Pair pair;
    pair.write("a\n");
    char buf[2] = {'#', '#'};
    EXPECT_EQ(0, KReceiveLine(pair.fds[0], buf, 0));
    EXPECT_EQ(0, KReceiveLine(pair.fds[0], buf, -1));
    EXPECT_EQ(0, KReceiveLine(pair.fds[0], buf, INT_MIN));
    EXPECT_EQ('#', buf[0]);
    EXPECT_EQ(2, KReceiveLine(pair.fds[0], buf, 2));
}

TEST(KReceiveLine, GoesOnAfterASignal) {
    Pair pair;
    int count = -1;
    char buf[8];
    BlockingCall reader([&] { count = KReceiveLine(pair.fds[0], buf, sizeof buf); });
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(reader.isAsleep());
        reader.signal();
    }
    pair.write("ok\n");
    reader.join();
    EXPECT_EQ(3, count);
}

TEST(KLookUpHost, TextAndName) {
    in_addr address = {};
    EXPECT_EQ(0, KLookUpHost("192.168.1.20", &address));
    EXPECT_EQ(htonl(0xC0A80114), address.s_addr);
    EXPECT_EQ(0, KLookUpHost("localhost", &address));
    EXPECT_EQ(htonl(0x7F000001), address.s_addr);
}

TEST(KLookUpHost, WhatIsNoHost) {
    in_addr address = {};
    address.s_addr = 0x12345678;
    const std::string tooLong(70, 'a');  // a label has 63 characters at most: no server is asked
    for (const char* host : {"", tooLong.c_str(), "a..b"}) {
        EXPECT_NE(0, KLookUpHost(host, &address)) << host;
    }
    EXPECT_EQ(0x12345678u, address.s_addr);
}

}  // namespace
