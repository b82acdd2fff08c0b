#include "apps/micro800/format/address_list.h"

#include <gtest/gtest.h>

#include "unit/apps/micro800/qt_printers.h"

namespace {

QVector<ListedWord> wordsOf(const QByteArray& content) {
    QVector<ListedWord> words;
    appendListedWords(content, "tags.txt", &words);
    return words;
}

TEST(ListedWords, OneALineWithItsNumber) {
    const QVector<ListedWord> words = wordsOf(
        "\xEF\xBB\xBF# panel 3\r\n\r\n  DINT0:A  \r\nINT0:B[1,2]\t# "
        "level\n#DINT0:OFF\nREAL0:C#1\n");
    ASSERT_EQ(words.size(), 3);
    EXPECT_EQ(words.at(0).text, QString("DINT0:A"));
    EXPECT_EQ(words.at(0).place, QString("tags.txt:3"));
    EXPECT_EQ(words.at(1).text, QString("INT0:B[1,2]"));
    EXPECT_EQ(words.at(1).place, QString("tags.txt:4"));
    // Without a blank it is no comment.
    EXPECT_EQ(words.at(2).text, QString("REAL0:C#1"));
    EXPECT_EQ(words.at(2).place, QString("tags.txt:6"));
}

TEST(ListedWords, NothingIsNoWord) {
    EXPECT_TRUE(wordsOf("").isEmpty());
    EXPECT_TRUE(wordsOf("\n \n# a\n").isEmpty());
}

TEST(ListedAddress, AProblemNamesItsPlace) {
    ListedAddress address;
    QString problem;
    EXPECT_FALSE(parseListedAddress({"LEVEL", "tags.txt:12"}, &address, &problem));
    EXPECT_EQ(problem, QString("tags.txt:12: \"LEVEL\": no type prefix; an address reads "
                               "PREFIX:NAME, for example DINT0:COUNTER"));
    EXPECT_FALSE(parseListedAddress({"DINT0:A[5..2]", ""}, &address, &problem));
    EXPECT_EQ(problem, QString("DINT0:A[5..2]: the range 5..2 ends below its beginning"));
    EXPECT_FALSE(parseListedAddress({"WORD0:A[0..2]", ""}, &address, &problem));
}

TEST(ListedAddress, ATagAndAnElementStandForThemselves) {
    for (const char* text : {"DINT0:COUNTER", "INT0:GRID[2,3]"}) {
        ListedAddress address;
        QString problem;
        ASSERT_TRUE(parseListedAddress({text, ""}, &address, &problem)) << qPrintable(problem);
        EXPECT_FALSE(address.isRange());
        EXPECT_EQ(address.count(), 1);
        EXPECT_EQ(address.elementText(0), QString(text));
        EXPECT_EQ(address.first.text, QString(text));
    }
}

TEST(ListedAddress, ARangeCountsItsElementsRowByRow) {
    ListedAddress address;
    QString problem;
    ASSERT_TRUE(parseListedAddress({"INT0:Grid[2..3,5..7]", ""}, &address, &problem));
    EXPECT_TRUE(address.isRange());
    EXPECT_EQ(address.count(), 6);
    EXPECT_EQ(address.elementText(0), QString("INT0:Grid[2,5]"));
    EXPECT_EQ(address.elementText(2), QString("INT0:Grid[2,7]"));
    EXPECT_EQ(address.elementText(3), QString("INT0:Grid[3,5]"));
    EXPECT_EQ(address.elementText(5), QString("INT0:Grid[3,7]"));
    EXPECT_TRUE(address.first.isElement);
    EXPECT_EQ(address.first.name, QString("Grid[2,5]"));
}

TEST(ListedAddress, AnElementIsARangeOfOne) {
    const struct {
        const char* text;
        const char* range;
    } rows[] = {{"INT0:GRID[2,3]", "INT0:GRID[2..2,3..3]"},
                {"INT0:L[0]", "INT0:L[0..0]"},
                {"INT0:L", "INT0:L"},
                {"INT0:L[0..3]", "INT0:L[0..3]"}};
    for (const auto& row : rows) {
        ListedAddress address;
        QString problem;
        ASSERT_TRUE(parseListedAddress({row.text, ""}, &address, &problem)) << qPrintable(problem);
        const ListedAddress range = asRange(address);
        EXPECT_EQ(range.text, QString(row.range));
        EXPECT_EQ(range.elementText(0), address.elementText(0));
        EXPECT_EQ(range.count(), address.count());
    }
}

}  // namespace
