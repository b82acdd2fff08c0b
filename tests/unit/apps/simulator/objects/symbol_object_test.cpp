#include "apps/simulator/objects/symbol_object.h"

#include <gtest/gtest.h>

#include "apps/simulator/tags/tag_text.h"
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
    EXPECT_EQ(0x00,
              listSymbolInstances(table, sim::SymbolList::all, sim::ByteView(), &data).general);
    EXPECT_EQ("", hexOf(data));
    add(table, 3);
    EXPECT_EQ(0x00,
              listSymbolInstances(table, sim::SymbolList::all, sim::ByteView(), &data).general);
    EXPECT_EQ(hexText("01000000 02000000 03000000"), hexOf(data));
    EXPECT_EQ(0x15, listSymbolInstances(table, sim::SymbolList::all, hex("00"), &data).general);
}

TEST(SymbolInstances, StopWhereTheReplyIsFull) {
    sim::TagTable table;
    add(table, 120);
    sim::Bytes data;
    EXPECT_EQ(0x00,
              listSymbolInstances(table, sim::SymbolList::all, sim::ByteView(), &data).general);
    EXPECT_EQ(480u, data.size());
    add(table, 1);
    data.clear();
    EXPECT_EQ(0x06,
              listSymbolInstances(table, sim::SymbolList::all, sim::ByteView(), &data).general);
    EXPECT_EQ(480u, data.size());
}

/// A controller's tags, and the symbol class's reports of them.
class SymbolAttributes : public testing::Test {
 protected:
    SymbolAttributes() {
        for (const char* tag : {"Count:DINT", "GRID:INT[0..1,0..2]", "LATE:REAL[1..4]",
                                "FLAGS:BOOL[8]", "UDT.MEMBER:SINT", "NAME:STRING", "ON:BOOL"}) {
            QString problem;
            EXPECT_TRUE(addTagFromText(tag, table, &problem)) << problem.toStdString();
        }
    }

    /// "STATUS DATA" of a request for these attributes.
    std::string list(uint32_t first, const std::string& attributes) {
        const sim::Bytes request = hex(attributes);
        sim::Bytes data;
        const sim::CipStatus status =
            getInstanceAttributeList(table, listed, first, request, room, &data);
        const sim::Bytes general = {status.general};
        return hexOf(general) + " " + hexOf(data);
    }

    static std::string row(const std::string& status, const std::string& data) {
        return status + " " + hexText(data);
    }

    sim::TagTable table;
    sim::SymbolList listed = sim::SymbolList::all;
    size_t room = 500;
};

TEST_F(SymbolAttributes, AreThoseAskedForInTheirOrder) {
    EXPECT_EQ(row("00",
                  "01000000 0500 436F756E74 C400 02000000 0400 47524944 C340"
                  "03000000 0400 4C415445 CA20 04000000 0500 464C414753 C120"
                  "05000000 0A00 5544542E4D454D424552 C200 06000000 0400 4E414D45 DA00"
                  "07000000 0200 4F4E C100"),
              list(0, "0200 0100 0200"));
    EXPECT_EQ(row("00", "06000000 DA00 0400 4E414D45 07000000 C100 0200 4F4E"),
              list(6, "0200 0200 0100"));
}

TEST_F(SymbolAttributes, TellSizesAndDimensions) {
    room = 32;
    EXPECT_EQ(row("06", "01000000 0400 00000000 00000000 00000000"), list(1, "0200 0700 0800"));
    EXPECT_EQ(row("06", "02000000 0200 02000000 03000000 00000000"), list(2, "0200 0700 0800"));
    EXPECT_EQ(row("06", "03000000 0400 04000000 00000000 00000000"), list(3, "0200 0700 0800"));
    EXPECT_EQ(row("06", "06000000 0001 00000000 00000000 00000000"), list(6, "0200 0700 0800"));
    EXPECT_EQ(row("00", "07000000 0100 00000000 00000000 00000000"), list(7, "0200 0700 0800"));
}

TEST_F(SymbolAttributes, TellAddressesControlAndAccess) {
    EXPECT_EQ(row("00", "07000000 00000000 00000000 00000004 00"),
              list(7, "0400 0300 0500 0600 0A00"));
}

TEST_F(SymbolAttributes, GoOnWhereTheLastReplyEnded) {
    room = 3 * (4 + 2) + 5;
    EXPECT_EQ(row("06", "01000000 C400 02000000 C340 03000000 CA20"), list(0, "0100 0200"));
    EXPECT_EQ(row("06", "04000000 C120 05000000 C200 06000000 DA00"), list(4, "0100 0200"));
    EXPECT_EQ(row("00", "07000000 C100"), list(7, "0100 0200"));
    EXPECT_EQ(row("00", ""), list(8, "0100 0200"));
    EXPECT_EQ(row("00", ""), list(0xFFFFFFFF, "0100 0200"));
    room = 5;
    EXPECT_EQ(row("11", ""), list(0, "0100 0200"));
}

TEST_F(SymbolAttributes, LeaveOutWhatRealOnesDo) {
    listed = sim::SymbolList::partial;
    EXPECT_EQ(row("00", "01000000 C400 02000000 C340 06000000 DA00 07000000 C100"),
              list(0, "0100 0200"));
    sim::Bytes data;
    EXPECT_EQ(0x00, listSymbolInstances(table, listed, sim::ByteView(), &data).general);
    EXPECT_EQ(hexText("01000000 02000000 06000000 07000000"), hexOf(data));
    listed = sim::SymbolList::none;
    EXPECT_EQ(row("05", ""), list(0, "0100 0200"));
    EXPECT_EQ(0x05, listSymbolInstances(table, listed, sim::ByteView(), &data).general);
}

TEST_F(SymbolAttributes, AreRefused) {
    for (const char* request : {"", "01", "0100", "0100 01", "0200 0100"}) {
        EXPECT_EQ(row("13", ""), list(0, request)) << request;
    }
    EXPECT_EQ(row("15", ""), list(0, "0100 0100 02"));
    for (const char* request : {"0100 0400", "0100 0900", "0200 0100 0B00", "0100 0000"}) {
        EXPECT_EQ(row("14", ""), list(0, request)) << request;
    }
    EXPECT_EQ(row("00", "07000000"), list(7, "0000"));
}

}  // namespace
