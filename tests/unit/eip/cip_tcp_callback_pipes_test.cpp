// The pipes of the transport, and its sleep.

#include <errno.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <signal.h>
#include <string.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <climits>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "eip/cip_tcp_callback.h"
#include "support/loopback.h"

namespace {

/// A transport that notes which pipes were served and can take what lies in them.
class Transport : public CipTcpCallback {
 public:
    explicit Transport(bool takesCommands = true) : takes(takesCommands) {}

    virtual void serverPipeOnReceive(int pipeIndex) {
        served.push_back(pipeIndex);
        if (takes) {
            char line[4096];
            const int count = recvServerPipe(pipeIndex, line, sizeof line);
            taken += std::string(line, size_t(count));
        }
    }

    bool sendCommand(int pipe, const std::string& text) {
        return sendClientPipe(pipe, text.data(), int(text.size())) == int(text.size());
    }
    bool sendAnswer(int pipe, const std::string& text) {
        return sendServerPipe(pipe, text.data(), int(text.size())) == int(text.size());
    }

    std::vector<int> served;
    std::string taken;

 private:
    bool takes;
};

const int kBoth[] = {0, 1};

// ---- sleep ---------------------------------------------------------------------------------

TEST(TransportSleep, OfNoTimeReturnsAtOnce) {
    Transport transport;
    ASSERT_TRUE(transport.sendCommand(0, "a\n"));
    const Stopwatch watch;
    transport.sleep(0);
    EXPECT_LT(watch.ms(), kSoonMs / 2);
    EXPECT_TRUE(transport.served.empty());  // not even a look at the pipes
}

TEST(TransportSleep, TakesItsTime) {
    Transport transport;
    const Stopwatch watch;
    transport.sleep(60);
    EXPECT_GE(watch.ms(), 60);
    EXPECT_LT(watch.ms(), kSoonMs);
    EXPECT_TRUE(transport.served.empty());
}

TEST(TransportSleep, IsCutShortByACommandOnEitherPipe) {
    for (int pipe : kBoth) {
        Transport transport;
        std::thread driver([&] { EXPECT_TRUE(transport.sendCommand(pipe, "cmd\n")); });
        const Stopwatch watch;
        transport.sleep(kSoonMs);
        EXPECT_LT(watch.ms(), kSoonMs / 2);
        driver.join();
        EXPECT_EQ(std::vector<int>({pipe}), transport.served);
        EXPECT_EQ("cmd\n", transport.taken);
    }
}

TEST(TransportSleep, ServesBothPipesInOrder) {
    Transport transport;
    ASSERT_TRUE(transport.sendCommand(1, "b\n"));
    ASSERT_TRUE(transport.sendCommand(0, "a\n"));
    transport.sleep(kSoonMs);
    EXPECT_EQ(std::vector<int>({0, 1}), transport.served);
    EXPECT_EQ("a\nb\n", transport.taken);
}

TEST(TransportSleep, DoesNotLookAtTheSocket) {
    LoopbackServer server;
    Transport transport;
    ASSERT_EQ(1, transport.connect("127.0.0.1", server.port(), kSoonMs));
    ASSERT_TRUE(server.accept());
    ASSERT_TRUE(server.send("unasked"));
    const Stopwatch watch;
    transport.sleep(60);
    EXPECT_GE(watch.ms(), 60);
}

TEST(TransportSleep, DefaultHandlerDoesNothing) {
    CipTcpCallback transport;
    ASSERT_EQ(2, transport.sendClientPipe(0, "a\n", 2));
    transport.sleep(kSoonMs);
    char line[8];
    EXPECT_EQ(2, transport.recvServerPipe(0, line, sizeof line));
}

// ---- server ends ---------------------------------------------------------------------------

TEST(ServerPipe, SendsWholeBuffersToItsOwnClient) {
    for (int pipe : kBoth) {
        Transport transport;
        EXPECT_EQ(5, transport.sendServerPipe(pipe, "02\t1\n", 5));
        char line[16];
        bool gotLF = false;
        EXPECT_EQ(5, transport.recvClientPipeUntilLF(pipe, line, sizeof line, &gotLF));
        EXPECT_TRUE(gotLF);
        EXPECT_EQ("02\t1\n", std::string(line, 5));
        EXPECT_EQ(1, transport.setClientPipeRxTimeout(1 - pipe, 20));
        EXPECT_EQ(0, transport.recvClientPipeUntilLF(1 - pipe, line, sizeof line, &gotLF));
    }
}

TEST(ServerPipe, AnyOtherIndexIsPipeOne) {
    Transport transport;
    EXPECT_EQ(2, transport.sendClientPipe(7, "a\n", 2));
    char line[8];
    EXPECT_EQ(2, transport.recvServerPipe(1, line, sizeof line));
    EXPECT_EQ(2, transport.sendServerPipe(-1, "b\n", 2));
    bool gotLF = false;
    EXPECT_EQ(2, transport.recvClientPipeUntilLF(1, line, sizeof line, &gotLF));
}

TEST(ServerPipe, NeverBlocks) {
    Transport transport;
    char line[8];
    bool gotLF = true;
    const Stopwatch watch;
    EXPECT_EQ(0, transport.recvServerPipe(0, line, sizeof line));
    EXPECT_EQ(0, transport.recvServerPipeUntilLF(0, line, sizeof line, &gotLF));
    EXPECT_FALSE(gotLF);
    EXPECT_EQ(0, transport.recvServerPipeLine(0, line, sizeof line));
    const std::string much(4096, 'x');
    int result = 0;
    for (int i = 0; result >= 0 && i < 100000; ++i) {
        result = transport.sendServerPipe(0, much.data(), int(much.size()));
    }
    EXPECT_EQ(-1, result);
    EXPECT_EQ(EAGAIN, errno);
    EXPECT_LT(watch.ms(), kSoonMs);
}

TEST(ServerPipe, ReadsUpToTheLengthAskedFor) {
    Transport transport;
    ASSERT_TRUE(transport.sendCommand(0, "one\n"));
    ASSERT_TRUE(transport.sendCommand(0, "two\n"));
    char line[16];
    EXPECT_EQ(6, transport.recvServerPipe(0, line, 6));
    EXPECT_EQ("one\ntw", std::string(line, 6));
    EXPECT_EQ(0, transport.recvServerPipe(0, line, 0));
    EXPECT_EQ(0, transport.recvServerPipe(0, line, -1));
    EXPECT_EQ(2, transport.recvServerPipe(0, line, sizeof line));
    EXPECT_EQ("o\n", std::string(line, 2));
}

TEST(ServerPipe, UntilLFMayGiveTwoLines) {
    Transport transport;
    ASSERT_TRUE(transport.sendCommand(0, "one\n"));
    ASSERT_TRUE(transport.sendCommand(0, "two\n"));
    char line[16];
    bool gotLF = false;
    const int count = transport.recvServerPipeUntilLF(0, line, sizeof line, &gotLF);
    EXPECT_TRUE(gotLF);
    EXPECT_EQ("one\ntwo\n", std::string(line, size_t(count)));
}

TEST(ServerPipe, UntilLFStopsWithoutOne) {
    Transport transport;
    char line[16];
    bool gotLF = true;
    ASSERT_TRUE(transport.sendCommand(0, "one"));
    EXPECT_EQ(3, transport.recvServerPipeUntilLF(0, line, sizeof line, &gotLF));
    EXPECT_FALSE(gotLF);
    ASSERT_TRUE(transport.sendCommand(0, "one\ntwo"));
    EXPECT_EQ(7, transport.recvServerPipeUntilLF(0, line, sizeof line, &gotLF));
    EXPECT_FALSE(gotLF);
    ASSERT_TRUE(transport.sendCommand(0, "full\n"));
    EXPECT_EQ(4, transport.recvServerPipeUntilLF(0, line, 4, &gotLF));
    EXPECT_FALSE(gotLF);
    EXPECT_EQ(1, transport.recvServerPipeUntilLF(0, line, 4, nullptr));
    gotLF = true;
    EXPECT_EQ(0, transport.recvServerPipeUntilLF(0, line, 0, &gotLF));
    EXPECT_FALSE(gotLF);
    EXPECT_EQ(0, transport.recvServerPipeUntilLF(0, line, INT_MIN, &gotLF));
}

TEST(ServerPipe, LineByLine) {
    Transport transport;
    ASSERT_TRUE(transport.sendCommand(0, "one\ntwo\n\n"));
    ASSERT_TRUE(transport.sendCommand(0, "three\n"));
    char line[16];
    EXPECT_EQ(4, transport.recvServerPipeLine(0, line, sizeof line));
    EXPECT_EQ("one\n", std::string(line, 4));
    EXPECT_EQ(4, transport.recvServerPipeLine(0, line, sizeof line));
    EXPECT_EQ("two\n", std::string(line, 4));
    EXPECT_EQ(1, transport.recvServerPipeLine(0, line, sizeof line));
    EXPECT_EQ(6, transport.recvServerPipeLine(0, line, sizeof line));
    EXPECT_EQ("three\n", std::string(line, 6));
    EXPECT_EQ(0, transport.recvServerPipeLine(0, line, sizeof line));
}

TEST(ServerPipe, LineOfExactlyTheBuffer) {
    Transport transport;
    ASSERT_TRUE(transport.sendCommand(0, "123\n5678\n"));
    char line[4];
    EXPECT_EQ(4, transport.recvServerPipeLine(0, line, 4));
    EXPECT_EQ("123\n", std::string(line, 4));
    EXPECT_EQ(0, transport.recvServerPipeLine(0, line, 4));
    EXPECT_EQ(0, transport.recvServerPipeLine(0, line, 0));
    EXPECT_EQ(0, transport.recvServerPipeLine(0, line, -1));
}

TEST(ServerPipe, LineTooLongIsLostToItsEndOnly) {
    for (size_t length : {size_t(5), size_t(8), size_t(9), size_t(5000)}) {
        Transport transport;
        ASSERT_TRUE(transport.sendCommand(0, std::string(length, 'x') + "\nok\n"));
        char line[4];
        EXPECT_EQ(0, transport.recvServerPipeLine(0, line, 4)) << length;
        EXPECT_EQ(3, transport.recvServerPipeLine(0, line, 4)) << length;
        EXPECT_EQ("ok\n", std::string(line, 3)) << length;
    }
}

TEST(ServerPipe, LineWithoutAnEndIsLost) {
    Transport transport;
    ASSERT_TRUE(transport.sendCommand(0, "abc"));
    char line[16];
    EXPECT_EQ(0, transport.recvServerPipeLine(0, line, sizeof line));
    ASSERT_TRUE(transport.sendCommand(0, "ok\n"));
    EXPECT_EQ(3, transport.recvServerPipeLine(0, line, sizeof line));
    EXPECT_EQ("ok\n", std::string(line, 3));
}

/// The descriptors that the newest transport made, in order.
std::vector<int> madeSince(const std::set<int>& before) {
    const std::set<int> made = minus(openDescriptors(), before);
    return std::vector<int>(made.begin(), made.end());
}

TEST(ServerPipe, ClosedClientDoesNotMakeWaitsSpin) {
    typedef std::function<void(CipTcpCallback&)> Read;
    const Read reads[] = {[](CipTcpCallback& t) {
                              char b[8];
                              t.recvServerPipe(0, b, sizeof b);
                          },
                          [](CipTcpCallback& t) {
                              char b[8];
                              t.recvServerPipeUntilLF(0, b, sizeof b, nullptr);
                          },
                          [](CipTcpCallback& t) {
                              char b[8];
                              t.recvServerPipeLine(0, b, sizeof b);
                          }};
    for (const Read& read : reads) {
        const std::set<int> before = openDescriptors();
        Transport transport(false);
        for (int fd : madeSince(before)) {
            shutdown(fd, SHUT_RDWR);
        }
        transport.sleep(kSoonMs);  // returns at once: the end of the pipe is readable
        EXPECT_EQ(std::vector<int>({0, 1}), transport.served);
        errno = EAGAIN;  // of another call: the end of a stream leaves it as it is
        read(transport);
        char b[8];
        errno = EAGAIN;
        transport.recvServerPipe(1, b, sizeof b);
        transport.served.clear();
        const Stopwatch watch;
        transport.sleep(60);
        EXPECT_GE(watch.ms(), 60);
        EXPECT_TRUE(transport.served.empty());
    }
}

/// Another library of the host's process closes what is not its own.
TEST(ServerPipe, DescriptorThatIsGoneDoesNotMakeWaitsSpin) {
    const std::set<int> before = openDescriptors();
    Transport transport;
    // client 0, server 0, client 1, server 1
    const std::vector<int> made = madeSince(before);
    ASSERT_EQ(4u, made.size());
    ASSERT_EQ(0, close(made.at(1)));
    char line[8];
    EXPECT_EQ(0, transport.recvServerPipe(0, line, sizeof line));
    EXPECT_EQ(EBADF, errno);
    const Stopwatch watch;
    transport.sleep(60);
    EXPECT_GE(watch.ms(), 60);
    // The other pipe is served as before.
    ASSERT_TRUE(transport.sendCommand(1, "b\n"));
    transport.sleep(kSoonMs);
    EXPECT_EQ(std::vector<int>({1}), transport.served);
    EXPECT_EQ("b\n", transport.taken);
}

// ---- client ends ---------------------------------------------------------------------------

TEST(ClientPipe, DescriptorsAreClosedOnExecAndOnlyTheServerEndsDoNotBlock) {
    const std::set<int> before = openDescriptors();
    CipTcpCallback transport;
    const std::vector<int> made = madeSince(before);
    ASSERT_EQ(4u, made.size());
    int nonBlocking = 0;
    for (int fd : made) {
        EXPECT_TRUE(fcntl(fd, F_GETFD) & FD_CLOEXEC);
        timeval rx = {-1, -1};
        timeval tx = {-1, -1};
        socklen_t size = sizeof rx;
        ASSERT_EQ(0, getsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &rx, &size));
        ASSERT_EQ(0, getsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &tx, &size));
        if (fcntl(fd, F_GETFL) & O_NONBLOCK) {
            ++nonBlocking;
        } else {
            EXPECT_EQ(1, rx.tv_sec);
            EXPECT_EQ(1, tx.tv_sec);
        }
    }
    EXPECT_EQ(2, nonBlocking);
    EXPECT_TRUE(transport.pipesOpened());
}

TEST(ClientPipe, WaitsForItsTimeout) {
    for (int pipe : kBoth) {
        Transport transport;
        EXPECT_EQ(1, transport.setClientPipeRxTimeout(pipe, 60));
        char line[8];
        bool gotLF = true;
        const Stopwatch watch;
        EXPECT_EQ(0, transport.recvClientPipeUntilLF(pipe, line, sizeof line, &gotLF));
        EXPECT_FALSE(gotLF);
        EXPECT_GE(watch.ms(), 59);
        EXPECT_LT(watch.ms(), kSoonMs);
    }
}

TEST(ClientPipe, WaitsASecondAtFirst) {
    Transport transport;
    char line[8];
    const Stopwatch watch;
    EXPECT_EQ(0, transport.recvClientPipeUntilLF(0, line, sizeof line, nullptr));
    EXPECT_GE(watch.ms(), 990);
    EXPECT_LT(watch.ms(), kSoonMs);
}

/// Answers at once until the pipe's waits begin awake, under any load of this machine.
void answerQuickly(Transport* transport) {
    for (int i = 0; i < 20; ++i) {
        ASSERT_TRUE(transport->sendAnswer(0, "q\n"));
        char line[8];
        ASSERT_EQ(2, transport->recvClientPipeUntilLF(0, line, sizeof line, nullptr));
    }
}

TEST(ClientPipe, WaitsForItsTimeoutAfterQuickAnswers) {
    Transport transport;
    ASSERT_EQ(1, transport.setClientPipeRxTimeout(0, 60));
    answerQuickly(&transport);
    char line[8];
    bool gotLF = true;
    const Stopwatch watch;
    EXPECT_EQ(0, transport.recvClientPipeUntilLF(0, line, sizeof line, &gotLF));
    EXPECT_FALSE(gotLF);
    EXPECT_GE(watch.ms(), 59);
    EXPECT_LT(watch.ms(), kSoonMs);
}

TEST(ClientPipe, TakesASlowAnswerAfterQuickOnes) {
    Transport transport;
    answerQuickly(&transport);
    std::thread worker([&] {
        transport.sleep(20);
        EXPECT_TRUE(transport.sendAnswer(0, "late\n"));
    });
    char line[8];
    bool gotLF = false;
    const int count = transport.recvClientPipeUntilLF(0, line, sizeof line, &gotLF);
    worker.join();
    EXPECT_TRUE(gotLF);
    EXPECT_EQ("late\n", std::string(line, size_t(count)));
}

TEST(ClientPipe, PutsATornAnswerTogetherAfterQuickOnes) {
    Transport transport;
    answerQuickly(&transport);
    ASSERT_TRUE(transport.sendAnswer(0, "02\t"));
    std::thread worker([&] {
        transport.sleep(5);
        EXPECT_TRUE(transport.sendAnswer(0, "2a\n"));
    });
    char line[8];
    bool gotLF = false;
    const int count = transport.recvClientPipeUntilLF(0, line, sizeof line, &gotLF);
    worker.join();
    EXPECT_TRUE(gotLF);
    EXPECT_EQ("02\t2a\n", std::string(line, size_t(count)));
}

TEST(ClientPipe, SendGivesUpAfterItsTimeout) {
    Transport transport;
    EXPECT_EQ(1, transport.setClientPipeTxTimeout(0, 60));
    const std::string much(4096, 'x');
    int result = 0;
    Stopwatch watch;
    for (int i = 0; result >= 0 && i < 100000; ++i) {
        watch = Stopwatch();
        result = transport.sendClientPipe(0, much.data(), int(much.size()));
    }
    EXPECT_EQ(-1, result);
    EXPECT_GE(watch.ms(), 59);
    EXPECT_LT(watch.ms(), kSoonMs);
}

TEST(ClientPipe, PutsATornAnswerTogether) {
    Transport transport;
    ASSERT_TRUE(transport.sendAnswer(0, "02\t0"));
    std::thread worker([&] {
        EXPECT_TRUE(transport.sendAnswer(0, "001\t"));
        EXPECT_TRUE(transport.sendAnswer(0, "2a\n"));
    });
    char line[32];
    bool gotLF = false;
    const int count = transport.recvClientPipeUntilLF(0, line, sizeof line, &gotLF);
    worker.join();
    EXPECT_TRUE(gotLF);
    EXPECT_EQ("02\t0001\t2a\n", std::string(line, size_t(count)));
}

TEST(ClientPipe, StopsAtTheBuffersEnd) {
    Transport transport;
    ASSERT_TRUE(transport.sendAnswer(0, "12345\n"));
    char line[8];
    bool gotLF = true;
    EXPECT_EQ(4, transport.recvClientPipeUntilLF(0, line, 4, &gotLF));
    EXPECT_FALSE(gotLF);
    EXPECT_EQ(0, transport.recvClientPipeUntilLF(0, line, 0, &gotLF));
    EXPECT_EQ(0, transport.recvClientPipeUntilLF(0, line, -1, &gotLF));
    EXPECT_EQ(2, transport.recvClientPipeUntilLF(0, line, 8, &gotLF));
    EXPECT_TRUE(gotLF);
}

TEST(ClientPipe, DiscardsLateAnswersWithoutWaiting) {
    Transport transport;
    const Stopwatch watch;
    transport.discardClientPipe(0);
    for (size_t size : {size_t(1), size_t(4095), size_t(4096), size_t(4097), size_t(20000)}) {
        ASSERT_TRUE(transport.sendAnswer(0, std::string(size, 'x')));
        ASSERT_TRUE(transport.sendAnswer(1, "other\n"));
        transport.discardClientPipe(0);
        ASSERT_TRUE(transport.sendAnswer(0, "own\n"));
        char line[32];
        bool gotLF = false;
        EXPECT_EQ(4, transport.recvClientPipeUntilLF(0, line, sizeof line, &gotLF)) << size;
        EXPECT_EQ("own\n", std::string(line, 4)) << size;
        EXPECT_EQ(6, transport.recvClientPipeUntilLF(1, line, sizeof line, &gotLF)) << size;
    }
    EXPECT_LT(watch.ms(), kSoonMs);
}

TEST(ClientPipe, WorkerThatIsGoneIsAFailureWithoutASignal) {
    const std::set<int> before = openDescriptors();
    Transport transport;
    for (int fd : madeSince(before)) {
        shutdown(fd, SHUT_RDWR);
    }
    EXPECT_EQ(-1, transport.sendClientPipe(0, "a\n", 2));  // SIGPIPE would end the program
    EXPECT_EQ(EPIPE, errno);
    EXPECT_EQ(-1, transport.sendServerPipe(1, "a\n", 2));
    EXPECT_EQ(EPIPE, errno);
    char line[8];
    bool gotLF = true;
    transport.setClientPipeRxTimeout(0, kSoonMs);
    const Stopwatch watch;
    EXPECT_EQ(0, transport.recvClientPipeUntilLF(0, line, sizeof line, &gotLF));
    EXPECT_FALSE(gotLF);
    transport.discardClientPipe(0);
    EXPECT_LT(watch.ms(), kSoonMs / 2);
}

TEST(ClientPipe, SignalDoesNotCostTheAnswer) {
    Transport transport;
    transport.setClientPipeRxTimeout(0, kSoonMs);
    bool gotLF = false;
    BlockingCall driver([&] {
        char line[8];
        transport.recvClientPipeUntilLF(0, line, sizeof line, &gotLF);
    });
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(driver.isAsleep());
        driver.signal();
    }
    EXPECT_TRUE(transport.sendAnswer(0, "ok\n"));
    driver.join();
    EXPECT_TRUE(gotLF);
}

TEST(ClientPipe, SignalDoesNotEndAWaitWithoutATimeout) {
    Transport transport;
    ASSERT_EQ(1, transport.setClientPipeRxTimeout(0, 0));
    bool gotLF = false;
    BlockingCall driver([&] {
        char line[8];
        transport.recvClientPipeUntilLF(0, line, sizeof line, &gotLF);
    });
    for (int i = 0; i < 3; ++i) {
        ASSERT_TRUE(driver.isAsleep());
        driver.signal();
    }
    EXPECT_TRUE(transport.sendAnswer(0, "ok\n"));
    driver.join();
    EXPECT_TRUE(gotLF);
}

/// A thread that shares its only processor with the worker has nothing to gain awake.
TEST(ClientPipe, TalksOnOneProcessor) {
    std::thread pinned([] {
        cpu_set_t all;
        ASSERT_EQ(0, sched_getaffinity(0, sizeof all, &all));
        cpu_set_t one;
        CPU_ZERO(&one);
        size_t first = 0;
        while (!CPU_ISSET(first, &all)) {
            ++first;
        }
        CPU_SET(first, &one);
        ASSERT_EQ(0, sched_setaffinity(0, sizeof one, &one));
        Transport transport;
        answerQuickly(&transport);
        ASSERT_EQ(1, transport.setClientPipeRxTimeout(0, 60));
        // Of 60 ms asleep no processor time is spent on the wait.
        timespec before = timespec();
        timespec after = timespec();
        char line[8];
        ASSERT_EQ(0, clock_gettime(CLOCK_THREAD_CPUTIME_ID, &before));
        EXPECT_EQ(0, transport.recvClientPipeUntilLF(0, line, sizeof line, nullptr));
        ASSERT_EQ(0, clock_gettime(CLOCK_THREAD_CPUTIME_ID, &after));
        const long spent =
            (after.tv_sec - before.tv_sec) * 1000000000 + after.tv_nsec - before.tv_nsec;
        EXPECT_LT(spent, 1000000);
    });
    pinned.join();
}

std::atomic<int> signalsTaken(0);

/// The system's timer interrupts the thread that makes one every few milliseconds, however loaded
/// the machine is.
class TimerSignals {
 public:
    TimerSignals() {
        signalsTaken = 0;
        struct sigaction action = {};
        action.sa_handler = [](int) { ++signalsTaken; };  // no SA_RESTART: waits return EINTR
        sigaction(SIGUSR1, &action, &old);
        sigevent event = sigevent();
        event.sigev_notify = SIGEV_THREAD_ID;
        event.sigev_signo = SIGUSR1;
        event._sigev_un._tid = gettid();
        EXPECT_EQ(0, timer_create(CLOCK_MONOTONIC, &event, &timer));
        const long kEveryNs = 5000000;
        const itimerspec times = {{0, kEveryNs}, {0, kEveryNs}};
        EXPECT_EQ(0, timer_settime(timer, 0, &times, nullptr));
    }
    ~TimerSignals() {
        timer_delete(timer);
        sigaction(SIGUSR1, &old, nullptr);
    }
    /// Any thread.
    void stop() {
        const itimerspec none = itimerspec();
        timer_settime(timer, 0, &none, nullptr);
    }

 private:
    timer_t timer;
    struct sigaction old;
};

/// How long a wait of 50 ms lasts under signals; kSoonMs when only the end of the signals ends it.
long waitUnderSignals(Transport* transport) {
    std::atomic<TimerSignals*> signals(nullptr);
    std::atomic<long> waited(-1);
    std::atomic<bool> done(false);
    std::thread driver([&] {
        TimerSignals own;
        const Stopwatch watch;
        signals = &own;
        char line[8];
        EXPECT_EQ(0, transport->recvClientPipeUntilLF(0, line, sizeof line, nullptr));
        waited = watch.ms();
        while (!done) {
            std::this_thread::yield();
        }
    });
    const Stopwatch all;
    while (waited < 0 && all.ms() < kSoonMs) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    while (!signals) {
        std::this_thread::yield();
    }
    signals.load()->stop();
    done = true;
    driver.join();
    return waited;
}

TEST(ClientPipe, SignalsDoNotMakeTheWaitEndless) {
    Transport transport;
    transport.setClientPipeRxTimeout(0, 50);
    // A loaded machine can let the whole time pass before the second signal, and wake the driver
    // late.
    long waited = kSoonMs;
    const Stopwatch all;
    while ((signalsTaken < 2 || waited >= 990) && all.ms() < kSoonMs) {
        waited = waitUnderSignals(&transport);
        EXPECT_GE(waited, 49);
    }
    EXPECT_GT(signalsTaken, 1);
    EXPECT_LT(waited, 990);  // its own time-out, not the first one of a second
}

TEST(ClientPipe, DriverAndWorkerThreadsTalk) {
    Transport transport;
    std::atomic<bool> stop(false);
    std::thread worker([&] {
        while (!stop) {
            transport.sleep(20);
            if (!transport.taken.empty()) {
                transport.sendAnswer(0, transport.taken);
                transport.taken.clear();
            }
        }
    });
    transport.setClientPipeRxTimeout(0, kSoonMs);
    for (int i = 0; i < 500; ++i) {
        const std::string line = std::to_string(i) + "\n";
        transport.discardClientPipe(0);
        ASSERT_TRUE(transport.sendCommand(0, line));
        char answer[16];
        bool gotLF = false;
        const int count = transport.recvClientPipeUntilLF(0, answer, sizeof answer, &gotLF);
        ASSERT_TRUE(gotLF);
        ASSERT_EQ(line, std::string(answer, size_t(count)));
    }
    stop = true;
    worker.join();
}

}  // namespace
