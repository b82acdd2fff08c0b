#include "apps/simulator/tags/tag_table.h"

#include <gtest/gtest.h>

namespace {

using sim::findType;
using sim::Tag;
using sim::TagTable;

Tag grid() {
    return Tag("Grid", *findType(QString("INT")), {{2, 5}, {0, 3}, {1, 4}});
}

TEST(TagTable, FindsNamesInAnyCase) {
    TagTable table;
    ASSERT_TRUE(table.add(Tag("Counter_1", *findType(QString("DINT")), {})));
    EXPECT_EQ("Counter_1", table.find("COUNTER_1")->name());
    EXPECT_EQ(table.find("COUNTER_1"), table.findAnyCase("counter_1"));
    EXPECT_FALSE(table.find("counter_1"));
    EXPECT_FALSE(table.find(""));
    EXPECT_FALSE(table.findAnyCase("COUNTER"));
    EXPECT_FALSE(table.add(Tag("COUNTER_1", *findType(QString("INT")), {})));
    EXPECT_EQ(1u, table.size());
}

TEST(TagTable, CountsElementsThrough) {
    TagTable table;
    table.add(Tag("A", *findType(QString("DINT")), {}));
    table.add(Tag("B", *findType(QString("DINT")), {{1, 10}}));
    table.add(Tag("C", *findType(QString("STRING")), {}));
    EXPECT_EQ(0u, table.at(0).ordinal());
    EXPECT_EQ(1u, table.at(1).ordinal());
    EXPECT_EQ(11u, table.at(2).ordinal());
    EXPECT_EQ(12u, table.elements());
}

TEST(Tag, BeginsWithZeros) {
    Tag tag = grid();
    ASSERT_EQ(4u * 4u * 4u, tag.count());
    for (size_t i = 0; i < tag.count(); ++i) {
        EXPECT_EQ(0, tag.bytes(i)[0] | tag.bytes(i)[1]);
    }
    Tag text("T", *findType(QString("STRING")), {{0, 1}});
    EXPECT_EQ("", text.string(1));
}

TEST(Tag, FindsElementsRowByRow) {
    const Tag tag = grid();
    size_t element = 99;
    EXPECT_EQ(Tag::Place::inside, tag.find({}, &element));
    EXPECT_EQ(0u, element);
    EXPECT_EQ(Tag::Place::inside, tag.find({2, 0, 1}, &element));
    EXPECT_EQ(0u, element);
    EXPECT_EQ(Tag::Place::inside, tag.find({2, 0, 4}, &element));
    EXPECT_EQ(3u, element);
    EXPECT_EQ(Tag::Place::inside, tag.find({2, 1, 1}, &element));
    EXPECT_EQ(4u, element);
    EXPECT_EQ(Tag::Place::inside, tag.find({3, 0, 1}, &element));
    EXPECT_EQ(16u, element);
    EXPECT_EQ(Tag::Place::inside, tag.find({5, 3, 4}, &element));
    EXPECT_EQ(63u, element);
}

TEST(Tag, TellsIndicesOutsideTheBounds) {
    const Tag tag = grid();
    size_t element = 0;
    EXPECT_EQ(Tag::Place::outside, tag.find({1, 0, 1}, &element));
    EXPECT_EQ(Tag::Place::outside, tag.find({6, 0, 1}, &element));
    EXPECT_EQ(Tag::Place::outside, tag.find({2, 0, 0}, &element));
    EXPECT_EQ(Tag::Place::outside, tag.find({2, 4, 1}, &element));
    EXPECT_EQ(Tag::Place::outside, tag.find({0xFFFFFFFF, 0, 1}, &element));
    EXPECT_EQ(Tag::Place::wrongDimensions, tag.find({2}, &element));
    EXPECT_EQ(Tag::Place::wrongDimensions, tag.find({2, 0, 1, 0}, &element));
    EXPECT_EQ(Tag::Place::wrongDimensions,
              Tag("S", *findType(QString("DINT")), {}).find({0}, &element));
}

TEST(UpperCase, ChangesAsciiLettersOnly) {
    EXPECT_EQ("AZ_09[\xE4", sim::upperCase("az_09[\xE4"));
}

}  // namespace
