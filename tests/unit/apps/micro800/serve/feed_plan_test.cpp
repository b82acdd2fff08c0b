#include "apps/micro800/serve/feed_plan.h"

#include <gtest/gtest.h>

#include <numeric>

#include "apps/micro800/polling/poll_plan.h"
#include "unit/apps/micro800/parsed_address.h"

namespace {

QVector<TagAddress> numbered(int count) {
    QVector<TagAddress> addresses;
    for (int i = 0; i < count; ++i) {
        addresses.append(parsed(qPrintable(QString("DINT0:A_TAG_%1").arg(i, 4, 10, QChar('0')))));
    }
    return addresses;
}

TEST(FeedPlan, AShortListIsOneDrivers) {
    EXPECT_EQ(spreadOverDrivers(numbered(1), {}), QVector<int>{1});
    EXPECT_EQ(spreadOverDrivers(numbered(100), {}), QVector<int>{100});
}

TEST(FeedPlan, ALongListIsSpreadSoThatEachDriverTakesAsManyAsItCan) {
    // "A_TAG_0000" and "1" with a tab before each are 13 bytes; the line has 8 for itself.
    const int most = (kListLimit - 8) / 13;
    EXPECT_EQ(spreadOverDrivers(numbered(most), {}), QVector<int>{most});
    EXPECT_EQ(spreadOverDrivers(numbered(most + 1), {}), (QVector<int>{most, 1}));
    EXPECT_EQ(spreadOverDrivers(numbered(2 * most + 7), {}), (QVector<int>{most, most, 7}));
}

}  // namespace
