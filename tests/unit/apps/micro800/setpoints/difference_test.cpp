#include "apps/micro800/setpoints/difference.h"

#include <gtest/gtest.h>

#include "apps/micro800/setpoints/element_access.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

SavedValue saved(const char* address, int elements) {
    SavedValue value;
    QString problem;
    EXPECT_TRUE(parseListedAddress({address, QString()}, &value.address, &problem));
    for (int i = 0; i < elements; ++i) {
        value.elements.append(QByteArray::number(i));
    }
    return value;
}

TEST(Differences, OnlyWhatDiffers) {
    const SavedValue value = saved("INT0:A[0..3]", 4);
    EXPECT_TRUE(differencesOf(value, 5, value.elements).isEmpty());
    const QVector<Difference> differences = differencesOf(value, 5, {"0", "x", "2", "y"});
    ASSERT_EQ(differences.size(), 2);
    EXPECT_EQ(differences.at(0).value, 5);
    EXPECT_EQ(differences.at(0).element, 1);
    EXPECT_EQ(differences.at(0).now, QByteArray("x"));
    EXPECT_EQ(differences.at(0).wanted, QByteArray("1"));
    EXPECT_EQ(differences.at(1).element, 3);
}

/// Differences of one value at these elements.
QVector<Difference> at(int value, const QVector<int>& elements) {
    QVector<Difference> differences;
    for (const int element : elements) {
        differences.append({value, element, QByteArray(), QByteArray()});
    }
    return differences;
}

TEST(WriteRuns, SuccessiveElementsOfOneValueGoTogether) {
    const QVector<SavedValue> values{saved("INT0:A[0..9]", 10), saved("INT0:B[0..9]", 10),
                                     saved("STRING0:C[0..9]", 10)};
    const QVector<WriteRun> runs =
        writeRunsOf(values, at(0, {0, 1, 2, 4, 9}) + at(1, {0}) + at(2, {3, 4}));
    QVector<QPair<int, int>> found;
    for (const WriteRun& run : runs) {
        found.append({run.first, run.count});
    }
    // A string is a command of its own.
    EXPECT_EQ(found, (QVector<QPair<int, int>>{{0, 3}, {3, 1}, {4, 1}, {5, 1}, {6, 1}, {7, 1}}));
    EXPECT_TRUE(writeRunsOf(values, {}).isEmpty());
}

TEST(WriteRuns, NoMoreThanAPacketCarries) {
    const QVector<SavedValue> values{saved("LREAL0:A[0..119]", 120)};
    QVector<int> all;
    for (int i = 0; i < 120; ++i) {
        all.append(i);
    }
    const QVector<WriteRun> runs = writeRunsOf(values, at(0, all));
    ASSERT_EQ(runs.size(), 3);
    EXPECT_EQ(runs.at(0).count, 50);
    EXPECT_EQ(runs.at(1).first, 50);
    EXPECT_EQ(runs.at(2).count, 20);
    EXPECT_EQ(elementsOfOneRead(values.at(0).type()), 60);
}

}  // namespace
