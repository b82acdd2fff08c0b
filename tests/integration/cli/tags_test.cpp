// "micro800 tags" against the simulated controller.

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include "integration/cli/cli_program.h"

namespace {

class CliTags : public CliTest {
 protected:
    void startPlant(const QStringList& more = QStringList()) {
        startController(QStringList{"--tag", "COUNTER:DINT=42", "--tag", "RECIPE:DINT[10]", "--tag",
                                    "GRID:INT[2,5]", "--tag", "MASK:DWORD"} +
                        more);
    }
};

TEST_F(CliTags, AddressesThatCheckTakes) {
    startPlant();
    const CliResult result = runWith("tags", {});
    EXPECT_EQ(result.err, QByteArray());
    EXPECT_EQ(result.out, QByteArray("DINT0:COUNTER\n"
                                     "DINT0:RECIPE[0..9]\n"
                                     "INT0:GRID[0..1,0..4]\n"
                                     "# MASK DWORD: no prefix, the panel cannot read it\n"));
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(requests("ForwardOpen"), 0);
    QTemporaryDir dir;
    QFile file(dir.filePath("tags.txt"));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(result.out);
    file.close();
    EXPECT_EQ(runWith("check", {"@" + file.fileName()}).exitCode, 0);
}

TEST_F(CliTags, MoreThanOneReplyHolds) {
    QStringList tags;
    QByteArray expected;
    for (int i = 0; i < 100; ++i) {
        tags << "--tag" << QString("A_RATHER_LONG_NAME_%1:INT").arg(i);
        expected += QString("INT0:A_RATHER_LONG_NAME_%1\n").arg(i).toUtf8();
    }
    startController(tags);
    EXPECT_EQ(runWith("tags", {}).out, expected);
    EXPECT_GT(controller->log().size(), 3);
}

TEST_F(CliTags, Patterns) {
    startPlant();
    EXPECT_EQ(runWith("tags", {"r*", "?RID"}).out,
              QByteArray("DINT0:RECIPE[0..9]\nINT0:GRID[0..1,0..4]\n"));
    const CliResult none = runWith("tags", {"NOPE*"});
    EXPECT_EQ(none.exitCode, 1);
    EXPECT_EQ(none.err, QByteArray("micro800: none of the controller's 4 variables is wanted\n"));
}

TEST_F(CliTags, CsvAndJson) {
    startPlant();
    EXPECT_EQ(runWith("tags", {"--csv"}).out,
              QByteArray("address,name,type,dimensions,problem\n"
                         "DINT0:COUNTER,COUNTER,DINT,,\n"
                         "DINT0:RECIPE[0..9],RECIPE,DINT,10,\n"
                         "\"INT0:GRID[0..1,0..4]\",GRID,INT,2x5,\n"
                         ",MASK,DWORD,,\"no prefix, the panel cannot read it\"\n"));
    const QList<QByteArray> lines = runWith("tags", {"--json"}).out.split('\n');
    ASSERT_EQ(lines.size(), 5);
    const QJsonObject grid = QJsonDocument::fromJson(lines.at(2)).object();
    EXPECT_EQ(grid.value("address").toString(), QString("INT0:GRID[0..1,0..4]"));
    EXPECT_EQ(grid.value("dimensions").toArray(), QJsonArray({2, 5}));
    const QJsonObject mask = QJsonDocument::fromJson(lines.at(3)).object();
    EXPECT_FALSE(mask.contains("address"));
    EXPECT_EQ(mask.value("type").toString(), QString("DWORD"));
    EXPECT_EQ(runWith("tags", {"--json", "--csv"}).exitCode, 2);
}

TEST_F(CliTags, ArraysIntoAProject) {
    startPlant();
    QTemporaryDir dir;
    const CliResult result = runWith("tags", {"--project", dir.path(), "--link", "2"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.err, QByteArray("DINT0:RECIPE[0..9] (10 elements) on link 2: added\n"
                                     "INT0:GRID[0..1,0..4] (10 elements) on link 2: added\n"));
    const CliResult listed = run({"project", dir.path()});
    EXPECT_TRUE(
        listed.out.contains("array on link 2: DINT0:RECIPE[0..9] (10 elements)\n"
                            "array on link 2: INT0:GRID[0..1,0..4] (10 elements)\n"))
        << listed.out.constData();
    EXPECT_TRUE(runWith("tags", {"--project", dir.path(), "--link", "2"})
                    .err.contains("on link 2: unchanged\n"));
}

TEST_F(CliTags, AControllerWithoutAList) {
    startPlant({"--tag-list", "none"});
    const CliResult result = runWith("tags", {});
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_EQ(result.out, QByteArray());
    EXPECT_TRUE(
        result.err.contains(" does not list its variables: MR error: 0005H; export them "
                            "from the programming software, "))
        << result.err.constData();
}

TEST_F(CliTags, AnAnswerThatIsNoList) {
    for (const char* fault : {"truncate:50@on=rr", "short-reply:3@on=rr", "silence@on=rr"}) {
        startPlant({"--fault", fault});
        const CliResult result = runWith("tags", {"--timeout", "300"});
        EXPECT_EQ(result.exitCode, 1) << fault;
        EXPECT_EQ(result.out, QByteArray()) << fault;
        EXPECT_TRUE(result.err.contains(" does not list its variables: "))
            << result.err.constData();
    }
}

TEST_F(CliTags, WrongUsageSendsNothing) {
    startPlant();
    EXPECT_EQ(runWith("tags", {"--project", ""}).exitCode, 2);
    EXPECT_EQ(run({"tags"}).exitCode, 2);
    EXPECT_EQ(controller->log().size(), 0);
}

}  // namespace
