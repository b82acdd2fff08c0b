#include "apps/micro800/polling/poll_advice.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/polling/listed.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

QStringList numbered(const char* form, int count) {
    QStringList texts;
    for (int i = 0; i < count; ++i) {
        texts << QString(form).arg(i);
    }
    return texts;
}

TEST(PollAdvice, ScalarsOfATypeIntoOneArray) {
    const PollPlan plan(listed(numbered("DINT0:T%1", 40) + QStringList("REAL0:R")), {});
    const QVector<PollAdvice> advice = adviceFor(plan, 6);
    ASSERT_EQ(advice.size(), 1);
    EXPECT_EQ(advice.at(0).text,
              QString("move 40 DINT tags into one array of the controller and declare it"));
    EXPECT_EQ(advice.at(0).before.requests, 40);
    EXPECT_EQ(advice.at(0).after.requests, 1);
    EXPECT_EQ(advice.at(0).gainMs(6), 39 * 7);
    const PollCost after = costAfter(plan, advice);
    EXPECT_EQ(plan.cost().requests, 41);
    EXPECT_EQ(after.requests, 2);
    EXPECT_EQ(after.ms(6), 14);
}

TEST(PollAdvice, ElementsIntoADeclarationThatHoldsThemAll) {
    const PollPlan plan(listed({"INT0:g[2,3]", "INT0:G[0,7]", "INT0:G[5,1]", "STRING0:N[0]",
                                "STRING0:N[1]", "DINT0:ALONE"}),
                        {});
    const QVector<PollAdvice> advice = adviceFor(plan, 6);
    ASSERT_EQ(advice.size(), 1);
    EXPECT_EQ(advice.at(0).text, QString("declare INT0:G[0..5,0..7] in the project: 3 of its "
                                         "elements are polled one by one"));
    EXPECT_EQ(advice.at(0).before.requests, 3);
    EXPECT_EQ(advice.at(0).after.requests, 1);
    EXPECT_EQ(advice.at(0).after.listBytes, 1 + 1 + 1 + 2);
}

TEST(PollAdvice, NothingThatGainsNothing) {
    // Two elements far apart: the whole array takes three requests.
    EXPECT_TRUE(adviceFor(PollPlan(listed({"DINT0:A[0]", "DINT0:A[299]"}), {}), 6).isEmpty());
    EXPECT_TRUE(
        adviceFor(PollPlan(listed({"DINT0:A", "STRING0:B", "STRING0:C"}), {}), 6).isEmpty());
    EXPECT_TRUE(
        adviceFor(PollPlan(listed({"DINT0:A[0]", "DINT0:A[2147483647]"}), {}), 6).isEmpty());
}

TEST(PollAdvice, TheLargestGainComesFirst) {
    const QVector<PollAdvice> advice =
        adviceFor(PollPlan(listed(numbered("INT0:A[%1]", 3) + numbered("REAL0:R%1", 9)), {}), 6);
    ASSERT_EQ(advice.size(), 2);
    EXPECT_TRUE(advice.at(0).text.contains("9 REAL tags"));
    EXPECT_TRUE(advice.at(1).text.contains("INT0:A[0..2]"));
}

TEST(PollParts, TheLargestFirst) {
    const QVector<PollPart> parts = partsOf(PollPlan(
        listed(numbered("DINT0:T%1", 4) + QStringList{"REAL0:R[0..999]", "INT0:L[1]"}), {}));
    ASSERT_EQ(parts.size(), 3);
    EXPECT_EQ(parts.at(0).label, QString("REAL0:R[0..999]"));
    EXPECT_EQ(parts.at(0).cost.requests, 9);
    EXPECT_EQ(parts.at(1).label, QString("4 DINT tags"));
    EXPECT_EQ(parts.at(2).label, QString("1 elements of INT0:L"));
}

}  // namespace
