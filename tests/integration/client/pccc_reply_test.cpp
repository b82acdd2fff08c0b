// PCCC replies that are malformed, or answer something else. The address sanitizer shows
// whether anything was read past their end.

#include "integration/client/client_rig.h"

namespace {

class PcccReplies : public PcccWays {
 protected:
    void distort(const QString& fault) {
        command("fault none");
        command("fault " + fault);
    }

    PlcRead typed(uint16_t count = 1) {
        return PlcRead(_ReadPLCData_Ex(&target, next(), "N7:0", count));
    }

    PlcRead three(uint16_t count = 1) {
        return PlcRead(_ReadPLCData_ExPlus(&target, next(), "N7:0", count));
    }

    int writeOne() {
        const unsigned char data[] = {1, 0};
        return WriteBytesToPLC(&target, next(), "N7:0", data, 2);
    }

    /// Expects that every service takes the reply for one that it is not.
    void expectError(const CipError& error) {
        EXPECT_FALSE(typed());
        EXPECT_EQ(error, lastError());
        EXPECT_FALSE(three());
        EXPECT_EQ(error, lastError());
        EXPECT_EQ(-1, writeOne());
        EXPECT_EQ(error, lastError());
        EXPECT_EQ(-1, WriteMaskAndDataToPLC(&target, next(), "N7:0", 0xFFFF, 1));
        EXPECT_EQ(error, lastError());
        const unsigned char data[] = {1, 0};
        EXPECT_EQ(-1, _WritePLCData(&target, next(), "N7:0", PLC_TYPE_INTEGER, data, 1));
        EXPECT_EQ(error, lastError());
    }
};

INSTANTIATE_TEST_SUITE_P(All, PcccReplies, testing::ValuesIn(kWays),
                         testing::PrintToStringParamName());

TEST_P(PcccReplies, CutShort) {
    const int head = kPcccReplyHead + (isDhp ? 8 : 4 + 7);
    // type/data parameter of the array and of its elements, three elements
    for (int missing = 1; missing <= head + 3 + 1 + 6; ++missing) {
        distort(QString("short-reply:%1@on=pccc").arg(missing));
        EXPECT_FALSE(typed(3)) << missing;
        EXPECT_EQ(kInvalidReply, lastError()) << missing;
    }
    for (int missing = 1; missing <= head + 6; ++missing) {
        distort(QString("short-reply:%1@on=pccc").arg(missing));
        EXPECT_FALSE(three(3)) << missing;
        EXPECT_EQ(kInvalidReply, lastError()) << missing;
    }
    for (int missing = 1; missing <= head; ++missing) {
        distort(QString("short-reply:%1@on=pccc").arg(missing));
        EXPECT_EQ(-1, writeOne()) << missing;
        EXPECT_EQ(kInvalidReply, lastError()) << missing;
    }
    command("fault none");
    EXPECT_TRUE(typed(3)) << "and goes on";
}

TEST_P(PcccReplies, RefusalsWithoutTheirExtendedStatus) {
    command("fault pccc-status:F0,04");
    command("fault short-reply:1@on=pccc");
    EXPECT_FALSE(typed());
    EXPECT_EQ((CipError{6, 0xF0, 0}), lastError());
    EXPECT_EQ(0xF0, writeOne());
}

TEST_P(PcccReplies, WithoutAnyData) {
    distort("pccc-status:00");
    EXPECT_FALSE(typed());
    EXPECT_EQ(kInvalidReply, lastError());
    EXPECT_FALSE(three());
    EXPECT_EQ(kInvalidReply, lastError());
}

// The one element follows as 2A 00. Only these parameters leave an element of it: any type in the
// flag byte, or after it without a byte (8), with size 2; type 2A after the flag byte, size 1.
TEST_P(PcccReplies, EveryTypeParameter) {
    for (int flag = 0; flag < 256; ++flag) {
        const int type = flag >> 4;
        const int size = flag & 0x0F;
        const bool isWhole = (type <= 8 && size == 2) || (type == 9 && size == 1);
        distort(QString("wrong-pccc-type:%1").arg(flag, 0, 16));
        const PlcRead read = typed();
        EXPECT_EQ(isWhole, read != nullptr) << flag;
        EXPECT_EQ(isWhole ? kPcccSuccess : kInvalidReply, lastError()) << flag;
        if (read) {
            EXPECT_EQ(1, read->count) << flag;
            EXPECT_EQ(size, read->size) << flag;
            _PCCC_GetValueAsInteger(read.get(), 0);
            _PCCC_GetValueAsFloat(read.get(), 0);
        }
    }
}

TEST_P(PcccReplies, WithWildLengthsAroundThem) {
    for (const char* fault : {"item-length-long@on=pccc", "item-length-long:65000@on=pccc",
                              "encap-length-short:1@on=pccc", "encap-length-short:9@on=pccc"}) {
        distort(fault);
        SCOPED_TRACE(fault);
        expectError(kInvalidReply);
    }
    if (!isDhp) {
        distort("additional-status-size@on=pccc");
        expectError(kInvalidReply);
    }
}

TEST_P(PcccReplies, ToAnotherCommand) {
    const CipError unsolicited = {0, -7, 0};
    for (const char* fault : {"wrong-transaction", "wrong-transaction:256", "wrong-pccc-command",
                              "wrong-pccc-command:0F"}) {
        distort(fault);
        SCOPED_TRACE(fault);
        expectError(unsolicited);
    }
}

TEST_P(PcccReplies, ToAnotherRequestor) {
    if (isDhp) {
        return;  // its messages have none
    }
    distort("wrong-requestor");
    expectError({0, -7, 0});
}

TEST_P(PcccReplies, RefusedByTheMessageRouter) {
    if (isDhp) {
        return;  // there is none
    }
    distort("status:08@on=pccc");
    expectError({3, 8, 0});
    distort("status:01,0204@on=pccc");
    expectError({3, 1, 0x0204});
}

}  // namespace
