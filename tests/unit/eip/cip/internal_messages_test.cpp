#include <gtest/gtest.h>

#include "eip/cip/cip_messages.h"
#include "unit/eip/cip/text_rows.h"

namespace {

const Row kRows[] = {
    {0, "Internal: success"},
    {-1, "Internal: error"},
    {-2, "Internal: system error"},
    {-3, "Internal: pending buffer full"},
    {-4, "Internal: no more data"},
    {-5, "Internal: timeout"},
    {-6, "Internal: connection failed"},
    {-7, "Internal: unsolicited message"},
    {-8, "Internal: nothing to send"},
    {-9, "Internal: no reply"},
    {-10, "Internal: item type unknow"},
    {-20, "Internal: invalid reply"},
    {-21, "Internal: out of range"},
    {-22, "Internal: unsupported service"},
    {-24, "Internal: unsupported data type"},
    {-30, "Internal: internal memory"},
    {-31, "Internal: buffer too small"},
    {-40, "Internal: send timeout"},
    {-41, "Internal: receive timeout"},
    {-42, "Internal: sending error"},
    {-43, "Internal: receive error"},
};

TEST(InternalMessages, EveryCode) {
    for (int32_t code = -120; code <= 10; ++code) {
        EXPECT_EQ(expected(kRows, code, "Internal: unknown error"), CIPGetInternalErrMsg(code))
            << code;
    }
}

TEST(InternalMessages, ExtremesAreUnknown) {
    EXPECT_STREQ("Internal: unknown error", CIPGetInternalErrMsg(INT32_MIN));
    EXPECT_STREQ("Internal: unknown error", CIPGetInternalErrMsg(INT32_MAX));
}

}  // namespace
