#include "apps/simulator/symbol_object.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

void add(sim::TagTable& table, size_t count) {
    const sim::ValueType& dint = *sim::findType(sim::kDint);
    for (size_t i = 0; i < count; ++i) {
        table.add(sim::Tag("T" + std::to_string(table.size()), dint, {}));
    }
}

TEST(SymbolInstances, AreOneATag) {
    sim::TagTable table;
    sim::Bytes data;
    EXPECT_EQ(0x00, listSymbolInstances(table, sim::ByteView(), data).general);
    EXPECT_EQ("", hexOf(data));
    add(table, 3);
    EXPECT_EQ(0x00, listSymbolInstances(table, sim::ByteView(), data).general);
    EXPECT_EQ(hexText("01000000 02000000 03000000"), hexOf(data));
    EXPECT_EQ(0x15, listSymbolInstances(table, hex("00"), data).general);
}

TEST(SymbolInstances, StopWhereTheReplyIsFull) {
    sim::TagTable table;
    add(table, 120);
    sim::Bytes data;
    EXPECT_EQ(0x00, listSymbolInstances(table, sim::ByteView(), data).general);
    EXPECT_EQ(480u, data.size());
    add(table, 1);
    data.clear();
    EXPECT_EQ(0x06, listSymbolInstances(table, sim::ByteView(), data).general);
    EXPECT_EQ(480u, data.size());
}

}  // namespace
