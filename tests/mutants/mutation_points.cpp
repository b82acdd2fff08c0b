#include "mutants/mutation_points.h"

#include <QCryptographicHash>
#include <QHash>
#include <algorithm>
#include <utility>
#include <vector>

#include "mutants/tokens.h"

namespace {

struct Change {
    const char* from;
    std::vector<const char*> to;
    const char* kind;
};

/// Operators that have blanks on both sides.
const std::vector<Change> kBinary = {
    {"<", {"<=", ">="}, "relation"}, {"<=", {"<", ">"}, "relation"},
    {">", {">=", "<="}, "relation"}, {">=", {">", "<"}, "relation"},
    {"==", {"!="}, "relation"},      {"!=", {"=="}, "relation"},
    {"&&", {"||"}, "logic"},         {"||", {"&&"}, "logic"},
    {"+", {"-"}, "arithmetic"},      {"-", {"+"}, "arithmetic"},
    {"*", {"/"}, "arithmetic"},      {"/", {"*"}, "arithmetic"},
    {"%", {"*"}, "arithmetic"},      {"&", {"|"}, "arithmetic"},
    {"|", {"&"}, "arithmetic"},      {"^", {"|"}, "arithmetic"},
    {"<<", {">>"}, "arithmetic"},    {">>", {"<<"}, "arithmetic"},
    {"+=", {"-="}, "arithmetic"},    {"-=", {"+="}, "arithmetic"},
    {"|=", {"&="}, "arithmetic"},    {"&=", {"|="}, "arithmetic"},
};

/// Finds the changes of one source.
class Finder {
 public:
    Finder(const QString& file, const QByteArray& text)
        : file(file), text(text), tokens(tokensOf(text)) {}

    QList<Mutation> find() {
        for (int i = 0; i < tokens.size(); ++i) {
            const Token& token = tokens.at(i);
            switch (token.kind) {
                case TokenKind::number:
                    number(token);
                    break;
                case TokenKind::word:
                    word(i);
                    break;
                case TokenKind::mark:
                    mark(token);
                    break;
                case TokenKind::text:
                    break;
            }
        }
        return found;
    }

 private:
    bool is(int index, const char* what) const {
        return index >= 0 && index < tokens.size() && tokens.at(index).text == what;
    }

    void add(int offset, const QByteArray& from, const QByteArray& to, const char* kind) {
        const int begin = text.lastIndexOf('\n', offset == 0 ? 0 : offset - 1) + 1;
        const int end = text.indexOf('\n', offset);
        Mutation mutation;
        mutation.file = file;
        mutation.source = text;
        mutation.line = text.left(offset).count('\n') + 1;
        mutation.offset = offset;
        mutation.from = from;
        mutation.to = to;
        mutation.kind = kind;
        mutation.where = text.mid(begin, end < 0 ? -1 : end - begin).trimmed();
        mutation.occurrence = seen[mutation.where + '\n' + from + '\n' + to]++;
        found << mutation;
    }

    /// One more than it is, written as it was.
    void number(const Token& token) {
        QByteArray digits = token.text;
        QByteArray suffix;
        while (!digits.isEmpty() && QByteArray("uUlL").contains(digits.at(digits.size() - 1))) {
            suffix.prepend(digits.at(digits.size() - 1));
            digits.chop(1);
        }
        digits.replace("'", "");
        bool ok = false;
        const quint64 value = digits.toULongLong(&ok, 0);
        if (!ok) {
            return;  // a floating-point number
        }
        const bool hexadecimal = digits.startsWith("0x") || digits.startsWith("0X");
        const QByteArray more =
            hexadecimal ? "0x" + QByteArray::number(value + 1, 16) : QByteArray::number(value + 1);
        add(token.offset, token.text, more + suffix, "constant");
    }

    void mark(const Token& token) {
        if (token.text == "++" || token.text == "--") {
            add(token.offset, token.text, token.text == "++" ? "--" : "++", "arithmetic");
        }
        if (token.text == "!") {
            add(token.offset, "!", "", "logic");
        }
        if (!token.blankBefore || !token.blankBehind) {
            return;
        }
        for (const Change& change : kBinary) {
            if (token.text == change.from) {
                for (const char* to : change.to) {
                    add(token.offset, token.text, to, change.kind);
                }
            }
        }
    }

    void word(int i) {
        const Token& token = tokens.at(i);
        if (token.text == "true" || token.text == "false") {
            add(token.offset, token.text, token.text == "true" ? "false" : "true", "constant");
        } else if ((token.text == "break" || token.text == "continue") && is(i + 1, ";")) {
            add(token.offset, token.text, "", "statement");
        } else if ((token.text == "if" || token.text == "while") && is(i + 1, "(")) {
            condition(i + 1);
        } else if (token.text == "return") {
            returned(i + 1);
        }
    }

    /// The token that closes the parenthesis at `open`, or -1.
    int closingOf(int open) const {
        int depth = 0;
        for (int i = open; i < tokens.size(); ++i) {
            depth += is(i, "(") ? 1 : 0;
            depth -= is(i, ")") ? 1 : 0;
            if (depth == 0) {
                return i;
            }
        }
        return -1;
    }

    QByteArray between(int first, int last) const {
        const Token& end = tokens.at(last);
        const int begin = tokens.at(first).offset;
        return text.mid(begin, end.offset + end.text.size() - begin);
    }

    void condition(int open) {
        const int close = closingOf(open);
        if (close < 0 || close == open + 1) {
            return;
        }
        const QByteArray inner = between(open + 1, close - 1);
        // The change of its one operator does the same.
        const bool compound = inner.contains("&&") || inner.contains("||");
        const bool equality = inner.contains(" == ") || inner.contains(" != ");
        if (!compound && (inner.startsWith('!') || equality)) {
            return;
        }
        add(tokens.at(open).offset, between(open, close), "(!(" + inner + "))", "condition");
    }

    /// The value that is made of nothing instead of the one that is returned.
    void returned(int first) {
        int last = first;
        while (last < tokens.size() && !is(last, ";")) {
            ++last;
        }
        if (last >= tokens.size() || last == first) {
            return;
        }
        const QByteArray value = between(first, last - 1);
        const bool literal =
            last - first == 1 && (tokens.at(first).kind == TokenKind::number || value == "true" ||
                                  value == "false" || value == "nullptr");
        const bool empty = last - first == 3 && value.endsWith("()");
        if (!literal && !empty && value != "{}" && !value.contains('{')) {
            add(tokens.at(first).offset, value, "{}", "statement");
        }
    }

    QString file;
    QByteArray text;
    QList<Token> tokens;
    QList<Mutation> found;
    QHash<QByteArray, int> seen;
};

}  // namespace

QByteArray Mutation::changed() const {
    return source.left(offset) + to + source.mid(offset + from.size());
}

QByteArray Mutation::id() const {
    const QByteArray all = file.toUtf8() + '\n' + where + '\n' + from + '\n' + to + '\n' +
                           QByteArray::number(occurrence);
    return QCryptographicHash::hash(all, QCryptographicHash::Sha1).toHex().left(8);
}

QList<Mutation> mutationsOf(const QString& file, const QByteArray& text) {
    return Finder(file, text).find();
}

QList<Mutation> inSampleOrder(const QList<Mutation>& mutations, quint64 seed) {
    std::vector<std::pair<QByteArray, int>> keys;
    for (int i = 0; i < mutations.size(); ++i) {
        const QByteArray key = mutations.at(i).id() + QByteArray::number(seed);
        keys.emplace_back(QCryptographicHash::hash(key, QCryptographicHash::Sha1), i);
    }
    std::sort(keys.begin(), keys.end());
    QList<Mutation> ordered;
    for (const auto& key : keys) {
        ordered << mutations.at(key.second);
    }
    return ordered;
}
