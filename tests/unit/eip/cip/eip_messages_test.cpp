#include <gtest/gtest.h>

#include "eip/cip/cip_messages.h"
#include "unit/eip/cip/text_rows.h"

namespace {

const Row kRows[] = {
    {0, "Success"},
    {1, "The sender issued an invalid or unsupported encapsulation command"},
    {2, "Insufficient memory"},
    {3, "Poorly formed or incorrect data in the data portion"},
    {100,
     "an originator used an invalid session handle when sending an encapsulation message to the "
     "target"},
    {101, "The target received a message of invalide length"},
    {105, "unsupported encapsulation protocol revision "},
};

TEST(EipMessages, EveryCode) {
    for (int32_t code = 0; code <= 300; ++code) {
        const char* otherwise =
            code < 105 ? "Reserved for legacy RA" : "Reserved for future expansion";
        EXPECT_EQ(expected(kRows, code, otherwise), CIPGetEipErrMsg(code)) << code;
    }
}

TEST(EipMessages, CodesAreUnsigned) {
    EXPECT_STREQ("Reserved for future expansion", CIPGetEipErrMsg(-1));
    EXPECT_STREQ("Reserved for future expansion",
                 CIPGetEipErrMsg(static_cast<int32_t>(0xFFFFFFFF)));
    EXPECT_STREQ("Reserved for future expansion", CIPGetEipErrMsg(INT32_MIN));
}

}  // namespace
