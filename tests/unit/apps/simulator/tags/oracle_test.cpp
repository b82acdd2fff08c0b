#include "apps/simulator/tags/oracle.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

using sim::Bytes;
using sim::findType;
using sim::Tag;
using sim::TagTable;

/// The tag of this type that comes after `before` other elements.
Tag* addBehind(TagTable& table, uint32_t before, const char* type) {
    table.add(Tag("FIRST", *findType(QString("BOOL")), {{1, before}}));
    return table.add(Tag("A", *findType(QString(type)), {{0, 1}}));
}

std::string next(Tag* tag, size_t element) {
    Bytes out;
    EXPECT_TRUE(putOracleValue(*tag, element, &out));
    return hexOf(out);
}

TEST(OracleValue, HoldsOrdinalAndCounter) {
    const struct {
        const char* type;
        const char* first;
        const char* second;
        const char* other;
    } rows[] = {
        {"DINT", "01005000", "02005000", "01006000"},
        {"UDINT", "01005000", "02005000", "01006000"},
        {"DWORD", "01005000", "02005000", "01006000"},
        {"INT", "0105", "0205", "0106"},
        {"UINT", "0105", "0205", "0106"},
        {"SINT", "51", "52", "61"},
        {"USINT", "51", "52", "61"},
        {"REAL", "0002a046", "0004a046", "0002c046"},  // 20481, 20482, 24577
        {"LREAL", "0000004000005441", "0000008000005441", "0000004000005841"},  // 5242881, ...
    };
    for (const auto& row : rows) {
        TagTable table;
        Tag* tag = addBehind(table, 5, row.type);
        EXPECT_EQ(row.first, next(tag, 0)) << row.type;
        EXPECT_EQ(row.second, next(tag, 0)) << row.type;
        EXPECT_EQ(row.other, next(tag, 1)) << row.type;
    }
}

TEST(OracleValue, OfTheLastOrdinalFills32Bits) {
    TagTable table;
    Tag* tag = addBehind(table, 4094, "UDINT");
    EXPECT_EQ("0100f0ff", next(tag, 1));
}

TEST(OracleValue, CounterWraps) {
    TagTable table;
    Tag* tag = addBehind(table, 5, "DINT");
    tag->counter(0) = 0xFFFFF;
    EXPECT_EQ("ffff5f00", next(tag, 0));
    EXPECT_EQ("00005000", next(tag, 0));
}

TEST(OracleValue, BoolAndStringHaveNone) {
    for (const char* type : {"BOOL", "STRING"}) {
        TagTable table;
        Bytes out;
        EXPECT_FALSE(putOracleValue(*addBehind(table, 5, type), 0, &out));
        EXPECT_TRUE(out.empty());
    }
}

TEST(OracleWrite, SetsTheCounterOfTheElement) {
    const struct {
        const char* type;
        const char* written;
        const char* next;
    } rows[] = {
        {"DINT", "00105000", "00105000"},
        {"DINT", "001020ff", "00105000"},  // the counter part alone counts
        {"INT", "8005", "8005"},
        {"SINT", "5a", "5a"},
        {"REAL", "0028a146", "0028a146"},  // 20628
        {"LREAL", "0000000064005441", "0000000064005441"},
    };
    for (const auto& row : rows) {
        TagTable table;
        Tag* tag = addBehind(table, 5, row.type);
        const Bytes bytes = hex(row.written);
        std::copy(bytes.begin(), bytes.end(), tag->bytes(0));
        noteOracleWrite(*tag, 0);
        EXPECT_EQ(row.next, next(tag, 0)) << row.type;
        EXPECT_EQ(2u, ++tag->counter(1)) << row.type;
    }
}

}  // namespace
