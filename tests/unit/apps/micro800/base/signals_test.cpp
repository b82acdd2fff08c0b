#include "apps/micro800/base/signals.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QElapsedTimer>
#include <thread>

namespace {

bool isBlocked(int number) {
    sigset_t mask;
    pthread_sigmask(SIG_BLOCK, nullptr, &mask);
    return sigismember(&mask, number) == 1;
}

TEST(SignalsHeld, HoldsAllButFaultsAndGivesThemBack) {
    ASSERT_FALSE(isBlocked(SIGINT));
    {
        const SignalsHeld held;
        for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGWINCH, SIGPIPE, SIGTSTP}) {
            EXPECT_TRUE(isBlocked(number)) << number;
        }
        for (const int number : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE}) {
            EXPECT_FALSE(isBlocked(number)) << number;
        }
        bool inThread = false;
        std::thread([&inThread] { inThread = isBlocked(SIGWINCH); }).join();
        EXPECT_TRUE(inThread);
    }
    EXPECT_FALSE(isBlocked(SIGINT));
}

TEST(StopSignals, ASignalEndsTheWaitAndIsRemembered) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        StopSignals stops;
        EXPECT_FALSE(stops.wait(0));
        kill(getpid(), number);
        QElapsedTimer timer;
        timer.start();
        EXPECT_TRUE(stops.wait(30000));
        EXPECT_LT(timer.elapsed(), 20000);
        EXPECT_TRUE(stops.stopped());
        EXPECT_TRUE(stops.wait(0));
    }
}

/// Sets what a signal does, and what it did before at the end.
class Disposition {
 public:
    Disposition(int signal, sighandler_t handler)
        : number(signal), before(std::signal(signal, handler)) {}
    ~Disposition() { std::signal(number, before); }
    Disposition(const Disposition&) = delete;
    Disposition& operator=(const Disposition&) = delete;

 private:
    int number;
    sighandler_t before;
};

TEST(StopSignals, AnIgnoredSignalStaysIgnored) {
    const Disposition ignored(SIGHUP, SIG_IGN);
    StopSignals stops;
    kill(getpid(), SIGHUP);
    EXPECT_FALSE(stops.wait(0));
    kill(getpid(), SIGTERM);
    EXPECT_TRUE(stops.wait(30000));
}

TEST(StopSignals, ASecondOneDoesNotOutliveIt) {
    {
        StopSignals stops;
        kill(getpid(), SIGTERM);
        EXPECT_TRUE(stops.wait(30000));
        kill(getpid(), SIGTERM);
        kill(getpid(), SIGINT);
    }
    SUCCEED() << "neither ended the program";
}

TEST(StopSignals, AKeyEndsTheWaitWithoutStopping) {
    int pipeEnds[2];
    ASSERT_EQ(pipe(pipeEnds), 0);
    ASSERT_EQ(write(pipeEnds[1], "q", 1), 1);
    StopSignals stops;
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(stops.wait(30000, pipeEnds[0]));
    EXPECT_LT(timer.elapsed(), 20000);
    close(pipeEnds[0]);
    close(pipeEnds[1]);
}

}  // namespace
