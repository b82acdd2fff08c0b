#include "eip/short_pause.h"

#include <gtest/gtest.h>

namespace {

const long kPause = 1000;

/// Pauses that are all as late as this; what is asked for after them.
long askedAfter(ShortPause* pause, int times, long late) {
    for (int i = 0; i < times; ++i) {
        const long asked = pause->toAskFor(kPause);
        pause->note(asked, asked + late);
    }
    return pause->toAskFor(kPause);
}

TEST(ShortPause, AsksForAllOfItAtFirst) {
    EXPECT_EQ(kPause, ShortPause().toAskFor(kPause));
}

TEST(ShortPause, AsksForLessByTheUsualLateness) {
    ShortPause pause;
    const long asked = askedAfter(&pause, 100, 60);
    EXPECT_GE(asked + 60, kPause) << "the pause is not shorter";
    EXPECT_LE(asked + 60, kPause + 8) << "and hardly longer";
}

TEST(ShortPause, BelievesALongLatenessLittleByLittle) {
    ShortPause pause;
    EXPECT_GE(askedAfter(&pause, 1, 80), kPause - 10);
}

TEST(ShortPause, BelievesAShortLatenessAtOnce) {
    ShortPause pause;
    askedAfter(&pause, 100, 60);
    EXPECT_GE(askedAfter(&pause, 1, 10) + 10, kPause);
    EXPECT_EQ(kPause, askedAfter(&pause, 1, 0));
}

TEST(ShortPause, NeverAsksForMuchLess) {
    ShortPause pause;
    EXPECT_GE(askedAfter(&pause, 1000, 20000), kPause - 100);
}

TEST(ShortPause, TakesAClockThatStandsForNoLateness) {
    ShortPause pause;
    pause.note(kPause, 0);
    EXPECT_EQ(kPause, pause.toAskFor(kPause));
}

}  // namespace
