#include "mutants/report.h"

#include <gtest/gtest.h>

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

namespace {

Result result(const QString& file, Outcome outcome) {
    return {mutationsOf(file, "x = a + b;").first(), outcome, "unit: Suite.Test"};
}

QList<Result> results(int noticed, int survived) {
    QList<Result> list;
    for (int i = 0; i < noticed + survived; ++i) {
        list << result(QString("eip/%1.cpp").arg(i),
                       i < noticed ? Outcome::noticed : Outcome::survived);
    }
    return list;
}

TEST(Report, NinetyFiveOfAHundredAreEnough) {
    EXPECT_TRUE(isEnough(results(95, 5), {}));
    EXPECT_FALSE(isEnough(results(94, 6), {}));
    EXPECT_FALSE(isEnough({}, {}));
}

TEST(Report, WhatDoesNotCompileDoesNotCount) {
    QList<Result> list = results(95, 5);
    list << result("eip/z.cpp", Outcome::doesNotCompile);
    EXPECT_TRUE(isEnough(list, {}));
}

TEST(Report, AnExplainedOneIsAsGoodAsNoticed) {
    const QList<Result> list = results(94, 6);
    Explanations explanations;
    explanations.insert(list.last().mutation.id(), "no input tells them apart");
    EXPECT_TRUE(isEnough(list, explanations));
    EXPECT_TRUE(lineFor(list.last(), explanations).contains(" explained "));
    EXPECT_TRUE(lineFor(list.last(), {}).contains(" survived "));
}

TEST(Report, TableHasARowForEachFolder) {
    const QList<Result> list = {result("eip/cip/a.cpp", Outcome::noticed),
                                result("eip/cip/b.cpp", Outcome::survived),
                                result("common/a.cpp", Outcome::doesNotCompile)};
    const QStringList rows = tableOf(list, {}).split('\n', Qt::SkipEmptyParts);
    ASSERT_EQ(rows.size(), 4);
    EXPECT_EQ(rows.at(1).simplified(), "common 0 0 0 0 0.0 % 1");
    EXPECT_EQ(rows.at(2).simplified(), "eip/cip 2 1 0 1 50.0 % 0");
    EXPECT_EQ(rows.at(3).simplified(), "all 2 1 0 1 50.0 % 1");
}

TEST(Report, JsonSaysEverything) {
    const QList<Result> list = {result("eip/a.cpp", Outcome::noticed)};
    const QJsonObject all = QJsonDocument::fromJson(jsonOf(list, {}, 3)).object();
    EXPECT_EQ(all["seed"].toInt(), 3);
    EXPECT_EQ(all["noticed"].toInt(), 1);
    const QJsonObject mutant = all["mutants"].toArray().first().toObject();
    EXPECT_EQ(mutant["file"].toString(), "eip/a.cpp");
    EXPECT_EQ(mutant["line"].toInt(), 1);
    EXPECT_EQ(mutant["from"].toString(), "+");
    EXPECT_EQ(mutant["to"].toString(), "-");
    EXPECT_EQ(mutant["result"].toString(), "noticed");
    EXPECT_EQ(mutant["by"].toString(), "unit: Suite.Test");
}

TEST(Report, ReadsExplanations) {
    QTemporaryDir folder;
    QFile file(folder.path() + "/explained.txt");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("# a comment of two words\n\n0123abcd  a reason of its own\n");
    file.close();
    const Explanations explanations = readExplanations(file.fileName());
    ASSERT_EQ(explanations.size(), 1);
    EXPECT_EQ(explanations.value("0123abcd"), "a reason of its own");
    EXPECT_TRUE(readExplanations(folder.path() + "/missing").isEmpty());
}

}  // namespace
