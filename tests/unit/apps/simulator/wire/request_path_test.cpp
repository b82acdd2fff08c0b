#include "apps/simulator/wire/request_path.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

TEST(RequestPath, NamesTags) {
    const struct {
        const char* bytes;
        const char* text;
    } rows[] = {
        {"91 07 43 6F 75 6E 74 65 72 00", "COUNTER"},
        {"91 02 41 42", "AB"},
        {"91 03 41 72 72 00 28 03 29 00 2C 01", "ARR[3,300]"},
        {"91 01 41 00 28 01 28 02 28 03", "A[1,2,3]"},
        {"91 03 55 64 74 00 91 06 4D 65 6D 62 65 72 2A 00 70 11 01 00", "UDT.MEMBER[70000]"},
        {"91 01 41 00 28 01 91 01 42 00", "A[1].B"},
        {"91 01 41 00 2A 00 FF FF FF FF", "A[4294967295]"},
    };
    for (const auto& row : rows) {
        sim::RequestPath path;
        EXPECT_TRUE(parseRequestPath(hex(row.bytes), &path)) << row.bytes;
        EXPECT_TRUE(path.isSymbolic());
        EXPECT_EQ(row.text, path.text());
    }
}

TEST(RequestPath, SeparatesTheLastIndicesFromTheName) {
    sim::RequestPath path;
    ASSERT_TRUE(parseRequestPath(hex("91 01 41 00 28 01 91 01 62 00 28 05 28 06"), &path));
    EXPECT_EQ("A[1].B", path.name);
    EXPECT_EQ((std::vector<uint32_t>{5, 6}), path.indices);
}

TEST(RequestPath, NamesObjects) {
    sim::RequestPath path;
    ASSERT_TRUE(parseRequestPath(hex("91 01 41 00 28 01"), &path));
    ASSERT_TRUE(parseRequestPath(hex("20 06 24 01"), &path));
    EXPECT_FALSE(path.isSymbolic());
    EXPECT_TRUE(path.indices.empty());
    EXPECT_EQ(6u, path.classId);
    EXPECT_EQ(1u, path.instanceId);
    ASSERT_TRUE(parseRequestPath(hex("21 00 34 12 25 00 02 01"), &path));
    EXPECT_EQ(0x1234u, path.classId);
    EXPECT_EQ(0x0102u, path.instanceId);
    EXPECT_EQ(0u, path.attributeId);
    ASSERT_TRUE(parseRequestPath(hex("20 6B 26 00 04 03 02 01"), &path));
    EXPECT_EQ(0x01020304u, path.instanceId);
    ASSERT_TRUE(parseRequestPath(hex("20 01 24 01 30 07"), &path));
    EXPECT_EQ(7u, path.attributeId);
    ASSERT_TRUE(parseRequestPath(hex("20 01 24 01 31 00 02 01"), &path));
    EXPECT_EQ(0x0102u, path.attributeId);
}

TEST(RequestPath, RefusesAnythingElse) {
    const char* const rows[] = {
        "",
        "91",
        "91 00",
        "91 05 41 42 43 44",        // a character short
        "91 01 41",                 // no pad
        "91 03 41 42 43",           // no pad
        "28 01",                    // an element of nothing
        "91 01 41 00 28",           // no value
        "91 01 41 00 29 00 01",     // half a value
        "91 01 41 00 29 01 01 00",  // pad not 0
        "91 01 41 00 2A 00 01 00 00",
        "91 01 41 00 2B 00 01 00",
        "91 01 41 00 20 06",  // a class after a name
        "20 06 91 01 41 00",  // a name after a class
        "24 01",
        "20 06 24 01 24 01",
        "20 06 20 06",
        "30 01",  // an attribute of nothing
        "91 01 41 00 30 01",
        "20 01 24 01 30 07 30 07",
        "20 01 30 07 24 01",  // an instance after an attribute
        "20 01 24 01 31 00 07",
        "20",
        "21 00 06",
        "00 00",
        "01 00 20 02 24 01",  // a port segment
    };
    for (const char* row : rows) {
        sim::RequestPath path;
        EXPECT_FALSE(parseRequestPath(hex(row), &path)) << row;
    }
}

}  // namespace
