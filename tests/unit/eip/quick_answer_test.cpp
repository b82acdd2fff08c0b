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

TEST(QuickAnswer, AwakeForLessThanAQuickAnswerMayTake) {
    EXPECT_EQ(Us(100), QuickAnswer::awake());
    EXPECT_EQ(kWithin, QuickAnswer::quickLimit());
}

}  // namespace
