#include "apps/micro800/controller/symbol_list.h"

#include <gtest/gtest.h>

#include "support/hex_bytes.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

const QByteArray kNoDimensions(12, '\0');

Symbol symbolOf(const QByteArray& name, int typeWord, const QVector<quint32>& dimensions = {}) {
    Symbol symbol;
    symbol.name = name;
    symbol.typeWord = typeWord;
    symbol.dimensions = dimensions;
    return symbol;
}

TEST(Symbol, AddressOrWhyThereIsNone) {
    const struct {
        QByteArray name;
        int typeWord;
        QVector<quint32> dimensions;
        const char* address;
        const char* problem;
    } rows[] = {
        {"Counter", 0x00C4, {}, "DINT0:Counter", ""},
        {"NAME", 0x00DA, {}, "STRING0:NAME", ""},
        {"RECIPE", 0x20C4, {10}, "DINT0:RECIPE[0..9]", ""},
        {"GRID", 0x40C3, {3, 4}, "INT0:GRID[0..2,0..3]", ""},
        {"PUMP.SPEED", 0x00CA, {}, "REAL0:PUMP.SPEED", ""},
        {"DELAY", 0x00DB, {}, "", "no prefix, the panel cannot read it"},
        {"BIG", 0x00C5, {}, "", "no prefix, the panel cannot read it"},
        {"PUMP", 0x8ABC, {}, "", "its members are read by name, PREFIX0:NAME.MEMBER"},
        {"HUGE", 0x20C4, {70000}, "", "an array that no project can declare"},
        {"NONE", 0x20C4, {0}, "", "an array that no project can declare"},
        {"A\x1b[2J", 0x00C4, {}, "", "a name that no address can hold"},
        {"A\n", 0x00C4, {}, "", "a name that no address can hold"},
        {"", 0x00C4, {}, "", "a name that no address can hold"},
    };
    for (const auto& row : rows) {
        const Symbol symbol = symbolOf(row.name, row.typeWord, row.dimensions);
        EXPECT_EQ(symbol.address(), QString(row.address)) << row.name.constData();
        EXPECT_EQ(symbol.problem(), QString(row.problem)) << row.name.constData();
    }
    EXPECT_TRUE(symbolOf("S", 0x10C4).isSystem());
    EXPECT_EQ(symbolOf("PUMP", 0x8ABC).typeText(), QString("a structure"));
}

TEST(TakeSymbols, EntriesOfAReply) {
    QVector<Symbol> symbols;
    EXPECT_TRUE(takeSymbols(hex("05000000 0100 41 c400") + kNoDimensions +
                                hex("07000000 0300 415252 c340 03000000 04000000 00000000"),
                            4, &symbols));
    ASSERT_EQ(symbols.size(), 2);
    EXPECT_EQ(symbols.at(0).name, QByteArray("A"));
    EXPECT_EQ(symbols.at(0).instance, 5u);
    EXPECT_EQ(symbols.at(1).dimensions, QVector<quint32>({3, 4}));
    EXPECT_TRUE(takeSymbols(QByteArray(), 0, &symbols));
    EXPECT_EQ(symbols.size(), 2);
}

TEST(TakeSymbols, NoBeginningOfAnEntry) {
    const QByteArray whole = hex("05000000 0100 41 c400") + kNoDimensions;
    for (int size = 1; size < whole.size(); ++size) {
        QVector<Symbol> symbols;
        EXPECT_FALSE(takeSymbols(whole.left(size), 0, &symbols)) << size;
        EXPECT_EQ(symbols.size(), 0);
    }
    QVector<Symbol> symbols;
    EXPECT_FALSE(takeSymbols(hex("05000000 ffff 41 c400") + kNoDimensions, 0, &symbols));
    // A list that goes back would never end.
    EXPECT_FALSE(takeSymbols(whole, 5, &symbols));
    EXPECT_FALSE(takeSymbols(whole + whole, 0, &symbols));
}

/// An object that answers request after request.
struct Script {
    QVector<ObjectReply> replies;
    QVector<QByteArray> paths;
    QByteArray data;

    ObjectRequester requester() {
        return [this](int service, const QByteArray& path, const QByteArray& attributes) {
            EXPECT_EQ(service, 0x55);
            paths.append(path);
            data = attributes;
            return paths.size() <= replies.size() ? replies.at(paths.size() - 1) : ObjectReply();
        };
    }
};

ObjectReply replyOf(int status, const QByteArray& data, const char* error = "") {
    ObjectReply reply;
    reply.answered = true;
    reply.status = status;
    reply.data = data;
    reply.error = error;
    return reply;
}

TEST(ListSymbols, GoesOnWhereTheLastReplyEnded) {
    Script script;
    script.replies = {replyOf(6, hex("2c010000 0100 41 c400") + kNoDimensions),
                      replyOf(0, hex("2e010000 0100 42 c400") + kNoDimensions)};
    QVector<Symbol> symbols;
    QString problem;
    EXPECT_TRUE(listSymbols(script.requester(), &symbols, &problem));
    EXPECT_EQ(symbols.size(), 2);
    EXPECT_EQ(script.paths, QVector<QByteArray>({hex("206b25000000"), hex("206b25002d01")}));
    EXPECT_EQ(script.data, hex("0300 0100 0200 0800"));
}

TEST(ListSymbols, Failures) {
    const QByteArray entry = hex("05000000 0100 41 c400") + kNoDimensions;
    const struct {
        QVector<ObjectReply> replies;
        const char* problem;
    } rows[] = {
        {{replyOf(8, "", "MR error: 0008H")}, "MR error: 0008H"},
        {{replyOf(6, entry), replyOf(5, "", "MR error: 0005H")}, "MR error: 0005H"},
        {{ObjectReply()}, ""},
        {{replyOf(0, "x")}, "the answer is no list of variables"},
        {{replyOf(6, "")}, "the answer is no list of variables"},
        {{replyOf(6, entry), replyOf(6, entry)}, "the answer is no list of variables"},
        {{replyOf(6, hex("ffff0000 0100 41 c400") + kNoDimensions)},
         "the answer is no list of variables"},
    };
    for (const auto& row : rows) {
        Script script;
        script.replies = row.replies;
        QVector<Symbol> symbols;
        QString problem = "untouched";
        EXPECT_FALSE(listSymbols(script.requester(), &symbols, &problem));
        EXPECT_EQ(problem, QString(row.problem));
        EXPECT_EQ(script.paths.size(), row.replies.size());
    }
}

}  // namespace
