#include "apps/micro800/format/value_format.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>
#include <limits>

#include "unit/apps/micro800/qt_printers.h"

namespace {

const TagType& typeOf(const char* prefix) {
    return *tagTypeByPrefix(QLatin1String(prefix));
}

QByteArray fromHex(const char* hex) {
    return QByteArray::fromHex(hex);
}

struct Row {
    const char* prefix;
    const char* hex;
    const char* text;
};

void PrintTo(const Row& row, std::ostream* out) {
    *out << row.prefix << " " << row.text;
}

std::string rowName(const testing::TestParamInfo<Row>& info) {
    return std::string(info.param.prefix) + "_" + std::to_string(info.index);
}

// ---- both ways ----------------------------------------------------------------------------

class BothWays : public testing::TestWithParam<Row> {};

TEST_P(BothWays, BytesGiveTheText) {
    const Row& row = GetParam();
    EXPECT_EQ(valueText(typeOf(row.prefix), fromHex(row.hex), 1), QString(row.text));
}

TEST_P(BothWays, TheTextGivesTheBytes) {
    const Row& row = GetParam();
    QByteArray bytes;
    QString problem;
    ASSERT_TRUE(appendValue(typeOf(row.prefix), row.text, &bytes, &problem)) << qPrintable(problem);
    EXPECT_EQ(bytes, fromHex(row.hex));
}

INSTANTIATE_TEST_SUITE_P(
    ValueFormat, BothWays,
    testing::Values(
        Row{"BOOL0", "00", "false"}, Row{"BOOL0", "01", "true"}, Row{"SINT0", "80", "-128"},
        Row{"SINT0", "7f", "127"}, Row{"SINT0", "ff", "-1"}, Row{"USINT0", "00", "0"},
        Row{"USINT0", "ff", "255"}, Row{"INT0", "0080", "-32768"}, Row{"INT0", "ff7f", "32767"},
        Row{"INT0", "0102", "513"}, Row{"UINT0", "ffff", "65535"}, Row{"UINT0", "0102", "513"},
        Row{"DINT0", "00000080", "-2147483648"}, Row{"DINT0", "ffffff7f", "2147483647"},
        Row{"DINT0", "01020304", "67305985"}, Row{"UDINT0", "ffffffff", "4294967295"},
        Row{"UDINT0", "00000080", "2147483648"},
        // 0.1 has no exact REAL: the text is the shortest that gives the same bits again.
        Row{"REAL0", "cdcccc3d", "0.1"}, Row{"REAL0", "0000c03f", "1.5"},
        Row{"REAL0", "00000000", "0"}, Row{"REAL0", "00000080", "-0"},
        Row{"REAL0", "0000ac41", "21.5"}, Row{"REAL0", "0024744a", "4000000"},
        Row{"REAL0", "ffff7f7f", "3.4028235e+38"}, Row{"REAL0", "01000000", "1e-45"},
        Row{"REAL0", "0000804b", "16777216"}, Row{"REAL0", "17b7d138", "0.0001"},
        Row{"LREAL0", "9a9999999999b93f", "0.1"},
        Row{"LREAL0", "182d4454fb210940", "3.141592653589793"},
        Row{"LREAL0", "ffffffffffffef7f", "1.7976931348623157e+308"},
        Row{"LREAL0", "0100000000000000", "5e-324"}, Row{"LREAL0", "000000000000f0bf", "-1"},
        Row{"LREAL0", "0000901ec4bcc642", "50000000000000"}),
    rowName);

// ---- bytes to text --------------------------------------------------------------------------

TEST(ValueText, AnyByteButZeroIsTrue) {
    EXPECT_EQ(valueText(typeOf("BOOL0"), fromHex("ff"), 1), QString("true"));
    EXPECT_EQ(valueText(typeOf("BOOL0"), fromHex("80"), 1), QString("true"));
}

TEST(ValueText, NotANumberAndInfinities) {
    EXPECT_EQ(valueText(typeOf("REAL0"), fromHex("0000807f"), 1), QString("inf"));
    EXPECT_EQ(valueText(typeOf("REAL0"), fromHex("000080ff"), 1), QString("-inf"));
    EXPECT_EQ(valueText(typeOf("REAL0"), fromHex("0000c07f"), 1), QString("nan"));
    EXPECT_EQ(valueText(typeOf("REAL0"), fromHex("0000c0ff"), 1), QString("nan"));
    EXPECT_EQ(valueText(typeOf("LREAL0"), fromHex("000000000000f07f"), 1), QString("inf"));
    EXPECT_EQ(valueText(typeOf("LREAL0"), fromHex("000000000000f8ff"), 1), QString("nan"));
}

TEST(ValueText, ElementsStandSideBySide) {
    EXPECT_EQ(valueText(typeOf("INT0"), fromHex("0100ffff0300"), 3), QString("1 -1 3"));
    EXPECT_EQ(valueText(typeOf("BOOL0"), fromHex("0100ff"), 3), QString("true false true"));
}

TEST(ValueText, TooFewBytesGiveNothing) {
    EXPECT_EQ(valueText(typeOf("DINT0"), fromHex("010203"), 1), QString());
    EXPECT_EQ(valueText(typeOf("INT0"), fromHex("010203"), 2), QString());
    EXPECT_EQ(valueText(typeOf("LREAL0"), QByteArray(), 1), QString());
    EXPECT_EQ(valueText(typeOf("DINT0"), fromHex("01020304"), 0), QString());
    // A product that would not fit 32 bits.
    EXPECT_EQ(valueText(typeOf("LREAL0"), fromHex("0102030405060708"), 0x20000001), QString());
}

TEST(ValueText, AStringEndsWhereItsPaddingBegins) {
    QByteArray padded("Mixer 3");
    padded.append(QByteArray(255 - padded.size(), '\0'));
    EXPECT_EQ(valueText(typeOf("STRING0"), padded, 1), QString("\"Mixer 3\""));
    EXPECT_EQ(valueText(typeOf("STRING0"), QByteArray(255, '\0'), 1), QString("\"\""));
    EXPECT_EQ(valueText(typeOf("STRING0"), QByteArray(255, 'x'), 1).size(), 257);
    // A zero byte inside is the string's own.
    EXPECT_EQ(valueText(typeOf("STRING0"), QByteArray("a\0b\0\0", 5), 1), QString("\"a\\x00b\""));
}

TEST(QuotedString, EscapesWhatATerminalWouldObey) {
    EXPECT_EQ(quotedString("say \"no\""), QString("\"say \\\"no\\\"\""));
    EXPECT_EQ(quotedString("C:\\x"), QString("\"C:\\\\x\""));
    EXPECT_EQ(quotedString("a\nb\rc\td"), QString("\"a\\nb\\rc\\td\""));
    EXPECT_EQ(quotedString("\x1b[31m"), QString("\"\\x1b[31m\""));
    EXPECT_EQ(quotedString("\x7f\x9b"), QString("\"\\x7f\\x9b\""));
    EXPECT_EQ(quotedString("gr\xfc\xdf"), QString::fromUtf8("\"gr\xc3\xbc\xc3\x9f\""));
}

// ---- bytes to JSON ----------------------------------------------------------------------------

QByteArray jsonText(const char* prefix, const char* hex, int count) {
    return QJsonDocument(QJsonArray{valueJson(typeOf(prefix), fromHex(hex), count)})
        .toJson(QJsonDocument::Compact);
}

TEST(ValueJson, NumbersBooleansAndStrings) {
    EXPECT_EQ(jsonText("DINT0", "ffffffff", 1), QByteArray("[-1]"));
    EXPECT_EQ(jsonText("UDINT0", "ffffffff", 1), QByteArray("[4294967295]"));
    EXPECT_EQ(jsonText("BOOL0", "ff", 1), QByteArray("[true]"));
    EXPECT_EQ(jsonText("REAL0", "cdcccc3d", 1), QByteArray("[0.1]"));
    EXPECT_EQ(jsonText("LREAL0", "182d4454fb210940", 1), QByteArray("[3.141592653589793]"));
    EXPECT_EQ(jsonText("STRING0", "4f6b220a0000", 1), QByteArray("[\"Ok\\\"\\n\"]"));
}

TEST(ValueJson, AStringKeepsAllThatIsBehindAZeroByte) {
    EXPECT_EQ(jsonText("STRING0", "4142004344", 1), QByteArray("[\"AB\\u0000CD\"]"));
}

TEST(ValueJson, SeveralElementsAreAnArray) {
    EXPECT_EQ(jsonText("INT0", "01000200ffff", 3), QByteArray("[[1,2,-1]]"));
}

TEST(ValueJson, WhatJsonHasNoNumberForIsAString) {
    EXPECT_EQ(jsonText("REAL0", "0000807f", 1), QByteArray("[\"inf\"]"));
    EXPECT_EQ(jsonText("LREAL0", "000000000000f0ff", 1), QByteArray("[\"-inf\"]"));
    EXPECT_EQ(jsonText("REAL0", "0000c07f", 1), QByteArray("[\"nan\"]"));
}

TEST(ValueJson, TooFewBytesAreNull) {
    EXPECT_TRUE(valueJson(typeOf("DINT0"), fromHex("0102"), 1).isNull());
}

// ---- text to bytes ------------------------------------------------------------------------------

struct Refused {
    const char* prefix;
    const char* text;
    const char* problem;
};

void PrintTo(const Refused& row, std::ostream* out) {
    *out << row.prefix << " " << row.text;
}

class RefusedValue : public testing::TestWithParam<Refused> {};

TEST_P(RefusedValue, SaysWhyAndLeavesTheBytes) {
    const Refused& row = GetParam();
    QByteArray bytes("kept");
    QString problem;
    EXPECT_FALSE(appendValue(typeOf(row.prefix), row.text, &bytes, &problem));
    EXPECT_EQ(problem, QString(row.problem));
    EXPECT_EQ(bytes, QByteArray("kept"));
}

INSTANTIATE_TEST_SUITE_P(
    ValueFormat, RefusedValue,
    testing::Values(
        Refused{"DINT0", "5000000000", "5000000000 does not fit DINT (-2147483648 to 2147483647)"},
        Refused{"DINT0", "2147483648", "2147483648 does not fit DINT (-2147483648 to 2147483647)"},
        Refused{"DINT0", "-2147483649",
                "-2147483649 does not fit DINT (-2147483648 to 2147483647)"},
        Refused{"DINT0", "99999999999999999999999",
                "99999999999999999999999 does not fit DINT (-2147483648 to 2147483647)"},
        Refused{"DINT0", "0xFFFFFFFF", "0xFFFFFFFF does not fit DINT (-2147483648 to 2147483647)"},
        Refused{"SINT0", "128", "128 does not fit SINT (-128 to 127)"},
        Refused{"SINT0", "-129", "-129 does not fit SINT (-128 to 127)"},
        Refused{"USINT0", "256", "256 does not fit USINT (0 to 255)"},
        Refused{"USINT0", "-1", "-1 does not fit USINT (0 to 255)"},
        Refused{"INT0", "32768", "32768 does not fit INT (-32768 to 32767)"},
        Refused{"UINT0", "65536", "65536 does not fit UINT (0 to 65535)"},
        Refused{"UDINT0", "4294967296", "4294967296 does not fit UDINT (0 to 4294967295)"},
        Refused{"UDINT0", "-1", "-1 does not fit UDINT (0 to 4294967295)"},
        Refused{"DINT0", "", " is not a whole number"},
        Refused{"DINT0", "-", "- is not a whole number"},
        Refused{"DINT0", "0x", "0x is not a whole number"},
        Refused{"DINT0", "1.5", "1.5 is not a whole number"},
        Refused{"DINT0", "1e3", "1e3 is not a whole number"},
        Refused{"DINT0", " 1", " 1 is not a whole number"},
        Refused{"DINT0", "1 ", "1  is not a whole number"},
        Refused{"DINT0", "--1", "--1 is not a whole number"},
        Refused{"DINT0", "1,000", "1,000 is not a whole number"},
        Refused{"DINT0", "\xd9\xa3", "\xd9\xa3 is not a whole number"},  // a digit, elsewhere
        Refused{"REAL0", "abc", "abc is not a number"}, Refused{"REAL0", "", " is not a number"},
        Refused{"REAL0", "1,5", "1,5 is not a number"},
        Refused{"REAL0", "0x10", "0x10 is not a number"},
        Refused{"REAL0", "+-1", "+-1 is not a number"},
        Refused{"REAL0", "3.5e38",
                "3.5e38 does not fit REAL (its magnitude is too large or too small)"},
        Refused{"REAL0", "1e-60",
                "1e-60 does not fit REAL (its magnitude is too large or too small)"},
        Refused{"LREAL0", "1e309",
                "1e309 does not fit LREAL (its magnitude is too large or too small)"},
        Refused{"REAL0", "nan", "nan is not a finite number; a REAL is only written with one"},
        Refused{"LREAL0", "-inf", "-inf is not a finite number; a LREAL is only written with one"},
        Refused{"BOOL0", "maybe", "maybe is not a BOOL (true, false, on, off, yes, no, 1 or 0)"},
        Refused{"BOOL0", "2", "2 is not a BOOL (true, false, on, off, yes, no, 1 or 0)"},
        Refused{"BOOL0", "", " is not a BOOL (true, false, on, off, yes, no, 1 or 0)"},
        Refused{"STRING0", "", "\"\" cannot be written: the driver sends no empty string"},
        Refused{"STRING0", "5 \xe2\x82\xac",
                "5 \xe2\x82\xac does not fit STRING (one byte a character, Latin-1)"}));

struct Accepted {
    const char* prefix;
    const char* text;
    const char* hex;
};

void PrintTo(const Accepted& row, std::ostream* out) {
    *out << row.prefix << " " << row.text;
}

class AcceptedValue : public testing::TestWithParam<Accepted> {};

TEST_P(AcceptedValue, GivesTheBytes) {
    const Accepted& row = GetParam();
    QByteArray bytes;
    QString problem;
    ASSERT_TRUE(appendValue(typeOf(row.prefix), row.text, &bytes, &problem)) << qPrintable(problem);
    EXPECT_EQ(bytes, fromHex(row.hex));
}

INSTANTIATE_TEST_SUITE_P(
    ValueFormat, AcceptedValue,
    testing::Values(
        Accepted{"DINT0", "0x2A", "2a000000"}, Accepted{"DINT0", "-0X10", "f0ffffff"},
        Accepted{"DINT0", "+7", "07000000"}, Accepted{"DINT0", "010", "0a000000"},
        Accepted{"DINT0", "-0", "00000000"}, Accepted{"UDINT0", "0xffffffff", "ffffffff"},
        Accepted{"BOOL0", "1", "01"}, Accepted{"BOOL0", "on", "01"}, Accepted{"BOOL0", "Yes", "01"},
        Accepted{"BOOL0", "OFF", "00"}, Accepted{"BOOL0", "no", "00"}, Accepted{"BOOL0", "0", "00"},
        Accepted{"BOOL0", "TRUE", "01"}, Accepted{"BOOL0", "False", "00"},
        Accepted{"REAL0", "-12.5", "000048c1"}, Accepted{"REAL0", "+1.5", "0000c03f"},
        Accepted{"REAL0", ".5", "0000003f"}, Accepted{"REAL0", "4E6", "0024744a"},
        // To the nearest REAL; half way goes to the even one.
        Accepted{"REAL0", "16777217", "0000804b"}, Accepted{"REAL0", "16777219", "0200804b"},
        Accepted{"LREAL0", "16777217", "0000001000007041"}, Accepted{"STRING0", "OK", "4f4b"},
        Accepted{"STRING0", " a ", "206120"}, Accepted{"STRING0", "gr\xc3\xbcn", "6772fc6e"}));

TEST(AppendValue, AStringHoldsAtMost255Characters) {
    QByteArray bytes;
    QString problem;
    EXPECT_TRUE(appendValue(typeOf("STRING0"), QString(255, 'x'), &bytes, &problem));
    EXPECT_EQ(bytes.size(), 255);
    EXPECT_FALSE(appendValue(typeOf("STRING0"), QString(256, 'x'), &bytes, &problem));
    EXPECT_EQ(problem,
              QString("xxxxxxxxxxxxxxxxxxxx... does not fit STRING (256 characters, at most 255)"));
}

TEST(AppendValue, ValuesFollowEachOther) {
    QByteArray bytes;
    QString problem;
    ASSERT_TRUE(appendValue(typeOf("INT0"), "1", &bytes, &problem));
    ASSERT_TRUE(appendValue(typeOf("INT0"), "-2", &bytes, &problem));
    EXPECT_EQ(bytes, fromHex("0100feff"));
}

TEST(AppendValue, EveryRealComesBackFromItsText) {
    const TagType& real = typeOf("REAL0");
    quint32 bits = 1;
    for (int i = 0; i < 20000; ++i) {
        bits = bits * 1664525u + 1013904223u;
        if ((bits & 0x7F800000u) == 0x7F800000u) {
            continue;  // infinity or not a number
        }
        QByteArray before;
        for (int byte = 0; byte < 4; ++byte) {
            before.append(static_cast<char>(bits >> (8 * byte)));
        }
        QByteArray after;
        QString problem;
        const QString text = valueText(real, before, 1);
        ASSERT_TRUE(appendValue(real, text, &after, &problem)) << qPrintable(problem);
        ASSERT_EQ(after, before) << qPrintable(text);
    }
}

TEST(TagType, PrefixesAreExact) {
    EXPECT_EQ(tagPrefixes().size(), 10);
    for (const QString& prefix : tagPrefixes()) {
        const TagType* type = tagTypeByPrefix(prefix);
        ASSERT_NE(type, nullptr);
        EXPECT_EQ(QString(type->name) + "0", prefix);
    }
    EXPECT_EQ(tagTypeByPrefix("dint0"), nullptr);
    EXPECT_EQ(tagTypeByPrefix("DINT"), nullptr);
    EXPECT_EQ(tagTypeByPrefix(""), nullptr);
}

TEST(HexadecimalText, WholeNumbersWithAllDigitsOfTheirType) {
    const NumberBase hex = NumberBase::kHexadecimal;
    EXPECT_EQ(valueText(typeOf("SINT0"), fromHex("80"), 1, hex), QString("0x80"));
    EXPECT_EQ(valueText(typeOf("INT0"), fromHex("feff2a00"), 2, hex), QString("0xFFFE 0x002A"));
    EXPECT_EQ(valueText(typeOf("UDINT0"), fromHex("efbeadde"), 1, hex), QString("0xDEADBEEF"));
    EXPECT_EQ(valueText(typeOf("BOOL0"), fromHex("01"), 1, hex), QString("true"));
    EXPECT_EQ(valueText(typeOf("REAL0"), fromHex("0000c03f"), 1, hex), QString("1.5"));
    EXPECT_EQ(valueJson(typeOf("INT0"), fromHex("feff"), 1, hex), QJsonValue("0xFFFE"));
    EXPECT_EQ(valueJson(typeOf("REAL0"), fromHex("0000c03f"), 1, hex), QJsonValue(1.5));
}

}  // namespace
