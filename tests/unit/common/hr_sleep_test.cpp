#include "common/hr_sleep.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/time.h>
#include <time.h>

#include <QtGlobal>

namespace {

qint64 nanosecondsSlept(unsigned long ms) {
    struct timespec start;
    struct timespec end;
    clock_gettime(CLOCK_MONOTONIC, &start);
    HRSleep(ms);
    clock_gettime(CLOCK_MONOTONIC, &end);
    return (static_cast<qint64>(end.tv_sec) - start.tv_sec) * 1000000000 + end.tv_nsec -
           start.tv_nsec;
}

const qint64 kMillisecond = 1000000;

TEST(HRSleep, SleepsTheTime) {
    EXPECT_LT(nanosecondsSlept(0), 500 * kMillisecond);
    EXPECT_GE(nanosecondsSlept(20), 20 * kMillisecond);
    EXPECT_GE(nanosecondsSlept(1001), 1001 * kMillisecond);  // more than a second's nanoseconds
}

TEST(HRSleep, WrapsAtThirtyTwoBitsOfNanoseconds) {
    EXPECT_LT(nanosecondsSlept(4295), 4000 * kMillisecond);
    // 4345 ms are 2^32 ns and 50.03 ms more.
    const qint64 wrapped = nanosecondsSlept(4345);
    EXPECT_GE(wrapped, 50 * kMillisecond);
    EXPECT_LT(wrapped, 4000 * kMillisecond);
}

volatile sig_atomic_t g_signals = 0;

void countSignal(int) {
    g_signals = g_signals + 1;
}

TEST(HRSleep, SignalsDoNotShortenIt) {
    struct sigaction action = {};
    struct sigaction before;
    action.sa_handler = countSignal;
    ASSERT_EQ(0, sigaction(SIGALRM, &action, &before));
    const struct itimerval everyFiveMs = {{0, 5000}, {0, 5000}};
    const struct itimerval never = {{0, 0}, {0, 0}};
    g_signals = 0;
    ASSERT_EQ(0, setitimer(ITIMER_REAL, &everyFiveMs, nullptr));
    const qint64 slept = nanosecondsSlept(100);
    ASSERT_EQ(0, setitimer(ITIMER_REAL, &never, nullptr));
    ASSERT_EQ(0, sigaction(SIGALRM, &before, nullptr));
    EXPECT_GE(g_signals, 1);
    EXPECT_GE(slept, 100 * kMillisecond);
    // It sleeps on for what is left, not for the whole time again.
    EXPECT_LT(slept, 2000 * kMillisecond);
}

}  // namespace
