#include "apps/micro800/serve/live/tag_board.h"

#include <gtest/gtest.h>

#include <QJsonDocument>

#include "unit/apps/micro800/parsed_address.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

struct TagBoardTest : testing::Test {
    QJsonObject row(int index) const { return board.all().at(index).toObject(); }
    QString seen(quint64 period) const {
        const QJsonArray ranges = board.since(period, 0).value("seen").toArray();
        return QString::fromUtf8(QJsonDocument(ranges).toJson(QJsonDocument::Compact));
    }
    QList<int> changed(quint64 period) const {
        QList<int> indexes;
        for (const QJsonValue& tag : board.since(period, 0).value("tags").toArray()) {
            indexes << tag.toObject().value("index").toInt();
        }
        return indexes;
    }

    TagBoard board{{parsed("DINT0:A_1"), parsed("BOOL0:B"), parsed("STRING0:C"),
                    parsed("REAL0:D[2]"), parsed("UDINT0:__E.F")},
                   1000};
};

TEST_F(TagBoardTest, SaysWhatNeverChanges) {
    EXPECT_EQ(row(0).value("address").toString(), QString("DINT0:A_1"));
    EXPECT_EQ(row(0).value("type").toString(), QString("DINT"));
    EXPECT_EQ(row(0).value("minimum").toString(), QString("-2147483648"));
    EXPECT_EQ(row(0).value("maximum").toString(), QString("2147483647"));
    EXPECT_EQ(row(4).value("maximum").toString(), QString("4294967295"));
    EXPECT_TRUE(row(1).value("minimum").isNull());
    EXPECT_EQ(row(2).value("maximumLength").toInt(), 255);
    EXPECT_EQ(row(0).value("group").toString(), QString("A"));
    EXPECT_EQ(row(3).value("group").toString(), QString("D"));
    EXPECT_EQ(row(4).value("group").toString(), QString("__E"));
    EXPECT_EQ(row(0).value("state").toString(), QString("waiting"));
    EXPECT_TRUE(row(0).value("time").isNull());
    EXPECT_EQ(board.indexOf("REAL0:D[2]"), 3);
    EXPECT_EQ(board.indexOf("REAL0:D"), -1);
}

TEST_F(TagBoardTest, ValuesInTheFormOfReadAndAsNumbers) {
    board.good(0, QByteArray::fromHex("feffffff"), true, 50);
    board.good(1, QByteArray::fromHex("ff"), true, 50);
    board.good(2, "Hi\"\0\0", true, 50);
    board.good(3, QByteArray::fromHex("0000c07f"), true, 50);
    EXPECT_EQ(row(0).value("value").toString(), QString("-2"));
    EXPECT_EQ(row(0).value("number").toInt(), -2);
    EXPECT_EQ(row(0).value("time").toInt(), 50);
    EXPECT_EQ(row(1).value("value").toString(), QString("true"));
    EXPECT_EQ(row(1).value("number").toInt(), 1);
    EXPECT_EQ(row(2).value("value").toString(), QString("\"Hi\\\"\""));
    EXPECT_TRUE(row(2).value("number").isNull());
    EXPECT_EQ(row(3).value("value").toString(), QString("nan"));
    EXPECT_TRUE(row(3).value("number").isNull());
}

TEST_F(TagBoardTest, TellsEachPageWhatItDoesNotKnow) {
    board.good(0, QByteArray(4, '\0'), true, 10);
    board.good(1, QByteArray(1, '\0'), true, 10);
    const quint64 first = board.endPeriod(10);
    board.good(0, QByteArray(4, '\0'), false, 20);
    board.good(1, QByteArray(1, '\1'), true, 20);
    board.good(3, QByteArray(4, '\0'), true, 20);
    const quint64 second = board.endPeriod(20);
    EXPECT_EQ(second, first + 1);
    EXPECT_EQ(changed(first - 1), (QList<int>{0, 1, 3}));
    EXPECT_EQ(changed(first), (QList<int>{1, 3}));
    EXPECT_EQ(seen(first), QString("[[0,1],[3,3]]"));
    EXPECT_TRUE(board.since(second, 0).isEmpty());
}

TEST_F(TagBoardTest, FailsAndComesBack) {
    board.good(0, QByteArray(4, '\1'), true, 10);
    quint64 period = board.endPeriod(10);
    board.failed(0, "read DINT0:A_1> AB error: 0005H", "/help");
    EXPECT_EQ(changed(period), QList<int>{0});
    period = board.endPeriod(10);
    board.failed(0, "read DINT0:A_1> AB error: 0005H", "/help");
    EXPECT_EQ(changed(period), QList<int>());
    EXPECT_EQ(row(0).value("state").toString(), QString("failed"));
    EXPECT_EQ(row(0).value("help").toString(), QString("/help"));
    EXPECT_EQ(row(0).value("time").toInt(), 10);
    board.good(0, QByteArray(4, '\1'), false, 30);
    EXPECT_EQ(changed(period), QList<int>{0});
    EXPECT_EQ(row(0).value("state").toString(), QString("good"));
    EXPECT_EQ(row(0).value("problem").toString(), QString(""));
}

TEST_F(TagBoardTest, BecomesStaleOnce) {
    board.good(0, QByteArray(4, '\1'), true, 10);
    quint64 period = board.endPeriod(1010);
    EXPECT_EQ(board.count(TagState::kGood), 1);
    board.endPeriod(1011);
    EXPECT_EQ(board.count(TagState::kStale), 1);
    EXPECT_EQ(changed(period), QList<int>{0});
    period = board.lastPeriod();
    board.endPeriod(1012);
    EXPECT_EQ(changed(period), QList<int>());
    EXPECT_EQ(board.count(TagState::kWaiting), 4);
}

}  // namespace
