#include "apps/simulator/values/value_type.h"

#include <gtest/gtest.h>

#include "unit/apps/simulator/hex.h"

namespace {

using sim::Bytes;
using sim::findType;
using sim::ValueType;

TEST(ValueType, CodesAndSizes) {
    const struct {
        const char* name;
        uint16_t code;
        size_t size;
    } rows[] = {
        {"BOOL", 0xC1, 1},  {"SINT", 0xC2, 1},  {"INT", 0xC3, 2},    {"DINT", 0xC4, 4},
        {"USINT", 0xC6, 1}, {"UINT", 0xC7, 2},  {"UDINT", 0xC8, 4},  {"REAL", 0xCA, 4},
        {"LREAL", 0xCB, 8}, {"DWORD", 0xD3, 4}, {"STRING", 0xDA, 0},
    };
    for (const auto& row : rows) {
        const ValueType* type = findType(QString(row.name));
        ASSERT_TRUE(type) << row.name;
        EXPECT_EQ(row.code, type->code) << row.name;
        EXPECT_EQ(row.size, type->size) << row.name;
        EXPECT_EQ(type, findType(row.code)) << row.name;
        EXPECT_EQ(type, findType(QString(row.name).toLower())) << row.name;
    }
    EXPECT_FALSE(findType(QString("WORD")));
    EXPECT_FALSE(findType(QString()));
    EXPECT_FALSE(findType(uint16_t(0xC5)));
    EXPECT_EQ("BOOL, SINT, INT, DINT, USINT, UINT, UDINT, REAL, LREAL, DWORD, STRING",
              sim::typeNames().toStdString());
}

TEST(ParseValue, GivesLittleEndianBytesAndBack) {
    const struct {
        const char* type;
        const char* text;
        const char* bytes;
        const char* back;
    } rows[] = {
        {"BOOL", "1", "01", "1"},
        {"BOOL", "True", "01", "1"},
        {"BOOL", "false", "00", "0"},
        {"SINT", "-128", "80", "-128"},
        {"SINT", "127", "7f", "127"},
        {"SINT", "0xFF", "ff", "-1"},
        {"USINT", "255", "ff", "255"},
        {"INT", "-1234", "2efb", "-1234"},
        {"UINT", "50000", "50c3", "50000"},
        {"DINT", "-2147483648", "00000080", "-2147483648"},
        {"DINT", "0x12345678", "78563412", "305419896"},
        {"UDINT", "4000000000", "00286bee", "4000000000"},
        {"DWORD", "0xDEADBEEF", "efbeadde", "3735928559"},
        {"REAL", "21.5", "0000ac41", "21.5"},
        {"REAL", "-1e3", "00007ac4", "-1000"},
        {"LREAL", "-2", "00000000000000c0", "-2"},
        {"LREAL", "3.14159265358979", "112d4454fb210940", "3.1415926535897900"},
    };
    for (const auto& row : rows) {
        const ValueType* type = findType(QString(row.type));
        Bytes out = hex("EE");
        QString problem;
        EXPECT_TRUE(parseValue(*type, row.text, &out, &problem))
            << row.text << problem.toStdString();
        EXPECT_EQ(std::string("ee") + row.bytes, hexOf(out)) << row.type << ' ' << row.text;
        if (out.size() == 1 + type->size) {
            EXPECT_EQ(QString(row.back).toDouble(),
                      sim::valueText(*type, out.data() + 1).toDouble());
        }
    }
}

TEST(ParseValue, RefusesWhatTheTypeCannotHold) {
    const struct {
        const char* type;
        const char* text;
        const char* problem;
    } rows[] = {
        {"BOOL", "2", "'2' is no BOOL (0, 1, false, true)"},
        {"BOOL", "maybe", "'maybe' is no BOOL (0, 1, false, true)"},
        {"SINT", "128", "'128' is no SINT (-128..127)"},
        {"SINT", "0x100", "'0x100' is no SINT (-128..127)"},
        {"USINT", "-1", "'-1' is no USINT (0..255)"},
        {"INT", "32768", "'32768' is no INT (-32768..32767)"},
        {"UINT", "65536", "'65536' is no UINT (0..65535)"},
        {"DINT", "5000000000", "'5000000000' is no DINT (-2147483648..2147483647)"},
        {"DINT", "1.5", "'1.5' is no DINT (-2147483648..2147483647)"},
        {"DINT", "", "'' is no DINT (-2147483648..2147483647)"},
        {"UDINT", "4294967296", "'4294967296' is no UDINT (0..4294967295)"},
        {"DWORD", "99999999999999999999", "'99999999999999999999' is no DWORD (0..4294967295)"},
        {"REAL", "1e39", "'1e39' is no REAL"},
        {"LREAL", "x", "'x' is no LREAL"},
        {"STRING", "1", "a STRING is no number"},
    };
    for (const auto& row : rows) {
        Bytes out;
        QString problem;
        EXPECT_FALSE(parseValue(*findType(QString(row.type)), row.text, &out, &problem))
            << row.text;
        EXPECT_EQ(row.problem, problem.toStdString());
    }
}

TEST(ParseString, TakesOneByteACharacterAndAtMost255) {
    std::string out;
    QString problem;
    EXPECT_TRUE(sim::parseString(QString::fromUtf8("20 \xC2\xB0"), &out, &problem));
    EXPECT_EQ("20 \xB0", out);
    EXPECT_TRUE(sim::parseString(QString(255, 'x'), &out, &problem));
    EXPECT_EQ(255u, out.size());
    EXPECT_FALSE(sim::parseString(QString(256, 'x'), &out, &problem));
    EXPECT_EQ("a STRING has at most 255 characters, this one 256", problem.toStdString());
    EXPECT_FALSE(sim::parseString(QString(QChar(0x20AC)), &out, &problem));
}

TEST(CountUp, AddsOneAndWraps) {
    const struct {
        const char* type;
        const char* before;
        const char* after;
    } rows[] = {
        {"SINT", "7f", "80"},
        {"USINT", "ff", "00"},
        {"INT", "ff00", "0001"},
        {"DINT", "ffffffff", "00000000"},
        {"DWORD", "ffffff00", "00000001"},
        {"REAL", "0000803f", "00000040"},
        {"LREAL", "000000000000f03f", "0000000000000040"},
        {"BOOL", "00", "00"},
    };
    for (const auto& row : rows) {
        Bytes bytes = hex(row.before);
        countUp(*findType(QString(row.type)), bytes.data());
        EXPECT_EQ(row.after, hexOf(bytes)) << row.type;
    }
}

TEST(WholeNumber, IsTheIntegerPart) {
    EXPECT_EQ(0xFFFFFFFFu, wholeNumber(*findType(QString("DINT")), hex("FFFFFFFF").data()));
    EXPECT_EQ(0x80u, wholeNumber(*findType(QString("SINT")), hex("80").data()));
    EXPECT_EQ(21u, wholeNumber(*findType(QString("REAL")), hex("0000AC41").data()));
    EXPECT_EQ(0u, wholeNumber(*findType(QString("REAL")), hex("00007AC4").data()));
    EXPECT_EQ(0u, wholeNumber(*findType(QString("REAL")), hex("0000C07F").data()));  // NaN
    EXPECT_EQ(0u, wholeNumber(*findType(QString("LREAL")), hex("000000000000F042").data()));
}

TEST(PutNumber, WritesEveryNumericType) {
    const struct {
        const char* type;
        uint32_t value;
        const char* bytes;
    } rows[] = {
        {"SINT", 0x1234, "34"},
        {"UINT", 0x12345678, "7856"},
        {"DINT", 0x12345678, "78563412"},
        {"REAL", 3, "00004040"},
        {"LREAL", 4294967295u, "0000e0ffffffef41"},
    };
    for (const auto& row : rows) {
        Bytes out;
        putNumber(*findType(QString(row.type)), row.value, &out);
        EXPECT_EQ(row.bytes, hexOf(out)) << row.type;
    }
}

}  // namespace
