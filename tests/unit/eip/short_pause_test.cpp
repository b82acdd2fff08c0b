#include "eip/short_pause.h"

#include <gtest/gtest.h>

#include <initializer_list>

namespace {

const long kPause = 1000;

/// How long a pause takes that the system ends so late.
long pauseThatEnds(long late, ShortPause* pause) {
    const long took = pause->toAskFor(kPause) + late;
    pause->note(kPause, took);
    return took;
}

/// The average of pauses that are late in turn by these.
double averageOf(const std::initializer_list<long>& lateness, ShortPause* pause) {
    const int kRounds = 1000;
    long sum = 0;
    for (int i = 0; i < kRounds; ++i) {
        for (const long late : lateness) {
            sum += pauseThatEnds(late, pause);
        }
    }
    return static_cast<double>(sum) / kRounds / static_cast<double>(lateness.size());
}

TEST(ShortPause, AsksForAllOfItAtFirst) {
    EXPECT_EQ(kPause, ShortPause().toAskFor(kPause));
}

TEST(ShortPause, TheNextOneMakesUpForALateOne) {
    ShortPause pause;
    EXPECT_EQ(kPause + 60, pauseThatEnds(60, &pause));
    EXPECT_EQ(kPause - 60, pauseThatEnds(0, &pause));
    EXPECT_EQ(kPause, pauseThatEnds(0, &pause)) << "and only once";
}

TEST(ShortPause, TakesItsTimeOnAverage) {
    ShortPause steady;
    EXPECT_NEAR(kPause, averageOf({60}, &steady), 0.1);
    ShortPause changing;
    EXPECT_NEAR(kPause, averageOf({5, 90, 40, 0, 70}, &changing), 0.1);
}

TEST(ShortPause, TakesItsTimeWhenEveryWaitIsVeryLate) {
    ShortPause pause;
    EXPECT_GE(averageOf({20000}, &pause), kPause);
}

TEST(ShortPause, NeverAsksForMuchLess) {
    ShortPause pause;
    pauseThatEnds(20000, &pause);
    EXPECT_EQ(kPause - 100, pause.toAskFor(kPause));
}

TEST(ShortPause, DoesNotSaveUpWhatWasTooShort) {
    ShortPause pause;
    pause.note(kPause, 0);
    EXPECT_EQ(kPause, pause.toAskFor(kPause));
}

}  // namespace
