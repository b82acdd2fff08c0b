#include "apps/micro800/format/array_declaration.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

struct Refused {
    const char* text;
    const char* problemPart;
};

TEST(ArrayDeclaration, RefusesWhatTheDriverWouldNotTake) {
    const Refused rows[] = {
        {"", "an array is declared as"},
        {"DINT0:X", "an array is declared as"},
        {"DINT0:X[]", "an array is declared as"},
        {"DINT0:X[9]", "an array is declared as"},
        {"DINT0:X[0..9", "an array is declared as"},
        {"DINT0:X[0..9] ", "an array is declared as"},
        {"DINT0:X[0..9]\n", "an array is declared as"},
        {"DINT0:X[0 .. 9]", "an array is declared as"},
        {"DINT0:X[-1..9]", "an array is declared as"},
        {"DINT0:X[0..1,0..1,0..1,0..1]", "an array is declared as"},
        {"DINT0:X.Y[0..1]", "an array is declared as"},
        {"A:DINT0:X[0..1]", "an array is declared as"},
        {"dint0:X[0..9]", "unknown type prefix dint0"},
        {"WORD0:X[0..9]", "unknown type prefix WORD0"},
        {"DINT0:X[5..2]", "the range 5..2 ends below its beginning"},
        {"DINT0:X[0..9,3..2]", "the range 3..2 ends below its beginning"},
        {"DINT0:X[0..2147483648]", "a bound is at most 2147483647"},
        {"DINT0:X[0..99999999999999999999]", "a bound is at most 2147483647"},
        {"DINT0:X[0..65535]", "more than 65535 elements"},
        {"DINT0:X[0..255,0..256]", "more than 65535 elements"},
        // A product far beyond 64 bits.
        {"DINT0:X[0..2147483647,0..2147483647,0..2147483647]", "more than 65535 elements"},
    };
    for (const Refused& row : rows) {
        ArrayDeclaration declaration;
        QString problem;
        EXPECT_FALSE(parseArrayDeclaration(row.text, &declaration, &problem)) << row.text;
        EXPECT_TRUE(problem.startsWith(QString(row.text) + ": ")) << qPrintable(problem);
        EXPECT_TRUE(problem.contains(row.problemPart)) << row.text << ": " << qPrintable(problem);
    }
}

TEST(ArrayDeclaration, TakesNameAndBounds) {
    ArrayDeclaration declaration;
    QString problem;
    ASSERT_TRUE(parseArrayDeclaration("DINT0:Recipe[1..3,0..4]", &declaration, &problem));
    EXPECT_EQ(declaration.text, QString("DINT0:Recipe[1..3,0..4]"));
    EXPECT_EQ(declaration.name, QString("RECIPE"));
    ASSERT_EQ(declaration.ranges.size(), 2);
    EXPECT_EQ(declaration.ranges.at(0).lower, 1);
    EXPECT_EQ(declaration.ranges.at(0).upper, 3);
    EXPECT_EQ(declaration.ranges.at(1).upper, 4);
    EXPECT_EQ(declaration.size(), 15);
}

TEST(ArrayDeclaration, Sizes) {
    ArrayDeclaration declaration;
    QString problem;
    ASSERT_TRUE(parseArrayDeclaration("INT0:X[7..7]", &declaration, &problem));
    EXPECT_EQ(declaration.size(), 1);
    ASSERT_TRUE(parseArrayDeclaration("INT0:X[1..65535]", &declaration, &problem));
    EXPECT_EQ(declaration.size(), 65535);
    ASSERT_TRUE(parseArrayDeclaration("STRING0:X[0..1,0..2,0..3]", &declaration, &problem));
    EXPECT_EQ(declaration.size(), 24);
    ASSERT_TRUE(parseArrayDeclaration("INT0:X[2147483647..2147483647]", &declaration, &problem));
    EXPECT_EQ(declaration.size(), 1);
}

TEST(DeclaredArrayName, IsTheDriversKey) {
    EXPECT_EQ(declaredArrayName("DINT0:Recipe[0..9]"), QString("RECIPE"));
    EXPECT_EQ(declaredArrayName("dint0:arr[1..3,0..4]"), QString("ARR"));
    EXPECT_EQ(declaredArrayName("DINT0:COUNTER"), QString());
    EXPECT_EQ(declaredArrayName(""), QString());
}

TEST(ArrayDeclaration, RequestsOfAPollingPass) {
    const struct {
        const char* text;
        int requests;
    } rows[] = {{"DINT0:A[0..123]", 1}, {"DINT0:A[0..124]", 2},       {"BOOL0:A[0..495]", 1},
                {"BOOL0:A[0..496]", 2}, {"LREAL0:A[0..61]", 1},       {"LREAL0:A[0..62]", 2},
                {"DINT0:A[0..999]", 9}, {"LREAL0:A[0..65534]", 1058}, {"STRING0:A[0..999]", 1}};
    for (const auto& row : rows) {
        ArrayDeclaration declaration;
        QString problem;
        ASSERT_TRUE(parseArrayDeclaration(row.text, &declaration, &problem)) << row.text;
        EXPECT_EQ(declaration.requests(), row.requests) << row.text;
    }
}

}  // namespace
