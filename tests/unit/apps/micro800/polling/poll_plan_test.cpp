#include "apps/micro800/polling/poll_plan.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/polling/listed.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

QStringList namesOf(const PollPlan& plan) {
    QStringList names;
    for (const PollEntry& entry : plan.entries()) {
        names << QStringLiteral("%1_%2").arg(entry.name).arg(entry.count);
    }
    return names;
}

TEST(RequestsFor, APieceHas496BytesOfWholeElements) {
    const TagType& dint = *tagTypeByPrefix("DINT0");
    EXPECT_EQ(requestsFor(dint, 1), 1);
    EXPECT_EQ(requestsFor(dint, 124), 1);
    EXPECT_EQ(requestsFor(dint, 125), 2);
    EXPECT_EQ(requestsFor(*tagTypeByPrefix("LREAL0"), 63), 2);
    EXPECT_EQ(requestsFor(*tagTypeByPrefix("SINT0"), 993), 3);
}

TEST(PollPlan, EveryTagOnceAndUndeclaredElementsByThemselves) {
    const PollPlan plan(listed({"DINT0:a", "DINT0:A", "INT0:L[1]", "INT0:L[2]", "INT0:L[1]"}), {});
    EXPECT_EQ(namesOf(plan), (QStringList{"A_1", "L[1]_1", "L[2]_1"}));
    const PollCost cost = plan.cost();
    EXPECT_EQ(cost.requests, 3);
    EXPECT_EQ(cost.ms(6), 21);
    // "01" tab "0001", tab "A" tab "1", twice tab "L[1]" tab "1", line feed
    EXPECT_EQ(plan.lineBytes(), 7 + 4 + 7 + 7 + 1);
    EXPECT_TRUE(plan.fits());
}

TEST(PollPlan, ADeclaredArrayIsOneEntryOfAllItsElements) {
    const PollPlan plan(listed({"DINT0:R[3]", "DINT0:r[7]", "STRING0:N[1]", "STRING0:N[2]"}),
                        listed({"DINT0:R[0..299]", "STRING0:N[0..9]"}));
    EXPECT_EQ(namesOf(plan), (QStringList{"R_300", "N[1]_1", "N[2]_1"}));
    EXPECT_EQ(plan.cost().requests, 3 + 2);
    // One pause an entry, however many pieces.
    EXPECT_EQ(plan.cost().ms(10), 53);
}

TEST(PollPlan, ARangeCountsAsDeclaredUnlessTheProjectHasOtherBounds) {
    EXPECT_EQ(namesOf(PollPlan(listed({"INT0:L[0..9]", "INT0:L[4]", "STRING0:N[1..2]"}), {})),
              (QStringList{"L_10", "N[1]_1", "N[2]_1"}));
    EXPECT_EQ(namesOf(PollPlan(listed({"INT0:L[0..9]"}), listed({"INT0:L[0..99]"}))),
              QStringList("L_100"));
}

TEST(PollPlan, TheListHas4096BytesAtMost) {
    QStringList texts;
    // 8 bytes for all and 28 each: "\t" 24 characters "\t1".
    for (int i = 0; i < 146; ++i) {
        texts << QString("DINT0:A_TAG_OF_25_CHARACTER%1").arg(i, 3, 10, QChar('0'));
    }
    texts.first() += "45678";
    PollPlan fits(listed(texts), {});
    const int bytes = fits.lineBytes();
    EXPECT_EQ(bytes, 8 + 146 * 27 + 5);
    texts << QString("DINT0:") + QString(kListLimit - bytes - 3, 'X');
    EXPECT_EQ(PollPlan(listed(texts), {}).lineBytes(), 4096);
    EXPECT_TRUE(PollPlan(listed(texts), {}).fits());
    texts.last() += 'X';
    EXPECT_FALSE(PollPlan(listed(texts), {}).fits());
}

}  // namespace
