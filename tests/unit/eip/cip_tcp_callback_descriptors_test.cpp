// The transport when descriptors run out, or are too large for select().

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/select.h>
#include <unistd.h>

#include <vector>

#include "eip/cip_tcp_callback.h"
#include "support/loopback.h"

namespace {

/// Takes every descriptor below FD_SETSIZE, so that new ones are too large for select().
class HighDescriptors {
 public:
    HighDescriptors() : usable(false) {
        getrlimit(RLIMIT_NOFILE, &old);
        rlimit wanted = old;
        wanted.rlim_cur = FD_SETSIZE + 64;
        if (old.rlim_max < wanted.rlim_cur ||
            (old.rlim_cur < wanted.rlim_cur && setrlimit(RLIMIT_NOFILE, &wanted) != 0)) {
            return;
        }
        int fd = open("/dev/null", O_RDONLY | O_CLOEXEC);
        while (fd >= 0 && fd < FD_SETSIZE) {
            taken.push_back(fd);
            fd = fcntl(fd, F_DUPFD_CLOEXEC, 0);
        }
        usable = fd >= FD_SETSIZE;
        if (fd >= 0) {
            close(fd);
        }
    }
    ~HighDescriptors() {
        release(taken.size());
        setrlimit(RLIMIT_NOFILE, &old);
    }
    void release(size_t count) {
        for (; count > 0 && !taken.empty(); --count) {
            close(taken.back());
            taken.pop_back();
        }
    }

    bool usable;

 private:
    std::vector<int> taken;
    rlimit old;
};

void expectDeadPipes(CipTcpCallback& transport) {
    EXPECT_FALSE(transport.pipesOpened());
    EXPECT_EQ(QString("Too many open files(24)"), transport.lastError());
    const Stopwatch watch;
    for (const int pipe : {0, 1}) {
        char line[8];
        bool gotLF = true;
        EXPECT_EQ(-1, transport.sendClientPipe(pipe, "a\n", 2));
        EXPECT_EQ(-1, transport.sendServerPipe(pipe, "a\n", 2));
        EXPECT_EQ(0, transport.recvServerPipe(pipe, line, sizeof line));
        EXPECT_EQ(0, transport.recvServerPipeUntilLF(pipe, line, sizeof line, &gotLF));
        EXPECT_FALSE(gotLF);
        EXPECT_EQ(0, transport.recvServerPipeLine(pipe, line, sizeof line));
        gotLF = true;
        EXPECT_EQ(0, transport.recvClientPipeUntilLF(pipe, line, sizeof line, &gotLF));
        EXPECT_FALSE(gotLF);
        EXPECT_EQ(0, transport.setClientPipeRxTimeout(pipe, 10));
        EXPECT_EQ(0, transport.setClientPipeTxTimeout(pipe, 10));
        transport.discardClientPipe(pipe);
    }
    transport.emptyRxBuffer();
    EXPECT_LT(watch.ms(), kSoonMs);
    const Stopwatch nap;
    transport.sleep(20);
    EXPECT_GE(nap.ms(), 20);
}

TEST(Descriptors, BeyondTheSetOfSelectAreRefused) {
    LoopbackServer server;
    CipTcpCallback ready;
    HighDescriptors high;
    if (!high.usable) {
        GTEST_SKIP() << "descriptors above FD_SETSIZE are not allowed here";
    }
    EXPECT_EQ(0, ready.connect("127.0.0.1", server.port(), kSoonMs));
    EXPECT_EQ(QString("Too many open files(24)"), ready.lastError());
    EXPECT_FALSE(ready.isConnected());

    CipTcpCallback transport;
    expectDeadPipes(transport);
    EXPECT_EQ(0, transport.connect("127.0.0.1", server.port(), kSoonMs));

    high.release(4);
    EXPECT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
    EXPECT_EQ(1, ready.connect("127.0.0.1", server.port(), kSoonMs));
    EXPECT_TRUE(server.accept());
}

TEST(Descriptors, OnePipeAloneIsNone) {
    HighDescriptors high;
    if (!high.usable) {
        GTEST_SKIP() << "descriptors above FD_SETSIZE are not allowed here";
    }
    for (size_t free = 1; free <= 3; ++free) {
        high.release(1);
        CipTcpCallback transport;
        EXPECT_FALSE(transport.pipesOpened()) << free;
    }
    high.release(1);
    CipTcpCallback transport;
    EXPECT_TRUE(transport.pipesOpened());
}

TEST(Descriptors, NoneLeftIsAFailureNotACrash) {
    LoopbackServer server;
    rlimit old;
    getrlimit(RLIMIT_NOFILE, &old);
    rlimit none = old;
    none.rlim_cur = rlim_t(*openDescriptors().rbegin() + 1);
    ASSERT_EQ(0, setrlimit(RLIMIT_NOFILE, &none));
    std::vector<int> fill;
    for (int fd = dup(0); fd >= 0; fd = dup(0)) {
        fill.push_back(fd);
    }
    {
        CipTcpCallback transport;
        expectDeadPipes(transport);
        EXPECT_EQ(0, transport.connect("127.0.0.1", server.port(), kSoonMs));
        EXPECT_EQ(QString("Too many open files(24)"), transport.lastError());
    }
    for (int fd : fill) {
        close(fd);
    }
    setrlimit(RLIMIT_NOFILE, &old);
}

}  // namespace
