#include "eip/cip/pccc_requests.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "unit/eip/cip/scripted_transport.h"

namespace {

std::string taken(unsigned char* request, int size) {
    const std::string text = request ? hexOf(bytesAt(request, static_cast<size_t>(size))) : "null";
    EXPECT_TRUE(request || size == 0);
    free(request);
    return text;
}

std::string typedRead(const char* address, uint16_t count) {
    int size = 77;
    unsigned char* request = _BuildPLCReadDataRequest(0x1234, address, count, &size);
    return taken(request, size);
}

std::string readThree(const char* address, int byteCount) {
    int size = 77;
    unsigned char* request = _BuildPLCReadDataRequestPlus(0x1234, address, byteCount, &size);
    return taken(request, size);
}

std::string typedWrite(const char* address, _PLC_Data_Type type, int elementSize,
                       const std::string& data, uint16_t count) {
    int size = 77;
    const Bytes values = bytes(data);
    unsigned char* request =
        _BuildPLCWriteDataRequest(0x1234, address, type, elementSize, values.data(), count, &size);
    return taken(request, size);
}

std::string masked(const char* address, uint16_t mask, uint16_t value) {
    int size = 77;
    unsigned char* request = _BuildPLCWriteWithMaskRequest(0x1234, address, mask, value, &size);
    return taken(request, size);
}

std::string writeThree(const char* address, const Bytes& data) {
    int size = 77;
    unsigned char* request = _BuildPLCWriteBytesRequest(0x1234, address, data.data(),
                                                        static_cast<int>(data.size()), &size);
    return taken(request, size);
}

// DF1 Protocol and Command Set (1770-6.5.16), chapter 7: CMD 0F, STS, TNSW, FNC, data
TEST(PcccRequests, TypedRead) {
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 68 | 00 00 | 01 00 | 06 07 00 | 01 00")),
              typedRead("N7:0", 1));
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 68 | 00 00 | 2C 01 | 06 07 FF 2C 01 | 2C 01")),
              typedRead("N7:300", 300));
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 68 | 00 00 | 01 00 | 0E 04 00 02 | 01 00")),
              typedRead("T4:0.ACC", 1));
}

TEST(PcccRequests, ReadWithThreeAddressFields) {
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 A2 | 02 | 07 89 00 00")), readThree("N7:0", 2));
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 A2 | 04 | 08 8A 01 00")), readThree("F8:1", 4));
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 A2 | FF | 07 89 FF 2C 01 00")), readThree("N7:300", 255));
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 A2 | 06 | 04 86 00 00")), readThree("T4:0.ACC", 6))
        << "always from sub-element 0";
}

TEST(PcccRequests, WriteWithMask) {
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 AB | 02 | 03 85 02 00 | 20 00 | FF 00")),
              masked("B3:2", 0x0020, 0x00FF));
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 AB | 02 | 07 89 FF FF 00 00 | FF FF | 34 12")),
              masked("N7:255", 0xFFFF, 0x1234));
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 AB | 02 | 04 86 01 02 | FF FF | 00 00")),
              masked("T4:1.ACC", 0xFFFF, 0));
}

TEST(PcccRequests, WriteBytes) {
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 AA | 04 | 07 89 0A 00 | 01 00 02 00")),
              writeThree("N7:10", bytes("01 00 02 00")));
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 AA | 02 | 04 86 00 01 | 64 00")),
              writeThree("T4:0.PRE", bytes("64 00")));
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 AA | 00 | 07 89 00 00")), writeThree("N7:0", Bytes()));
}

TEST(PcccRequests, TypedWrite) {
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 67 | 00 00 | 01 00 | 06 07 00 | 42 | 2A 00")),
              typedWrite("N7:0", PLC_TYPE_INTEGER, 2, "2A 00", 1));
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 67 | 00 00 | 02 00 | 06 07 00 | 95 09 42 | 01 00 02 00")),
              typedWrite("N7:0", PLC_TYPE_INTEGER, 2, "01 00 02 00", 2));
    EXPECT_EQ(hexOf(bytes("0F 00 34 12 67 | 00 00 | 02 00 | 06 08 01 | 99 09 0A 94 08 | "
                          "00 00 80 3F 00 00 00 40")),
              typedWrite("F8:1", PLC_TYPE_FLOAT, 4, "00 00 80 3F 00 00 00 40", 2));
}

TEST(PcccRequests, AddressesThatAreNone) {
    for (const char* address : {"", "N7", "N7:0/99"}) {
        EXPECT_EQ("null", typedRead(address, 1));
        EXPECT_EQ((CipError{0, -1, 0}), lastError()) << address;
        EXPECT_EQ("null", readThree(address, 2));
        EXPECT_EQ("null", masked(address, 1, 1));
        EXPECT_EQ("null", writeThree(address, bytes("01 00")));
        EXPECT_EQ("null", typedWrite(address, PLC_TYPE_INTEGER, 2, "2A 00", 1));
        EXPECT_EQ((CipError{0, -1, 0}), lastError()) << address;
    }
    EXPECT_EQ("null", typedRead(nullptr, 1));
    EXPECT_EQ("null", readThree("N255:0", 2));
    EXPECT_EQ((CipError{0, -21, 0}), lastError());
}

TEST(PcccRequests, CountsThatTheFieldsCannotHold) {
    const Bytes data = filled(2000, 0);
    for (int byteCount : {256, 1000, INT32_MAX, -1, INT32_MIN}) {
        EXPECT_EQ("null", readThree("N7:0", byteCount));
        EXPECT_EQ((CipError{0, -31, 0}), lastError()) << byteCount;
        int size = 77;
        EXPECT_EQ(nullptr, _BuildPLCWriteBytesRequest(1, "N7:0", data.data(), byteCount, &size));
        EXPECT_EQ((CipError{0, -31, 0}), lastError()) << byteCount;
        EXPECT_EQ(0, size);
    }
    EXPECT_NE("null", writeThree("N7:0", filled(255, 0)));
    int size = 77;
    EXPECT_EQ(nullptr, _BuildPLCWriteBytesRequest(1, "N7:0", nullptr, 2, &size));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    for (int elementSize : {1000, 1001, INT32_MAX}) {
        EXPECT_EQ(nullptr, _BuildPLCWriteDataRequest(1, "N7:0", PLC_TYPE_INTEGER, elementSize,
                                                     data.data(), 1, &size));
        EXPECT_EQ((CipError{0, -31, 0}), lastError()) << elementSize;
    }
    EXPECT_EQ(nullptr, _BuildPLCWriteDataRequest(1, "N7:0", PLC_TYPE_INTEGER, 2, data.data(),
                                                 0xFFFF, &size));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ(nullptr,
              _BuildPLCWriteDataRequest(1, "N7:0", PLC_TYPE_INTEGER, -2, data.data(), 1, &size));
    EXPECT_EQ((CipError{0, -24, 0}), lastError());
    EXPECT_EQ(nullptr,
              _BuildPLCWriteDataRequest(1, "N7:0", _PLC_Data_Type(-1), 2, data.data(), 1, &size));
    EXPECT_EQ((CipError{0, -24, 0}), lastError());
    EXPECT_EQ(nullptr,
              _BuildPLCWriteDataRequest(1, "N7:0", PLC_TYPE_INTEGER, 2, nullptr, 1, &size));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
}

}  // namespace
