#include "apps/micro800/terminal/fact_list.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/console_probe.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

const QVector<Fact> kFacts = {
    textFact("Name", "name", "a \"b\""),
    numberFact("A label of 20 chars.", "number", 256, "256 (0x100)"),
    {"Nested", "nested", QJsonObject{{"deep", true}}, "deep"},
};

TEST(FactList, OneLineAFact) {
    ConsoleProbe probe;
    printFacts(kFacts, false, probe.console());
    EXPECT_EQ(probe.out(), QString("Name                 a \"b\"\n"
                                   "A label of 20 chars. 256 (0x100)\n"
                                   "Nested               deep\n"));
}

TEST(FactList, OneObject) {
    ConsoleProbe probe;
    printFacts(kFacts, true, probe.console());
    EXPECT_EQ(probe.out(),
              QString("{\"name\":\"a \\\"b\\\"\",\"nested\":{\"deep\":true},\"number\":256}\n"));
    EXPECT_EQ(factsJson({}), QJsonObject());
}

}  // namespace
