#include "apps/micro800/base/timings.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

TEST(Timings, WithoutAny) {
    Timings timings;
    EXPECT_EQ(timings.median(), 0);
    timings.addFailure();
    EXPECT_EQ(timings.summary("reads"), QString("1 reads, 1 failures"));
}

TEST(Timings, PercentilesAreTimesThatOccurred) {
    Timings timings;
    for (int ms = 200; ms >= 1; --ms) {
        timings.add(ms);
    }
    EXPECT_EQ(timings.median(), 100);
    EXPECT_EQ(timings.percentile(99), 198);
    EXPECT_EQ(timings.percentile(100), 200);
    EXPECT_EQ(timings.percentile(0.1), 1);
    timings.addFailure();
    EXPECT_EQ(timings.summary("reads"),
              QString("201 reads, 1 failures; median 100.000 ms, p99 198.000 ms"));
}

TEST(Timings, OfOne) {
    Timings timings;
    timings.add(6.4125);
    EXPECT_EQ(timings.median(), 6.4125);
    EXPECT_EQ(timings.percentile(99), 6.4125);
}

}  // namespace
