#ifndef TESTS_MUTANTS_TOKENS_H
#define TESTS_MUTANTS_TOKENS_H

#include <QByteArray>
#include <QList>

enum class TokenKind { word, number, text, mark };

/// A piece of a C++ source.
struct Token {
    TokenKind kind;
    int offset;
    QByteArray text;
    bool blankBefore;
    bool blankBehind;  ///< a line's end is one
};

/// The tokens of a C++ source, without comments and the preprocessor's lines. Texts include
/// characters in quotes and raw strings.
QList<Token> tokensOf(const QByteArray& source);

#endif
