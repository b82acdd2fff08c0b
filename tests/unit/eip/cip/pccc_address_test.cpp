#include "eip/cip/pccc_address.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "unit/eip/cip/scripted_transport.h"

namespace {

/// Runs a builder with a buffer of exactly the measured size and a text of exactly its own.
std::string built(int (*build)(unsigned char*, const char*), const std::string& text) {
    char* exactText = static_cast<char*>(malloc(text.size() + 1));
    memcpy(exactText, text.c_str(), text.size() + 1);
    const int measured = build(nullptr, exactText);
    unsigned char* buffer = static_cast<unsigned char*>(malloc(static_cast<size_t>(measured)));
    EXPECT_EQ(measured, build(buffer, exactText));
    const std::string field = hexOf(bytesAt(buffer, static_cast<size_t>(measured)));
    free(buffer);
    free(exactText);
    return field;
}

struct Row {
    const char* text;
    const char* binary;  ///< logical binary address after its length byte
    const char* fields;  ///< file number, file type, element, sub-element
    int bit;
};

// DF1 Protocol and Command Set (1770-6.5.16), chapter 13: PLC-5 logical binary addressing, and the
// file types of the commands with three address fields
const Row kRows[] = {
    {"N7:0", "03 06 07 00", "07 89 00 00", -1},
    {"n7:12", "03 06 07 0C", "07 89 0C 00", -1},
    {"N7:254", "03 06 07 FE", "07 89 FE 00", -1},
    {"N7:255", "05 06 07 FF FF 00", "07 89 FF FF 00 00", -1},
    {"N7:300", "05 06 07 FF 2C 01", "07 89 FF 2C 01 00", -1},
    {"N7:65535", "05 06 07 FF FF FF", "07 89 FF FF FF 00", -1},
    {"N7:3/15", "03 06 07 03", "07 89 03 00", 15},
    {"N254:1", "03 06 FE 01", "FE 89 01 00", -1},
    {"F8:1", "03 06 08 01", "08 8A 01 00", -1},
    {"B3:2/5", "03 06 03 02", "03 85 02 00", 5},
    {"B3/37", "03 06 03 02", "03 85 02 00", 5},
    {"B3/0", "03 06 03 00", "03 85 00 00", 0},
    {"B3/1048560", "05 06 03 FF FF FF", "03 85 FF FF FF 00", 0},
    {"B10:2", "03 06 0A 02", "0A 85 02 00", -1},
    {"T4:0", "03 06 04 00", "04 86 00 00", -1},
    {"T4:0.PRE", "04 0E 04 00 01", "04 86 00 01", -1},
    {"T4:0.ACC", "04 0E 04 00 02", "04 86 00 02", -1},
    {"t4:0.acc", "04 0E 04 00 02", "04 86 00 02", -1},
    {"T4:0.2", "04 0E 04 00 02", "04 86 00 02", -1},
    {"T4:0.ACC/3", "04 0E 04 00 02", "04 86 00 02", 3},
    {"T4:0/DN", "04 0E 04 00 00", "04 86 00 00", 13},
    {"T4:0.DN", "04 0E 04 00 00", "04 86 00 00", 13},
    {"T4:0/TT", "04 0E 04 00 00", "04 86 00 00", 14},
    {"T4:0/EN", "04 0E 04 00 00", "04 86 00 00", 15},
    {"T4:0/13", "04 0E 04 00 00", "04 86 00 00", 13},
    {"T4:300.ACC", "06 0E 04 FF 2C 01 02", "04 86 FF 2C 01 02", -1},
    {"C5:1.ACC", "04 0E 05 01 02", "05 87 01 02", -1},
    {"C5:1/CU", "04 0E 05 01 00", "05 87 01 00", 15},
    {"C5:1/CD", "04 0E 05 01 00", "05 87 01 00", 14},
    {"C5:1/DN", "04 0E 05 01 00", "05 87 01 00", 13},
    {"C5:1/OV", "04 0E 05 01 00", "05 87 01 00", 12},
    {"C5:1/UN", "04 0E 05 01 00", "05 87 01 00", 11},
    {"C5:1/UA", "04 0E 05 01 00", "05 87 01 00", 10},
    {"R6:2.LEN", "04 0E 06 02 01", "06 88 02 01", -1},
    {"R6:2.POS", "04 0E 06 02 02", "06 88 02 02", -1},
    {"R6:2/FD", "04 0E 06 02 00", "06 88 02 00", 8},
    {"R6:2/IN", "04 0E 06 02 00", "06 88 02 00", 9},
    {"R6:2/UL", "04 0E 06 02 00", "06 88 02 00", 10},
    {"R6:2/ER", "04 0E 06 02 00", "06 88 02 00", 11},
    {"R6:2/EM", "04 0E 06 02 00", "06 88 02 00", 12},
    {"R6:2/DN", "04 0E 06 02 00", "06 88 02 00", 13},
    {"R6:2/EU", "04 0E 06 02 00", "06 88 02 00", 14},
    {"R6:2/EN", "04 0E 06 02 00", "06 88 02 00", 15},
    {"S:1", "03 06 02 01", "02 84 01 00", -1},
    {"S2:1/15", "03 06 02 01", "02 84 01 00", 15},
    {"O:1", "03 06 00 01", "00 8B 01 00", -1},
    {"O:1.2", "04 0E 00 01 02", "00 8B 01 02", -1},
    {"I:1", "03 06 01 01", "01 8C 01 00", -1},
    {"I:1.2", "04 0E 01 01 02", "01 8C 01 02", -1},
    {"I:1.2/3", "04 0E 01 01 02", "01 8C 01 02", 3},
    {"ST9:0", "03 06 09 00", "09 8D 00 00", -1},
    {"A10:1", "03 06 0A 01", "0A 8E 01 00", -1},
    {"D11:1", "03 06 0B 01", "0B 8F 01 00", -1},
    {"L12:1/31", "03 06 0C 01", "0C 91 01 00", 31},
};

TEST(PcccAddress, LogicalBinaryAddress) {
    for (const Row& row : kRows) {
        EXPECT_EQ(row.binary, built(_BuildLogicalBinaryAddress, row.text)) << row.text;
    }
}

TEST(PcccAddress, ThreeAddressField) {
    for (const Row& row : kRows) {
        EXPECT_EQ(row.fields, built(_BuildThreeAddressField, row.text)) << row.text;
    }
}

TEST(PcccAddress, Bits) {
    for (const Row& row : kRows) {
        _PLC_Address address;
        ASSERT_TRUE(_ParsePLCAddress(row.text, &address)) << row.text;
        EXPECT_EQ(row.bit, address.bit) << row.text;
    }
}

TEST(PcccAddress, WithoutASubElementThereIsNone) {
    _PLC_Address address;
    ASSERT_TRUE(_ParsePLCAddress("N7:0", &address));
    EXPECT_EQ(-1, address.subElement);
    EXPECT_EQ(-1, address.bit);
}

TEST(PcccAddress, FileNumbersAbove254) {
    EXPECT_EQ("05 06 FF FF 00 01", built(_BuildLogicalBinaryAddress, "N255:1"));
    EXPECT_EQ("07 06 FF FF FF FF FF FF", built(_BuildLogicalBinaryAddress, "N65535:65535"));
    EXPECT_EQ("08 0E FF 2C 01 01 FF FF 00", built(_BuildLogicalBinaryAddress, "I300:1.255"));
    for (const char* text : {"N255:1", "N256:1", "N65535:1", "I:1.255"}) {
        CIPERROR(0, 0, 0);
        EXPECT_EQ("", built(_BuildThreeAddressField, text)) << text;
        EXPECT_EQ((CipError{0, -21, 0}), lastError()) << text;
    }
}

TEST(PcccAddress, TextsThatAreNone) {
    for (const char* text : {
             "",
             ":",
             "7:0",
             "N",
             "N:0",
             "N7",
             "N7:",
             "N7:x",
             "N7:-1",
             "N7: 0",
             " N7:0",
             "N7:0 ",
             "N7:0/",
             "N7:0.",
             "N7:0/16",
             "N7:0.1",
             "N7:0.ACC",
             "N7:65536",
             "N65536:0",
             "N7:0/DN",
             "N7/5",
             "F8:1/0",
             "F8:1.0",
             "ST9:0/1",
             "ST9:0.LEN",
             "L9:0/32",
             "T4:0.3",
             "T4:0.LEN",
             "T4:0/CU",
             "T4:0.DN/5",
             "T4:0/16",
             "T4:0/PRE",
             "B3/1048576",
             "B3/",
             "B3/5/5",
             "X7:0",
             "NN7:0",
             "N7:0N7:0",
             "T4",
             "S99999:1",
             "B:1",
             "I:1.256",
             "{7:0",
             "N{:0",
             "N7:99999999999999999999",
             "N99999999999999999999:0",
             "N7:0/99999999999999999999",
         }) {
        _PLC_Address address;
        memset(&address, 0xEE, sizeof(address));
        CIPERROR(0, 0, 0);
        EXPECT_FALSE(_ParsePLCAddress(text, &address)) << text;
        EXPECT_EQ((CipError{0, -1, 0}), lastError()) << text;
        EXPECT_EQ(filled(sizeof(address), 0xEE), bytesAt(&address, sizeof(address)));
        EXPECT_EQ("", built(_BuildLogicalBinaryAddress, text)) << text;
        EXPECT_EQ("", built(_BuildThreeAddressField, text)) << text;
    }
    _PLC_Address address;
    EXPECT_FALSE(_ParsePLCAddress(nullptr, &address));
}

TEST(PcccAddress, EveryShortTextStaysInside) {
    const std::string alphabet = "NTS:./D14";
    std::string text(5, ' ');
    size_t accepted = 0;
    for (size_t number = 0; number < 9 * 9 * 9 * 9 * 9; ++number) {
        for (size_t i = 0, rest = number; i < text.size(); ++i, rest /= 9) {
            text[i] = alphabet[rest % 9];
        }
        accepted += built(_BuildThreeAddressField, text).empty() ? 0 : 1;
    }
    EXPECT_GT(accepted, 10u);
}

TEST(PcccAddress, ElementSizes) {
    EXPECT_EQ(2, _GetPLCElementSize(PLC_FILE_INTEGER));
    EXPECT_EQ(2, _GetPLCElementSize(PLC_FILE_BIT));
    EXPECT_EQ(4, _GetPLCElementSize(PLC_FILE_FLOAT));
    EXPECT_EQ(4, _GetPLCElementSize(PLC_FILE_LONG));
    EXPECT_EQ(6, _GetPLCElementSize(PLC_FILE_TIMER));
    EXPECT_EQ(6, _GetPLCElementSize(PLC_FILE_COUNTER));
    EXPECT_EQ(6, _GetPLCElementSize(PLC_FILE_CONTROL));
    EXPECT_EQ(84, _GetPLCElementSize(PLC_FILE_STRING));
    EXPECT_EQ(2, _GetPLCElementSize(PlcFileType(0)));
}

}  // namespace
