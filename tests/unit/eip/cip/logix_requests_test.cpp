#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "eip/cip/logix_messages.h"
#include "unit/eip/cip/scripted_transport.h"

namespace {

/// The text of a request and its end.
std::string taken(unsigned char* request, int size) {
    const std::string text = request ? hexOf(bytesAt(request, static_cast<size_t>(size))) : "null";
    EXPECT_TRUE(request || size == 0);
    free(request);
    return text;
}

std::string readRequest(const std::string& name, uint16_t count) {
    int size = 77;
    unsigned char* request = _BuildLgxReadDataRequest(name.c_str(), count, &size);
    return taken(request, size);
}

std::string writeRequest(const std::string& name, int type, const Bytes& data, uint16_t count) {
    int size = 77;
    unsigned char* request =
        _BuildLgxWriteDataRequest(name.c_str(), _LGX_Data_Type(type), data.data(),
                                  static_cast<int>(data.size()), count, &size);
    return taken(request, size);
}

TEST(LogixRequests, ReadTag) {
    EXPECT_EQ("4C 05 91 07 43 6F 75 6E 74 65 72 00 01 00", readRequest("Counter", 1));
    EXPECT_EQ("4C 03 91 01 41 00 28 03 FF FF", readRequest("A[3]", 0xFFFF));
    EXPECT_EQ("4C 00 01 00", readRequest("", 1));
}

TEST(LogixRequests, WriteTag) {
    EXPECT_EQ("4D 02 91 01 41 00 C3 00 02 00 01 00 02 00",
              writeRequest("A", 0xC3, bytes("01 00 02 00"), 2));
    EXPECT_EQ("4D 02 91 01 41 00 C1 00 00 00", writeRequest("A", 0xC1, Bytes(), 0));
}

TEST(LogixRequests, WriteShortString) {
    EXPECT_EQ("4D 03 91 04 4E 61 6D 65 DA 00 01 00 02 4F 4B",
              writeRequest("Name", 0xDA, bytes("4F 4B"), 2));
    EXPECT_EQ("4D 02 91 01 41 00 DA 00 01 00 00", writeRequest("A", 0xDA, Bytes(), 9));
}

TEST(LogixRequests, LongestShortString) {
    const Bytes longest = filled(255, 0x41);
    EXPECT_EQ("4D 02 91 01 41 00 DA 00 01 00 FF " + hexOf(longest),
              writeRequest("A", 0xDA, longest, 255));
    EXPECT_EQ("null", writeRequest("A", 0xDA, filled(256, 0x41), 256));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
}

TEST(LogixRequests, PathsAbove255WordsAreRefused) {
    // "A." is 2 words
    std::string name;
    for (int i = 0; i < 127; ++i) {
        name += "A.";
    }
    EXPECT_EQ(2u + 508 + 2, bytes(readRequest(name, 1)).size());
    EXPECT_EQ(0xFE, bytes(readRequest(name, 1))[1]);
    EXPECT_EQ(0xFF, bytes(readRequest("[1]" + name, 1))[1]) << "255 words";
    name += "A";
    EXPECT_EQ("null", readRequest(name, 1)) << "256 words";
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ("null", writeRequest(name, 0xC1, bytes("01"), 1));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
}

TEST(LogixRequests, PartsOfANameAbove255BytesAreRefused) {
    const std::string longest(255, 'N');
    EXPECT_EQ(2u + 258 + 2, bytes(readRequest(longest, 1)).size());
    EXPECT_EQ("null", readRequest(longest + "N", 1));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ("null", readRequest("A." + longest + "N[1]", 1));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ("null", writeRequest(longest + "N", 0xC1, bytes("01"), 1));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
}

TEST(LogixRequests, DataBeyondARequestIsRefused) {
    EXPECT_NE("null", writeRequest("A", 0xC1, filled(1000, 0), 1000));
    EXPECT_EQ("null", writeRequest("A", 0xC1, filled(1001, 0), 1001));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    int size = 77;
    EXPECT_EQ(nullptr, _BuildLgxWriteDataRequest("A", LGX_TYPE_DINT, "", INT32_MAX, 1, &size));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ(0, size);
}

TEST(LogixRequests, BadArguments) {
    int size = 77;
    EXPECT_EQ(nullptr, _BuildLgxWriteDataRequest("A", LGX_TYPE_DINT, "", -1, 1, &size));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(0, size);
    EXPECT_EQ(nullptr, _BuildLgxWriteDataRequest("A", LGX_TYPE_DINT, nullptr, 4, 1, &size));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ("4C 00 01 00", taken(_BuildLgxReadDataRequest(nullptr, 1, &size), 4));
}

// ---- fragmented (1756-PM020, Read Tag Fragmented and Write Tag Fragmented services) ----------

std::string readFragment(const std::string& name, uint16_t count, uint32_t offset) {
    int size = 77;
    unsigned char* request = _BuildLgxReadFragmentRequest(name.c_str(), count, offset, &size);
    return taken(request, size);
}

std::string writeFragment(const std::string& name, int type, const Bytes& data, uint16_t count,
                          uint32_t offset) {
    int size = 77;
    unsigned char* request =
        _BuildLgxWriteFragmentRequest(name.c_str(), _LGX_Data_Type(type), data.data(),
                                      static_cast<int>(data.size()), count, offset, &size);
    return taken(request, size);
}

TEST(LogixRequests, ReadTagFragmented) {
    EXPECT_EQ("52 02 91 01 41 00 E8 03 EC 01 00 00", readFragment("A", 1000, 492));
    EXPECT_EQ("52 03 91 01 41 00 28 03 FF FF 00 00 00 00", readFragment("A[3]", 0xFFFF, 0));
    EXPECT_EQ("52 02 91 01 41 00 FF FF 78 56 34 12", readFragment("A", 0xFFFF, 0x12345678));
    EXPECT_EQ("52 00 01 00 00 00 00 00", readFragment("", 1, 0));
}

TEST(LogixRequests, WriteTagFragmented) {
    EXPECT_EQ("53 02 91 01 41 00 C3 00 96 00 04 00 00 00 01 00 02 00",
              writeFragment("A", 0xC3, bytes("01 00 02 00"), 150, 4));
    EXPECT_EQ("53 03 91 01 41 00 28 03 CB 00 FF FF F8 FF 07 00 00 00 00 00 00 00 F0 3F",
              writeFragment("A[3]", 0xCB, bytes("00 00 00 00 00 00 F0 3F"), 0xFFFF, 0x7FFF8));
    EXPECT_EQ("53 02 91 01 41 00 C1 00 00 00 00 00 00 00", writeFragment("A", 0xC1, Bytes(), 0, 0));
}

TEST(LogixRequests, FragmentsThatCannotGoOut) {
    EXPECT_EQ("null", readFragment(std::string(256, 'N'), 1, 0));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ("null", writeFragment(std::string(256, 'N'), 0xC1, bytes("01"), 1, 0));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ("null", writeFragment("A", 0xC1, filled(1001, 0), 1001, 0));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    int size = 77;
    EXPECT_EQ(nullptr, _BuildLgxWriteFragmentRequest("A", LGX_TYPE_DINT, nullptr, 4, 1, 0, &size));
    EXPECT_EQ((CipError{0, -1, 0}), lastError());
    EXPECT_EQ(0, size);
}

}  // namespace
