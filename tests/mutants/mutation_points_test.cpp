#include "mutants/mutation_points.h"

#include <gtest/gtest.h>

#include <QSet>
#include <QStringList>

namespace {

/// The changes as `from>to`, in order.
QStringList changesOf(const QByteArray& text) {
    QStringList changes;
    for (const Mutation& mutation : mutationsOf("a.cpp", text)) {
        changes << QString(mutation.from + " => " + mutation.to);
    }
    return changes;
}

TEST(MutationPoints, Relations) {
    EXPECT_EQ(changesOf("x = a < b;"), QStringList({"< => <=", "< => >="}));
    EXPECT_EQ(changesOf("x = a <= b;"), QStringList({"<= => <", "<= => >"}));
    EXPECT_EQ(changesOf("x = a > b;"), QStringList({"> => >=", "> => <="}));
    EXPECT_EQ(changesOf("x = a >= b;"), QStringList({">= => >", ">= => <"}));
    EXPECT_EQ(changesOf("x = a == b;"), QStringList({"== => !="}));
    EXPECT_EQ(changesOf("x = a != b;"), QStringList({"!= => =="}));
}

TEST(MutationPoints, LogicAndArithmetic) {
    EXPECT_EQ(changesOf("x = a && b || !c;"), QStringList({"&& => ||", "|| => &&", "! => "}));
    EXPECT_EQ(changesOf("x = a + b - c * d / e % f;"),
              QStringList({"+ => -", "- => +", "* => /", "/ => *", "% => *"}));
    EXPECT_EQ(changesOf("x = a & b | c ^ d << e >> f;"),
              QStringList({"& => |", "| => &", "^ => |", "<< => >>", ">> => <<"}));
    EXPECT_EQ(
        changesOf("x += a; x -= a; x |= a; x &= a; ++x; --x;"),
        QStringList({"+= => -=", "-= => +=", "|= => &=", "&= => |=", "++ => --", "-- => ++"}));
}

TEST(MutationPoints, AnOperatorAtTheEndOfALine) {
    EXPECT_EQ(changesOf("x = a &&\n    b;"), QStringList({"&& => ||"}));
}

TEST(MutationPoints, Constants) {
    EXPECT_EQ(changesOf("x = 7;"), QStringList({"7 => 8"}));
    EXPECT_EQ(changesOf("x = 0x4C;"), QStringList({"0x4C => 0x4d"}));
    EXPECT_EQ(changesOf("x = 0xFFu;"), QStringList({"0xFFu => 0x100u"}));
    EXPECT_EQ(changesOf("x = 65'535;"), QStringList({"65'535 => 65536"}));
    EXPECT_EQ(changesOf("x = true;"), QStringList({"true => false"}));
    EXPECT_EQ(changesOf("x = false;"), QStringList({"false => true"}));
    EXPECT_EQ(changesOf("x = 1.5;"), QStringList());
}

TEST(MutationPoints, Statements) {
    EXPECT_EQ(changesOf("break;"), QStringList({"break => "}));
    EXPECT_EQ(changesOf("continue;"), QStringList({"continue => "}));
    EXPECT_EQ(changesOf("return value;"), QStringList({"value => {}"}));
    EXPECT_EQ(changesOf("return f(a, b);"), QStringList({"f(a, b) => {}"}));
    EXPECT_EQ(changesOf("return;"), QStringList());
    EXPECT_EQ(changesOf("return QByteArray();"), QStringList());
    EXPECT_EQ(changesOf("return nullptr;"), QStringList());
    EXPECT_EQ(changesOf("return {};"), QStringList());
}

TEST(MutationPoints, Conditions) {
    EXPECT_EQ(changesOf("if (ready) {"), QStringList({"(ready) => (!(ready))"}));
    EXPECT_EQ(changesOf("while (next(a)) {"), QStringList({"(next(a)) => (!(next(a)))"}));
    EXPECT_EQ(changesOf("if (!ready) {"), QStringList({"! => "}));
    EXPECT_EQ(changesOf("if (a == b) {"), QStringList({"== => !="}));
    EXPECT_EQ(changesOf("if (!a && b) {"),
              QStringList({"(!a && b) => (!(!a && b))", "! => ", "&& => ||"}));
}

TEST(MutationPoints, WhatLooksLikeAnOperator) {
    EXPECT_EQ(changesOf("const char* p = &q;"), QStringList());
    EXPECT_EQ(changesOf("void f(Value& value, Value&& other);"), QStringList());
    EXPECT_EQ(changesOf("template <typename Value>\nQList<QPair<A, B>> list;"), QStringList());
    EXPECT_EQ(changesOf("bool operator==(const A&) const;"), QStringList());
    EXPECT_EQ(changesOf("a->b = c;"), QStringList());
}

TEST(MutationPoints, NotInCommentsTextsAndDirectives) {
    EXPECT_EQ(changesOf("// a < 7\n/* a < 7 */ x = \"a < 7\" '7';\n#if A < 7\n"), QStringList());
    EXPECT_EQ(changesOf("#define A 7 \\\n    + 8\nx = 9;"), QStringList({"9 => 10"}));
}

TEST(MutationPoints, KnowsItsPlace) {
    const QByteArray text = "first;\n    x = a < b;\nlast;";
    const Mutation mutation = mutationsOf("dir/a.cpp", text).first();
    EXPECT_EQ(mutation.file, "dir/a.cpp");
    EXPECT_EQ(mutation.line, 2);
    EXPECT_EQ(mutation.where, "x = a < b;");
    EXPECT_EQ(mutation.kind, "relation");
    EXPECT_EQ(mutation.changed(), "first;\n    x = a <= b;\nlast;");
}

TEST(MutationPoints, AnIdLastsWhileItsLineDoes) {
    const Mutation before = mutationsOf("a.cpp", "x = a + b;").first();
    const Mutation after = mutationsOf("a.cpp", "int y;\n  x = a + b;").first();
    EXPECT_EQ(before.id(), after.id());
    EXPECT_EQ(before.id().size(), 8);
    EXPECT_NE(before.id(), mutationsOf("b.cpp", "x = a + b;").first().id());
    EXPECT_NE(before.id(), mutationsOf("a.cpp", "x = a + c;").first().id());
}

TEST(MutationPoints, LikeOnesHaveDifferentIds) {
    QSet<QByteArray> ids;
    for (const Mutation& mutation : mutationsOf("a.cpp", "x = 1 + 1 + 1;\nx = 1 + 1 + 1;")) {
        ids << mutation.id();
    }
    EXPECT_EQ(ids.size(), 10);
}

TEST(MutationPoints, ASampleIsPartOfTheLargerOne) {
    const QList<Mutation> few = mutationsOf("a.cpp", "a = 1;\nb = 2;\nc = 3;\nd = 4;\ne = 5;");
    const QList<Mutation> more =
        mutationsOf("a.cpp", "new;\na = 1;\nb = 2;\nc = 3;\nd = 4;\ne = 5;");
    const QList<Mutation> one = inSampleOrder(few, 1);
    const QList<Mutation> same = inSampleOrder(more, 1);
    ASSERT_EQ(one.size(), 5);
    bool otherSeedDiffers = false;
    for (int i = 0; i < one.size(); ++i) {
        EXPECT_EQ(one.at(i).id(), same.at(i).id());
        otherSeedDiffers = otherSeedDiffers || one.at(i).id() != inSampleOrder(few, 2).at(i).id();
    }
    EXPECT_TRUE(otherSeedDiffers);
}

}  // namespace
