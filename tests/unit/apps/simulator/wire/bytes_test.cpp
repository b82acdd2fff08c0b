#include "apps/simulator/wire/bytes.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

using sim::ByteReader;
using sim::Bytes;
using sim::ByteView;

TEST(ByteReader, TakesLittleEndianFieldsInTurn) {
    const Bytes bytes = hex("01 0302 07060504 AABB");
    ByteReader reader(bytes);
    uint8_t one = 0;
    uint16_t two = 0;
    uint32_t four = 0;
    ByteView rest;
    EXPECT_TRUE(reader.take8(&one) && reader.take16(&two) && reader.take32(&four));
    EXPECT_EQ(0x01, one);
    EXPECT_EQ(0x0203, two);
    EXPECT_EQ(0x04050607u, four);
    EXPECT_EQ(2u, reader.left());
    EXPECT_TRUE(reader.take(2, &rest));
    EXPECT_EQ("aabb", hexOf(rest));
}

TEST(ByteReader, TakesNothingWhenTooLittleIsLeft) {
    const Bytes bytes = hex("0102 03");
    ByteReader reader(bytes);
    uint8_t one = 9;
    uint16_t two = 9;
    uint32_t four = 9;
    ByteView view;
    EXPECT_FALSE(reader.take32(&four));
    EXPECT_FALSE(reader.take(4, &view));
    EXPECT_FALSE(reader.skip(SIZE_MAX));
    EXPECT_EQ(3u, reader.left());
    EXPECT_TRUE(reader.skip(2));
    EXPECT_FALSE(reader.take16(&two));
    EXPECT_TRUE(reader.take8(&one));
    EXPECT_FALSE(reader.take8(&one));
    EXPECT_EQ(3, one);
    EXPECT_EQ(9, two);
    EXPECT_EQ(9u, four);
    EXPECT_TRUE(reader.rest().empty());
}

TEST(Bytes, FieldsAreAppendedLowByteFirst) {
    Bytes out;
    sim::put8(out, 0x01);
    sim::put16(out, 0x0203);
    sim::put32(out, 0x04050607);
    sim::putBytes(out, hex("AABB"));
    EXPECT_EQ("01030207060504aabb", hexOf(out));
}

TEST(Bytes, FieldsOutsideAreNeitherWrittenNorRead) {
    Bytes out = hex("000000");
    sim::set16(out, 1, 0x0203);
    sim::set16(out, 2, 0xFFFF);
    sim::set16(out, SIZE_MAX, 0xFFFF);
    sim::set32(out, 0, 0xFFFFFFFF);
    sim::set8(out, 3, 0xFF);
    EXPECT_EQ("000302", hexOf(out));
    EXPECT_EQ(0x0203, sim::get16(out, 1));
    EXPECT_EQ(0, sim::get16(out, 2));
    EXPECT_EQ(0, sim::get16(out, SIZE_MAX));
    EXPECT_EQ(0u, sim::get32(out, 0));
    EXPECT_EQ(0, sim::get8(out, 3));
    EXPECT_EQ(2, sim::get8(out, 2));
}

}  // namespace
