#include "eip/cip/request_path.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "unit/eip/cip/wire_bytes.h"

namespace {

/// The path of a name, written into an allocation of exactly the measured size and read from one
/// of exactly the name's size.
std::string pathOf(const std::string& name) {
    char* exactName = static_cast<char*>(malloc(name.size() + 1));
    memcpy(exactName, name.c_str(), name.size() + 1);
    const int measured = _BuildIOI(nullptr, exactName);
    unsigned char* buffer = static_cast<unsigned char*>(malloc(static_cast<size_t>(measured)));
    EXPECT_EQ(measured, _BuildIOI(buffer, exactName)) << name;
    const std::string path = hexOf(bytesAt(buffer, static_cast<size_t>(measured)));
    free(buffer);
    free(exactName);
    return path;
}

struct Row {
    const char* name;
    const char* path;
};

const Row kNames[] = {
    {"Counter", "91 07 43 6F 75 6E 74 65 72 00"},
    {"Even", "91 04 45 76 65 6E"},
    {"Arr[3,300]", "91 03 41 72 72 00 28 03 29 00 2C 01"},
    {"Udt.Member[70000]", "91 03 55 64 74 00 91 06 4D 65 6D 62 65 72 2A 00 70 11 01 00"},
    {"A[1].B", "91 01 41 00 28 01 91 01 42 00"},
    {"A.B.C", "91 01 41 00 91 01 42 00 91 01 43 00"},
    {"A[0,1,2]", "91 01 41 00 28 00 28 01 28 02"},
    {"A[255]", "91 01 41 00 28 FF"},
    {"A[256]", "91 01 41 00 29 00 00 01"},
    {"A[65535]", "91 01 41 00 29 00 FF FF"},
    {"A[65536]", "91 01 41 00 2A 00 00 00 01 00"},
    {"A[1][2]", "91 01 41 00 28 01 28 02"},
    {"A[1].B[2].C", "91 01 41 00 28 01 91 01 42 00 28 02 91 01 43 00"},
    {"A[ 7 , 8 ]", "91 01 41 00 28 07 28 08"},
    {"A[+7]", "91 01 41 00 28 07"},
    {"A[-1]", "91 01 41 00 28 FF"},
    {"A[-300]", "91 01 41 00 28 D4"},
    {"A[1.5]", "91 01 41 00 28 01"},
    {"A[12abc]", "91 01 41 00 28 0C"},
    {"A[x]", "91 01 41 00 28 00"},
};

TEST(RequestPath, Names) {
    for (const Row& row : kNames) {
        EXPECT_EQ(row.path, pathOf(row.name)) << row.name;
    }
}

const Row kHostileNames[] = {
    {"", ""},
    {".", ""},
    {"...", ""},
    {"[", ""},
    {"]", "91 01 5D 00"},
    {"]]", "91 02 5D 5D"},
    {"[]", ""},
    {"[[", "28 00"},
    {"[][]", ""},
    {"A[", "91 01 41 00"},
    {"A[1", "91 01 41 00 28 01"},
    {"A[1]]", "91 01 41 00 28 01 91 01 5D 00"},
    {"A[1]B", "91 01 41 00 28 01 91 01 42 00"},
    {"A[[1]]", "91 01 41 00 28 00 91 01 5D 00"},
    {"A[,]", "91 01 41 00"},
    {"A[1,]", "91 01 41 00 28 01"},
    {"A[,2", "91 01 41 00 28 02"},
    {"A.", "91 01 41 00"},
    {".A", "91 01 41 00"},
    {"A..B", "91 01 41 00 91 01 42 00"},
    {"A[-]", "91 01 41 00 28 00"},
    {"A[\t5]", "91 01 41 00 28 05"},
    {"A[\r5]", "91 01 41 00 28 05"},
    {"A[\x0E"
     "5]",
     "91 01 41 00 28 00"},
    {"A[\b5]", "91 01 41 00 28 00"},
    // Held within 32 bits: never wraps to the index of another element.
    {"A[2147483647]", "91 01 41 00 2A 00 FF FF FF 7F"},
    {"A[4294967296]", "91 01 41 00 2A 00 FF FF FF 7F"},
    {"A[99999999999999999999999999]", "91 01 41 00 2A 00 FF FF FF 7F"},
    {"A[-99999999999999999999999999]", "91 01 41 00 28 01"},
};

TEST(RequestPath, HostileNames) {
    for (const Row& row : kHostileNames) {
        EXPECT_EQ(row.path, pathOf(row.name)) << row.name;
    }
    EXPECT_EQ(0, _BuildIOI(nullptr, nullptr));
}

TEST(RequestPath, LongestNames) {
    for (size_t length : {254u, 255u}) {
        const Bytes path = bytes(pathOf(std::string(length, 'N') + "[5].B"));
        const size_t segment = length + 2 + (length & 1);
        ASSERT_EQ(segment + 2 + 4, path.size()) << length;
        EXPECT_EQ(0x91, path[0]);
        EXPECT_EQ(length, path[1]);
        EXPECT_EQ('N', path[1 + length]);
        EXPECT_EQ("28 05 91 01 42 00",
                  hexOf(Bytes(path.begin() + std::ptrdiff_t(segment), path.end())));
    }
}

TEST(RequestPath, LongerNamesAreRefusedNotCut) {
    for (size_t length : {256u, 257u, 300u, 511u, 65536u + 7, 100000u}) {
        const std::string part(length, 'N');
        for (const std::string& name :
             {part, part + "[5].B", part + ".B", "A." + part, "A[1]." + part, "A.B[2]" + part}) {
            CIPERROR(0, 0, 0);
            EXPECT_EQ(-1, _BuildIOI(nullptr, name.c_str())) << length;
            EXPECT_EQ((CipError{0, -31, 0}), lastError()) << length;
        }
    }
    unsigned char buffer[8] = {};
    CIPERROR(0, 0, 0);
    EXPECT_EQ(-1, _BuildIOIString(buffer, std::string(256, 'N').c_str(), 256));
    EXPECT_EQ((CipError{0, -31, 0}), lastError());
    EXPECT_EQ(hexOf(filled(8, 0)), hexOf(bytesAt(buffer, 8)));
    EXPECT_EQ(258, _BuildIOIString(nullptr, std::string(256, 'N').c_str(), 255));
    EXPECT_EQ((CipError{0, 0, 0}), lastError());
}

TEST(RequestPath, EveryPairAndTripleOfDelimitersTerminates) {
    const std::string alphabet = "[].,-1 A";
    for (char a : alphabet) {
        for (char b : alphabet) {
            for (char c : alphabet) {
                for (char d : alphabet) {
                    const std::string name = {a, b, c, d};
                    EXPECT_LE(bytes(pathOf(name)).size(), 16u) << name;
                }
            }
        }
    }
}

TEST(RequestPath, NameSegmentTakesTheShorterLength) {
    unsigned char buffer[16];
    EXPECT_EQ(4, _BuildIOIString(buffer, "ABC", 2));
    EXPECT_EQ("91 02 41 42", hexOf(bytesAt(buffer, 4)));
    EXPECT_EQ(6, _BuildIOIString(buffer, "ABC", 100));
    EXPECT_EQ("91 03 41 42 43 00", hexOf(bytesAt(buffer, 6)));
    EXPECT_EQ(6, _BuildIOIString(nullptr, "ABC", 3));
    EXPECT_EQ(0, _BuildIOIString(buffer, "ABC", 0));
    EXPECT_EQ(0, _BuildIOIString(buffer, "ABC", -1));
    EXPECT_EQ(0, _BuildIOIString(buffer, "", 10));
    EXPECT_EQ(0, _BuildIOIString(buffer, nullptr, 10));
}

TEST(RequestPath, NameNeedsNoTerminatorWithinItsLimit) {
    char* exact = static_cast<char*>(malloc(3));
    memcpy(exact, "ABC", 3);
    EXPECT_EQ(6, _BuildIOIString(nullptr, exact, 3));
    EXPECT_EQ(4, _BuildIOIArray(nullptr, exact, 3) * 2) << "one element 0";
    free(exact);
}

TEST(RequestPath, ArrayReadsNoFurtherThanItsLength) {
    unsigned char buffer[16];
    EXPECT_EQ(4, _BuildIOIArray(buffer, "12,345", 4));
    EXPECT_EQ("28 0C 28 03", hexOf(bytesAt(buffer, 4)));
    EXPECT_EQ(0, _BuildIOIArray(buffer, "12", 0));
    EXPECT_EQ(0, _BuildIOIArray(buffer, "12", -1));
    EXPECT_EQ(0, _BuildIOIArray(buffer, nullptr, 4));
}

TEST(RequestPath, SegmentValues) {
    const struct {
        int32_t value;
        const char* segment;
    } rows[] = {
        {0, "28 00"},
        {255, "28 FF"},
        {256, "29 00 00 01"},
        {65535, "29 00 FF FF"},
        {65536, "2A 00 00 00 01 00"},
        {INT32_MAX, "2A 00 FF FF FF 7F"},
        {-1, "28 FF"},
        {-256, "28 00"},
        {INT32_MIN, "28 00"},
    };
    for (const auto& row : rows) {
        unsigned char buffer[6];
        const int size = _AddSegmentValue(buffer, row.value);
        EXPECT_EQ(row.segment, hexOf(bytesAt(buffer, static_cast<size_t>(size)))) << row.value;
        EXPECT_EQ(size, _AddSegmentValue(nullptr, row.value));
    }
}

}  // namespace
