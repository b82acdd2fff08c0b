#include "common/clock.h"

#include <gtest/gtest.h>
#include <time.h>

namespace {

qint64 monotonicNanoseconds() {
    struct timespec now;
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<qint64>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

TEST(CurrentMSecsSinceBoot, LiesBetweenTwoReadingsOfTheMonotonicClock) {
    for (int i = 0; i < 1000; ++i) {
        const qint64 before = monotonicNanoseconds() / 1000000;
        const qint64 now = CurrentMSecsSinceBoot();
        const qint64 after = monotonicNanoseconds() / 1000000;
        ASSERT_LE(before, now);
        ASSERT_GE(after, now);
    }
}

TEST(CurrentMSecsSinceBoot, AdvancesByMilliseconds) {
    const qint64 start = CurrentMSecsSinceBoot();
    const qint64 startNs = monotonicNanoseconds();
    while (monotonicNanoseconds() < startNs + 20 * 1000000) {
    }
    EXPECT_GE(CurrentMSecsSinceBoot(), start + 19);
}

}  // namespace
