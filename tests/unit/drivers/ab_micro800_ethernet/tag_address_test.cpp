#include <gtest/gtest.h>

#include "drivers/ab_micro800_ethernet/ab_micro800_ethernet.h"

namespace {

const _LGX_Data_Type kNoType = _LGX_Data_Type(0);

TEST(TagAddress, NameStartsBehindTheFirstSymbolEnd) {
    DriverABMicro800Eth driver;
    EXPECT_EQ(-1, driver.findNamePos("COUNTER"));
    EXPECT_EQ(-1, driver.findNamePos(""));
    EXPECT_EQ(4, driver.findNamePos("DINT0:COUNTER"));
    EXPECT_EQ(3, driver.findNamePos("INT0:A0:B"));
    EXPECT_EQ(QString("A0:B"), driver.parseVarName("INT0:A0:B"));
    EXPECT_EQ(QString("COUNTER"), driver.parseVarName("0:COUNTER"));
    EXPECT_TRUE(driver.parseVarName("COUNTER").isNull());
}

TEST(TagAddress, NameIsUpperCasedAndPrefixIsNot) {
    DriverABMicro800Eth driver;
    const QString address("dint0:counter");
    EXPECT_EQ(QString("COUNTER"), driver.parseVarName(address));
    const QString prefix = driver.prefixSymbolFrom(address, driver.findNamePos(address));
    EXPECT_EQ(QString("dint0"), prefix);
    EXPECT_EQ(kNoType, driver.prefixSymbolToType(prefix));
}

struct PrefixRow {
    const char* symbol;
    int type;
    int size;
};

void PrintTo(const PrefixRow& row, std::ostream* out) {
    *out << row.symbol;
}

class TagAddressPrefix : public ::testing::TestWithParam<PrefixRow> {};

TEST_P(TagAddressPrefix, HasItsCodeAndSize) {
    DriverABMicro800Eth driver;
    EXPECT_EQ(GetParam().type, int(driver.prefixSymbolToType(GetParam().symbol)));
    EXPECT_EQ(GetParam().size, driver.prefixSymbolToDataSize(GetParam().symbol));
}

INSTANTIATE_TEST_SUITE_P(All, TagAddressPrefix,
                         ::testing::Values(PrefixRow{"USINT0", 0xC6, 1},
                                           PrefixRow{"SINT0", 0xC2, 1}, PrefixRow{"INT0", 0xC3, 2},
                                           PrefixRow{"UINT0", 0xC7, 2},
                                           PrefixRow{"UDINT0", 0xC8, 4},
                                           PrefixRow{"DINT0", 0xC4, 4}, PrefixRow{"REAL0", 0xCA, 4},
                                           PrefixRow{"LREAL0", 0xCB, 8},
                                           PrefixRow{"STRING0", 0xDA, -1},
                                           PrefixRow{"BOOL0", 0xC1, 1}, PrefixRow{"uint0", 0, 2},
                                           PrefixRow{"lReal0", 0, 8}, PrefixRow{"USINTEGER", 0, 1},
                                           PrefixRow{"WORD0", 0, -1}, PrefixRow{"", 0, -1}));

TEST(TagAddress, NumberIsRoundedUp) {
    DriverABMicro800Eth driver;
    EXPECT_EQ(2, driver.numberFrom(5, _LGX_Data_Type(0xC4)));
    EXPECT_EQ(0, driver.numberFrom(0, _LGX_Data_Type(0xC4)));
    EXPECT_EQ(1, driver.numberFrom(4, _LGX_Data_Type(0xC4)));
    EXPECT_EQ(536870912, driver.numberFrom(2147483647, _LGX_Data_Type(0xC4)));
    EXPECT_EQ(1, driver.numberFrom(82, _LGX_Data_Type(0xDA)));
    EXPECT_EQ(1, driver.numberFrom(82, kNoType));
}

TEST(TagAddress, ElementIsTakenApart) {
    DriverABMicro800Eth driver;
    ASSERT_TRUE(driver.isArray("REAL0:Levels[4]"));
    EXPECT_EQ(QString("REAL0"), driver.arrayPrefixSymbol());
    EXPECT_EQ(QString("LEVELS[4]"), driver.arrayElementName());
    EXPECT_EQ(QString("LEVELS"), driver.arrayName());
    EXPECT_EQ(QString("4"), driver.arrayIndex());
    ASSERT_TRUE(driver.isArray("INT0:GRID[2,3]"));
    EXPECT_EQ(QString("2,3"), driver.arrayIndex());
    ASSERT_TRUE(driver.isArray("INT0:CUBE[2,3,4]"));
    EXPECT_EQ(QString("2,3,4"), driver.arrayIndex());
}

TEST(TagAddress, OtherBracketsAreAPlainName) {
    DriverABMicro800Eth driver;
    for (const char* address :
         {"INT0:GRID[1,2,3,4]", "INT0:GRID[ 2]", "INT0:GRID[]", "INT0:GRID[2", "INT0:GRID[2,]"}) {
        EXPECT_FALSE(driver.isArray(address)) << address;
    }
    EXPECT_EQ(QString("GRID[1,2,3,4]"), driver.parseVarName("INT0:GRID[1,2,3,4]"));
    EXPECT_EQ(QString("GRID[ 2]"), driver.parseVarName("INT0:GRID[ 2]"));
}

TEST(TagAddress, LowerCasePrefixOfAnElementHasNoType) {
    DriverABMicro800Eth driver;
    ASSERT_TRUE(driver.isArray("real0:levels[4]"));
    EXPECT_EQ(QString("real0"), driver.arrayPrefixSymbol());
    EXPECT_EQ(kNoType, driver.prefixSymbolToType(driver.arrayPrefixSymbol()));
}

TEST(TagAddress, SecondMatcherLeavesTheFirstAlone) {
    DriverABMicro800Eth driver;
    ASSERT_TRUE(driver.isArray("REAL0:LEVELS[4]"));
    ASSERT_TRUE(driver.isArray1("int0:grid[2,3]"));
    EXPECT_EQ(QString("LEVELS[4]"), driver.arrayElementName());
    EXPECT_EQ(QString("int0"), driver.arrayPrefixSymbol1());
    EXPECT_EQ(QString("GRID[2,3]"), driver.arrayElementName1());
    EXPECT_EQ(QString("GRID"), driver.arrayName1());
}

}  // namespace
