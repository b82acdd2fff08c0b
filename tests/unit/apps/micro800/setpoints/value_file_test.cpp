#include "apps/micro800/setpoints/value_file.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

SavedValue saved(const char* address, const QVector<QByteArray>& elements) {
    SavedValue value;
    QString problem;
    EXPECT_TRUE(parseListedAddress({address, QString()}, &value.address, &problem));
    value.elements = elements;
    return value;
}

TEST(ValueFile, OneValueALine) {
    ValueFile file;
    file.saved = "2026-11-21T14:03:07.112Z";
    file.controller = {{"serial_number", "0x6080C0DE"}};
    file.values << saved("DINT0:COUNTER", {QByteArray::fromHex("2a000000")})
                << saved("INT0:GRID[0..1]",
                         {QByteArray::fromHex("feff"), QByteArray::fromHex("0100")})
                << saved("STRING0:NAMES[3..3]", {QByteArray("a\"b")});
    EXPECT_EQ(valueFileText(file),
              QByteArray("{\"controller\":{\"serial_number\":\"0x6080C0DE\"},"
                         "\"format\":\"micro800-values/1\",\"saved\":\"2026-11-21T14:03:07.112Z\","
                         "\"values\":[\n"
                         "{\"address\":\"DINT0:COUNTER\",\"type\":\"DINT\",\"value\":42},\n"
                         "{\"address\":\"INT0:GRID[0..1]\",\"type\":\"INT\",\"value\":[-2,1]},\n"
                         "{\"address\":\"STRING0:NAMES[3..3]\",\"type\":\"STRING\",\"value\":"
                         "[\"a\\\"b\"]}\n"
                         "]}\n"));
    ValueFile again;
    QString problem;
    ASSERT_TRUE(parseValueFile(valueFileText(file), &again, &problem)) << qPrintable(problem);
    EXPECT_EQ(valueFileText(again), valueFileText(file));
    EXPECT_EQ(again.values.at(1).elements, file.values.at(1).elements);
}

TEST(ValueFile, WithoutValues) {
    ValueFile again;
    QString problem;
    EXPECT_TRUE(parseValueFile(valueFileText(ValueFile()), &again, &problem))
        << qPrintable(problem);
    EXPECT_TRUE(again.values.isEmpty());
}

QString problemOf(const QByteArray& text) {
    ValueFile file;
    QString problem;
    EXPECT_FALSE(parseValueFile(text, &file, &problem)) << text.constData();
    return problem;
}

QString valueProblem(const QByteArray& value) {
    return problemOf(
        "{\"format\":\"micro800-values/1\",\"values\":["
        "{\"address\":\"DINT0:A\",\"type\":\"DINT\",\"value\":1}," +
        value + "]}");
}

TEST(ValueFile, WhatIsNone) {
    EXPECT_TRUE(problemOf("{").startsWith("not a value file: "));
    EXPECT_EQ(problemOf("[]"), QString("not a value file: not an object"));
    EXPECT_EQ(problemOf("{\"format\":\"micro800-values/2\",\"values\":[]}"),
              QString("not a value file: its format is \"micro800-values/2\" and not "
                      "\"micro800-values/1\""));
    EXPECT_EQ(problemOf("{\"format\":\"micro800-values/1\"}"),
              QString("not a value file: the list \"values\" is missing"));
    EXPECT_EQ(valueProblem("{\"address\":\"B\"}").left(12), QString("value 2: \"B\""));
    EXPECT_EQ(valueProblem("7").left(9), QString("value 2: "));
    EXPECT_EQ(valueProblem("{\"address\":\"INT0:B\",\"type\":\"DINT\",\"value\":1}"),
              QString("value 2: INT0:B: type \"DINT\" does not go with the prefix"));
    EXPECT_EQ(valueProblem("{\"address\":\"INT0:B\",\"type\":\"INT\",\"value\":[1]}"),
              QString("value 2: INT0:B: one value is wanted, not a list"));
    EXPECT_EQ(valueProblem("{\"address\":\"INT0:B[0..1]\",\"type\":\"INT\",\"value\":1}"),
              QString("value 2: INT0:B[0..1]: a list of values is missing"));
    EXPECT_EQ(valueProblem("{\"address\":\"INT0:B[0..1]\",\"type\":\"INT\",\"value\":[1]}"),
              QString("value 2: INT0:B[0..1]: 1 values for 2 elements"));
    EXPECT_EQ(valueProblem("{\"address\":\"INT0:B[0..1]\",\"type\":\"INT\",\"value\":[1,70000]}"),
              QString("value 2: INT0:B[0..1]: 70000 does not fit INT (-32768 to 32767)"));
    EXPECT_EQ(valueProblem("{\"address\":\"INT0:B\",\"type\":\"INT\"}"),
              QString("value 2: INT0:B: null is not a whole number"));
}

}  // namespace
