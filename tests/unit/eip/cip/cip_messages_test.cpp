#include "eip/cip/cip_messages.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

namespace {

TEST(CipMessages, TypeChoosesTheTable) {
    EXPECT_STREQ("Internal: timeout", CIPGetErrMsg(0, -5, 0));
    EXPECT_STREQ(strerror(ECONNREFUSED), CIPGetErrMsg(1, ECONNREFUSED, 0));
    EXPECT_STREQ("Insufficient memory", CIPGetErrMsg(2, 2, 0));
    EXPECT_STREQ("Path segment error", CIPGetErrMsg(3, 4, 0));
    EXPECT_STREQ("RPI not supported", CIPGetErrMsg(3, 1, 0x0111));
    EXPECT_STREQ("The IOI could not be deciphered", CIPGetErrMsg(5, 4, 0));
    EXPECT_STREQ("You have tried to access beyond the end of the data object",
                 CIPGetErrMsg(5, 0x1FF, 0x2105));
    EXPECT_STREQ("Illegal command or format", CIPGetErrMsg(6, 0x10, 0));
    EXPECT_STREQ("File is wrong size", CIPGetErrMsg(6, 0xF0, 7));
}

TEST(CipMessages, UnknownTypes) {
    for (int32_t type : {-1, 4, 7, 9, INT32_MAX, INT32_MIN}) {
        EXPECT_STREQ("Unknow Error type", CIPGetErrMsg(type, 1, 2)) << type;
    }
}

struct Short {
    int (*pack)(char*, size_t, int32_t, int32_t);
    int32_t code;
    int32_t extended;
    const char* text;
};

const Short kShort[] = {
    {CIPGetMRErrMsg2, 1, 0x0100, "MR error: 0001H, 0100H"},
    {CIPGetMRErrMsg2, 1, 0, "MR error: 0001H, 0000H"},
    {CIPGetMRErrMsg2, 4, 0x0100, "MR error: 0004H"},
    {CIPGetMRErrMsg2, 0, 0, "MR error: 0000H"},
    {CIPGetMRErrMsg2, 0x12345, 0, "MR error: 12345H"},
    {CIPGetABErrMsg2, 4, 9, "AB error: 0004H"},
    {CIPGetABErrMsg2, 0x1FF, 0x2105, "AB error: 01FFH, 2105H"},
    {CIPGetABErrMsg2, 0x3FF, 0x2105, "AB error: 01FFH, 2105H"},
    {CIPGetABErrMsg2, 0x0FF, 0x2105, "AB error: 00FFH"},
    {CIPGetABErrMsg2, 0x204, 0, "AB error: 0004H"},
    {CIPGetPCCCErrMsg2, 0x10, 4, "PCCC error: 10H"},
    {CIPGetPCCCErrMsg2, 0xF0, 4, "PCCC error: F0H, 04H"},
    {CIPGetPCCCErrMsg2, 0x1F0, 4, "PCCC error: F0H, 04H"},
    {CIPGetPCCCErrMsg2, 0x1F1, 4, "PCCC error: F1H"},
};

TEST(CipMessages, ShortForms) {
    for (const Short& row : kShort) {
        char text[64];
        const int length = row.pack(text, sizeof(text), row.code, row.extended);
        EXPECT_STREQ(row.text, text);
        EXPECT_EQ(static_cast<int>(strlen(row.text)), length);
    }
}

TEST(CipMessages, ShortFormsKeepWithinTheirBuffer) {
    for (const Short& row : kShort) {
        for (size_t size = 0; size < 30; ++size) {
            char text[32];
            memset(text, '#', sizeof(text));
            const int length = row.pack(text, size, row.code, row.extended);
            EXPECT_EQ(static_cast<int>(strlen(row.text)), length) << "as snprintf counts";
            EXPECT_EQ('#', text[size]) << size;
            if (size > 0) {
                EXPECT_EQ(std::string(row.text).substr(0, size - 1), text);
            }
        }
    }
}

}  // namespace
