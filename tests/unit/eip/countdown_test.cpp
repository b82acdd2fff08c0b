#include "eip/countdown.h"

#include <gtest/gtest.h>

#include <climits>

namespace {

long long milliseconds(const timeval& time) {
    return static_cast<long long>(time.tv_sec) * 1000 + time.tv_usec / 1000;
}

/// Lets the clock go on by at least so many milliseconds.
void pass(qint64 ms) {
    const qint64 start = CurrentMSecsSinceBoot();
    while (CurrentMSecsSinceBoot() - start < ms) {
    }
}

TEST(Countdown, BeginsWithTheWholeTime) {
    for (unsigned long ms : {0ul, 1ul, 999ul, 1000ul, 123456ul, 4294967295ul}) {
        Countdown countdown(ms);
        EXPECT_EQ(static_cast<long long>(ms), milliseconds(countdown.beginRound()));
    }
}

TEST(Countdown, LosesWhatTheRoundTook) {
    Countdown countdown(60000);
    countdown.beginRound();
    pass(20);
    EXPECT_FALSE(countdown.expired());
    EXPECT_LE(milliseconds(countdown.beginRound()), 59980);
    EXPECT_GT(milliseconds(countdown.beginRound()), 40000);
}

TEST(Countdown, CountsARoundOfNoTimeAsAMillisecond) {
    Countdown countdown(1000);
    for (int round = 0; round < 5; ++round) {
        EXPECT_LE(milliseconds(countdown.beginRound()), 1000 - round);
        EXPECT_FALSE(countdown.expired());
    }
    int rounds = 5;
    while (rounds < 2000) {
        countdown.beginRound();
        if (countdown.expired()) {
            break;
        }
        ++rounds;
    }
    EXPECT_LE(rounds, 1000);
}

TEST(Countdown, ExpiresWhenTheRoundTookAllThatWasLeft) {
    Countdown countdown(10);
    countdown.beginRound();
    pass(10);
    EXPECT_TRUE(countdown.expired());
    Countdown none(0);
    EXPECT_EQ(0, milliseconds(none.beginRound()));
    EXPECT_TRUE(none.expired());
}

TEST(Countdown, StaysWithinItsNumbersForTheLongestTime) {
    Countdown countdown(ULONG_MAX);
    EXPECT_GT(countdown.beginRound().tv_sec, 4000000);
    EXPECT_FALSE(countdown.expired());
    EXPECT_GT(countdown.beginRound().tv_sec, 4000000);
}

}  // namespace
