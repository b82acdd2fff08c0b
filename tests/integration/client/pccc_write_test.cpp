// Writes to the data table, each by every way that a command can take. The simulator reports its
// values then.

#include "integration/client/client_rig.h"

namespace {

class PcccWrites : public PcccWays {};

INSTANTIATE_TEST_SUITE_P(All, PcccWrites, testing::ValuesIn(kWays),
                         testing::PrintToStringParamName());

TEST_P(PcccWrites, Typed) {
    const unsigned char integers[] = {0x07, 0x00, 0xF8, 0xFF};
    EXPECT_EQ(0, _WritePLCData(&target, next(), "N7:0", PLC_TYPE_INTEGER, integers, 1));
    EXPECT_EQ(kPcccSuccess, lastError());
    EXPECT_EQ("7", stored("N7:0"));
    EXPECT_EQ("-2", stored("N7:1"));
    EXPECT_EQ(0, _WritePLCData(&target, next(), "N7:299", PLC_TYPE_INTEGER, integers, 2));
    EXPECT_EQ("7", stored("N7:299"));
    EXPECT_EQ("-8", stored("N7:300"));
    const unsigned char floats[] = {0x00, 0x00, 0xC0, 0x3F, 0x00, 0x00, 0x20, 0xC1};
    EXPECT_EQ(0, _WritePLCData(&target, next(), "F8:1", PLC_TYPE_FLOAT, floats, 2));
    EXPECT_EQ("1.5", stored("F8:1"));
    EXPECT_EQ("-10", stored("F8:2"));
    EXPECT_EQ(0, _WritePLCData(&target, next(), "B3:1", PLC_TYPE_BIT_STRING, integers, 2));
    EXPECT_EQ("65528", stored("B3:2"));
    EXPECT_EQ(0, _WritePLCData(&target, next(), "T4:0.ACC", PLC_TYPE_INTEGER, integers, 1));
    EXPECT_EQ("8192,1000,7", stored("T4:0"));
}

TEST_P(PcccWrites, Bytes) {
    const unsigned char data[] = {0x01, 0x02, 0x03, 0x04};
    EXPECT_EQ(0, WriteBytesToPLC(&target, next(), "N7:0", data, 4));
    EXPECT_EQ(kPcccSuccess, lastError());
    EXPECT_EQ("513", stored("N7:0"));
    EXPECT_EQ("1027", stored("N7:1"));
    EXPECT_EQ("32767", stored("N7:2"));
    EXPECT_EQ(0, WriteBytesToPLC(&target, next(), "N7:300", data, 2));
    EXPECT_EQ("513", stored("N7:300"));
    EXPECT_EQ(0, WriteBytesToPLC(&target, next(), "T4:1.PRE", data, 4));
    EXPECT_EQ("-32768,513,1027", stored("T4:1"));
    const unsigned char one[] = {0x00, 0x00, 0x80, 0x3F};
    EXPECT_EQ(0, WriteBytesToPLC(&target, next(), "F8:1", one, 4));
    EXPECT_EQ("1", stored("F8:1"));
    EXPECT_EQ("ThreeAddressWrite", simulator->log().last()["function"].toString().toStdString());
}

TEST_P(PcccWrites, WithMask) {
    EXPECT_EQ(0, WriteMaskAndDataToPLC(&target, next(), "B3:2", 0x0F01, 0xFAFF));
    EXPECT_EQ(kPcccSuccess, lastError());
    EXPECT_EQ(std::to_string(0x0A21), stored("B3:2"));
    EXPECT_EQ(0, WriteMaskAndDataToPLC(&target, next(), "N7:300", 0xFFFF, 0xFFFE));
    EXPECT_EQ("-2", stored("N7:300"));
    EXPECT_EQ(0, WriteMaskAndDataToPLC(&target, next(), "T4:0.ACC", 0x00FF, 0x0100));
    EXPECT_EQ("8192,1000,0", stored("T4:0"));
    EXPECT_EQ("MaskedWrite", simulator->log().last()["function"].toString().toStdString());
}

TEST_P(PcccWrites, AreReadBack) {
    const unsigned char data[] = {0x39, 0x30};
    EXPECT_EQ(0, WriteBytesToPLC(&target, next(), "N7:255", data, 2));
    const PlcRead read(_ReadPLCData_Ex(&target, next(), "N7:255", 1));
    ASSERT_TRUE(read) << cip_err_msg();
    EXPECT_EQ(12345, _PCCC_GetValueAsInteger(read.get(), 0));
}

TEST_P(PcccWrites, AreRefusedAndChangeNothing) {
    const unsigned char data[] = {0x01, 0x00, 0x02, 0x00};
    EXPECT_EQ(0x50, WriteBytesToPLC(&target, next(), "N7:300", data, 4)) << "past the end";
    EXPECT_EQ((CipError{6, 0x50, 0}), lastError());
    EXPECT_EQ(0x10, WriteBytesToPLC(&target, next(), "N7:0", data, 3)) << "half a word";
    EXPECT_EQ((CipError{6, 0x10, 0}), lastError());
    EXPECT_EQ(0x50, WriteMaskAndDataToPLC(&target, next(), "N7:301", 0xFFFF, 1));
    EXPECT_EQ(0xF0, _WritePLCData(&target, next(), "N7:300", PLC_TYPE_INTEGER, data, 2));
    EXPECT_EQ((CipError{6, 0xF0, 0}), lastError());
    EXPECT_EQ(0xF0, _WritePLCData(&target, next(), "N7:0", PLC_TYPE_FLOAT, data, 1));
    EXPECT_EQ("F0/17", simulator->log().last()["sts"].toString().toStdString());
    EXPECT_EQ("0", stored("N7:300"));
    EXPECT_EQ("42", stored("N7:0"));
}

}  // namespace
