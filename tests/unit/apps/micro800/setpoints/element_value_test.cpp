#include "apps/micro800/setpoints/element_value.h"

#include <gtest/gtest.h>

#include <QJsonArray>
#include <QJsonDocument>

#include "unit/apps/micro800/qt_printers.h"

namespace {

const TagType& typeOf(const char* prefix) {
    return *tagTypeByPrefix(prefix);
}

QByteArray fromHex(const char* hex) {
    return QByteArray::fromHex(hex);
}

/// By way of a file: the number as text and back.
QJsonValue throughText(const QJsonValue& json) {
    return QJsonDocument::fromJson(QJsonDocument(QJsonArray{json}).toJson()).array().at(0);
}

TEST(NormalElement, EqualValuesAreEqualBytes) {
    EXPECT_EQ(normalElement(typeOf("BOOL0"), fromHex("ff")), fromHex("01"));
    EXPECT_EQ(normalElement(typeOf("BOOL0"), fromHex("00")), fromHex("00"));
    EXPECT_EQ(normalElement(typeOf("STRING0"), fromHex("610062000000")), fromHex("610062"));
    EXPECT_EQ(normalElement(typeOf("STRING0"), fromHex("0000")), QByteArray());
    EXPECT_EQ(normalElement(typeOf("REAL0"), fromHex("0100c07f")), fromHex("0000c07f"));
    EXPECT_EQ(normalElement(typeOf("LREAL0"), fromHex("010000000000f8ff")),
              fromHex("000000000000f87f"));
    EXPECT_EQ(normalElement(typeOf("REAL0"), fromHex("00000080")), fromHex("00000080"));
    EXPECT_EQ(normalElement(typeOf("INT0"), fromHex("feff")), fromHex("feff"));
}

TEST(ElementValue, TheSameBitsComeBackFromAFile) {
    const struct {
        const char* prefix;
        const char* hex;
    } rows[] = {
        {"BOOL0", "00"},
        {"BOOL0", "01"},
        {"SINT0", "80"},
        {"USINT0", "ff"},
        {"INT0", "0080"},
        {"UINT0", "ffff"},
        {"DINT0", "00000080"},
        {"UDINT0", "ffffffff"},
        {"REAL0", "cdcccc3d"},  // 0.1
        {"REAL0", "00000080"},  // -0
        {"REAL0", "01000000"},  // the smallest
        {"REAL0", "ffff7f7f"},  // the largest
        {"REAL0", "0000807f"},  // inf
        {"REAL0", "000080ff"},
        {"REAL0", "0000c07f"},  // nan
        {"REAL0", "ffff7f3f"},  // the one below 1
        {"LREAL0", "9a9999999999b93f"},
        {"LREAL0", "0000000000000080"},
        {"LREAL0", "0100000000000000"},
        {"LREAL0", "ffffffffffffef7f"},
        {"LREAL0", "000000000000f0ff"},
        {"LREAL0", "000000000000f87f"},
        {"LREAL0", "010000000000f03f"},  // the one above 1
        {"LREAL0", "ffffffffffff3f43"},  // whole and above 2^53 - 1
        {"LREAL0", "9c7500883ce4377e"},  // 1e300
        {"STRING0", ""},
        {"STRING0", "4d697865722033"},
        {"STRING0", "00011b22805cff"},
    };
    for (const auto& row : rows) {
        const TagType& type = typeOf(row.prefix);
        QByteArray element;
        QString problem;
        EXPECT_TRUE(
            elementFrom(type, throughText(elementJson(type, fromHex(row.hex))), &element, &problem))
            << row.prefix << ' ' << row.hex << ": " << qPrintable(problem);
        EXPECT_EQ(element.toHex(), QByteArray(row.hex)) << row.prefix;
    }
}

TEST(ElementValue, EveryRealOfASampleComesBack) {
    // Steps that are no power of two meet all exponents and many mantissas.
    for (quint32 bits = 0; bits < 0x7F800000u; bits += 99991) {
        const char bytes[] = {static_cast<char>(bits), static_cast<char>(bits >> 8),
                              static_cast<char>(bits >> 16), static_cast<char>(bits >> 24)};
        const QByteArray before(bytes, sizeof bytes);
        QByteArray after;
        QString problem;
        ASSERT_TRUE(
            elementFrom(typeOf("REAL0"), elementJson(typeOf("REAL0"), before), &after, &problem));
        ASSERT_EQ(after, before) << bits;
    }
}

TEST(ElementValue, WhatIsNoneOfTheType) {
    const struct {
        const char* prefix;
        QJsonValue json;
        const char* problem;
    } rows[] = {
        {"DINT0", "x", "x is not a whole number"},
        {"DINT0", 1.5, "1.5 is not a whole number"},
        {"DINT0", 5e9, "5000000000 does not fit DINT (-2147483648 to 2147483647)"},
        {"DINT0", true, "true is not a DINT"},
        {"DINT0", QJsonValue(), "null is not a whole number"},
        {"BOOL0", 1, "1 is not a BOOL"},
        {"REAL0", "x", "x is not a number"},
        {"REAL0", 1e300,
         "1.0000000000000001e+300 does not fit REAL (its magnitude is too large or "
         "too small)"},
        {"STRING0", 5, "5 is not a string"},
    };
    for (const auto& row : rows) {
        QByteArray element;
        QString problem;
        EXPECT_FALSE(elementFrom(typeOf(row.prefix), row.json, &element, &problem)) << row.problem;
        EXPECT_EQ(problem, QString(row.problem));
    }
    QByteArray element;
    QString problem;
    EXPECT_FALSE(elementFrom(typeOf("STRING0"), QString(QChar(0x20AC)), &element, &problem));
    EXPECT_FALSE(elementFrom(typeOf("STRING0"), QString(256, 'x'), &element, &problem));
}

}  // namespace
