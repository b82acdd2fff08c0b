#include "common/digits.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Digits, TenOfAllCharacters) {
    std::string digits;
    for (int c = -128; c < 128; ++c) {
        if (isDigit(static_cast<char>(c))) {
            digits += static_cast<char>(c);
        }
    }
    EXPECT_EQ("0123456789", digits);
}

}  // namespace
