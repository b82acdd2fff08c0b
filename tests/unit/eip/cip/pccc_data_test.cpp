#include "eip/cip/pccc_data.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "unit/eip/cip/scripted_transport.h"

namespace {

struct Free {
    void operator()(_PLC_Read* read) const { _FreePLCRead(read); }
};
typedef std::unique_ptr<_PLC_Read, Free> ReadPtr;

const CipError kSuccess{0, 0, 0};
const CipError kInvalid{0, -20, 0};
const CipError kRange{0, -21, 0};
const CipError kType{0, -24, 0};

ReadPtr decode(const std::string& data) {
    const Bytes whole = bytes("4F 00 34 12 " + data);
    const ReplyBuffer buffer(whole);
    CIPERROR(0, 0, 0);
    return ReadPtr(_DecodePCCC(buffer.as<_PCCC_Reply>(), static_cast<int>(whole.size())));
}

ReadPtr decodeBytes(const std::string& data, int type, int elementSize) {
    const Bytes whole = bytes("4F 00 34 12 " + data);
    const ReplyBuffer buffer(whole);
    CIPERROR(0, 0, 0);
    return ReadPtr(_DecodePCCCBytes(buffer.as<_PCCC_Reply>(), static_cast<int>(whole.size()), type,
                                    elementSize));
}

// DF1 Protocol and Command Set (1770-6.5.16), chapter 13, type/data parameter
TEST(PcccData, TypedReplies) {
    const struct {
        const char* data;
        int type;
        int count;
        int elementSize;
        const char* values;
    } rows[] = {
        {"42 2A 00", PLC_TYPE_INTEGER, 1, 2, "2A 00"},
        {"94 08 00 00 80 3F", PLC_TYPE_FLOAT, 1, 4, "00 00 80 3F"},
        {"99 09 03 42 FE 07", PLC_TYPE_INTEGER, 1, 2, "FE 07"},
        {"95 09 42 01 00 02 00", PLC_TYPE_INTEGER, 2, 2, "01 00 02 00"},
        {"99 09 0A 94 08 00 00 80 3F 00 00 00 40", PLC_TYPE_FLOAT, 2, 4, "00 00 80 3F 00 00 00 40"},
        {"56 00 E0 64 00 07 00", PLC_TYPE_TIMER, 1, 6, "00 E0 64 00 07 00"},
        {"22 05 80", PLC_TYPE_BIT_STRING, 1, 2, "05 80"},
    };
    for (const auto& row : rows) {
        const ReadPtr read = decode(row.data);
        ASSERT_TRUE(read) << row.data;
        EXPECT_EQ(row.type, read->type) << row.data;
        EXPECT_EQ(row.count, read->count) << row.data;
        EXPECT_EQ(row.elementSize, read->elementSize) << row.data;
        EXPECT_EQ(0u, read->mask);
        EXPECT_EQ(row.values,
                  hexOf(bytesAt(_GetPLCReadData(read.get()), static_cast<size_t>(read->size))));
    }
}

TEST(PcccData, TypedRepliesThatDoNotHoldTogether) {
    for (const char* data : {
             "",
             "42",
             "42 2A",
             "42 2A 00 00",
             "94",
             "94 08",
             "94 08 00 00 80",
             "99",
             "99 09",
             "99 09 03",
             "99 09 03 42",
             "99 09 03 42 FE",
             "99 09 03 42 FE 07 00",
             "42 2A 00 2B 00",           // more than the size says
             "99 09 03 42 FE 07 FF 07",  // likewise
             "99 09 04 42 FE 07 00",     // no whole number of integers
             "99 09 01 42",              // no element
             "99 09 02 40 00",           // elements of no size
             "99 09 00",                 // no element type
             "40",
             "40 00",
             "00",
             "9A 09 FF FF 42 00 00",
             "9C 09 FF FF FF 7F 42 00 00",
             "9C 09 FF FF FF FF 42 00 00",
             "99 09 06 4C FF FF FF 7F 00",
         }) {
        EXPECT_FALSE(decode(data)) << data;
        EXPECT_EQ(kInvalid, lastError()) << data;
    }
    EXPECT_EQ(nullptr, _DecodePCCC(nullptr, 100));
    EXPECT_EQ(kInvalid, lastError());
    const ReplyBuffer reply("4F 00 34 12 42 2A 00");
    for (int length : {3, 0, -1, INT32_MIN}) {
        EXPECT_EQ(nullptr, _DecodePCCC(reply.as<_PCCC_Reply>(), length)) << length;
        EXPECT_EQ(nullptr, _DecodePCCCBytes(reply.as<_PCCC_Reply>(), length, 4, 2)) << length;
    }
}

TEST(PcccData, BareReplies) {
    const ReadPtr read = decodeBytes("01 00 02 00 03 00", PLC_TYPE_INTEGER, 2);
    ASSERT_TRUE(read);
    EXPECT_EQ(3, read->count);
    EXPECT_EQ(6, read->size);
    EXPECT_EQ(3, _PCCC_GetValueAsInteger(read.get(), 2));
    for (const char* data : {"", "01", "01 00 02"}) {
        EXPECT_FALSE(decodeBytes(data, PLC_TYPE_INTEGER, 2)) << data;
        EXPECT_EQ(kInvalid, lastError()) << data;
    }
    for (int elementSize : {0, -1, INT32_MIN, INT32_MAX}) {
        EXPECT_FALSE(decodeBytes("01 00", PLC_TYPE_INTEGER, elementSize));
        EXPECT_EQ(kInvalid, lastError());
    }
    EXPECT_EQ(nullptr, _DecodePCCCBytes(nullptr, 100, 4, 2));
}

TEST(PcccData, Integers) {
    const ReadPtr words = decode("97 09 42 2A 00 FF FF 00 80");
    EXPECT_EQ(42, _PCCC_GetValueAsInteger(words.get(), 0));
    EXPECT_EQ(-1, _PCCC_GetValueAsInteger(words.get(), 1));
    EXPECT_EQ(kSuccess, lastError());
    EXPECT_EQ(-32768, _PCCC_GetValueAsInteger(words.get(), 2));
    const ReadPtr longs = decodeBytes("FE FF FF FF", PLC_TYPE_INTEGER, 4);
    EXPECT_EQ(-2, _PCCC_GetValueAsInteger(longs.get(), 0));
    const ReadPtr small = decodeBytes("FE", PLC_TYPE_INTEGER, 1);
    EXPECT_EQ(-2, _PCCC_GetValueAsInteger(small.get(), 0));
    const ReadPtr bits = decode("22 05 80");
    EXPECT_EQ(0x8005, _PCCC_GetValueAsInteger(bits.get(), 0)) << "bits have no sign";
    const ReadPtr byteString = decodeBytes("FE", PLC_TYPE_BYTE_STRING, 1);
    EXPECT_EQ(0xFE, _PCCC_GetValueAsInteger(byteString.get(), 0));
}

TEST(PcccData, Floats) {
    const ReadPtr floats = decode("99 09 0A 94 08 00 00 C0 3F 00 00 00 C0");
    EXPECT_EQ(1.5f, _PCCC_GetValueAsFloat(floats.get(), 0));
    EXPECT_EQ(-2.0f, _PCCC_GetValueAsFloat(floats.get(), 1));
    EXPECT_EQ(kSuccess, lastError());
    const ReadPtr words = decode("42 FF FF");
    EXPECT_EQ(-1.0f, _PCCC_GetValueAsFloat(words.get(), 0));
    EXPECT_EQ(kSuccess, lastError()) << "an integer is a number too";
}

TEST(PcccData, Booleans) {
    const ReadPtr read = decodeBytes("20 00 00 00", PLC_TYPE_BIT_STRING, 2);
    EXPECT_TRUE(_PCCC_GetValueAsBoolean(read.get(), 0));
    EXPECT_FALSE(_PCCC_GetValueAsBoolean(read.get(), 1));
    read->mask = 0x20;
    EXPECT_TRUE(_PCCC_GetValueAsBoolean(read.get(), 0));
    EXPECT_EQ(1, _PCCC_GetValueAsInteger(read.get(), 0));
    read->mask = 0x40;
    EXPECT_FALSE(_PCCC_GetValueAsBoolean(read.get(), 0));
    EXPECT_EQ(0, _PCCC_GetValueAsInteger(read.get(), 0));
    EXPECT_EQ(kSuccess, lastError());
}

TEST(PcccData, OtherTypes) {
    const ReadPtr timer = decode("56 00 E0 64 00 07 00");
    EXPECT_EQ(-1, _PCCC_GetValueAsInteger(timer.get(), 0));
    EXPECT_EQ(kType, lastError());
    EXPECT_EQ(-1.0f, _PCCC_GetValueAsFloat(timer.get(), 0));
    EXPECT_EQ(kType, lastError());
    EXPECT_FALSE(_PCCC_GetValueAsBoolean(timer.get(), 0));
    EXPECT_EQ(kType, lastError());
    const ReadPtr real = decode("94 08 00 00 C0 3F");
    EXPECT_EQ(-1, _PCCC_GetValueAsInteger(real.get(), 0));
    EXPECT_EQ(kType, lastError());
    EXPECT_FALSE(_PCCC_GetValueAsBoolean(real.get(), 0));
    for (int elementSize : {3, 6, 8}) {
        const ReadPtr odd = decodeBytes(hexOf(filled(24, 1)), PLC_TYPE_INTEGER, elementSize);
        EXPECT_EQ(-1, _PCCC_GetValueAsInteger(odd.get(), 0));
        EXPECT_EQ(kType, lastError());
        EXPECT_EQ(-1.0f, _PCCC_GetValueAsFloat(odd.get(), 0));
        EXPECT_EQ(kType, lastError());
    }
}

TEST(PcccData, IntegersWithoutASignAndRecordsOfNothing) {
    // BCD is handed out as it is on the wire.
    const ReadPtr bcd = decodeBytes("34 92", PLC_TYPE_BCD, 2);
    EXPECT_EQ(0x9234, _PCCC_GetValueAsInteger(bcd.get(), 0));
    EXPECT_EQ(kSuccess, lastError());
    const ReadPtr shortFloat = decodeBytes("34 92", PLC_TYPE_FLOAT, 2);
    EXPECT_EQ(-1.0f, _PCCC_GetValueAsFloat(shortFloat.get(), 0));
    EXPECT_EQ(kType, lastError());
    bcd->elementSize = 0;
    EXPECT_EQ(0, _PCCC_GetValueAsInteger(bcd.get(), 0));
    EXPECT_EQ(kInvalid, lastError());
}

TEST(PcccData, IndexesOfNoElement) {
    const ReadPtr read = decode("95 09 42 01 00 02 00");
    for (int index : {-1, 2, 3, 1000, INT32_MAX, INT32_MIN}) {
        EXPECT_EQ(0, _PCCC_GetValueAsInteger(read.get(), index));
        EXPECT_EQ(kRange, lastError());
        EXPECT_EQ(0.0f, _PCCC_GetValueAsFloat(read.get(), index));
        EXPECT_EQ(kRange, lastError());
        EXPECT_FALSE(_PCCC_GetValueAsBoolean(read.get(), index));
        EXPECT_EQ(kRange, lastError());
    }
    read->count = 1;
    EXPECT_EQ(0, _PCCC_GetValueAsInteger(read.get(), 1)) << "the count counts";
    EXPECT_EQ(kRange, lastError());
    read->count = INT32_MAX;
    EXPECT_EQ(0, _PCCC_GetValueAsInteger(read.get(), 2));
    EXPECT_EQ(kRange, lastError());
}

TEST(PcccData, NothingToRead) {
    EXPECT_EQ(0, _PCCC_GetValueAsInteger(nullptr, 0));
    EXPECT_EQ(kInvalid, lastError());
    EXPECT_EQ(0.0f, _PCCC_GetValueAsFloat(nullptr, 0));
    EXPECT_FALSE(_PCCC_GetValueAsBoolean(nullptr, 0));
    EXPECT_EQ(kInvalid, lastError());
    const ReadPtr read = decode("42 01 00");
    read->count = 0;
    EXPECT_EQ(0, _PCCC_GetValueAsInteger(read.get(), 0));
    EXPECT_EQ(kInvalid, lastError());
    _FreePLCRead(nullptr);
}

}  // namespace
