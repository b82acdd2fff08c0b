#include <gtest/gtest.h>

#include "eip/cip/cip_messages.h"
#include "unit/eip/cip/text_rows.h"

namespace {

const Row kRows[] = {
    {0, "Success"},
    {4, "The IOI could not be deciphered"},
    {5, "The particular item referenced could not be found"},
    {6,
     "The amount of data requested would not fit into the response buffer.Partial data transfer "
     "has occured"},
    {10, "An error has occured trying to process one of the attributes"},
    {19, "Not enougth command / data were spplied in the command to execute the service requested"},
    {28, "An insufficient number of attributes were provided compared to the attributes count"},
    {38, "The IOI WORD length did not match the amount of IOI witch was processed"},
};

const Row kExtended[] = {
    {0x2104, "The beginning offset was beyond the end of the template"},
    {0x2105, "You have tried to access beyond the end of the data object"},
    {0x2107, "The abbreviated type does not match the data type of the data object"},
};

TEST(ABMessages, EveryStatusWord) {
    for (int32_t code = 0; code < 0x1FF; ++code) {
        EXPECT_EQ(expected(kRows, code, "Unknow AB Error type"), CIPGetABErrMsg(code, 0x2105))
            << code;
    }
}

TEST(ABMessages, EveryExtendedStatus) {
    for (int32_t extended = 0x2000; extended <= 0x2200; ++extended) {
        EXPECT_EQ(expected(kExtended, extended, "Unknow Extended AB Error type"),
                  CIPGetABErrMsg(0x1FF, extended))
            << extended;
    }
    EXPECT_STREQ("Unknow Extended AB Error type", CIPGetABErrMsg(0x1FF, 0));
    EXPECT_STREQ("Unknow Extended AB Error type", CIPGetABErrMsg(0x1FF, -1));
}

TEST(ABMessages, OnlyNineBitsCount) {
    EXPECT_STREQ("The particular item referenced could not be found", CIPGetABErrMsg(0x205, 0));
    EXPECT_STREQ("You have tried to access beyond the end of the data object",
                 CIPGetABErrMsg(0x3FF, 0x2105));
    EXPECT_STREQ("Unknow Extended AB Error type", CIPGetABErrMsg(-1, 1));
    EXPECT_STREQ("Success", CIPGetABErrMsg(0x200, 0));
}

}  // namespace
