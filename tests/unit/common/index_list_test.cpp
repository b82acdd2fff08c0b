#include "common/index_list.h"

#include <gtest/gtest.h>

namespace {

TEST(IndexList, Fits) {
    for (const char* text : {"0", "2,3", "0,0,2147483647", "007"}) {
        EXPECT_TRUE(indexesFit(text)) << text;
    }
}

TEST(IndexList, DoesNotFit) {
    for (const char* text : {"", ",", "1,", ",1", "2147483648", "1,99999999999999999999", "x"}) {
        EXPECT_FALSE(indexesFit(text)) << text;
    }
}

}  // namespace
