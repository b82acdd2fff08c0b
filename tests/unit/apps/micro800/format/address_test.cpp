#include "apps/micro800/format/address.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/parsed_address.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

struct Refused {
    const char* text;
    const char* problem;
};

void PrintTo(const Refused& row, std::ostream* out) {
    *out << row.text;
}

class RefusedAddress : public testing::TestWithParam<Refused> {};

TEST_P(RefusedAddress, SaysWhy) {
    TagAddress address;
    QString problem;
    EXPECT_FALSE(parseTagAddress(QString::fromUtf8(GetParam().text), &address, &problem));
    EXPECT_EQ(problem, QString::fromUtf8(GetParam().problem));
}

INSTANTIATE_TEST_SUITE_P(
    Address, RefusedAddress,
    testing::Values(
        Refused{"",
                "\"\": no type prefix; an address reads PREFIX:NAME, for example DINT0:COUNTER"},
        Refused{"COUNTER",
                "\"COUNTER\": no type prefix; an address reads PREFIX:NAME, for example "
                "DINT0:COUNTER"},
        Refused{"DINT:X",
                "\"DINT:X\": no type prefix; an address reads PREFIX:NAME, for example "
                "DINT0:COUNTER"},
        Refused{"dint0:X", "dint0:X: the type prefix is written in upper case: DINT0:X"},
        Refused{"WORD0:X",
                "WORD0:X: unknown type prefix WORD0 (known: BOOL0, SINT0, USINT0, INT0, UINT0, "
                "DINT0, UDINT0, REAL0, LREAL0, STRING0)"},
        // The first "0:" decides.
        Refused{"A0:DINT0:X",
                "A0:DINT0:X: unknown type prefix A0 (known: BOOL0, SINT0, USINT0, INT0, UINT0, "
                "DINT0, UDINT0, REAL0, LREAL0, STRING0)"},
        Refused{"DINT0:", "DINT0:: no tag name after the prefix"},
        Refused{"DINT0:  ", "DINT0:  : no tag name after the prefix"},
        Refused{"DINT0:A\tB",
                "\"DINT0:A\\u0009B\": an address contains printable ASCII characters only"},
        Refused{"DINT0:A\n",
                "\"DINT0:A\\u000a\": an address contains printable ASCII characters only"},
        Refused{"DINT0:Z\xc3\xa4hler",
                "\"DINT0:Z\xc3\xa4hler\": an address contains printable ASCII characters only"},
        // The driver finds its pattern anywhere in the text and would access something else.
        Refused{"DINT0:M[2].SPEED",
                "DINT0:M[2].SPEED: the driver would access M[2] and ignore the rest"},
        Refused{"INT0:DINT0:X[1]",
                "INT0:DINT0:X[1]: the driver would access X[1] and ignore the rest"},
        Refused{"DINT0:X[1][2]", "DINT0:X[1][2]: the driver would access X[1] and ignore the rest"},
        // The path would name an element that nobody meant.
        Refused{"DINT0:ARR[-1]",
                "DINT0:ARR[-1]: brackets contain one to three indexes, whole numbers "
                "from 0 on with commas between, as in GRID[2,3]"},
        Refused{"DINT0:ARR[i]",
                "DINT0:ARR[i]: brackets contain one to three indexes, whole numbers "
                "from 0 on with commas between, as in GRID[2,3]"},
        Refused{"DINT0:ARR[1.5]",
                "DINT0:ARR[1.5]: brackets contain one to three indexes, whole numbers "
                "from 0 on with commas between, as in GRID[2,3]"},
        Refused{"DINT0:ARR[1",
                "DINT0:ARR[1: brackets contain one to three indexes, whole numbers "
                "from 0 on with commas between, as in GRID[2,3]"},
        Refused{"DINT0:ARR1]",
                "DINT0:ARR1]: brackets contain one to three indexes, whole numbers "
                "from 0 on with commas between, as in GRID[2,3]"},
        Refused{"DINT0:ARR[]",
                "DINT0:ARR[]: brackets contain one to three indexes, whole numbers "
                "from 0 on with commas between, as in GRID[2,3]"},
        Refused{"DINT0:ARR[1,]",
                "DINT0:ARR[1,]: brackets contain one to three indexes, whole numbers "
                "from 0 on with commas between, as in GRID[2,3]"},
        Refused{"DINT0:ARR[[1]]",
                "DINT0:ARR[[1]]: brackets contain one to three indexes, whole numbers "
                "from 0 on with commas between, as in GRID[2,3]"},
        // An index that the driver would read as 0.
        Refused{"DINT0:X[2147483648]", "DINT0:X[2147483648]: an index is at most 2147483647"},
        Refused{"DINT0:X[0,99999999999]",
                "DINT0:X[0,99999999999]: an index is at most 2147483647"}));

TEST(Address, PlainTag) {
    const TagAddress address = parsed("DINT0:Counter");
    EXPECT_EQ(address.text, QString("DINT0:Counter"));
    EXPECT_STREQ(address.type->name, "DINT");
    EXPECT_EQ(address.name, QString("Counter"));
    EXPECT_FALSE(address.isElement);
}

TEST(Address, ElementsOfOneToThreeDimensions) {
    EXPECT_TRUE(parsed("REAL0:LEVELS[4]").isElement);
    EXPECT_TRUE(parsed("INT0:GRID[2,3]").isElement);
    EXPECT_TRUE(parsed("INT0:CUBE[1,2,2147483647]").isElement);
    EXPECT_EQ(parsed("INT0:GRID[2,3]").name, QString("GRID[2,3]"));
}

TEST(Address, WhatTheDriverTakesForAPlainTag) {
    EXPECT_FALSE(parsed("INT0:GRID[1,2,3,4]").isElement);
    EXPECT_FALSE(parsed("INT0:GRID[ 2]").isElement);
    EXPECT_EQ(parsed("INT0:A0:B").name, QString("A0:B"));
    EXPECT_FALSE(parsed("DINT0:PUMP.SPEEDS[2]").isElement);
}

struct CommandRow {
    const char* address;
    int count;
    int kind;
    unsigned units;
    int bytes;
};

TEST(CommandFor, KindAndCountFollowFromTypeAndCount) {
    const CommandRow rows[] = {
        {"BOOL0:X", 1, kUnitBit, 1, 1},
        {"BOOL0:X[0]", 9, kUnitByte, 9, 9},
        {"SINT0:X", 1, kUnitByte, 1, 1},
        {"USINT0:X[1]", 3, kUnitByte, 3, 3},
        {"INT0:X", 1, kUnitWord, 1, 2},
        {"UINT0:X[1,2]", 4, kUnitWord, 4, 8},
        {"DINT0:X", 1, kUnitDoubleWord, 1, 4},
        {"UDINT0:X[5]", 2, kUnitDoubleWord, 2, 8},
        {"REAL0:X[0]", 5, kUnitDoubleWord, 5, 20},
        {"LREAL0:X", 1, kUnitQuadWord, 1, 8},
        {"STRING0:X", 1, kUnitBlock, 255, 255},
        {"STRING0:X[3]", 1, kUnitBlock, 255, 255},
    };
    for (const CommandRow& row : rows) {
        CommunicatorCommand command;
        QString problem;
        ASSERT_TRUE(commandFor(parsed(row.address), row.count, &command, &problem)) << row.address;
        EXPECT_EQ(command.unitKind, row.kind) << row.address;
        EXPECT_EQ(command.unitCount, row.units) << row.address;
        EXPECT_EQ(command.getDataSize(), row.bytes) << row.address;
        EXPECT_EQ(command.address, QString(row.address));
    }
}

TEST(CommandFor, APlainTagIsOneElement) {
    CommunicatorCommand command;
    QString problem;
    EXPECT_FALSE(commandFor(parsed("DINT0:X"), 3, &command, &problem));
    EXPECT_EQ(problem, QString("DINT0:X: a plain tag is always one element; for 3 elements of an "
                               "array write its first one, as in 'DINT0:X[0]'"));
}

TEST(CommandFor, StringsGoOneAtATime) {
    CommunicatorCommand command;
    QString problem;
    EXPECT_FALSE(commandFor(parsed("STRING0:X[0]"), 2, &command, &problem));
    EXPECT_EQ(problem, QString("STRING0:X[0]: STRING elements are accessed one at a time; name "
                               "each of them"));
}

}  // namespace
