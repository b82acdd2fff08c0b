#include "eip/quick_answer.h"

#include <gtest/gtest.h>

namespace {

typedef std::chrono::microseconds Us;

const Us kWithin(300);
const Us kBeyond(301);

TEST(QuickAnswer, FirstWaitSleeps) {
    EXPECT_FALSE(QuickAnswer(true).staysAwake());
}

TEST(QuickAnswer, StaysAwakeAfterAQuickAnswer) {
    QuickAnswer pace(true);
    pace.note(true, kWithin);
    EXPECT_TRUE(pace.staysAwake());
}

TEST(QuickAnswer, OneSlowAnswerPutsItToSleep) {
    QuickAnswer pace(true);
    pace.note(true, kWithin);
    pace.note(true, kBeyond);
    EXPECT_FALSE(pace.staysAwake());
}

TEST(QuickAnswer, NoAnswerIsNotQuick) {
    QuickAnswer pace(true);
    pace.note(true, kWithin);
    pace.note(false, Us(0));
    EXPECT_FALSE(pace.staysAwake());
}

TEST(QuickAnswer, NeverAwakeOnASingleProcessor) {
    QuickAnswer pace(false);
    pace.note(true, Us(1));
    EXPECT_FALSE(pace.staysAwake());
}

/// The waits asleep until one begins awake again, when all answers take this long.
int asleepAfter(QuickAnswer* pace, Us answer) {
    int count = 0;
    while (!pace->staysAwake() && count < 1000) {
        pace->note(true, answer);
        ++count;
    }
    return count;
}

/// Quick enough for a wait awake, but not while it is awake: so a controller that takes 0.2 ms.
TEST(QuickAnswer, WaitsAwakeInVainLessAndLessOften) {
    QuickAnswer pace(true);
    pace.note(true, Us(200));
    for (const int asleep : {1, 3, 7, 15, 31, 63, 63, 63}) {
        ASSERT_TRUE(pace.staysAwake());
        pace.note(true, Us(200));
        EXPECT_EQ(asleep, asleepAfter(&pace, Us(200)));
    }
    pace.note(true, Us(100));
    EXPECT_TRUE(pace.staysAwake()) << "it was worth it";
    pace.note(true, Us(101));
    EXPECT_EQ(1, asleepAfter(&pace, Us(100))) << "and the count begins anew";
}

TEST(QuickAnswer, AwakeForLessThanAQuickAnswerMayTake) {
    EXPECT_EQ(Us(100), QuickAnswer::awake());
    EXPECT_EQ(kWithin, QuickAnswer::quickLimit());
}

}  // namespace
