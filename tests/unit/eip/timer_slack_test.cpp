#include "eip/timer_slack.h"

#include <gtest/gtest.h>

#include <thread>

namespace {

/// In nanoseconds, of the calling thread.
int currentSlack() {
    return prctl(PR_GET_TIMERSLACK);
}

TEST(TimerSlack, IsOfTheCallingThread) {
    const int ours = currentSlack();
    std::thread([] {
        TimerSlack slack;
        slack.bePunctual();
        EXPECT_EQ(1000, currentSlack());
        slack.beLenient();
        EXPECT_EQ(30000000, currentSlack());
        slack.bePunctual();
        EXPECT_EQ(1000, currentSlack());
    }).join();
    EXPECT_EQ(ours, currentSlack());
}

TEST(TimerSlack, StaysAsItIsAtFirst) {
    const int before = currentSlack();
    TimerSlack slack;
    EXPECT_EQ(before, currentSlack());
}

}  // namespace
