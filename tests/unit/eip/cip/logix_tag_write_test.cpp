#include "eip/cip/logix_tag_write.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdlib>
#include <cstring>
#include <string>

#include "eip/cip/logix_services.h"
#include "unit/eip/cip/connected_steps.h"

namespace {

class LogixTagWrite : public ConnectedSteps {
 protected:
    int write(int type, const Bytes& data, uint16_t count, const char* name = "A") {
        transport.requests.clear();
        return _WriteLgxData(session, &connection, name, _LGX_Data_Type(type), data.data(), count);
    }
};

TEST_F(LogixTagWrite, InPiecesOfWholeElements) {
    // The sequence count takes 2 bytes, a fragment's fixed part and the path 14; of the 5 that are
    // left, 4 are whole INTs.
    connection.connectionSize = 2 + 14 + 5;
    answer({"D3 00 00 00", "D3 00 00 00", "D3 00 00 00"});
    EXPECT_EQ(3, write(0xC3, bytes("01 00 02 00 03 00 04 00 05 00 06 00"), 6));
    EXPECT_EQ((std::vector<std::string>{"53 02 91 01 41 00 C3 00 06 00 00 00 00 00 01 00 02 00",
                                        "53 02 91 01 41 00 C3 00 06 00 04 00 00 00 03 00 04 00",
                                        "53 02 91 01 41 00 C3 00 06 00 08 00 00 00 05 00 06 00"}),
              requests());
}

TEST_F(LogixTagWrite, LastPieceIsTheRest) {
    connection.connectionSize = 2 + 14 + 8;
    answer({"D3 00 00 00", "D3 00 00 00", "D3 00 00 00"});
    EXPECT_EQ(
        3, write(0xC4, bytes("01 00 00 00 02 00 00 00") + filled(8, 9) + bytes("03 00 00 00"), 5));
    EXPECT_EQ((std::vector<std::string>{
                  "53 02 91 01 41 00 C4 00 05 00 00 00 00 00 01 00 00 00 02 00 00 00",
                  "53 02 91 01 41 00 C4 00 05 00 08 00 00 00 09 09 09 09 09 09 09 09",
                  "53 02 91 01 41 00 C4 00 05 00 10 00 00 00 03 00 00 00"}),
              requests());
}

TEST_F(LogixTagWrite, WhatFitsIsOneWriteTag) {
    connection.connectionSize = 504;
    // path 4, fixed part 6: 492 bytes of data make 502
    answer({"CD 00 00 00"});
    EXPECT_EQ(1, write(0xC4, filled(492, 1), 123));
    EXPECT_EQ("4D 02 91 01 41 00 C4 00 7B 00", requests().at(0).substr(0, 29));
    answer({"D3 00 00 00", "D3 00 00 00"});
    EXPECT_EQ(2, write(0xC4, filled(496, 1), 124));
    ASSERT_EQ(2u, requests().size());
    EXPECT_EQ("53 02 91 01 41 00 C4 00 7C 00 00 00 00 00", requests().at(0).substr(0, 41));
    EXPECT_EQ(14u + 488, bytes(requests().at(0)).size());
    EXPECT_EQ("53 02 91 01 41 00 C4 00 7C 00 E8 01 00 00", requests().at(1).substr(0, 41));
    EXPECT_EQ(14u + 8, bytes(requests().at(1)).size());
}

TEST_F(LogixTagWrite, UnknownSizeIsOneWriteTag) {
    answer({"CD 00 00 00"});
    EXPECT_EQ(1, write(0xC4, filled(800, 1), 200));
    EXPECT_EQ(1u, requests().size());
}

TEST_F(LogixTagWrite, NothingElseIsSplit) {
    connection.connectionSize = 100;
    EXPECT_EQ(-1, write(0xDA, filled(100, 'A'), 100)) << "a string";
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    connection.connectionSize = 2 + 14 + 7;
    EXPECT_EQ(-1, write(0xCB, filled(16, 1), 2)) << "not even one element fits a piece";
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    connection.connectionSize = 40;
    EXPECT_EQ(-1, write(0xC4, filled(8, 1), 2, std::string(60, 'N').c_str()));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ(-1, write(0xC4, filled(80, 1), 20, std::string(300, 'N').c_str()));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(LogixTagWrite, BadArguments) {
    connection.connectionSize = 40;
    EXPECT_EQ(-1, write(0xC5, filled(80, 1), 20));
    EXPECT_EQ((CipError{0, -24, 0}), lastError());
    EXPECT_EQ(-1, _WriteLgxData(session, &connection, "A", LGX_TYPE_DINT, nullptr, 20));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_TRUE(transport.requests.empty());
}

TEST_F(LogixTagWrite, NoNameIsAnEmptyOne) {
    LgxTagWrite tagWrite(nullptr, LGX_TYPE_SINT, "x", 1, INT_MAX);
    int size = 0;
    unsigned char* request = tagWrite.nextRequest(&size);
    EXPECT_EQ("4D 00 C2 00 01 00 78", hexOf(bytesAt(request, static_cast<size_t>(size))));
    free(request);
}

TEST_F(LogixTagWrite, FailureOfTheFirstPieceWroteNothing) {
    connection.connectionSize = 2 + 14 + 8;
    const struct {
        const char* reply;
        CipError error;
        const char* text;
    } rows[] = {
        {"D3 00 08 00", {5, 8, 0}, "AB error: 0008H"},
        {"D3 00 06 00", {5, 6, 0}, "AB error: 0006H"},
        {"D3 00 FF 01 07 21", {5, 0x1FF, 0x2107}, "AB error: 01FFH, 2107H"},
        {"CD 00 00 00", {0, -20, 0}, "Internal: invalid reply"},
        {"D2 00 00 00", {0, -20, 0}, "Internal: invalid reply"},
    };
    for (const auto& row : rows) {
        answer({row.reply});
        EXPECT_EQ(-1, write(0xC4, filled(20, 1), 5)) << row.reply;
        EXPECT_EQ(row.error, lastError()) << row.reply;
        EXPECT_STREQ(row.text, cip_err_msg());
        EXPECT_EQ(1u, requests().size());
    }
}

TEST_F(LogixTagWrite, FailureBehindTheFirstPieceSaysWhatIsWritten) {
    connection.connectionSize = 2 + 14 + 8;
    answer({"D3 00 00 00", "D3 00 00 00", "D3 00 FF 01 05 21"});
    EXPECT_EQ(-1, write(0xC4, filled(40, 1), 10));
    EXPECT_EQ((CipError{5, 0x1FF, 0x2105}), lastError());
    EXPECT_STREQ("AB error: 01FFH, 2105H; 0 to 3 of 10 elements written", cip_err_msg());
    EXPECT_EQ(3u, requests().size()) << "and nothing behind it";
    answer({"D3 00 00 00"});
    EXPECT_EQ(-1, write(0xC4, filled(40, 1), 10));
    EXPECT_STREQ("Internal: timeout; 0 to 1 of 10 elements written", cip_err_msg());
    answer({"D3 00 00 00", "D2 00 00 00"});
    EXPECT_EQ(-1, write(0xC4, filled(40, 1), 10));
    EXPECT_STREQ("Internal: invalid reply; 0 to 1 of 10 elements written", cip_err_msg());
}

TEST_F(LogixTagWrite, StepByStep) {
    const Bytes data = filled(10, 1);
    answer({"D3 00 00 00", "D3 00 00 00", "D3 00 00 00"});
    ::LgxTagWrite write("A", LGX_TYPE_INT, data.data(), 5, 14 + 5);
    EXPECT_EQ(5, write.elementCount());
    for (int written : {2, 4}) {
        EXPECT_EQ(LgxProgress::more, _AdvanceLgxWrite(session, &connection, &write));
        EXPECT_EQ(written, write.elementsWritten());
    }
    EXPECT_EQ(LgxProgress::done, _AdvanceLgxWrite(session, &connection, &write));
    EXPECT_EQ(5, write.elementsWritten());
    EXPECT_EQ(3, write.replies());
}

TEST_F(LogixTagWrite, NoChangeOfAConfirmationPassesForAnother) {
    connection.connectionSize = 2 + 14 + 8;
    const Bytes good = connectedReply(kHandle, 2, "D3 00 00 00");
    forEachCut(good, [&](const Bytes& cut, size_t size) {
        answer({"D3 00 00 00"});
        transport.play(cut);
        EXPECT_EQ(-1, write(0xC4, filled(20, 1), 5)) << size;
        EXPECT_NE(nullptr, strstr(cip_err_msg(), "; 0 to 1 of 5 elements written"));
    });
    const size_t service = 46;
    forEachChangedByte(good, [&](const Bytes& variant, size_t at) {
        answer({"D3 00 00 00"});
        transport.play(variant);
        if (at >= service && at != service + 1) {
            EXPECT_EQ(-1, write(0xC4, filled(20, 1), 5)) << at << " " << hexOf(variant);
        }
    });
}

}  // namespace
