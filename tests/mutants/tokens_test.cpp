#include "mutants/tokens.h"

#include <gtest/gtest.h>

#include <QStringList>

namespace {

QStringList textsOf(const QByteArray& source, TokenKind kind) {
    QStringList texts;
    for (const Token& token : tokensOf(source)) {
        if (token.kind == kind) {
            texts << QString(token.text);
        }
    }
    return texts;
}

TEST(Tokens, Kinds) {
    const QByteArray source = "int a1 = 0x1F + f('\\'', \"b\\\"c\");";
    EXPECT_EQ(textsOf(source, TokenKind::word), QStringList({"int", "a1", "f"}));
    EXPECT_EQ(textsOf(source, TokenKind::number), QStringList({"0x1F"}));
    EXPECT_EQ(textsOf(source, TokenKind::text), QStringList({"'\\''", "\"b\\\"c\""}));
    EXPECT_EQ(textsOf(source, TokenKind::mark), QStringList({"=", "+", "(", ",", ")", ";"}));
}

TEST(Tokens, RawTextsAndDigitSeparators) {
    EXPECT_EQ(textsOf("R\"x(a \" b)x\" 1", TokenKind::text), QStringList({"R\"x(a \" b)x\""}));
    EXPECT_EQ(textsOf("1'000'000", TokenKind::number), QStringList({"1'000'000"}));
}

TEST(Tokens, LongMarksAreOne) {
    EXPECT_EQ(textsOf("a <<= b >>= c->*d ... e::f && g", TokenKind::mark),
              QStringList({"<<=", ">>=", "->*", "...", "::", "&&"}));
}

TEST(Tokens, CommentsAndDirectivesAreNone) {
    EXPECT_TRUE(tokensOf("// a\n/* b\n */\n#define C \\\n  d\n").isEmpty());
    EXPECT_TRUE(tokensOf("/* never closed").isEmpty());
}

TEST(Tokens, Places) {
    const QList<Token> tokens = tokensOf("a <b");
    ASSERT_EQ(tokens.size(), 3);
    EXPECT_EQ(tokens.at(1).offset, 2);
    EXPECT_TRUE(tokens.at(1).blankBefore);
    EXPECT_FALSE(tokens.at(1).blankBehind);
}

}  // namespace
