#include "apps/simulator/tags/ramp.h"

#include <gtest/gtest.h>

#include "apps/simulator/tags/tag_text.h"

namespace {

std::string values(const sim::TagTable& table, const char* name) {
    QString values;
    QString problem;
    EXPECT_TRUE(tagText(name, table, &values, &problem)) << problem.toStdString();
    return values.toStdString();
}

TEST(Ramp, CountsEveryNumericElementUpOnceAPeriod) {
    sim::TagTable table;
    QString problem;
    std::vector<sim::Tag*> tags;
    for (const char* text :
         {"A:DINT=41", "B:INT[2]=7,32767", "C:REAL=0.5", "D:BOOL=1", "E:STRING=x"}) {
        ASSERT_TRUE(addTagFromText(text, table, &problem));
        tags.push_back(&table.at(table.size() - 1));
    }
    sim::Ramp ramp(tags, 100);
    ramp.advanceTo(99);
    EXPECT_EQ("41", values(table, "A"));
    ramp.advanceTo(100);
    EXPECT_EQ("42", values(table, "A"));
    EXPECT_EQ("8,-32768", values(table, "B"));
    EXPECT_EQ("1.5", values(table, "C"));
    EXPECT_EQ("1", values(table, "D"));
    EXPECT_EQ("\"x\"", values(table, "E"));
    ramp.advanceTo(150);
    EXPECT_EQ("42", values(table, "A"));
    ramp.advanceTo(1000);  // a late timer makes up for what it missed
    EXPECT_EQ("51", values(table, "A"));
}

TEST(Ramp, LeavesOtherTagsAlone) {
    sim::TagTable table;
    QString problem;
    ASSERT_TRUE(addTagFromText("A:DINT", table, &problem));
    ASSERT_TRUE(addTagFromText("B:DINT", table, &problem));
    sim::Ramp ramp({table.find("B")}, 10);
    ramp.advanceTo(50);
    EXPECT_EQ("0", values(table, "A"));
    EXPECT_EQ("5", values(table, "B"));
}

}  // namespace
