#include "eip/record/seen_texts.h"

#include <gtest/gtest.h>

namespace {

const int64_t kSecond = 1000000;

TEST(SeenTexts, AMinuteLong) {
    SeenTexts seen;
    EXPECT_FALSE(seen.knows("a", 0));
    EXPECT_FALSE(seen.note("a", 0));
    EXPECT_TRUE(seen.knows("a", 59 * kSecond));
    EXPECT_FALSE(seen.knows("b", 59 * kSecond));
    EXPECT_FALSE(seen.knows("a", 60 * kSecond));
    EXPECT_FALSE(seen.note("a", 60 * kSecond));
}

TEST(SeenTexts, EachTimeCounts) {
    SeenTexts seen;
    seen.note("a", 0);
    EXPECT_TRUE(seen.note("a", 50 * kSecond));
    EXPECT_TRUE(seen.note("a", 100 * kSecond));
    EXPECT_FALSE(seen.note("a", 160 * kSecond));
}

TEST(SeenTexts, TheOldestMakesRoom) {
    SeenTexts seen;
    for (int i = 0; i < 65; ++i) {
        seen.note(std::to_string(i), i);
    }
    EXPECT_FALSE(seen.knows("0", 65));
    EXPECT_TRUE(seen.knows("1", 65));
    seen.note("1", 66);
    seen.note("new", 67);
    EXPECT_TRUE(seen.knows("1", 68));
    EXPECT_FALSE(seen.knows("2", 68));
}

}  // namespace
