#include "eip/cip/pccc_types.h"

#include <gtest/gtest.h>

#include <string>

#include "unit/eip/cip/scripted_transport.h"

namespace {

struct Row {
    int type;
    int size;
    const char* parameter;
};

// DF1 Protocol and Command Set (1770-6.5.16), chapter 13, type/data parameter
const Row kRows[] = {
    {PLC_TYPE_INTEGER, 2, "42"},
    {PLC_TYPE_BIT_STRING, 2, "22"},
    {PLC_TYPE_TIMER, 6, "56"},
    {PLC_TYPE_FLOAT, 4, "94 08"},
    {PLC_TYPE_BCD, 2, "92 10"},
    {PLC_TYPE_ARRAY, 3, "93 09"},
    {PLC_TYPE_ARRAY, 8, "99 09 08"},
    {PLC_TYPE_ARRAY, 255, "99 09 FF"},
    {PLC_TYPE_ARRAY, 256, "9A 09 00 01"},
    {PLC_TYPE_BYTE_STRING, 84, "39 54"},
    {0, 0, "00"},
    {7, 7, "77"},
    {0x123456, 0x7FFFFFFF, "BC 56 34 12 FF FF FF 7F"},
    {0x7FFFFFFF, 0x7FFFFFFF, "CC FF FF FF 7F FF FF FF 7F"},
};

TEST(PcccTypes, Encode) {
    for (const Row& row : kRows) {
        unsigned char buffer[kMaxPLCDataType];
        const int size = _EncodePLCDataType(buffer, row.type, row.size);
        EXPECT_EQ(row.parameter, hexOf(bytesAt(buffer, static_cast<size_t>(size))));
        EXPECT_EQ(size, _EncodePLCDataType(nullptr, row.type, row.size));
    }
}

TEST(PcccTypes, EncodeRefusesNegativeValues) {
    unsigned char buffer[kMaxPLCDataType];
    EXPECT_EQ(0, _EncodePLCDataType(buffer, -1, 2));
    EXPECT_EQ((CipError{0, -24, 0}), lastError());
    EXPECT_EQ(0, _EncodePLCDataType(buffer, 4, INT32_MIN));
    EXPECT_EQ((CipError{0, -24, 0}), lastError());
}

int decode(const std::string& parameter, int* type, int* size) {
    const Bytes exact = bytes(parameter);
    const ReplyBuffer buffer(exact);
    return _DecodePLCDataType(buffer.as<unsigned char>(), static_cast<int>(exact.size()), type,
                              size);
}

TEST(PcccTypes, Decode) {
    for (const Row& row : kRows) {
        int type = -1;
        int size = -1;
        EXPECT_EQ(static_cast<int>(bytes(row.parameter).size()),
                  decode(std::string(row.parameter), &type, &size));
        EXPECT_EQ(row.type, type) << row.parameter;
        EXPECT_EQ(row.size, size) << row.parameter;
    }
}

TEST(PcccTypes, DecodeWithoutNeed) {
    int type = -1;
    int size = -1;
    EXPECT_EQ(3, decode("99 04 02 AA", &type, &size)) << "a short value behind the flag";
    EXPECT_EQ(4, type);
    EXPECT_EQ(2, size);
    EXPECT_EQ(1, decode("88", &type, &size)) << "no byte follows";
    EXPECT_EQ(0, type);
    EXPECT_EQ(0, size);
    EXPECT_EQ(9, decode("FA 04 00 00 00 00 00 00 02 00", &type, &size) - 1);
}

TEST(PcccTypes, DecodeOfWhatIsNotWhole) {
    for (const char* parameter :
         {"", "94", "9A 09 00", "99 09", "FF", "FF 01 02 03 04 05 06 07", "C2 FF FF FF FF",
          "C2 00 00 00 80", "4C 00 00 00 80", "F2 00 00 00 00 01 00 00"}) {
        int type = 0;
        int size = 0;
        CIPERROR(0, 0, 0);
        EXPECT_EQ(0, decode(parameter, &type, &size)) << parameter;
        EXPECT_EQ((CipError{0, -20, 0}), lastError()) << parameter;
    }
    int type = 0;
    int size = 0;
    EXPECT_EQ(0, _DecodePLCDataType(nullptr, 4, &type, &size));
    EXPECT_EQ(0, _DecodePLCDataType(reinterpret_cast<const unsigned char*>("B"), -1, &type, &size));
}

TEST(PcccTypes, EveryFlagByteStaysInside) {
    for (int flag = 0; flag <= 0xFF; ++flag) {
        for (size_t length = 1; length <= 16; ++length) {
            const Bytes exact = Bytes{static_cast<unsigned char>(flag)} + filled(length - 1, 0xFF);
            const ReplyBuffer buffer(exact);
            int type = 0;
            int size = 0;
            const int used = _DecodePLCDataType(buffer.as<unsigned char>(),
                                                static_cast<int>(length), &type, &size);
            EXPECT_LE(used, static_cast<int>(length));
            EXPECT_TRUE(used == 0 || (type >= 0 && size >= 0));
        }
    }
}

}  // namespace
