#include "common/tx_package.h"

#include <gtest/gtest.h>

namespace {

std::string hexOf(const TxPackage& package) {
    return package.byteArrayData().toHex().toStdString();
}

TEST(TxPackage, StartsEmpty) {
    const TxPackage package;
    EXPECT_EQ(0, package.numberOfSections());
    EXPECT_EQ(0, package.totalSize());
    EXPECT_TRUE(package.byteArrayData().isEmpty());
    EXPECT_NE(nullptr, package.data());
    EXPECT_EQ("", package.toString().toStdString());
    EXPECT_EQ(0, package.sectionSize(0));
    EXPECT_EQ(-1, package.sectionStartIndex(0));
    EXPECT_EQ(0, package.calculateFCS());
}

TEST(TxPackage, SectionsThatAreNotThere) {
    TxPackage package;
    package.appendString("abc");
    for (int section : {-1, 1, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        EXPECT_EQ(0, package.sectionSize(section)) << section;
        EXPECT_EQ(-1, package.sectionStartIndex(section)) << section;
        EXPECT_FALSE(package.setSectionSize(section, 1)) << section;
    }
    EXPECT_FALSE(package.setSectionSize(0, -1));
    EXPECT_EQ("616263", hexOf(package));
}

TEST(TxPackage, AppendsEachKind) {
    TxPackage package;
    EXPECT_TRUE(package.appendByte(0x01));
    EXPECT_TRUE(package.appendWord(0x0203));
    EXPECT_TRUE(package.appendDWord(0xF4050607));
    EXPECT_TRUE(package.appendString(QByteArray::fromHex("6100ff")));
    EXPECT_TRUE(package.appendByte2Ascii(0x0C));
    EXPECT_TRUE(package.appendByte2Ascii(0xA9));
    EXPECT_EQ(
        "01"
        "0302"
        "070605f4"
        "6100ff"
        "3043"
        "4139",
        hexOf(package));
    EXPECT_EQ(1, package.numberOfSections());
    EXPECT_EQ(14, package.totalSize());
    EXPECT_EQ(0x01, package.data()[0]);
    EXPECT_EQ('9', package.data()[13]);
}

TEST(TxPackage, SectionsFollowEachOther) {
    TxPackage package;
    package.appendByte(0x02);
    package.appendSection("AB");
    package.appendByte(0x43);
    package.appendSection();
    package.appendSection("Z");
    EXPECT_EQ("024142435a", hexOf(package));
    EXPECT_EQ(4, package.numberOfSections());
    const int sizes[] = {1, 3, 0, 1};
    const int starts[] = {0, 1, 4, 4};
    for (int section = 0; section < 4; ++section) {
        EXPECT_EQ(sizes[section], package.sectionSize(section)) << section;
        EXPECT_EQ(starts[section], package.sectionStartIndex(section)) << section;
    }
    EXPECT_EQ("02 | 41 42 43 |  | 5A", package.toString().toStdString());
}

TEST(TxPackage, AnExplicitFirstSectionIsSectionZero) {
    TxPackage package;
    package.appendSection();
    package.appendByte(1);
    EXPECT_EQ(1, package.numberOfSections());
    EXPECT_EQ(1, package.sectionSize(0));
}

TEST(TxPackage, ResizesASection) {
    TxPackage package;
    package.appendString("ab");
    package.appendSection("cd");
    package.appendSection("ef");
    EXPECT_TRUE(package.setSectionSize(1, 4));
    EXPECT_EQ("6162636400006566", hexOf(package));
    EXPECT_EQ(6, package.sectionStartIndex(2));
    EXPECT_TRUE(package.setSectionSize(0, 1));
    EXPECT_EQ("61636400006566", hexOf(package));
    EXPECT_EQ(1, package.sectionStartIndex(1));
    EXPECT_EQ(5, package.sectionStartIndex(2));
    EXPECT_TRUE(package.setSectionSize(1, 0));
    EXPECT_TRUE(package.setSectionSize(2, 3));
    EXPECT_EQ("61656600", hexOf(package));
    EXPECT_TRUE(package.setSectionSize(2, 3));
    EXPECT_EQ("61656600", hexOf(package));
    EXPECT_EQ(3, package.numberOfSections());
}

TEST(TxPackage, LongitudinalCheck) {
    // 01 03 00 00 00 0A: sum 0x0E, check 0xF2
    TxPackage package;
    package.appendString(QByteArray::fromHex("01030000000a"));
    TxPackage ascii = package;
    EXPECT_TRUE(package.appendLRCByte());
    EXPECT_EQ("01030000000af2", hexOf(package));
    EXPECT_TRUE(ascii.appendLRCAscii());
    EXPECT_EQ("01030000000a4632", hexOf(ascii));
}

TEST(TxPackage, ChecksFromAnIndexOn) {
    TxPackage package;
    package.appendByte(':');
    package.appendSection("\x01\x02");
    TxPackage whole = package;
    package.appendLRCByte(package.sectionStartIndex(1));
    EXPECT_EQ("3a0102fd", hexOf(package));
    whole.appendLRCByte();
    EXPECT_EQ("3a0102c3", hexOf(whole));
    for (int index : {-1, 3, 4, 0x7FFFFFFF, -0x7FFFFFFF - 1}) {
        TxPackage outside;
        outside.appendString("abc");
        EXPECT_EQ(0, outside.calculateFCS(index)) << index;
        outside.appendLRCByte(index);
        EXPECT_EQ("61626300", hexOf(outside)) << index;
    }
}

TEST(TxPackage, FrameCheckSequence) {
    // "@00RD00000010": '@'^'0'^'0'^'R'^'D' is 0x56, the eight digits leave '1' ^ '0'.
    TxPackage package;
    package.appendString("@00RD00000010");
    EXPECT_EQ(0x57, package.calculateFCS());
    EXPECT_TRUE(package.appendFCSAscii());
    EXPECT_EQ("@00RD0000001057", package.byteArrayData().toStdString());
    EXPECT_EQ('5' ^ '7', package.calculateFCS(13));
    TxPackage empty;
    empty.appendFCSAscii();
    EXPECT_EQ("00", empty.byteArrayData().toStdString());
}

TEST(TxPackage, ClearAllTakesTheSectionsAway) {
    TxPackage package;
    package.appendString("ab");
    package.appendSection("cd");
    package.clearAll();
    EXPECT_EQ(0, package.numberOfSections());
    EXPECT_EQ(0, package.totalSize());
    package.appendByte(7);
    EXPECT_EQ("07", hexOf(package));
    EXPECT_EQ(0, package.sectionStartIndex(0));
}

TEST(TxPackage, CopiesAreIndependent) {
    TxPackage package;
    package.appendString("ab");
    const TxPackage copy = package;
    const QByteArray bytes = package.byteArrayData();
    package.setSectionSize(0, 5);
    EXPECT_EQ("6162", hexOf(copy));
    EXPECT_EQ("ab", bytes.toStdString());
}

TEST(TxPackage, RefusesWhatAFrameCannotHold) {
    TxPackage package;
    package.appendByte(1);
    const int largest = TxPackage::kLargestFrame;
    EXPECT_FALSE(package.setSectionSize(0, largest + 1));
    TxPackage two = package;
    two.appendSection("x");
    EXPECT_FALSE(two.setSectionSize(1, largest));
    EXPECT_EQ("0178", hexOf(two));
    EXPECT_FALSE(package.setSectionSize(0, 0x7FFFFFFF));
    EXPECT_FALSE(package.appendString(QByteArray(largest, 'x')));
    EXPECT_FALSE(package.appendSection(QByteArray(largest, 'x')));
    EXPECT_EQ("01", hexOf(package));
    EXPECT_EQ(1, package.numberOfSections());
    EXPECT_TRUE(package.setSectionSize(0, largest));
    EXPECT_EQ(largest, package.totalSize());
    EXPECT_FALSE(package.appendByte(2));
    EXPECT_FALSE(package.appendWord(2));
    EXPECT_FALSE(package.appendDWord(2));
    EXPECT_FALSE(package.appendByte2Ascii(2));
    EXPECT_FALSE(package.appendLRCByte());
    EXPECT_FALSE(package.appendFCSAscii());
    EXPECT_TRUE(package.appendString(""));
    EXPECT_EQ(largest, package.totalSize());
}

}  // namespace
