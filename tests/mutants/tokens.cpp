#include "mutants/tokens.h"

#include <cctype>

namespace {

/// Longest first.
const char* const kMarks[] = {
    "<<=", ">>=", "...", "->*", "<<", ">>", "<=", ">=", "==", "!=", "&&", "||",
    "++",  "--",  "+=",  "-=",  "*=", "/=", "%=", "&=", "|=", "^=", "->", "::"};

class Lexer {
 public:
    explicit Lexer(const QByteArray& source) : source(source) {}

    QList<Token> run() {
        while (at < source.size()) {
            if (isspace(byte(at))) {
                ++at;
            } else if (starts("//")) {
                skipTo("\n", 0);
            } else if (starts("/*")) {
                skipTo("*/", 2);
            } else if (byte(at) == '#') {
                skipDirective();
            } else {
                take();
            }
        }
        return tokens;
    }

 private:
    unsigned char byte(int index) const {
        return index < source.size() ? static_cast<unsigned char>(source.at(index)) : '\0';
    }
    bool starts(const char* what) const {
        return source.mid(at, static_cast<int>(qstrlen(what))) == what;
    }
    bool isWord(int index) const { return isalnum(byte(index)) || byte(index) == '_'; }

    void skipTo(const char* end, int more) {
        const int found = source.indexOf(end, at + more);
        at = found < 0 ? source.size() : found + static_cast<int>(qstrlen(end));
    }

    void skipDirective() {
        do {
            skipTo("\n", 0);
        } while (at >= 2 && at < source.size() && source.at(at - 2) == '\\');
    }

    void take() {
        const int begin = at;
        TokenKind kind = TokenKind::mark;
        if (isdigit(byte(at))) {
            kind = TokenKind::number;
            takeNumber();
        } else if (isWord(at)) {
            kind = TokenKind::word;
            while (isWord(at)) {
                ++at;
            }
            if (byte(at) == '"' && byte(at - 1) == 'R') {
                kind = TokenKind::text;
                takeRawString();
            }
        } else if (byte(at) == '"' || byte(at) == '\'') {
            kind = TokenKind::text;
            takeQuoted();
        } else {
            takeMark();
        }
        const bool blankBefore = begin == 0 || isspace(byte(begin - 1));
        tokens << Token{kind, begin, source.mid(begin, at - begin), blankBefore,
                        isspace(byte(at)) != 0};
    }

    void takeNumber() {
        while (isWord(at) || byte(at) == '.' || (byte(at) == '\'' && isWord(at + 1))) {
            ++at;
        }
    }

    void takeRawString() {
        const int open = source.indexOf('(', at);
        const QByteArray end = ")" + source.mid(at + 1, open - at - 1) + "\"";
        skipTo(end.constData(), 1);
    }

    void takeQuoted() {
        const unsigned char quote = byte(at);
        ++at;
        while (at < source.size() && byte(at) != quote) {
            at += byte(at) == '\\' ? 2 : 1;
        }
        ++at;
    }

    void takeMark() {
        for (const char* mark : kMarks) {
            if (starts(mark)) {
                at += static_cast<int>(qstrlen(mark));
                return;
            }
        }
        ++at;
    }

    QByteArray source;
    int at = 0;
    QList<Token> tokens;
};

}  // namespace

QList<Token> tokensOf(const QByteArray& source) {
    return Lexer(source).run();
}
