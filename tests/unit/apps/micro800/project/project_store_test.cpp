#include "apps/micro800/project/project_store.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QStringList>
#include <QTemporaryDir>
#include <QVariant>

#include "common/project_database.h"
#include "unit/apps/micro800/qt_printers.h"

namespace {

class ProjectStoreTest : public testing::Test {
 protected:
    ArrayDeclaration declaration(const char* text) {
        ArrayDeclaration result;
        QString problem;
        EXPECT_TRUE(parseArrayDeclaration(text, &result, &problem)) << qPrintable(problem);
        return result;
    }

    ProjectStore::Declared declare(int link, const char* text) {
        ProjectStore store;
        QString problem;
        ProjectStore::Declared done = ProjectStore::Declared::kUnchanged;
        EXPECT_TRUE(store.openToChange(dir.path(), &problem)) << qPrintable(problem);
        EXPECT_TRUE(store.declareArray(link, declaration(text), &done, &problem))
            << qPrintable(problem);
        EXPECT_TRUE(store.commit(&problem)) << qPrintable(problem);
        return done;
    }

    /// Every row of a query, columns joined by blanks; looked at without the store.
    QStringList rows(const QString& sql) {
        QStringList result;
        {
            QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "look");
            database.setDatabaseName(projectDatabasePath(dir.path()));
            EXPECT_TRUE(database.open());
            QSqlQuery query(database);
            EXPECT_TRUE(query.exec(sql)) << qPrintable(sql);
            while (query.next()) {
                QStringList columns;
                for (int i = 0; query.value(i).isValid(); ++i) {
                    columns << query.value(i).toString();
                }
                result << columns.join(' ');
            }
        }
        QSqlDatabase::removeDatabase("look");
        return result;
    }

    QStringList declarations() {
        return rows("SELECT connector_id, address FROM custom_tag_table ORDER BY rowid");
    }

    QTemporaryDir dir;
};

TEST_F(ProjectStoreTest, AnEmptyProjectIsARealDatabaseWithoutDeclarations) {
    QString problem;
    EXPECT_FALSE(projectExists(dir.path()));
    ASSERT_TRUE(createEmptyProject(dir.path(), &problem)) << qPrintable(problem);
    EXPECT_TRUE(projectExists(dir.path()));
    EXPECT_EQ(projectDatabasePath(dir.path()), dir.path() + "/compile/database/database");
    EXPECT_EQ(declarations(), QStringList());
    QFile file(projectDatabasePath(dir.path()));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_EQ(file.read(15), QByteArray("SQLite format 3"));
    // Nothing of the transaction stays beside it.
    EXPECT_EQ(QDir(dir.path() + "/compile/database").entryList(QDir::Files),
              QStringList("database"));
}

TEST_F(ProjectStoreTest, DeclarationsBelongToTheirLink) {
    EXPECT_EQ(declare(1, "DINT0:RECIPE[0..9,0..4]"), ProjectStore::Declared::kAdded);
    EXPECT_EQ(declare(2, "DINT0:RECIPE[0..3]"), ProjectStore::Declared::kAdded);
    EXPECT_EQ(declare(1, "INT0:LEVELS[1..8]"), ProjectStore::Declared::kAdded);
    EXPECT_EQ(declarations(), (QStringList{"1 DINT0:RECIPE[0..9,0..4]", "2 DINT0:RECIPE[0..3]",
                                           "1 INT0:LEVELS[1..8]"}));
}

TEST_F(ProjectStoreTest, TheSameDeclarationAgainMakesNoSecondRow) {
    declare(1, "DINT0:RECIPE[0..9]");
    EXPECT_EQ(declare(1, "DINT0:RECIPE[0..9]"), ProjectStore::Declared::kUnchanged);
    EXPECT_EQ(declarations(), QStringList("1 DINT0:RECIPE[0..9]"));
}

TEST_F(ProjectStoreTest, OtherBoundsReplaceTheEarlierOnes) {
    declare(1, "DINT0:RECIPE[0..9]");
    declare(1, "DINT0:OTHER[0..9]");
    EXPECT_EQ(declare(1, "DINT0:Recipe[0..4]"), ProjectStore::Declared::kReplaced);
    EXPECT_EQ(declarations(), (QStringList{"1 DINT0:OTHER[0..9]", "1 DINT0:Recipe[0..4]"}));
}

TEST_F(ProjectStoreTest, RowsOfTheRuntimeStay) {
    declare(1, "DINT0:RECIPE[0..9]");
    rows("INSERT INTO custom_tag_table VALUES ('DINT0:COUNTER', 1)");
    rows("INSERT INTO custom_tag_table VALUES ('dint0:recipe[1..2]', 1)");
    EXPECT_EQ(declare(1, "DINT0:RECIPE[0..9]"), ProjectStore::Declared::kReplaced);
    EXPECT_EQ(declarations(), (QStringList{"1 DINT0:COUNTER", "1 DINT0:RECIPE[0..9]"}));
}

TEST_F(ProjectStoreTest, AnExistingDatabaseWithMoreColumnsIsExtended) {
    ASSERT_TRUE(QDir().mkpath(dir.path() + "/compile/database"));
    rows(
        "CREATE TABLE custom_tag_table (id INTEGER PRIMARY KEY, name TEXT DEFAULT 'x', "
        "address TEXT, connector_id INTEGER)");
    declare(4, "REAL0:T[0..1]");
    EXPECT_EQ(rows("SELECT id, name, address, connector_id FROM custom_tag_table"),
              QStringList("1 x REAL0:T[0..1] 4"));
}

TEST_F(ProjectStoreTest, WithoutCommitNothingChanges) {
    declare(1, "DINT0:A[0..1]");
    {
        ProjectStore store;
        QString problem;
        ProjectStore::Declared done;
        ASSERT_TRUE(store.openToChange(dir.path(), &problem));
        ASSERT_TRUE(store.declareArray(1, declaration("DINT0:B[0..1]"), &done, &problem));
    }
    EXPECT_EQ(declarations(), QStringList("1 DINT0:A[0..1]"));
}

TEST_F(ProjectStoreTest, ALinkKeepsItsPortUnlessItIsToChange) {
    QString problem;
    {
        ProjectStore store;
        ASSERT_TRUE(store.openToChange(dir.path(), &problem));
        ASSERT_TRUE(store.setLink(3, 2000, false, &problem));
        ASSERT_TRUE(store.setLink(3, 1002, false, &problem));
        ASSERT_TRUE(store.setLink(4, 2000, false, &problem));
        ASSERT_TRUE(store.setLink(4, 1003, true, &problem));
        ASSERT_TRUE(store.commit(&problem));
    }
    EXPECT_EQ(rows("SELECT LINKID, HMIPORT FROM LINK ORDER BY LINKID"),
              (QStringList{"3 2000", "4 1003"}));
}

TEST_F(ProjectStoreTest, TheRuntimesLookupFindsTheDefaultNode) {
    QString problem;
    {
        ProjectStore store;
        ASSERT_TRUE(store.openToChange(dir.path(), &problem));
        ASSERT_TRUE(store.setLink(3, 2000, false, &problem));
        ASSERT_TRUE(store.setDefaultNode({3, 1, "192.168.1.19", 44818, true}, &problem));
        ASSERT_TRUE(store.setDefaultNode({3, 7, "192.168.1.20", 44818, true}, &problem));
        ASSERT_TRUE(store.setDefaultNode({3, 7, "192.168.1.21", 44819, true}, &problem));
        ASSERT_TRUE(store.commit(&problem));
    }
    EXPECT_EQ(rows("SELECT LINKID, STATIONID, IP, PORT, ISDEFAULT FROM NODE ORDER BY STATIONID"),
              (QStringList{"3 1 192.168.1.19 44818 0", "3 7 192.168.1.21 44819 1"}));
    {
        QSqlDatabase database = QSqlDatabase::addDatabase("QSQLITE", "runtime");
        database.setDatabaseName(projectDatabasePath(dir.path()));
        int link = 0;
        unsigned char station = 0;
        EXPECT_TRUE(GetLinkIdAndDefaultStationId("runtime", 2000, link, station));
        EXPECT_EQ(link, 3);
        EXPECT_EQ(station, 7);
    }
    QSqlDatabase::removeDatabase("runtime");
}

TEST_F(ProjectStoreTest, ContentsListAllThreeTables) {
    QString problem;
    ProjectStore store;
    ProjectStore::Declared done;
    ASSERT_TRUE(store.openToChange(dir.path(), &problem));
    ASSERT_TRUE(store.setLink(1, 2000, false, &problem));
    ASSERT_TRUE(store.setDefaultNode({1, 0, "plc", 44818, true}, &problem));
    ASSERT_TRUE(store.declareArray(1, declaration("DINT0:A[0..1]"), &done, &problem));
    ProjectContents contents;
    ASSERT_TRUE(store.contents(&contents, &problem)) << qPrintable(problem);
    ASSERT_EQ(contents.links.size(), 1);
    EXPECT_EQ(contents.links.at(0).hmiPort, 2000);
    ASSERT_EQ(contents.nodes.size(), 1);
    EXPECT_EQ(contents.nodes.at(0).ip, QString("plc"));
    EXPECT_TRUE(contents.nodes.at(0).isDefault);
    ASSERT_EQ(contents.arrays.size(), 1);
    EXPECT_EQ(contents.arrays.at(0).linkId, 1);
    EXPECT_EQ(contents.arrays.at(0).address, QString("DINT0:A[0..1]"));
}

TEST_F(ProjectStoreTest, ADatabaseWithoutLinksIsListedAllTheSame) {
    ASSERT_TRUE(QDir().mkpath(dir.path() + "/compile/database"));
    rows("CREATE TABLE custom_tag_table (address TEXT, connector_id INTEGER)");
    ProjectStore store;
    ProjectContents contents;
    QString problem;
    ASSERT_TRUE(store.openToRead(dir.path(), &problem)) << qPrintable(problem);
    EXPECT_TRUE(store.contents(&contents, &problem)) << qPrintable(problem);
    EXPECT_TRUE(contents.links.isEmpty());
}

TEST_F(ProjectStoreTest, ADatabaseThatComputesIsRefused) {
    ASSERT_TRUE(QDir().mkpath(dir.path() + "/compile/database"));
    rows(
        "CREATE VIEW custom_tag_table AS WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 "
        "FROM n) SELECT x AS rowid, 'DINT0:A[0..9]' AS address, 1 AS connector_id FROM n");
    const QString expected =
        "project " + projectDatabasePath(dir.path()) + ": custom_tag_table is not a table";
    ProjectStore store;
    ProjectContents contents;
    QString problem;
    ASSERT_TRUE(store.openToRead(dir.path(), &problem)) << qPrintable(problem);
    EXPECT_FALSE(store.contents(&contents, &problem));
    EXPECT_EQ(problem, expected);
    ProjectStore::Declared done;
    EXPECT_FALSE(store.declareArray(1, declaration("DINT0:A[0..9]"), &done, &problem));
    EXPECT_EQ(problem, expected);
}

TEST_F(ProjectStoreTest, MoreRowsThanAnyProjectHasAreRefused) {
    declare(1, "DINT0:A[0..9]");
    rows(
        "INSERT INTO custom_tag_table WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM "
        "n WHERE x < 100000) SELECT 'DINT0:B[0..9]', 2 FROM n");
    ProjectStore store;
    ProjectContents contents;
    QString problem;
    ASSERT_TRUE(store.openToRead(dir.path(), &problem)) << qPrintable(problem);
    EXPECT_FALSE(store.contents(&contents, &problem));
    EXPECT_EQ(problem,
              "project " + projectDatabasePath(dir.path()) + ": a table has more than 100000 rows");
}

TEST_F(ProjectStoreTest, ADamageBehindTheFirstRowsIsTold) {
    declare(1, "DINT0:A[0..9]");
    rows(
        "INSERT INTO custom_tag_table WITH RECURSIVE n(x) AS (SELECT 1 UNION ALL SELECT x + 1 FROM "
        "n WHERE x < 3000) SELECT 'DINT0:B[0..9]', 2 FROM n");
    QFile file(projectDatabasePath(dir.path()));
    const int kPageSize = 4096;
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(9 * kPageSize));
    ASSERT_EQ(file.write(QByteArray(kPageSize, '\xff')), kPageSize);
    file.close();
    ProjectStore store;
    ProjectContents contents;
    QString problem;
    ASSERT_TRUE(store.openToRead(dir.path(), &problem)) << qPrintable(problem);
    EXPECT_FALSE(store.contents(&contents, &problem));
    EXPECT_TRUE(problem.contains("malformed")) << qPrintable(problem);
}

TEST_F(ProjectStoreTest, TroubleIsToldWithThePath) {
    QString problem;
    ProjectStore missing;
    EXPECT_FALSE(missing.openToRead(dir.path(), &problem));
    EXPECT_EQ(problem, "no project in " + dir.path() + ": " + projectDatabasePath(dir.path()) +
                           " is missing");

    ASSERT_TRUE(QDir().mkpath(dir.path() + "/compile/database"));
    QFile file(projectDatabasePath(dir.path()));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray(4096, 'x'));
    file.close();
    ProjectStore broken;
    ProjectContents contents;
    EXPECT_FALSE(broken.openToRead(dir.path(), &problem) && broken.contents(&contents, &problem));
    EXPECT_TRUE(problem.startsWith("project " + projectDatabasePath(dir.path()) + ": "));
    EXPECT_TRUE(problem.contains("not a database")) << qPrintable(problem);
}

TEST_F(ProjectStoreTest, ADirectoryThatCannotBeMadeIsTold) {
    QFile file(dir.path() + "/plain");
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ProjectStore store;
    QString problem;
    EXPECT_FALSE(store.openToChange(dir.path() + "/plain", &problem));
    EXPECT_EQ(problem, "cannot make the directory " + dir.path() + "/plain/compile/database");
}

}  // namespace
